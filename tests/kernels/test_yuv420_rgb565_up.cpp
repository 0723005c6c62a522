// Enlarging kernels that go through spread lines (RszUp, RszUpRot, Case1,
// Case2, Case3) against references built from the colour step and field-wise
// blends, with exact-size sources, destinations and line buffers.
#include <gtest/gtest.h>

#include "kernels/yuv420_rgb16.h"
#include "rgb16_ref.h"

using namespace rgb16test;

namespace {

using Line = std::vector<uint64_t>;
using Pixels = std::vector<uint16_t>;

uint64_t Spread(uint32_t r, uint32_t g, uint32_t b) { return uint64_t{r} << 21 | uint64_t{g} << 10 | b; }

Line Blend(const Line& a, const Line& b, uint32_t wb, uint32_t total) {
  Line out(a.size());
  const uint32_t wa = total - wb;
  for (size_t x = 0; x < a.size(); ++x)
    out[x] = Spread((wa * RedOf(a[x]) + wb * RedOf(b[x])) / total,
                    (wa * GreenOf(a[x]) + wb * GreenOf(b[x])) / total,
                    (wa * BlueOf(a[x]) + wb * BlueOf(b[x])) / total);
  return out;
}

// Spread source row r converted with chroma row c, and the reads that the
// conversion of a whole row pair makes.
Line SpreadRow(const Tables& t, Picture& pic, int32_t sw, int64_t r, int64_t c) {
  Line l(sw);
  for (int32_t x = 0; x < sw; ++x) l[x] = RefSpread(t, pic.Y(x, r), pic.Cb(x / 2, c), pic.Cr(x / 2, c));
  return l;
}

// The line cache as described: slots A, B, C tagged with rows; a pair that
// starts at row r is converted with chroma row r >> 1 for both rows.
class RefCache {
 public:
  RefCache(const Tables& t, Picture& pic, int32_t sw) : t_(t), pic_(pic), sw_(sw) {}
  Line At(uint32_t p) {
    const int32_t y = p >> 16, f = (p >> 11) & 31;
    if (tag_[0] != y) {
      if (tag_[1] == y) {
        Rotate(1);
      } else if (tag_[2] == y) {
        Rotate(2);
      } else {
        Fill(y, 0, 1);
      }
    }
    if (f == 0) return line_[0];
    if (tag_[1] != y + 1) Fill(y + 1, 1, 2);
    return Blend(line_[0], line_[1], f, 32);
  }

