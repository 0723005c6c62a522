// The line arithmetic shared by the deinterlacer's filters: clamp table,
// truncating average and the five-tap filter, out of place and in place.
// Lengths run from 1 to past two 16-byte vectors so that both the wide loops
// and their tails are checked against the plain formulas; every buffer has
// exactly n bytes.
#include <gtest/gtest.h>

#include "deint_test_pictures.h"

using namespace deint_test;

namespace {

std::vector<uint8_t> random_bytes(size_t n, std::mt19937& rng) {
  std::vector<uint8_t> v(n);
  for (auto& b : v) b = static_cast<uint8_t>(rng());
  return v;
}

TEST(DeintClipTable, ClampsValuePlus1024) {
  ASSERT_EQ(deint_clip_table.size(), 2304u);
  for (int i = 0; i < 2304; ++i) {
    int expected = i < 1024 ? 0 : (i > 1279 ? 255 : i - 1024);
    ASSERT_EQ(deint_clip_table[i], expected) << "index " << i;
  }
  for (int v : {-1024, -1, 0, 200, 256, 1279}) EXPECT_EQ(deint_clip(v), clamp255(v)) << v;
}

TEST(DeintMerge, TruncatingAverageOfExactlyNBytes) {
  std::mt19937 rng(11);
  for (size_t n = 0; n <= 70; ++n) {
    auto a = random_bytes(n, rng), b = random_bytes(n, rng);
    std::vector<uint8_t> dst(n, 0xEE);
    Merge(dst.data(), a.data(), b.data(), n);
    for (size_t i = 0; i < n; ++i) ASSERT_EQ(dst[i], avg_down(a[i], b[i])) << "n " << n << " i " << i;
  }
}

TEST(DeintMerge, RoundsDownAtTheExtremes) {
  std::vector<uint8_t> a = {255, 255, 0, 1, 254, 3, 128, 127, 255, 0, 1, 2, 3, 4, 5, 6, 7, 255, 1};
  std::vector<uint8_t> b = {255, 254, 0, 0, 255, 4, 127, 128, 0, 255, 2, 3, 4, 5, 6, 7, 8, 255, 0};
  std::vector<uint8_t> dst(a.size());
  Merge(dst.data(), a.data(), b.data(), a.size());
  std::vector<uint8_t> expected = {255, 254, 0, 0, 254, 3, 127, 127, 127, 127, 1, 2, 3, 4, 5, 6, 7, 255, 0};
  EXPECT_EQ(dst, expected);
}

TEST(DeintLine, FiveTapFilterOnRandomLines) {
  std::mt19937 rng(12);
  for (size_t n = 1; n <= 70; ++n) {
    std::vector<uint8_t> p[5];
    for (auto& v : p) v = random_bytes(n, rng);
    std::vector<uint8_t> dst(n);
    deinterlace_line(dst.data(), p[0].data(), p[1].data(), p[2].data(), p[3].data(), p[4].data(), n);
    for (size_t i = 0; i < n; ++i)
      ASSERT_EQ(dst[i], five_tap(p[0][i], p[1][i], p[2][i], p[3][i], p[4][i])) << "n " << n << " i " << i;
  }
}

TEST(DeintLine, SaturatesAndRoundsNegativeSumsDown) {
  // Per column: p0 p1 p2 p3 p4 -> expected, worked by hand.
  struct Case {
    uint8_t p[5];
    uint8_t want;
  } cases[] = {
      {{255, 0, 0, 0, 255}, 0},                                        // (-510 + 4) >> 3 = -64 -> 0
      {{0, 255, 255, 255, 0}, 255},                                    // 2554 >> 3 = 319 -> 255
      {{0, 0, 0, 0, 0}, 0},         {{100, 100, 100, 100, 100}, 100},  // 804 >> 3 = 100
      {{0, 10, 0, 10, 0}, 10},                                         // 84 >> 3 = 10
      {{4, 0, 1, 0, 4}, 0},          // (-8 + 2 + 4) >> 3 = -2 >> 3 = -1 -> 0
      {{0, 1, 0, 0, 0}, 1},          // 8 >> 3
      {{0, 0, 1, 0, 0}, 0},          // 6 >> 3
      {{10, 20, 30, 40, 50}, 30},    // (-10 + 80 + 60 + 160 - 50 + 4) = 244 >> 3 = 30
      {{0, 200, 255, 200, 0}, 255},  // 2114 >> 3 = 264 -> 255
  };
  const size_t n = 37;  // past two vectors: every column goes through both paths in turn
  for (const auto& c : cases) {
    std::vector<uint8_t> p[5];
    for (int k = 0; k < 5; ++k) p[k].assign(n, c.p[k]);
    std::vector<uint8_t> dst(n);
    deinterlace_line(dst.data(), p[0].data(), p[1].data(), p[2].data(), p[3].data(), p[4].data(), n);
    for (size_t i = 0; i < n; ++i)
      ASSERT_EQ(dst[i], c.want) << int(c.p[0]) << " " << int(c.p[4]) << " i " << i;
  }
}

TEST(DeintLineInplace, ReplacesMiddleLineAndCarriesItsOriginal) {
  // Also as the last odd line of a plane calls it: passing itself as b, c and d.
  std::mt19937 rng(13);
  for (bool last : {false, true}) {
    for (size_t n = 1; n <= 70; ++n) {
      auto tmp = random_bytes(n, rng), a = random_bytes(n, rng), b = random_bytes(n, rng);
      auto c = random_bytes(n, rng), d = random_bytes(n, rng);
      const auto tmp0 = tmp, b0 = b;
      deinterlace_line_inplace(tmp.data(), a.data(), b.data(), last ? b.data() : c.data(),
                               last ? b.data() : d.data(), n);
      for (size_t i = 0; i < n; ++i) {
        ASSERT_EQ(b[i], five_tap(tmp0[i], a[i], b0[i], last ? b0[i] : c[i], last ? b0[i] : d[i]))
            << "n " << n << " i " << i << (last ? " last" : "");
        ASSERT_EQ(tmp[i], b0[i]);
      }
    }
  }
}

}  // namespace
