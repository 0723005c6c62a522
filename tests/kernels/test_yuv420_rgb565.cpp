// Same-size YCbCr 4:2:0 to RGB565 / RGB555 kernels against a per-pixel
// reference, on random pictures with padded strides, sources cut to exactly
// the bytes the reference reads and destinations exactly as large as what it
// writes (so that AddressSanitizer sees any stray access).
#include <gtest/gtest.h>

#include "kernels/yuv420_rgb16.h"
#include "kernels/yuv_color_step.h"
#include "rgb16_kernel_ref.h"

using namespace rgb16test;

namespace {

struct Size {
  int32_t w, h;
};
const Size kSizes[] = {{2, 2}, {1, 1}, {5, 3}, {16, 8}, {33, 17}, {64, 2}};

TEST(Rgb565Plain, MatchesReferenceWithPaddedStridesAndOddSizes) {
  for (bool wide : {false, true}) {
    const Tables t(100 + wide, wide);
    for (const Size s : kSizes) {
      for (int32_t pad : {0, 7}) {
        Picture pic(s.w, s.h, pad, s.w * 31 + s.h);
        const int32_t pitch = 2 * (s.w + 1) + 2 * pad;
        Canvas cv(static_cast<size_t>(pitch) * (s.h + 2) + 64);
        RenderPlain(cv, t, pic, s.w, s.h, pitch);
        pic.Cut();
        auto dst = cv.Target();
        Tables tt(t);
        EXPECT_EQ(_ORUYCbCr420ToRGB565(&tt.ctx, pic.planes(), pic.strides(), s.w, s.h, dst.data(), pitch),
                  0u);
        SCOPED_TRACE(testing::Message() << s.w << "x" << s.h << " pad " << pad << " wide " << wide);
        cv.ExpectEqual(dst);
      }
    }
  }
}

TEST(Rgb565ColourStep, LookedUpClampsMatchComparisonsOverEveryReachableSum) {
  // Luma entries 0..65535 plus terms -65536..65535: every sum of a channel.
  for (int32_t sum = -65536; sum <= 131070; ++sum) {
    const int32_t l = std::min(std::max(sum, 0), 65535);
    const scrim::ChromaTerms t{sum - l, sum - l, sum - l};
    const uint16_t want =
        static_cast<uint16_t>(Clamp(sum >> 10, 31) << 11 | Clamp(sum >> 9, 63) << 5 | Clamp(sum >> 10, 31));
    ASSERT_EQ(scrim::Rgb565(l, t), want) << sum;
  }
}

TEST(Rgb565Plain, ClampsAndTheDroppedGreenCarry) {
  Tables t(3, false);
  t.y[10] = 65535;
  t.cr[20] = Tables::Pack(32767, 0);   // red term 65534: red far above 31
  t.cb[30] = Tables::Pack(-32768, 0);  // blue term -65536: blue below 0
  t.y[1] = 16384;
  t.cb[40] = Tables::Pack(0, -32768);  // word 0x00008000
  t.cr[50] = Tables::Pack(0, -32768);  // low halves sum to 0x10000: green term 0, not -131072
  t.y[2] = 0;
  t.cb[60] = Tables::Pack(0, -3);
  t.cr[70] = Tables::Pack(-100, 0);
  const struct {
    uint8_t y, cb, cr;
    uint16_t want;
  } cases[] = {{10, 30, 20, 0xFFE0}, {1, 40, 50, 16 << 11 | 32 << 5 | 16}, {2, 60, 70, 0}};
  for (const auto& c : cases) {
    const uint8_t ys[4] = {c.y, c.y, c.y, c.y}, cb[1] = {c.cb}, cr[1] = {c.cr};
    const uint8_t* planes[3] = {ys, cb, cr};
    uint32_t strides[3] = {2, 1, 1};
    uint16_t out[4];
    _ORUYCbCr420ToRGB565(&t.ctx, planes, strides, 2, 2, reinterpret_cast<uint8_t*>(out), 4);
    for (uint16_t v : out) EXPECT_EQ(v, c.want) << int(c.y);
  }
}

TEST(Rgb565Plain, NothingWrittenWithoutRowsOrColumns) {
  const Tables t(4, false);
  Picture pic(4, 4, 0, 1);
  pic.Y(0, 0), pic.Cb(0, 0), pic.Cr(0, 0);
  pic.Cut();
  std::vector<uint8_t> dst(32, 0x5A);
  Tables tt(t);
  EXPECT_EQ(_ORUYCbCr420ToRGB565(&tt.ctx, pic.planes(), pic.strides(), 4, 0, dst.data(), 8), 0u);
  EXPECT_EQ(_ORUYCbCr420ToRGB565(&tt.ctx, pic.planes(), pic.strides(), 4, -3, dst.data(), 8), 0u);
  EXPECT_EQ(_ORUYCbCr420ToRGB565(&tt.ctx, pic.planes(), pic.strides(), 0, 4, dst.data(), 8), 0u);
  EXPECT_EQ(_ORUYCbCr420ToRGB555(&tt.ctx, pic.planes(), pic.strides(), 4, 0, dst.data(), 8, 0), 0u);
  EXPECT_EQ(dst, std::vector<uint8_t>(32, 0x5A));
}

TEST(Rgb555, KeyedPixelsAreTransparentAndOthersOpaque) {
  for (bool wide : {false, true}) {
    const Tables t(200 + wide, wide);
    for (const Size s : kSizes) {
      Picture pic(s.w, s.h, 3, s.w + 7 * s.h);
      // Key on one pixel's own samples (the bottom-right of the first block).
      const int32_t kx = s.w > 1 ? 1 : 0, ky = s.h > 1 ? 1 : 0;
      const uint32_t key = uint32_t{pic.Y(kx, ky)} << 16 | uint32_t{pic.C(1, 0, 0, pic.stride(1))} << 8 |
                           pic.C(2, 0, 0, pic.stride(1));
      const int32_t pitch = 2 * (s.w + 1) + 4;
      Canvas cv(static_cast<size_t>(pitch) * (s.h + 2) + 64);
      int keyed = 0;
      ForEachBlockPixel(pic, s.w, s.h, [&](int32_t x, int32_t y, uint8_t yv, uint8_t cb, uint8_t cr) {
        const uint16_t v = Ref555(t, yv, cb, cr, key);
        keyed += v == 0;
        if (v != 0) {
          EXPECT_EQ(v & 1, 1);
        }
        cv.Put16(int64_t{y} * pitch + 2 * x, v);
      });
      EXPECT_GE(keyed, 1);
      pic.Cut();
      auto dst = cv.Target();
      Tables tt(t);
      EXPECT_EQ(_ORUYCbCr420ToRGB555(&tt.ctx, pic.planes(), pic.strides(), s.w, s.h, dst.data(), pitch, key),
                0u);
      SCOPED_TRACE(testing::Message() << s.w << "x" << s.h);
      cv.ExpectEqual(dst);
    }
  }
}

TEST(Rgb555, FiveBitGreenAndOpaqueBit) {
  Tables t(5, false);
  t.y[100] = 31 << 10;  // every field 31 with zero terms
  t.cb[0] = 0;
  t.cr[0] = 0;
  const uint8_t ys[4] = {100, 100, 100, 100}, c[1] = {0};
  const uint8_t* planes[3] = {ys, c, c};
  uint32_t strides[3] = {2, 1, 1};
  uint16_t out[4];
  _ORUYCbCr420ToRGB555(&t.ctx, planes, strides, 2, 2, reinterpret_cast<uint8_t*>(out), 4, 0x01000000);
  for (uint16_t v : out) EXPECT_EQ(v, 31 << 11 | 31 << 6 | 31 << 1 | 1);
  // Green 63 in RGB565 terms is 31 here: L >> 10, not >> 9.
  _ORUYCbCr420ToRGB555(&t.ctx, planes, strides, 2, 2, reinterpret_cast<uint8_t*>(out), 4, 100 << 16);
  for (uint16_t v : out) EXPECT_EQ(v, 0);
}

TEST(Rgb565Rot, EveryRotationThroughTheFourCursors) {
  const Tables t(300, false);
  for (int rot = 0; rot <= 5; ++rot) {
    for (const Size s : {Size{2, 2}, Size{8, 4}, Size{6, 10}}) {
      for (int32_t dpad : {0, 6}) {
        Picture pic(s.w, s.h, 5, rot * 100 + s.w);
        const int64_t dw = QuarterTurn(rot) ? s.h : s.w, dh = QuarterTurn(rot) ? s.w : s.h;
        const int64_t stride = 2 * dw + dpad;
        Canvas cv(static_cast<size_t>(stride * dh));
        const RecordOffsets ro = MakeOffsets(rot, s.w, s.h, stride);
        RenderRot(cv, t, pic, s.w, s.h, ro);
        pic.Cut();
        auto dst = cv.Target();
        Tables tt(t);
        ImgPrcRotationRecord rec = MakeRecord(ro, dst.data());
        tt.ctx.rotationRecord = &rec;
        EXPECT_EQ(_ORUYCbCr420ToRGB565Rot(&tt.ctx, pic.planes(), pic.strides(), s.w, s.h), 0u);
        SCOPED_TRACE(testing::Message() << "rotation " << rot << " " << s.w << "x" << s.h << " pad " << dpad);
        cv.ExpectEqual(dst);
        if (dpad != 0) continue;
        // With a tight stride, every pixel is where a plain rotation puts it.
        ForEachBlockPixel(pic, s.w, s.h, [&](int32_t x, int32_t y, uint8_t yv, uint8_t cb, uint8_t cr) {
          const auto [dx, dy] = Rotated(rot, x, y, s.w, s.h);
          uint16_t got;
          memcpy(&got, &dst[dy * stride + 2 * dx], 2);
          EXPECT_EQ(got, Ref565(t, yv, cb, cr)) << x << "," << y;
        });
      }
    }
  }
}

TEST(Rgb565Rot, StepsAreUsedRoundedDownToWholePixels) {
  const Tables t(301, false);
  Picture pic(4, 4, 0, 2);
  Canvas cv(200);
  const RecordOffsets odd = {9, 41, {0, 2, 20, 22}};  // steps used as 8 and 40
  ForEachBlockPixel(pic, 4, 4, [&](int32_t x, int32_t y, uint8_t yv, uint8_t cb, uint8_t cr) {
    cv.Put16(odd.pix[(x & 1) + 2 * (y & 1)] + (x >> 1) * 8 + (y >> 1) * 40, Ref565(t, yv, cb, cr));
  });
  pic.Cut();
  auto dst = cv.Target();
  ImgPrcRotationRecord ro = MakeRecord(odd, dst.data());
  Tables tt(t);
  tt.ctx.rotationRecord = &ro;
  _ORUYCbCr420ToRGB565Rot(&tt.ctx, pic.planes(), pic.strides(), 4, 4);
  cv.ExpectEqual(dst);
}

TEST(Rgb565Rot, MissingRecordIsRefused) {
  Tables t(6, false);
  const uint8_t* planes[3] = {nullptr, nullptr, nullptr};
  uint32_t strides[3] = {0, 0, 0};
  EXPECT_EQ(_ORUYCbCr420ToRGB565Rot(&t.ctx, planes, strides, 4, 4), 0xFFFFFFFFu);
}

}  // namespace
