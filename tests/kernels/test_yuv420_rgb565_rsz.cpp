// Any-ratio resizing kernels (Rsz, RszRot) against a per-pixel reference of
// the bilinear-luma, nearest-chroma sampling, with exact-size sources and
// destinations.
#include <gtest/gtest.h>

#include "kernels/yuv420_rgb16.h"
#include "rgb16_ref.h"

using namespace rgb16test;

namespace {

int32_t Step(int32_t src, int32_t dst) {
  return dst == 1 ? 0 : static_cast<int32_t>((int64_t{src - 1} << 16) / (dst - 1));
}

// Luma at 16.16 position (x, y): down each column with weight wy (values x 2),
// then across with wx; the next column is clamped to the last, the next row
// is not.
uint8_t Luma(Picture& pic, int32_t sw, uint32_t x, uint32_t y) {
  const int64_t xi = x >> 16, yi = y >> 16, xn = std::min<int64_t>(xi + 1, sw - 1);
  const int32_t wx = (x >> 11) & 31, wy = (y >> 11) & 31;
  auto down = [&](int64_t c) {
    const int32_t a = pic.Y(c, yi), b = pic.Y(c, yi + 1);
    return (a * 32 + (b - a) * wy) >> 4;
  };
  const int32_t s0 = down(xi), s1 = down(xn);
  return static_cast<uint8_t>((s1 * wx + s0 * (32 - wx)) >> 6);
}

struct Block {
  uint16_t p[4];  // (0,0), (1,0), (0,1), (1,1)
};

// Output block (m, n) of a resize.
template <class Put>
void ForEachResizedBlock(const Tables& t, Picture& pic, int32_t sw, int32_t sh, int32_t dw, int32_t dh,
                         Put put) {
  const uint32_t sx = Step(sw, dw), sy = Step(sh, dh);
  for (int32_t n = 0; 2 * n < dh; ++n) {
    const uint32_t y0 = 2 * n * sy, y1 = y0 + sy;
    for (int32_t m = 0; 2 * m < dw; ++m) {
      const uint32_t x0 = 2 * m * sx, x1 = x0 + sx;
      const int64_t ccol = ((x0 >> 16) + (x1 >> 16) + 1) >> 2, crow = ((y0 >> 16) + (y1 >> 16) + 1) >> 2;
      const uint8_t cb = pic.Cb(ccol, crow), cr = pic.Cr(ccol, crow);
      Block b;
      b.p[0] = Ref565(t, Luma(pic, sw, x0, y0), cb, cr);
      b.p[1] = Ref565(t, Luma(pic, sw, x1, y0), cb, cr);
      b.p[2] = Ref565(t, Luma(pic, sw, x0, y1), cb, cr);
      b.p[3] = Ref565(t, Luma(pic, sw, x1, y1), cb, cr);
      put(m, n, b);
    }
  }
}

uint64_t Wide(uint16_t lo, uint16_t hi) {
  return static_cast<uint64_t>(static_cast<int64_t>(static_cast<int32_t>(lo | uint32_t{hi} << 16)));
}

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
      ForEachResizedBlock(t, pic, c.sw, c.sh, c.dw, c.dh, [&](int32_t m, int32_t n, const Block& b) {
        cv.Put64(int64_t{2 * n} * pitch + 8 * m, Wide(b.p[0], b.p[1]));
        cv.Put64(int64_t{2 * n + 1} * pitch + 8 * m, Wide(b.p[2], b.p[3]));
      });
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
        const int64_t col = (ro.stepX >> 1) * 2, row = (ro.stepY >> 1) * 2;
        std::vector<uint16_t> grid(c.dw * c.dh);
        ForEachResizedBlock(t, pic, c.sw, c.sh, c.dw, c.dh, [&](int32_t m, int32_t n, const Block& b) {
          for (int i = 0; i < 4; ++i) {
            cv.Put16(ro.pix[i] + m * col + n * row, b.p[i]);
            grid[(2 * n + i / 2) * c.dw + 2 * m + i % 2] = b.p[i];
          }
        });
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