 private:
  void Fill(int32_t r, int a, int b) {
    line_[a] = SpreadRow(t_, pic_, sw_, r, r >> 1);
    line_[b] = SpreadRow(t_, pic_, sw_, r + 1, r >> 1);
    tag_[a] = r;
    tag_[b] = r + 1;
  }
  void Rotate(int by) {
    Line l[3] = {line_[0], line_[1], line_[2]};
    int32_t g[3] = {tag_[0], tag_[1], tag_[2]};
    for (int i = 0; i < 3; ++i) line_[i] = l[(i + by) % 3], tag_[i] = g[(i + by) % 3];
  }
  const Tables& t_;
  Picture& pic_;
  int32_t sw_;
  Line line_[3];
  int32_t tag_[3] = {-1, -1, -1};
};

int32_t Step(int32_t src, int32_t dst) {
  return dst == 1 ? 0 : static_cast<int32_t>((int64_t{src - 1} << 16) / (dst - 1));
}

// Linear stretch of a spread line; the entry past the line only ever gets
// weight 0.
Pixels Stretch(const Line& l, uint32_t step, int32_t dw) {
  Pixels out(2 * std::max(1, dw / 2));
  for (size_t k = 0; k < out.size(); ++k) {
    const uint32_t p = k * step, i = p >> 16, f = (p >> 11) & 31;
    if (i + 1 >= l.size()) {
      EXPECT_EQ(f, 0u);
    }
    out[k] = Blend565({{32 - f, l.at(i)}, {f, i + 1 < l.size() ? l[i + 1] : 0}}, 32);
  }
  return out;
}

// Fixed 1.5x and 2.5x stretches, by their phase tables.
Pixels Stretch23(const Line& l) {
  const int32_t rounds = std::max<int32_t>(1, l.size() >> 2);
  Pixels out;
  for (int32_t r = 0; r < rounds; ++r) {
    const uint64_t a = l[4 * r], b = l[4 * r + 1], c = l[4 * r + 2], d = l[4 * r + 3];
    const uint64_t e = r + 1 < rounds ? l[4 * r + 4] : d;
    out.push_back(Blend565({{1, a}}, 1));
    out.push_back(Blend565({{11, a}, {21, b}}, 32));
    out.push_back(Blend565({{21, b}, {11, c}}, 32));
    out.push_back(Blend565({{1, c}}, 1));
    out.push_back(Blend565({{11, c}, {21, d}}, 32));
    out.push_back(Blend565({{21, d}, {11, e}}, 32));
  }
  return out;
}

Pixels Stretch25(const Line& l) {
  const int32_t rounds = std::max<int32_t>(1, l.size() >> 2);
  Pixels out;
  for (int32_t pair = 0; pair < 2 * rounds; ++pair) {
    const uint64_t a = l[2 * pair], b = l[2 * pair + 1];
    const uint64_t c = pair + 1 < 2 * rounds ? l[2 * pair + 2] : b;
    out.push_back(Blend565({{1, a}}, 1));
    out.push_back(Blend565({{5, a}, {3, b}}, 8));
    out.push_back(Blend565({{7, a}, {25, b}}, 32));
    out.push_back(Blend565({{13, b}, {3, c}}, 16));
    out.push_back(Blend565({{19, b}, {13, c}}, 32));
  }
  return out;
}

int64_t WideRow(int32_t pitch) { return int64_t{pitch >> 2} * 8; }

// One output row of pixel pairs in 64-bit words with a zero upper half.
void PutPairs(Canvas& cv, int64_t at, const Pixels& px) {
  for (size_t e = 0; e + 1 < px.size(); e += 2) cv.Put64(at + 4 * e, px[e] | uint64_t{px[e + 1]} << 16);
}

size_t LineBytes(int32_t sw) { return std::max<size_t>(sw + 1, 4) * 8; }

struct Case {
  int32_t sw, sh, dw, dh;
};
const Case kUp[] = {{4, 4, 8, 8},   {6, 4, 9, 7},     {8, 6, 1, 1},   {10, 8, 16, 30},
                    {16, 6, 24, 9}, {12, 11, 12, 13}, {20, 10, 8, 6}, {2, 2, 3, 2}};

TEST(Rgb565RszUp, MatchesReferenceWithDoubledRowSpacing) {
  for (bool wide : {false, true}) {
    const Tables t(600 + wide, wide);
    for (const Case c : kUp) {
      for (int32_t pitch : {2 * c.dw, 2 * c.dw + 6}) {
        Picture pic(c.sw, c.sh, 5, c.sw + c.dh + pitch);
        Canvas cv(WideRow(pitch) * c.dh + 8 * c.dw + 16);
        RefCache cache(t, pic, c.sw);
        const uint32_t sx = Step(c.sw, c.dw), sy = Step(c.sh, c.dh);
        for (int32_t j = 0; j < c.dh; ++j)
          PutPairs(cv, j * WideRow(pitch), Stretch(cache.At(j * sy), sx, c.dw));
        pic.Cut();
        auto dst = cv.Target();
        LineSet lines(LineBytes(c.sw));
        Tables tt(t);
        EXPECT_EQ(_ORUYCbCr420ToRGB565RszUp(&tt.ctx, lines.ptr, pic.planes(), pic.strides(), c.sw, c.sh,
                                            dst.data(), pitch, c.dw, c.dh),
                  0u);
        SCOPED_TRACE(testing::Message()
                     << c.sw << "x" << c.sh << " -> " << c.dw << "x" << c.dh << " pitch " << pitch);
        cv.ExpectEqual(dst);
      }
    }
  }
}

TEST(Rgb565RszUp, PairsStartingOnOddRowsShareTheirFirstRowsChroma) {
  // 11 rows to 5: positions 0, 2.5, 5, 7.5, 10. Row 5 is not cached, so rows
  // 5 and 6 are converted with chroma row 2; then 7 and 8 with chroma row 3,
  // and output row 3 blends rows 7 and 8 both with chroma row 3.
  const Tables t(610, false);
  Picture pic(8, 11, 2, 3);
  Canvas cv(WideRow(16) * 5);
  RefCache cache(t, pic, 8);
  const uint32_t sy = Step(11, 5);
  ASSERT_EQ(sy, 0x28000u);
  for (int32_t j = 0; j < 5; ++j) {
    const Line l = cache.At(j * sy);
    if (j == 3) {
      EXPECT_EQ(l, Blend(SpreadRow(t, pic, 8, 7, 3), SpreadRow(t, pic, 8, 8, 3), 16, 32));
      EXPECT_NE(l, Blend(SpreadRow(t, pic, 8, 7, 3), SpreadRow(t, pic, 8, 8, 4), 16, 32));
    }
    PutPairs(cv, j * WideRow(16), Stretch(l, Step(8, 8), 8));
  }
  pic.Cut();
  auto dst = cv.Target();
  LineSet lines(LineBytes(8));
  Tables tt(t);
  _ORUYCbCr420ToRGB565RszUp(&tt.ctx, lines.ptr, pic.planes(), pic.strides(), 8, 11, dst.data(), 16, 8, 5);
  cv.ExpectEqual(dst);
}

TEST(Rgb565RszUp, MissingLineBuffersAreRefused) {
  Tables t(620, false);
  const uint8_t* planes[3] = {nullptr, nullptr, nullptr};
  uint32_t strides[3] = {0, 0, 0};
  LineSet three(64, 3);
  uint8_t dst[8];
  EXPECT_EQ(_ORUYCbCr420ToRGB565RszUp(&t.ctx, nullptr, planes, strides, 4, 4, dst, 8, 8, 8), 0xFFFFFFFFu);
  EXPECT_EQ(_ORUYCbCr420ToRGB565RszUp(&t.ctx, three.ptr, planes, strides, 4, 4, dst, 8, 8, 8), 0xFFFFFFFFu);
  EXPECT_EQ(_ORUYCbCr420ToRGB565Case1(&t.ctx, three.ptr, planes, strides, 4, dst, 8, 8), 0xFFFFFFFFu);
  EXPECT_EQ(_ORUYCbCr420ToRGB565Case2(&t.ctx, three.ptr, planes, strides, 4, 4, dst, 8, 8), 0xFFFFFFFFu);
  EXPECT_EQ(_ORUYCbCr420ToRGB565Case3(&t.ctx, nullptr, dst, planes, strides, dst, 8), 0xFFFFFFFFu);
  EXPECT_EQ(_ORUYCbCr420ToRGB565RszUpRot(&t.ctx, three.ptr, planes, strides, 4, 4, dst, 8, 2, 8, 8),
            0xFFFFFFFFu);
  EXPECT_EQ(_ORUYCbCr420ToRGB565RszUp(&t.ctx, nullptr, planes, strides, 4, 4, dst, 8, 8, 0), 0u);
}

TEST(Rgb565RszUpRot, EveryRotationFromOneCursor) {
  const Tables t(700, false);
  const Case cases[] = {{4, 4, 8, 6}, {6, 4, 10, 10}, {8, 6, 12, 8}};
  for (int rot = 1; rot <= 5; ++rot) {
    for (const Case c : cases) {
      for (int32_t dpad : {0, 6}) {
        Picture pic(c.sw, c.sh, 3, rot * 10 + c.dw);
        const int64_t w = QuarterTurn(rot) ? c.dh : c.dw, h = QuarterTurn(rot) ? c.dw : c.dh;
        const int64_t stride = 2 * w + dpad;
        Canvas cv(static_cast<size_t>(stride * h));
        // As the router passes them: the first cursor and half of each block step.
        const RecordOffsets ro = MakeOffsets(rot, c.dw, c.dh, stride);
        const int32_t rowStep = ro.stepY / 2, colStep = ro.stepX / 2;
        RefCache cache(t, pic, c.sw);
        const uint32_t sx = Step(c.sw, c.dw), sy = Step(c.sh, c.dh);
        std::vector<Pixels> rows;
        for (int32_t j = 0; j < c.dh; ++j) {
          rows.push_back(Stretch(cache.At(j * sy), sx, c.dw));
          for (int32_t k = 0; k < c.dw; ++k)
            cv.Put16(ro.pix[0] + int64_t{j} * rowStep + int64_t{k} * colStep, rows[j][k]);
        }
        pic.Cut();
        auto dst = cv.Target();
        LineSet lines(LineBytes(c.sw));
        Tables tt(t);
        EXPECT_EQ(_ORUYCbCr420ToRGB565RszUpRot(&tt.ctx, lines.ptr, pic.planes(), pic.strides(), c.sw, c.sh,
                                               dst.data() + ro.pix[0], rowStep, colStep, c.dw, c.dh),
                  0u);
        SCOPED_TRACE(testing::Message() << "rotation " << rot << " " << c.sw << "x" << c.sh << " -> " << c.dw
                                        << "x" << c.dh << " pad " << dpad);
        cv.ExpectEqual(dst);
        if (dpad != 0) continue;
        for (int32_t y = 0; y < c.dh; ++y) {
          for (int32_t x = 0; x < c.dw; ++x) {
            const auto [dx, dy] = Rotated(rot, x, y, c.dw, c.dh);
            uint16_t got;
            memcpy(&got, &dst[dy * stride + 2 * dx], 2);
            EXPECT_EQ(got, rows[y][x]) << x << "," << y;
          }
        }
      }
    }
  }
}

TEST(Rgb565Case2, FixedThreeHalvesAcrossBilinearDown) {
  for (bool wide : {false, true}) {
    const Tables t(800 + wide, wide);
    for (const Case c : {Case{8, 4, 12, 8}, Case{16, 8, 24, 6}, Case{4, 6, 6, 9}, Case{12, 2, 18, 1}}) {
      const int32_t pitch = 3 * c.sw + 4;
      Picture pic(c.sw, c.sh, 4, c.sw * c.dh);
      Canvas cv(WideRow(pitch) * c.dh + 8 * c.sw);
      RefCache cache(t, pic, c.sw);
      const uint32_t sy = Step(c.sh, c.dh);
      for (int32_t j = 0; j < c.dh; ++j) PutPairs(cv, j * WideRow(pitch), Stretch23(cache.At(j * sy)));
      pic.Cut();
      auto dst = cv.Target();
      LineSet lines(LineBytes(c.sw));
      Tables tt(t);
      EXPECT_EQ(_ORUYCbCr420ToRGB565Case2(&tt.ctx, lines.ptr, pic.planes(), pic.strides(), c.sw, c.sh,
                                          dst.data(), pitch, c.dh),
                0u);
      SCOPED_TRACE(testing::Message() << c.sw << "x" << c.sh << " -> " << c.dh);
      cv.ExpectEqual(dst);
    }
  }
}

TEST(Rgb565Case1, FiveHalvesAcrossTwiceDownInGroupsOfFour) {
  for (bool wide : {false, true}) {
    const Tables t(900 + wide, wide);
    // Destination heights 2 x source, and 6 (written as 8) and 1 (written as 4).
    for (const Case c : {Case{8, 4, 20, 8}, Case{4, 2, 10, 4}, Case{12, 8, 30, 6}, Case{16, 4, 40, 1}}) {
      const int32_t pitch = 5 * c.sw + 2;
      const int32_t groups = (c.dh - 1) / 4 + 1;
      Picture pic(c.sw, c.sh, 3, c.sw + c.dh, 2 * groups + 2);
      Canvas cv(WideRow(pitch) * 4 * groups);
      // Output row 2k is source row k, row 2k + 1 the average of rows k and k + 1;
      // the last group's second pair lies past the picture.
      std::vector<Line> src;
      for (int32_t r = 0; r < 2 * groups + 2; ++r) src.push_back(SpreadRow(t, pic, c.sw, r, r / 2));
      for (int32_t k = 0; k < 2 * groups; ++k) {
        PutPairs(cv, 2 * k * WideRow(pitch), Stretch25(src[k]));
        PutPairs(cv, (2 * k + 1) * WideRow(pitch), Stretch25(Blend(src[k], src[k + 1], 1, 2)));
      }
      pic.Cut();
      EXPECT_EQ(pic.reach(0), (2 * groups + 1) * int64_t{pic.stride(0)} + c.sw - 1);
      auto dst = cv.Target();
      LineSet lines(LineBytes(c.sw));
      Tables tt(t);
      EXPECT_EQ(_ORUYCbCr420ToRGB565Case1(&tt.ctx, lines.ptr, pic.planes(), pic.strides(), c.sw, dst.data(),
                                          pitch, c.dh),
                0u);
      SCOPED_TRACE(testing::Message() << c.sw << "x" << c.sh << " -> " << c.dh);
      cv.ExpectEqual(dst);
    }
  }
}

// The documented weight table of the 320x240 to 480x272 kernel.
constexpr int32_t kBandRow[17] = {0, 0, 1, 2, 3, 4, 5, 6, 7, 8, 8, 9, 10, 11, 12, 13, 14};
constexpr uint32_t kBandWeight[17] = {0, 7, 6, 5, 4, 3, 2, 1, 0, 0, 7, 6, 5, 4, 3, 2, 1};

TEST(Rgb565Case3, FifteenRowsToSeventeenAndTwoColumnsToThree) {
  const Tables t(1000, false);
  for (int32_t pitch : {960, 1000}) {
    Picture pic(320, 240, 8, pitch);
    Canvas cv(WideRow(pitch) * 272);
    std::vector<Line> src;
    for (int32_t r = 0; r < 240; ++r) src.push_back(SpreadRow(t, pic, 320, r, r / 2));
    for (int32_t j = 0; j < 272; ++j) {
      const int32_t r = 15 * (j / 17) + kBandRow[j % 17];
      const uint32_t w = kBandWeight[j % 17];
      const Line v = Blend(src[r], src[std::min(r + 1, 239)], w, 8);
      const Pixels px = Stretch23(v);
      ASSERT_EQ(px.size(), 480u);
      PutPairs(cv, j * WideRow(pitch), px);
    }
    pic.Cut();
    auto dst = cv.Target();
    EXPECT_EQ(dst.size(), static_cast<size_t>(WideRow(pitch) * 271 + 240 * 8));
    LineSet lines(320 * 4, 2);
    Tables tt(t);
    EXPECT_EQ(_ORUYCbCr420ToRGB565Case3(&tt.ctx, lines.ptr[0], lines.ptr[1], pic.planes(), pic.strides(),
                                        dst.data(), pitch),
              0u);
    cv.ExpectEqual(dst);
  }
}

TEST(Rgb565Case3, BandStartsRepeatTheirSourceRow) {
  // A picture whose rows each have one colour: output row 17b is exactly
  // source row 15b, and the last row of the frame blends row 239 with itself.
  Tables t(1001, false);
  Picture pic(320, 240, 0, 5);
  for (int32_t r = 0; r < 240; ++r)
    for (int32_t x = 0; x < 320; ++x) pic.Set(0, int64_t{r} * 320 + x, static_cast<uint8_t>(r));
  for (int p = 1; p <= 2; ++p)
    for (int32_t r = 0; r < 120; ++r)
      for (int32_t x = 0; x < 160; ++x) pic.Set(p, int64_t{r} * pic.stride(p) + x, 128);
  const Line last = SpreadRow(t, pic, 320, 239, 119);
  for (int32_t r = 0; r < 240; ++r) SpreadRow(t, pic, 320, r, r / 2);
  pic.Cut();
  std::vector<uint8_t> dst(960 / 4 * 8 * 272);
  LineSet lines(320 * 4, 2);
  _ORUYCbCr420ToRGB565Case3(&t.ctx, lines.ptr[0], lines.ptr[1], pic.planes(), pic.strides(), dst.data(), 960);
  auto px = [&](int32_t row, int32_t k) {
    uint16_t v;
    memcpy(&v, &dst[row * 1920 + (k / 2) * 8 + (k % 2) * 2], 2);
    return v;
  };
  for (int32_t b = 0; b < 16; ++b) {
    const uint64_t s = RefSpread(t, static_cast<uint8_t>(15 * b), 128, 128);
    EXPECT_EQ(px(17 * b, 0), Blend565({{1, s}}, 1)) << b;
    EXPECT_EQ(px(17 * b, 479), Blend565({{1, s}}, 1)) << b;
  }
  EXPECT_EQ(px(271, 7), Blend565({{1, last[0]}}, 1));
}

}  // namespace
