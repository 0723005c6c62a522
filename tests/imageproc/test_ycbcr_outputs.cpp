// YCbCr 4:2:0 input to YCbCr outputs through the frame call: planar copy,
// rotation, resizing and adjustment against one reference walk, and the
// YUY2, UYVY and NV12 packings against hand-packed bytes.
#include <gtest/gtest.h>

#include <algorithm>

#include "imageproc_test_util.h"
#include "kernels/yuv420_planar.h"
#include "support/pictures.h"

namespace {

using scrimtest::I420;
using scrimtest::Plane;
using scrimtest::Rng;

int32_t Step(int32_t s, int32_t d) { return d == 1 ? 0 : ((s - 1) << 16) / (d - 1); }

// Bilinear luma at 16.16 position (x, y): down with 5-bit weights, then across;
// the column right of x is clamped, the row below y is not.
int RefLuma(const Plane& p, uint32_t x, uint32_t y) {
  const int xi = x >> 16, yi = y >> 16, xn = std::min(xi + 1, p.width - 1), wx = (x >> 11) & 31,
            wy = (y >> 11) & 31;
  auto down = [&](int c) { return (p.at(c, yi) * (32 - wy) + p.at(c, yi + 1) * wy) >> 4; };
  return ((down(xi) * (32 - wx) + down(xn) * wx) >> 6) & 255;
}

// Three destination planes of a dw x dh picture (turned for quarter turns),
// padded and filled with noise.
struct Dst420 {
  Plane p[3];
  uint8_t* planes[3];
  uint32_t strides[3];
  Dst420(int w, int h, bool turned, Rng& rng) {
    for (int i = 0; i < 3; ++i) {
      const int pw = i ? w / 2 : w, ph = i ? h / 2 : h;
      p[i] = turned ? Plane(ph, pw, ph + 5) : Plane(pw, ph, pw + 5);
      rng.fill(p[i].data);
      planes[i] = p[i].data.data();
      strides[i] = static_cast<uint32_t>(p[i].stride);
    }
  }
};

TEST(PlanarOutput, RotatedResizedAdjustedAgainstReference) {
  struct Size {
    int sw, sh, dw, dh;
  };
  const Size sizes[] = {{14, 6, 14, 6}, {14, 6, 10, 4}, {10, 4, 18, 6},
                        {6, 2, 6, 2},   {20, 10, 6, 2}, {8, 4, 16, 8}};
  Rng rng(11);
  for (const Size& s : sizes) {
    for (uint32_t rot = 0; rot < 6; ++rot) {
      for (bool adjust : {false, true}) {
        SCOPED_TRACE(testing::Message() << s.sw << "x" << s.sh << " to " << s.dw << "x" << s.dh
                                        << " rotation " << rot << (adjust ? " adjusted" : ""));
        Instance inst({0x000, uint32_t(s.sw), uint32_t(s.sh), uint32_t(s.dw), uint32_t(s.dh), rot});
        ASSERT_EQ(inst.result(), IMGPRC_OK);
        if (adjust) {
          ASSERT_EQ(SetAdjust(inst, 150, 170, 90), IMGPRC_OK);
        }
        I420 src(s.sw, s.sh, 3, 1);
        src.randomize(rng);
        const bool turned = rot == 1 || rot == 2;
        Dst420 dst(s.dw, s.dh, turned, rng), want(0, 0, false, rng);
        for (int i = 0; i < 3; ++i) want.p[i] = dst.p[i];
        const Plane* in[3] = {&src.y, &src.cb, &src.cr};
        const bool same = s.sw == s.dw && s.sh == s.dh;
        const uint32_t sx = Step(s.sw, s.dw), sy = Step(s.sh, s.dh);
        for (int i = 0; i < 3; ++i) {
          const uint8_t* lut =
              adjust ? (i ? inst.ctx()->chromaAdjustTable : inst.ctx()->lumaAdjustTable) : nullptr;
          const int ow = i ? s.dw / 2 : s.dw, oh = i ? s.dh / 2 : s.dh;
          for (int oy = 0; oy < oh; ++oy) {
            for (int ox = 0; ox < ow; ++ox) {
              int v;
              if (same) {
                v = in[i]->at(ox, oy);
              } else if (i == 0) {
                v = RefLuma(src.y, (ox & ~1) * sx + (ox & 1) * sx, (oy & ~1) * sy + (oy & 1) * sy);
              } else {  // nearest to the block centre
                const uint32_t x0 = 2 * ox * sx, y0 = 2 * oy * sy;
                v = in[i]->at(((x0 >> 16) + ((x0 + sx) >> 16) + 1) >> 2,
                              ((y0 >> 16) + ((y0 + sy) >> 16) + 1) >> 2);
              }
              int col, row;
              scrimtest::Rotated(rot, ox, oy, ow, oh, &col, &row);
              want.p[i].at(col, row) = static_cast<uint8_t>(lut ? lut[v] : v);
            }
          }
        }
        EXPECT_EQ(Frame(inst, src.planes, src.strides, dst.planes, dst.strides), IMGPRC_OK);
        for (int i = 0; i < 3; ++i) EXPECT_EQ(dst.p[i].data, want.p[i].data) << "plane " << i;
      }
    }
  }
}

// Identity tables copy; one row gets no chroma; a missing plane writes nothing.
TEST(PlanarOutput, AdjustKernelEdges) {
  uint8_t identity[256];
  for (int i = 0; i < 256; ++i) identity[i] = static_cast<uint8_t>(i);
  ImgPrcContext ctx = {};
  ctx.lumaAdjustTable = ctx.chromaAdjustTable = identity;
  Rng rng(5);
  for (int h : {6, 1}) {
    I420 src(10, h, 2);
    src.randomize(rng);
    Dst420 dst(10, std::max(h, 2), false, rng);
    Plane want[3] = {dst.p[0], dst.p[1], dst.p[2]};
    uint8_t* const missing[3] = {dst.planes[0], nullptr, dst.planes[2]};
    EXPECT_EQ(_ORUYCbCrAdjust(&ctx, src.planes, src.strides, 10, h, missing, dst.strides), 0xFFFFFFFFu);
    EXPECT_EQ(dst.p[0].data, want[0].data);
    const Plane* from[3] = {&src.y, &src.cb, &src.cr};
    for (int i = 0; i < 3; ++i)
      for (int y = 0; y < (i ? h / 2 : h); ++y)
        for (int x = 0; x < (i ? 5 : 10); ++x) want[i].at(x, y) = from[i]->at(x, y);
    EXPECT_EQ(_ORUYCbCrAdjust(&ctx, src.planes, src.strides, 10, h, dst.planes, dst.strides), 0u);
    for (int i = 0; i < 3; ++i) EXPECT_EQ(dst.p[i].data, want[i].data) << "height " << h << " plane " << i;
  }
  EXPECT_EQ(_ORUYCbCr420Rot(nullptr, nullptr, nullptr, 2, 2), 0xFFFFFFFFu);
  EXPECT_EQ(_ORUYCbCr420RszRot(nullptr, nullptr, nullptr, 2, 2, 4, 4), 0xFFFFFFFFu);
}

// YUY2 writes row pairs and whole groups of 8 pixels; UYVY every row, pair by
// pair up to an aligned luma address, then whole groups of 8.
TEST(PackedOutput, Yuy2AndUyvyAgainstHandPackedBytes) {
  Rng rng(3);
  for (int lumaOffset : {0, 2, 3, 6}) {
    for (bool uyvy : {false, true}) {
      const int w = 22, h = 6;
      I420 src(w + lumaOffset, h, 1);
      src.randomize(rng);
      uint8_t* planes[3] = {src.planes[0] + lumaOffset, src.planes[1], src.planes[2]};
      Plane dst(2 * w, h, 2 * w + 4), want(0, 0, 0);
      rng.fill(dst.data);
      want = dst;
      for (int r = 0; r < (uyvy ? h : h / 2 * 2); ++r) {
        const uintptr_t addr = reinterpret_cast<uintptr_t>(planes[0] + r * src.strides[0]);
        const int head = uyvy ? (addr & 1 ? w / 2 : std::min<int>(w / 2, ((8 - addr % 8) % 8) / 2)) : 0;
        const int pairs = head + (w - 2 * head) / 8 * 4;
        for (int k = 0; k < pairs; ++k) {
          const uint8_t y0 = planes[0][r * src.strides[0] + 2 * k],
                        y1 = planes[0][r * src.strides[0] + 2 * k + 1];
          const uint8_t cb = src.cb.at(k, r / 2), cr = src.cr.at(k, r / 2);
          const uint8_t yuy2[4] = {y0, cb, y1, cr}, uyvy4[4] = {cb, y0, cr, y1};
          for (int b = 0; b < 4; ++b) want.at(4 * k + b, r) = uyvy ? uyvy4[b] : yuy2[b];
        }
      }
      auto kernel = uyvy ? _ORUYCbCr420ToUYVY : _ORUYCbCr420ToYUY2;
      EXPECT_EQ(kernel(dst.data.data(), dst.stride, planes, src.strides, w, h), 0u);
      EXPECT_EQ(dst.data, want.data) << "offset " << lumaOffset << (uyvy ? " UYVY" : " YUY2");
    }
  }
  // Through the frame call, and a one-row picture writes nothing.
  I420 src(16, 2);
  src.randomize(rng);
  Plane dst(32, 2, 32), before(0, 0, 0);
  before = dst;
  uint8_t* dstPlanes[3] = {dst.data.data(), nullptr, nullptr};
  uint32_t dstStrides[3] = {32, 0, 0};
  EXPECT_EQ(_ORUYCbCr420ToYUY2(dst.data.data(), 32, src.planes, src.strides, 16, 1), 0u);
  EXPECT_EQ(dst.data, before.data);
  Instance inst({0x006, 16, 2, 16, 2});
  EXPECT_EQ(Frame(inst, src.planes, src.strides, dstPlanes, dstStrides), IMGPRC_OK);
  EXPECT_EQ(dst.at(0, 1), src.y.at(0, 1));
  EXPECT_EQ(dst.at(31, 1), src.cr.at(7, 0));
}

// I420 to NV12 and back is the identity on the picture; NV12 chroma is Cb, Cr pairs.
TEST(PackedOutput, Nv12RoundTrip) {
  Rng rng(9);
  for (int h : {6, 2}) {
    const int w = 38;  // 19 chroma pairs: whole groups of 16 and single pairs
    I420 src(w, h, 3), back(w, h, 5);
    src.randomize(rng);
    back.randomize(rng);
    Plane nv[2] = {Plane(w, h, w + 2), Plane(w, h / 2, w + 6)};
    uint8_t* nvPlanes[3] = {nv[0].data.data(), nv[1].data.data(), nullptr};
    uint32_t nvStrides[3] = {uint32_t(nv[0].stride), uint32_t(nv[1].stride), 0};
    Instance to({0x008, uint32_t(w), uint32_t(h), uint32_t(w), uint32_t(h)});
    Instance from({0x800, uint32_t(w), uint32_t(h), uint32_t(w), uint32_t(h)});
    EXPECT_EQ(Frame(to, src.planes, src.strides, nvPlanes, nvStrides), IMGPRC_OK);
    for (int k = 0; k < w / 2; ++k) {
      EXPECT_EQ(nv[1].at(2 * k, h / 2 - 1), src.cb.at(k, h / 2 - 1));
      EXPECT_EQ(nv[1].at(2 * k + 1, h / 2 - 1), src.cr.at(k, h / 2 - 1));
    }
    EXPECT_EQ(Frame(from, nvPlanes, nvStrides, back.planes, back.strides), IMGPRC_OK);
    for (int y = 0; y < h; ++y)
      for (int x = 0; x < w; ++x) ASSERT_EQ(back.y.at(x, y), src.y.at(x, y)) << x << "," << y;
    for (int y = 0; y < h / 2; ++y)
      for (int x = 0; x < w / 2; ++x)
        ASSERT_TRUE(back.cb.at(x, y) == src.cb.at(x, y) && back.cr.at(x, y) == src.cr.at(x, y))
            << x << "," << y;
  }
}

}  // namespace
