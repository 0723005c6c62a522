// Nearest-neighbour enlargement (_Nearest, _NearLinear) against a reference:
// output row j shows source row floor(j * sh / dh) sampled at columns
// floor(k * lineWidth / dw); a row showing the same source row as the one
// before is a copy of that row's first dw * 2 bytes.
#include <gtest/gtest.h>

#include "kernels/yuv420_rgb16.h"
#include "rgb16_ref.h"

using namespace rgb16test;

namespace {

using Pixels = std::vector<uint16_t>;

// RGB565 line of source row r as the kernels hold it: converted with its
// pair's chroma row, directly or doubled across by averaging.
Pixels SourceLine(const Tables& t, Picture& pic, int32_t sw, int64_t r, bool doubled) {
  Pixels out;
  uint64_t prev = 0;
  for (int32_t x = 0; x < sw; ++x) {
    const uint8_t y = pic.Y(x, r), cb = pic.Cb(x / 2, r / 2), cr = pic.Cr(x / 2, r / 2);
    if (!doubled) {
      out.push_back(Ref565(t, y, cb, cr));
      continue;
    }
    const uint64_t e = RefSpread(t, y, cb, cr);
    out.push_back(Blend565({{1, x == 0 ? e : prev}, {1, e}}, 2));
    out.push_back(Blend565({{1, e}}, 1));
    prev = e;
  }
  return out;
}

struct Case {
  int32_t sw, sh, dw, dh;
};

void CheckNearest(bool doubled, const Case c, int32_t pitch, const Tables& t) {
  Picture pic(c.sw, c.sh, 3, c.sw * 3 + c.dh + doubled);
  const int64_t rowBytes = int64_t{pitch >> 2} * 8;
  Canvas cv(rowBytes * c.dh + 8 * c.dw + 16);
  int64_t shown = -1, pairDone = -1;
  Pixels rows[2];
  for (int32_t j = 0; j < c.dh; ++j) {
    const int64_t r = int64_t{j} * c.sh / c.dh;
    if (r / 2 != pairDone) {  // the whole pair is converted
      pairDone = r / 2;
      rows[0] = SourceLine(t, pic, c.sw, 2 * pairDone, doubled);
      rows[1] = SourceLine(t, pic, c.sw, 2 * pairDone + 1, doubled);
    }
    if (r == shown) {
      cv.Copy(j * rowBytes, (j - 1) * rowBytes, 2 * c.dw);
    } else {
      const Pixels& line = rows[r % 2];
      const int64_t lw = static_cast<int64_t>(line.size());
      for (int32_t e = 0; e < c.dw / 2; ++e)
        cv.Put64(j * rowBytes + 8 * e,
                 line[2 * e * lw / c.dw] | uint64_t{line[(2 * e + 1) * lw / c.dw]} << 16);
    }
    shown = r;
  }
  pic.Cut();
  auto dst = cv.Target();
  LineSet lines(std::max(c.sw, 2) * (doubled ? 8 : 2));
  Tables tt(t);
  const uint32_t got =
      doubled ? _ORUYCbCr420ToRGB565RszUp_NearLinear(&tt.ctx, lines.ptr, pic.planes(), pic.strides(), c.sw,
                                                     c.sh, dst.data(), pitch, c.dw, c.dh)
              : _ORUYCbCr420ToRGB565RszUp_Nearest(&tt.ctx, lines.ptr, pic.planes(), pic.strides(), c.sw, c.sh,
                                                  dst.data(), pitch, c.dw, c.dh);
  EXPECT_EQ(got, 0u);
  SCOPED_TRACE(testing::Message() << (doubled ? "NearLinear " : "Nearest ") << c.sw << "x" << c.sh << " -> "
                                  << c.dw << "x" << c.dh << " pitch " << pitch);
  cv.ExpectEqual(dst);
}

const Case kCases[] = {
    {4, 4, 8, 8}, {6, 4, 9, 7}, {8, 6, 16, 12},   {10, 8, 10, 17}, {2, 2, 3, 5},
    {8, 8, 1, 1}, {6, 6, 7, 1}, {12, 10, 30, 21}, {16, 12, 6, 4},  // a smaller destination skips whole pairs
    {14, 9, 7, 3}};

TEST(Rgb565Nearest, MatchesReferenceAndCopiesRepeatedRows) {
  for (bool wide : {false, true}) {
    const Tables t(1100 + wide, wide);
    for (const Case c : kCases)
      for (int32_t pitch : {2 * c.dw, 2 * c.dw + 5}) CheckNearest(false, c, pitch, t);
  }
}

TEST(Rgb565NearLinear, SamplesLinesDoubledByAveraging) {
  for (bool wide : {false, true}) {
    const Tables t(1200 + wide, wide);
    for (const Case c : kCases)
      for (int32_t pitch : {2 * c.dw, 2 * c.dw + 5}) CheckNearest(true, c, pitch, t);
  }
}

TEST(Rgb565Nearest, RepeatedRowCopiesOnlyHalfOfTheWideRow) {
  // 2 rows to 4: rows 1 and 3 repeat rows 0 and 2; the copy is dw * 2 bytes of
  // a row that holds dw * 4, so the second half of a repeated row is left as it was.
  Tables t(1300, false);
  Picture pic(4, 2, 0, 9);
  pic.Y(3, 1), pic.Cb(1, 0), pic.Cr(1, 0);
  pic.Cut();
  const int32_t pitch = 8;  // rows 16 bytes apart
  std::vector<uint8_t> dst(16 * 4, 0xAB);
  LineSet lines(8);
  _ORUYCbCr420ToRGB565RszUp_Nearest(&t.ctx, lines.ptr, pic.planes(), pic.strides(), 4, 2, dst.data(), pitch,
                                    4, 4);
  for (int row : {1, 3}) {
    EXPECT_TRUE(std::equal(dst.begin() + 16 * row, dst.begin() + 16 * row + 8, dst.begin() + 16 * (row - 1)));
    EXPECT_EQ(std::vector<uint8_t>(dst.begin() + 16 * row + 8, dst.begin() + 16 * row + 16),
              std::vector<uint8_t>(8, 0xAB));
  }
}

TEST(Rgb565Nearest, MissingLinesRefusedAndEmptyDestinationsIgnored) {
  Tables t(1301, false);
  const uint8_t* planes[3] = {nullptr, nullptr, nullptr};
  uint32_t strides[3] = {0, 0, 0};
  uint8_t* none[4] = {nullptr, nullptr, nullptr, nullptr};
  uint8_t dst[8];
  EXPECT_EQ(_ORUYCbCr420ToRGB565RszUp_Nearest(&t.ctx, none, planes, strides, 4, 4, dst, 8, 8, 8),
            0xFFFFFFFFu);
  EXPECT_EQ(_ORUYCbCr420ToRGB565RszUp_NearLinear(&t.ctx, nullptr, planes, strides, 4, 4, dst, 8, 8, 8),
            0xFFFFFFFFu);
  EXPECT_EQ(_ORUYCbCr420ToRGB565RszUp_Nearest(&t.ctx, none, planes, strides, 4, 4, dst, 8, 8, 0), 0u);
  EXPECT_EQ(_ORUYCbCr420ToRGB565RszUp_Nearest(&t.ctx, none, planes, strides, 4, 4, dst, 8, 0, 8), 0u);
}

}  // namespace
