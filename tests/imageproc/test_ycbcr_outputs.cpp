// YCbCr 4:2:0 to YCbCr outputs: the planar copy; rotation, resizing and
// adjustment against one reference walk; YUY2, UYVY and NV12 packings.
#include <gtest/gtest.h>

#include <algorithm>

#include "imageproc/imgprc_alloc.h"
#include "imageproc_test_util.h"
#include "kernels/yuv420_planar.h"
#include "support/pictures.h"

namespace {

using scrimtest::I420;
using scrimtest::Plane;
using scrimtest::Rng;

// Not tight: row by row (chroma halved, none for one row). Tight: w x h luma
// bytes and (w x h) / 4 per chroma plane (6 x 3: 4 bytes, one more than a row
// walk), one block when both sides are contiguous. Bytes outside left alone.
TEST(PlanarCopy, RowByRowOrWholePlanes) {
  enum { kRows, kTight, kSourceBlock, kBothBlocks };
  const struct {
    uint32_t w, h, src[3], dst[3];
    int kind;
  } cases[] = {{32, 10, {40, 24, 28}, {48, 20, 32}, kRows},   {32, 10, {40, 20, 20}, {40, 20, 20}, kRows},
               {7, 5, {9, 5, 4}, {11, 3, 6}, kRows},          {16, 6, {16, 8, 8}, {20, 8, 8}, kRows},
               {16, 6, {16, 8, 10}, {16, 8, 10}, kRows},      {16, 6, {16, 8, 8}, {16, 8, 10}, kRows},
               {16, 1, {24, 16, 16}, {24, 16, 16}, kRows},    {16, 0, {24, 16, 16}, {24, 16, 16}, kRows},
               {6, 8, {6, 3, 3}, {6, 3, 3}, kTight},          {6, 3, {6, 3, 3}, {6, 3, 3}, kTight},
               {12, 4, {12, 6, 6}, {12, 6, 6}, kSourceBlock}, {16, 8, {16, 8, 8}, {16, 8, 8}, kBothBlocks},
               {16, 1, {16, 8, 8}, {16, 8, 8}, kBothBlocks}};
  for (const auto& c : cases) {
    const uint32_t size = c.w * c.h, rows = c.h < 2 ? 0 : c.h / 2;
    auto make = [&](Picture& pic, const uint32_t* strides, bool block, uint8_t seed) {
      if (block) {
        pic.AddPlane(0, size + size / 4 * 2, 1, 0, seed);
        pic.planes[1] = pic.planes[0] + size;
        pic.planes[2] = pic.planes[1] + size / 4;
      }
      for (int p = 0; p < 3 && !block; ++p) {
        if (c.kind != kRows) pic.AddPlane(p, p ? size / 4 : size, 1, 0, static_cast<uint8_t>(seed + p));
        if (c.kind == kRows) pic.AddPlane(p, p ? c.w / 2 : c.w, p ? rows : c.h, strides[p], seed + 7 * p);
      }
      std::copy(strides, strides + 3, pic.strides);
    };
    Picture src, dst;
    make(src, c.src, c.kind >= kSourceBlock, 1);
    make(dst, c.dst, c.kind == kBothBlocks, 200);
    std::vector<uint8_t> want[3];
    for (int p = 0; p < 3; ++p) {
      const size_t n = c.kind != kRows ? (p ? size / 4 : size) : dst.bytes[p].size();
      want[p].assign(dst.planes[p], dst.planes[p] + n);
      for (uint32_t y = 0; y < (p ? rows : c.h) && c.kind == kRows; ++y)
        std::copy_n(src.planes[p] + y * c.src[p], p ? c.w / 2 : c.w, &want[p][y * c.dst[p]]);
      if (c.kind != kRows) want[p].assign(src.planes[p], src.planes[p] + n);
    }
    EXPECT_EQ(_ORUYCbCr420Copy(src.planes, src.strides, c.w, c.h, dst.planes, dst.strides), 0u);
    for (int p = 0; p < 3; ++p) {
      EXPECT_EQ(std::vector<uint8_t>(dst.planes[p], dst.planes[p] + want[p].size()), want[p])
          << c.w << "x" << c.h << " strides " << c.src[0] << "/" << c.src[1] << " plane " << p;
    }
  }
}

TEST(PlanarOutput, RotatedResizedAdjustedAgainstReference) {
  const int sizes[][4] = {{14, 6, 14, 6}, {14, 6, 10, 4}, {10, 4, 18, 6},   {6, 2, 6, 2},
                          {20, 10, 6, 2}, {8, 4, 16, 8},  {50, 34, 50, 34}, {14, 6, 10, 8}};
  Rng rng(11);
  for (const auto& s : sizes) {
    const int sw = s[0], sh = s[1], dw = s[2], dh = s[3];
    for (uint32_t rot = 0; rot < 6; ++rot) {
      for (bool adjust : {false, true}) {
        SCOPED_TRACE(testing::Message() << sw << "x" << sh << " to " << dw << "x" << dh << " rotation " << rot
                                        << (adjust ? " adjusted" : ""));
        Instance inst({0x000, uint32_t(sw), uint32_t(sh), uint32_t(dw), uint32_t(dh), rot});
        if (adjust) {
          ASSERT_EQ(SetAdjust(inst, 150, 170, 90), IMGPRC_OK);
        }
        I420 src(sw, sh, 3, 1), plain(dw, dh), dst = rot == 1 || rot == 2 ? I420(dh, dw, 5) : I420(dw, dh, 5);
        dst.cr = Plane(dst.cr.width, dst.cr.height, dst.cr.stride + 2);  // chroma strides differ
        dst.planes[2] = dst.cr.data.data(), dst.strides[2] += 2;
        src.randomize(rng);
        dst.randomize(rng);
        I420 want = dst;
        const Plane* in[3] = {&src.y, &src.cb, &src.cr};
        Plane* out[3] = {&plain.y, &plain.cb, &plain.cr};
        const uint32_t sx = Step(sw, dw), sy = Step(sh, dh);
        auto luma = [&](int x, int y) { return src.y.at(x, y); };  // the row below is not clamped
        for (int i = 0; i < 3; ++i) {
          const uint8_t* lut = i ? inst.ctx()->chromaAdjustTable : inst.ctx()->lumaAdjustTable;
          for (int oy = 0; oy < (i ? dh / 2 : dh); ++oy) {
            for (int ox = 0; ox < (i ? dw / 2 : dw); ++ox) {
              const uint32_t x0 = 2 * ox * sx, y0 = 2 * oy * sy;  // chroma: nearest to the block centre
              const int v = sw == dw && sh == dh ? in[i]->at(ox, oy)
                            : i == 0 ? Bilinear(luma, sw, sh, ox * sx, oy * sy, 4, false) >> 6 & 255
                                     : in[i]->at(((x0 >> 16) + ((x0 + sx) >> 16) + 1) >> 2,
                                                 ((y0 >> 16) + ((y0 + sy) >> 16) + 1) >> 2);
              out[i]->at(ox, oy) = static_cast<uint8_t>(adjust ? lut[v] : v);
            }
          }
        }
        scrimtest::Turn(rot, plain, want);
        const unsigned long allocations = ImgPrcAllocationCount();
        EXPECT_EQ(Frame(inst, src.planes, src.strides, dst.planes, dst.strides), IMGPRC_OK);
        EXPECT_EQ(ImgPrcAllocationCount(), allocations);
        EXPECT_TRUE(scrimtest::SamePlanes(dst, want));
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
  I420 src(10, 1, 2), dst(10, 2, 3);  // one row: no chroma rows (longer pictures: the frame tests)
  src.randomize(rng);
  dst.randomize(rng);
  I420 want = dst;
  uint8_t* const missing[3] = {dst.planes[0], nullptr, dst.planes[2]};
  EXPECT_EQ(_ORUYCbCrAdjust(&ctx, src.planes, src.strides, 10, 1, missing, dst.strides), 0xFFFFFFFFu);
  EXPECT_TRUE(scrimtest::SamePlanes(dst, want));
  scrimtest::Turn(0, src, want);
  EXPECT_EQ(_ORUYCbCrAdjust(&ctx, src.planes, src.strides, 10, 1, dst.planes, dst.strides), 0u);
  EXPECT_TRUE(scrimtest::SamePlanes(dst, want));
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
  Instance inst({0x006, 16, 2, 16, 2});  // through the frame call: the destination comes first
  Picture src, dst;
  MakeFor(src, 0, 1);
  MakeFor(dst, 6, 2);
  EXPECT_EQ(Frame(inst, src, dst), IMGPRC_OK);
  EXPECT_EQ(dst.planes[0][64], src.planes[0][64]);      // row 1 (strides 64): first luma
  EXPECT_EQ(dst.planes[0][64 + 31], src.planes[2][7]);  // and the eighth pair's Cr
}

// I420 to NV12 and back is the identity on the picture; NV12 chroma is Cb, Cr pairs.
TEST(PackedOutput, Nv12RoundTrip) {
  Rng rng(9);
  for (int h : {6, 2}) {
    const int w = 38;  // 19 chroma pairs: whole groups of 16 and single pairs
    I420 src(w, h, 3), back(w, h, 3);
    src.randomize(rng);
    back.randomize(rng);
    I420 want = back;
    scrimtest::Turn(0, src, want);
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
    EXPECT_TRUE(scrimtest::SamePlanes(back, want)) << "height " << h;
  }
}

}  // namespace
