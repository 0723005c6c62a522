// Any-ratio resizing kernels (Rsz, RszRot) against a per-pixel reference of
// the bilinear-luma, nearest-chroma sampling, with exact-size sources and
// destinations.
#include <gtest/gtest.h>

#include "kernels/yuv420_rgb16.h"
#include "rgb16_kernel_ref.h"

using namespace rgb16test;

namespace {

struct Case {
  int32_t sw, sh, dw, dh;
};
const Case kCases[] = {
    {16, 12, 6, 4},  // shrink
    {10, 8, 15, 4},  // mixed
    {6, 4, 13, 9},   // grow, odd destination
    {8, 8, 1, 1},    // destination of one pixel: step 0
    {8, 6, 1, 5},    //
    {9, 7, 5, 3},    // odd everything
    {4, 4, 4, 4},    // same size
    {32, 18, 48, 26},
};

TEST(Rgb565Rsz, MatchesReferenceAtManyRatios) {
  for (bool wide : {false, true}) {
    const Tables t(400 + wide, wide);
    for (const Case c : kCases) {
      Picture pic(c.sw, c.sh, 3, c.sw * 7 + c.dw, c.sh + 8);
      const int32_t pitch = 8 * ((c.dw + 1) / 2) + 8;
      Canvas cv(static_cast<size_t>(pitch) * (c.dh + 2));
      RenderRsz(cv, t, pic, c.sw, c.sh, c.dw, c.dh, pitch);
      pic.Cut();
      auto dst = cv.Target();
      Tables tt(t);
      EXPECT_EQ(_ORUYCbCr420ToRGB565Rsz(&tt.ctx, pic.planes(), pic.strides(), c.sw, c.sh, dst.data(), pitch,
                                        c.dw, c.dh),
                0u);
      SCOPED_TRACE(testing::Message()
                   << c.sw << "x" << c.sh << " -> " << c.dw << "x" << c.dh << " wide " << wide);
      cv.ExpectEqual(dst);
    }
  }
}

TEST(Rgb565Rsz, UpperHalfIsTheSignOfTheSecondPixel) {
  Tables t(8, false);
  for (int i = 0; i < 256; ++i) t.y[i] = static_cast<uint16_t>(i * 256);
  for (int i = 0; i < 256; ++i) t.cb[i] = t.cr[i] = 0;
  const uint8_t ys[4] = {0, 255, 0, 255}, c[1] = {0};
  const uint8_t* planes[3] = {ys, c, c};
  uint32_t strides[3] = {2, 1, 1};
  uint64_t out[2];
  _ORUYCbCr420ToRGB565Rsz(&t.ctx, planes, strides, 2, 1, reinterpret_cast<uint8_t*>(out), 8, 2, 2);
  // Pixel 0 black, pixel 1 white: the 32-bit pair 0xFFFF0000 is sign-extended.
  EXPECT_EQ(out[0], 0xFFFFFFFFFFFF0000ull);
}

TEST(Rgb565RszRot, EveryRotationThroughTheFourCursors) {
  const Tables t(500, false);
  const Case cases[] = {{12, 10, 6, 4}, {6, 4, 10, 8}, {8, 8, 2, 2}};
  for (int rot = 0; rot <= 5; ++rot) {
    for (const Case c : cases) {
      for (int32_t dpad : {0, 4}) {
        Picture pic(c.sw, c.sh, 2, rot + c.dw, c.sh + 4);
        const int64_t w = QuarterTurn(rot) ? c.dh : c.dw, h = QuarterTurn(rot) ? c.dw : c.dh;
        const int64_t stride = 2 * w + dpad;
        Canvas cv(static_cast<size_t>(stride * h));
        const RecordOffsets ro = MakeOffsets(rot, c.dw, c.dh, stride);
        const std::vector<uint16_t> grid = RenderRszRot(cv, t, pic, c.sw, c.sh, c.dw, c.dh, ro);
        pic.Cut();
        auto dst = cv.Target();
        Tables tt(t);
        ImgPrcRotationRecord rec = MakeRecord(ro, dst.data());
        tt.ctx.rotationRecord = &rec;
        EXPECT_EQ(_ORUYCbCr420ToRGB565RszRot(&tt.ctx, pic.planes(), pic.strides(), c.sw, c.sh, c.dw, c.dh),
                  0u);
        SCOPED_TRACE(testing::Message()
                     << "rotation " << rot << " " << c.sw << "x" << c.sh << " -> " << c.dw << "x" << c.dh);
        cv.ExpectEqual(dst);
        if (dpad != 0) continue;
        for (int32_t y = 0; y < c.dh; ++y) {
          for (int32_t x = 0; x < c.dw; ++x) {
            const auto [dx, dy] = Rotated(rot, x, y, c.dw, c.dh);
            uint16_t got;
            memcpy(&got, &dst[dy * stride + 2 * dx], 2);
            EXPECT_EQ(got, grid[y * c.dw + x]) << x << "," << y;
          }
        }
      }
    }
  }
}

TEST(Rgb565RszRot, MissingRecordIsRefused) {
  Tables t(9, false);
  const uint8_t* planes[3] = {nullptr, nullptr, nullptr};
  uint32_t strides[3] = {0, 0, 0};
  EXPECT_EQ(_ORUYCbCr420ToRGB565RszRot(&t.ctx, planes, strides, 4, 4, 8, 8), 0xFFFFFFFFu);
  EXPECT_EQ(_ORUYCbCr420ToRGB565RszRot(&t.ctx, planes, strides, 4, 4, 8, 0), 0u);
}

}  // namespace
