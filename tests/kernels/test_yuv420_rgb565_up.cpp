// Enlarging kernels that go through spread lines (RszUp, RszUpRot, Case1,
// Case2, Case3) against references built from the colour step and field-wise
// blends, with exact-size sources, destinations and line buffers.
#include <gtest/gtest.h>

#include "kernels/yuv420_rgb16.h"
#include "rgb16_kernel_ref.h"

using namespace rgb16test;

namespace {

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
        LineSet lines(SpreadLineBytes(c.sw));
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
  LineSet lines(SpreadLineBytes(8));
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
        const auto rows = RenderRszUpRot(cv, t, pic, c.sw, c.sh, c.dw, c.dh, ro.pix[0], rowStep, colStep);
        pic.Cut();
        auto dst = cv.Target();
        LineSet lines(SpreadLineBytes(c.sw));
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
      RenderCase2(cv, t, pic, c.sw, c.sh, c.dh, pitch);
      pic.Cut();
      auto dst = cv.Target();
      LineSet lines(SpreadLineBytes(c.sw));
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
      RenderCase1(cv, t, pic, c.sw, c.dh, pitch);
      pic.Cut();
      EXPECT_EQ(pic.reach(0), (2 * groups + 1) * int64_t{pic.stride(0)} + c.sw - 1);
      auto dst = cv.Target();
      LineSet lines(SpreadLineBytes(c.sw));
      Tables tt(t);
      EXPECT_EQ(_ORUYCbCr420ToRGB565Case1(&tt.ctx, lines.ptr, pic.planes(), pic.strides(), c.sw, dst.data(),
                                          pitch, c.dh),
                0u);
      SCOPED_TRACE(testing::Message() << c.sw << "x" << c.sh << " -> " << c.dh);
      cv.ExpectEqual(dst);
    }
  }
}

TEST(Rgb565Case3, FifteenRowsToSeventeenAndTwoColumnsToThree) {
  const Tables t(1000, false);
  for (int32_t pitch : {960, 1000}) {
    Picture pic(320, 240, 8, pitch);
    Canvas cv(WideRow(pitch) * 272);
    RenderCase3(cv, t, pic, pitch);
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
