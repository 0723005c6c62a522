// The frame call (argument checks per format, the planar copy route, routes
// still without a kernel) and the property calls (colour adjustment, colour
// key, Reset).
#include <gtest/gtest.h>
#include <stdint.h>
#include <string.h>

#include <algorithm>
#include <vector>

#include "imageproc/imgprc_alloc.h"
#include "imageproc_test_util.h"

namespace {

TEST(Frame, RecordAndHandleChecks) {
  Instance inst({});
  Picture src, dst;
  MakePlanar(src, 16, 8, 16, 8, 8, 1);
  MakePlanar(dst, 16, 8, 16, 8, 8, 2);
  void* h = inst.handle();
  auto frame = [&](void* handle, uint8_t** sp, uint32_t* dstStrides, uint32_t size, bool noRecord = false) {
    ImgPrcFrameParams f = {size, 0, 0};
    return ORU_IMAGEPROC_ProcessFrame(handle, sp, src.strides, dst.planes, dstStrides,
                                      noRecord ? nullptr : &f);
  };
  EXPECT_EQ(frame(h, src.planes, dst.strides, 13), IMGPRC_E_INVALIDARG);
  EXPECT_EQ(frame(h, src.planes, dst.strides, 12, true), IMGPRC_E_INVALIDARG);
  EXPECT_EQ(frame(nullptr, src.planes, dst.strides, 12), IMGPRC_E_INVALIDARG);
  EXPECT_EQ(frame(h, nullptr, dst.strides, 12), IMGPRC_E_INVALIDARG);
  EXPECT_EQ(frame(h, src.planes, nullptr, 12), IMGPRC_E_INVALIDARG);
  EXPECT_EQ(frame(h, src.planes, dst.strides, 0), IMGPRC_OK);  // size 0 reads as all zero: a plain frame
}

// Each plane a format has must come with an address and a stride; the planes it
// does not have are not looked at. One conversion per input and per output code.
TEST(Frame, PlanesNeededPerFormat) {
  struct Side {
    bool source;
    std::vector<uint32_t> codes;
  };
  const Side sides[] = {{true, {0x000, 0x103, 0x203, 0x303, 0x403, 0x500, 0x800, 0x900}},
                        {false, {0x000, 0x003, 0x004, 0x005, 0x006, 0x007, 0x008, 0x009, 0x00A}}};
  for (const Side& side : sides) {
    const bool source = side.source;
    for (uint32_t code : side.codes) {
      Instance inst({code});
      ASSERT_EQ(inst.result(), IMGPRC_OK);
      const int32_t input = static_cast<int32_t>(code) >> 8, output = code & 0xFF;
      for (int plane = 0; plane < 3; ++plane) {
        for (bool zeroStride : {false, true}) {
          SCOPED_TRACE(testing::Message()
                       << std::hex << "conversion " << code << (source ? " source" : " output") << " plane "
                       << plane << (zeroStride ? " stride 0" : " null"));
          Picture src, dst;
          MakeFor(src, input, 1);
          MakeFor(dst, output, 9);
          Picture& side = source ? src : dst;
          if (zeroStride) {
            side.strides[plane] = 0;
          } else {
            side.planes[plane] = nullptr;
          }
          const uint32_t r = Frame(inst, src, dst);
          if (plane < PlanesOf(source ? input : output)) {
            EXPECT_EQ(r, IMGPRC_E_INVALIDARG);
          } else {
            EXPECT_NE(r, IMGPRC_E_INVALIDARG);
          }
        }
      }
    }
  }
}

TEST(Frame, FormatCodesOutsideTheTablesAreUnexpected) {
  Instance inst({});
  Picture src, dst;
  MakePlanar(src, 16, 8, 16, 8, 8, 1);
  MakePlanar(dst, 16, 8, 16, 8, 8, 2);
  inst.ctx()->format = 0xA00;  // input 10
  EXPECT_EQ(Frame(inst, src, dst), IMGPRC_E_UNEXPECTED);
  inst.ctx()->format = 0x00B;  // output 11
  EXPECT_EQ(Frame(inst, src, dst), IMGPRC_E_UNEXPECTED);
  inst.ctx()->format = 0x000;
  EXPECT_EQ(Frame(inst, src, dst), IMGPRC_OK);
}

TEST(Frame, SameSizePlanarCopyWithoutAllocating) {
  struct Case {
    uint32_t w, h, srcStrides[3], dstStrides[3];
  };
  const Case cases[] = {
      {32, 16, {32, 16, 16}, {32, 16, 16}},  // tight
      {32, 16, {48, 24, 20}, {40, 16, 32}},  // padded
      {31, 17, {31, 16, 16}, {36, 18, 18}},  // odd: copied as 30 x 16
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(testing::Message() << c.w << "x" << c.h);
    Instance inst({0x000, c.w, c.h, c.w, c.h});
    ASSERT_EQ(inst.result(), IMGPRC_OK);
    Picture src, dst, before;
    MakePlanar(src, c.w, c.h, c.srcStrides[0], c.srcStrides[1], c.srcStrides[2], 3);
    MakePlanar(dst, c.w, c.h, c.dstStrides[0], c.dstStrides[1], c.dstStrides[2], 77);
    MakePlanar(before, c.w, c.h, c.dstStrides[0], c.dstStrides[1], c.dstStrides[2], 77);
    const unsigned long allocations = ImgPrcAllocationCount();
    EXPECT_EQ(Frame(inst, src, dst), IMGPRC_OK);
    EXPECT_EQ(ImgPrcAllocationCount(), allocations);
    for (int p = 0; p < 3; ++p) {
      const uint32_t w = c.w & ~1u, h = c.h & ~1u;
      EXPECT_EQ(dst.bytes[p], CopiedRows(before.bytes[p], c.dstStrides[p], src.planes[p], c.srcStrides[p],
                                         p ? w / 2 : w, p ? h / 2 : h))
          << "plane " << p;
    }
    // The destination addressing is set up for every frame, unrotated too.
    EXPECT_EQ(inst.ctx()->rotationRecord->yStart, dst.planes[0]);
    EXPECT_EQ(inst.ctx()->rotationRecord->crStart, dst.planes[2]);
  }
}

// A size of 1 is processed as 0: no pixel to read or to resize from. Every
// route reports not implemented and writes nothing.
TEST(Frame, PictureOnePixelWideOrHighIsRefused) {
  struct Case {
    uint32_t format, sw, sh, dw, dh, rotation;
  };
  const Case cases[] = {{0x003, 1, 8, 8, 8, 0},   {0x003, 8, 1, 8, 8, 0}, {0x003, 1, 248, 3, 245, 1},
                        {0x003, 8, 8, 1, 8, 0},   {0x003, 1, 1, 1, 1, 0}, {0x000, 1, 8, 1, 8, 0},
                        {0x000, 8, 1, 16, 16, 3}, {0x00A, 1, 8, 8, 8, 0}, {0x105, 1, 1, 1, 1, 0},
                        {0x303, 16, 8, 16, 1, 2}};
  for (const Case& c : cases) {
    SCOPED_TRACE(testing::Message() << std::hex << c.format << std::dec << " " << c.sw << "x" << c.sh
                                    << " to " << c.dw << "x" << c.dh << " rotation " << c.rotation);
    Instance inst({c.format, c.sw, c.sh, c.dw, c.dh, c.rotation});
    ASSERT_EQ(inst.result(), IMGPRC_OK);
    const uint32_t side = std::max({c.sw, c.sh, c.dw, c.dh}) * 4;
    Picture src, dst, before;
    for (int p = 0; p < PlanesOf(static_cast<int32_t>(c.format) >> 8); ++p)
      src.AddPlane(p, side, side, side, 1);
    for (int p = 0; p < PlanesOf(c.format & 0xFF); ++p) {
      dst.AddPlane(p, side, side, side, 7);
      before.AddPlane(p, side, side, side, 7);
    }
    EXPECT_EQ(Frame(inst, src, dst, 3), IMGPRC_E_NOTIMPL);
    for (int p = 0; p < 3; ++p) EXPECT_EQ(dst.bytes[p], before.bytes[p]);
  }
}

// The RGB to YCbCr route calls the kernel set-up chose with the source plane
// and stride, the destination planes and strides and the source work size; its
// result is not looked at.
struct RgbToYuvCall {
  int calls = 0;
  const uint8_t* src = nullptr;
  uint32_t srcStride = 0, width = 0, height = 0;
  uint8_t** dstPlanes = nullptr;
  uint32_t* dstStrides = nullptr;
} g_rgbToYuv;

uint32_t FakeRgbToYuv(const uint8_t* src, uint32_t srcStride, uint8_t** dstPlanes, uint32_t* dstStrides,
                      uint32_t width, uint32_t height) {
  g_rgbToYuv = {g_rgbToYuv.calls + 1, src, srcStride, width, height, dstPlanes, dstStrides};
  return 0xFFFFFFFF;
}

TEST(Frame, RgbToYCbCrRouteCallsTheChosenKernel) {
  Instance inst({0x500, 15, 9, 40, 8});  // a size change is ignored on this path
  ASSERT_EQ(inst.result(), IMGPRC_OK);
  inst.ctx()->rgbToYuvKernel = FakeRgbToYuv;
  Picture src, dst;
  MakeFor(src, 5, 1);
  MakeFor(dst, 0, 2);
  g_rgbToYuv = {};
  EXPECT_EQ(Frame(inst, src, dst), IMGPRC_OK);
  EXPECT_EQ(g_rgbToYuv.calls, 1);
  EXPECT_EQ(g_rgbToYuv.src, src.planes[0]);
  EXPECT_EQ(g_rgbToYuv.srcStride, src.strides[0]);
  EXPECT_EQ(g_rgbToYuv.dstPlanes, dst.planes);
  EXPECT_EQ(g_rgbToYuv.dstStrides, dst.strides);
  EXPECT_EQ(g_rgbToYuv.width, 14u);
  EXPECT_EQ(g_rgbToYuv.height, 8u);
}

// ---- properties -------------------------------------------------------------------

ImgPrcColorAdjust GetAdjust(const Instance& inst, uint32_t* result) {
  ImgPrcColorAdjust a = {-1, -1, -1};
  uint32_t written = 0;
  *result = ORU_IMAGEPROC_Get(inst.handle(), IMGPRC_PROP_COLOR_ADJUST, &a, sizeof a, &written);
  EXPECT_EQ(written, 12u);
  return a;
}

TEST(Properties, ColorAdjustSizeRules) {
  Instance inst({});
  EXPECT_EQ(SetAdjust(inst, 150, 100, 90, 13), IMGPRC_E_INVALIDARG);
  EXPECT_EQ(inst.ctx()->adjustActive, 0u);
  // Eight bytes: saturation reads as 0.
  EXPECT_EQ(SetAdjust(inst, 150, 100, 90, 8), IMGPRC_OK);
  uint32_t r;
  ImgPrcColorAdjust got = GetAdjust(inst, &r);
  EXPECT_EQ(r, IMGPRC_OK);
  EXPECT_EQ(got.brightness, 150);
  EXPECT_EQ(got.contrast, 100);
  EXPECT_EQ(got.saturation, 0);

  ImgPrcColorAdjust a;
  uint32_t written = 0;
  EXPECT_EQ(ORU_IMAGEPROC_Get(inst.handle(), IMGPRC_PROP_COLOR_ADJUST, &a, 11, &written),
            IMGPRC_E_INVALIDARG);
  EXPECT_EQ(ORU_IMAGEPROC_Get(inst.handle(), IMGPRC_PROP_COLOR_ADJUST, &a, 16, &written), IMGPRC_OK);
  EXPECT_EQ(written, 12u);
  EXPECT_EQ(ORU_IMAGEPROC_Set(nullptr, IMGPRC_PROP_COLOR_ADJUST, &a, 12), IMGPRC_E_INVALIDARG);
  EXPECT_EQ(ORU_IMAGEPROC_Get(nullptr, IMGPRC_PROP_COLOR_ADJUST, &a, 12, &written), IMGPRC_E_INVALIDARG);
}

TEST(Properties, UnknownIdsAreNotFound) {
  Instance inst({});
  uint32_t v = 0, written = 0;
  for (uint32_t id : {0u, 3u, 1027u}) {
    EXPECT_EQ(ORU_IMAGEPROC_Set(inst.handle(), id, &v, sizeof v), IMGPRC_E_NOTFOUND) << id;
    EXPECT_EQ(ORU_IMAGEPROC_Get(inst.handle(), id, &v, sizeof v, &written), IMGPRC_E_NOTFOUND) << id;
  }
}

TEST(Properties, GetAdjustReportsWhetherTheConversionSupportsIt) {
  struct Case {
    uint32_t format, want;
  };
  const Case cases[] = {{0x000, IMGPRC_OK},     {0x003, IMGPRC_OK},     {0x00A, IMGPRC_OK},
                        {0x209, IMGPRC_OK},     {0x006, IMGPRC_E_FAIL}, {0x007, IMGPRC_E_FAIL},
                        {0x008, IMGPRC_E_FAIL}, {0x300, IMGPRC_E_FAIL}, {0x303, IMGPRC_E_FAIL},
                        {0x800, IMGPRC_E_FAIL}, {0x900, IMGPRC_E_FAIL}};
  for (const Case& c : cases) {
    Instance inst({c.format});
    ASSERT_EQ(inst.result(), IMGPRC_OK);
    ASSERT_EQ(SetAdjust(inst, 140, 120, 200), IMGPRC_OK);
    uint32_t r;
    ImgPrcColorAdjust got = GetAdjust(inst, &r);  // filled either way
    EXPECT_EQ(r, c.want) << std::hex << c.format;
    EXPECT_EQ(got.brightness, 140);
    EXPECT_EQ(got.contrast, 120);
    EXPECT_EQ(got.saturation, 200);
  }
}

TEST(Properties, AdjustTablesComeWithTheFirstChangeAndStay) {
  Instance inst({});
  unsigned long allocations = ImgPrcAllocationCount();
  EXPECT_EQ(SetAdjust(inst, 128, 128, 128), IMGPRC_OK);  // neutral on a fresh instance: nothing happens
  EXPECT_EQ(ImgPrcAllocationCount(), allocations);
  EXPECT_EQ(inst.ctx()->adjustActive, 0u);
  EXPECT_EQ(inst.ctx()->adjustTableBlock, nullptr);
  ASSERT_EQ(SetAdjust(inst, 150, 128, 128), IMGPRC_OK);
  const ImgPrcContext* ctx = inst.ctx();
  EXPECT_EQ(ctx->adjustActive, 1u);
  ASSERT_NE(ctx->adjustTableBlock, nullptr);
  EXPECT_EQ(ctx->lumaAdjustTable, ctx->adjustTableBlock);
  EXPECT_EQ(ctx->chromaAdjustTable, ctx->adjustTableBlock + 256);
  EXPECT_EQ(ctx->lumaAdjustTable[0], 44);  // offset 2 x 22
  EXPECT_EQ(ctx->rangeTableY[16], 6558);   // 44 x 1.1644 x 128, +0.5, truncated
  allocations = ImgPrcAllocationCount();
  ASSERT_EQ(SetAdjust(inst, 128, 128, 128), IMGPRC_OK);
  EXPECT_EQ(ctx->adjustActive, 0u);
  EXPECT_NE(ctx->adjustTableBlock, nullptr);
  EXPECT_EQ(ctx->rangeTableY[16], 0);
  EXPECT_EQ(ctx->rangeTableY[235], 32640);
  // A second adjustment reuses the block.
  ASSERT_EQ(SetAdjust(inst, 100, 128, 128), IMGPRC_OK);
  EXPECT_EQ(ImgPrcAllocationCount(), allocations);
  EXPECT_EQ(ctx->adjustActive, 1u);
}

TEST(Properties, ResetKeepsTheStoredValues) {
  Instance inst({});
  ASSERT_EQ(SetAdjust(inst, 150, 128, 128), IMGPRC_OK);
  const long live = ImgPrcLiveBlockCount();
  EXPECT_EQ(ORU_IMAGEPROC_Reset(inst.handle()), IMGPRC_OK);
  const ImgPrcContext* ctx = inst.ctx();
  EXPECT_EQ(ctx->adjustActive, 0u);
  EXPECT_EQ(ctx->adjustTableBlock, nullptr);
  EXPECT_EQ(ctx->lumaAdjustTable, nullptr);
  EXPECT_EQ(ImgPrcLiveBlockCount(), live - 1);
  EXPECT_EQ(ctx->rangeTableY[16], 0);
  uint32_t r;
  EXPECT_EQ(GetAdjust(inst, &r).brightness, 150);
  // The same values again count as no change: the adjustment stays off.
  EXPECT_EQ(SetAdjust(inst, 150, 128, 128), IMGPRC_OK);
  EXPECT_EQ(ctx->adjustActive, 0u);
  EXPECT_EQ(ctx->adjustTableBlock, nullptr);
  EXPECT_EQ(ctx->rangeTableY[16], 0);
  // Different values take effect.
  EXPECT_EQ(SetAdjust(inst, 151, 128, 128), IMGPRC_OK);
  EXPECT_EQ(ctx->adjustActive, 1u);
  EXPECT_EQ(ORU_IMAGEPROC_Reset(nullptr), IMGPRC_E_INVALIDARG);
}

TEST(Properties, AdjustOutOfMemoryChangesNothing) {
  Instance inst({});
  ImgPrcFailAllocation(1);
  EXPECT_EQ(SetAdjust(inst, 150, 128, 128), IMGPRC_E_OUTOFMEMORY);
  ImgPrcFailAllocation(0);
  uint32_t r;
  ImgPrcColorAdjust got = GetAdjust(inst, &r);
  EXPECT_EQ(got.brightness, 128);
  EXPECT_EQ(inst.ctx()->adjustActive, 0u);
  EXPECT_EQ(inst.ctx()->rangeTableY[16], 0);
}

TEST(Properties, ColorKey) {
  for (uint32_t format : {0x003u, 0x00Au}) {
    Instance inst({format});
    uint32_t key = 0x00EB8080, got = 0, written = 0;
    EXPECT_EQ(ORU_IMAGEPROC_Set(inst.handle(), IMGPRC_PROP_COLOR_KEY, &key, 3), IMGPRC_E_INVALIDARG);
    EXPECT_EQ(ORU_IMAGEPROC_Set(inst.handle(), IMGPRC_PROP_COLOR_KEY, &key, 4), IMGPRC_OK);
    EXPECT_EQ(inst.ctx()->colorKey, 0x00EB8080u);  // kept as given, RGB555 included
    EXPECT_EQ(ORU_IMAGEPROC_Get(inst.handle(), IMGPRC_PROP_COLOR_KEY, &got, 3, &written),
              IMGPRC_E_INVALIDARG);
    EXPECT_EQ(ORU_IMAGEPROC_Get(inst.handle(), IMGPRC_PROP_COLOR_KEY, &got, 8, &written), IMGPRC_OK);
    EXPECT_EQ(got, 0x00EB8080u);
    EXPECT_EQ(written, 4u);
  }
}

}  // namespace
