// The frame call (argument checks per format, routes still without a kernel) and the property calls (colour
// adjustment, colour key, Reset).
#include <gtest/gtest.h>
#include <stdint.h>

#include <algorithm>
#include <vector>

#include "imageproc/imgprc_alloc.h"
#include "imageproc_test_util.h"

namespace {

TEST(Frame, RecordHandleAndFormatChecks) {
  Instance inst({});
  Picture src, dst;
  MakeFor(src, 0, 1);
  MakeFor(dst, 0, 2);
  auto frame = [&](void* handle, uint8_t** sp, uint32_t* dstStrides, uint32_t size, bool record = true) {
    ImgPrcFrameParams f = {size, 0, 0};
    return ORU_IMAGEPROC_ProcessFrame(handle, sp, src.strides, dst.planes, dstStrides, record ? &f : nullptr);
  };
  EXPECT_EQ(frame(inst.handle(), src.planes, dst.strides, 13), IMGPRC_E_INVALIDARG);
  EXPECT_EQ(frame(inst.handle(), src.planes, dst.strides, 12, false), IMGPRC_E_INVALIDARG);
  EXPECT_EQ(frame(nullptr, src.planes, dst.strides, 12), IMGPRC_E_INVALIDARG);
  EXPECT_EQ(frame(inst.handle(), nullptr, dst.strides, 12), IMGPRC_E_INVALIDARG);
  EXPECT_EQ(frame(inst.handle(), src.planes, nullptr, 12), IMGPRC_E_INVALIDARG);
  EXPECT_EQ(frame(inst.handle(), src.planes, dst.strides, 0), IMGPRC_OK);  // size 0 reads as a plain frame
  inst.ctx()->format = 0xA00;  // codes outside the tables: input 10, output 11
  EXPECT_EQ(Frame(inst, src, dst), IMGPRC_E_UNEXPECTED);
  inst.ctx()->format = 0x00B;
  EXPECT_EQ(Frame(inst, src, dst), IMGPRC_E_UNEXPECTED);
}

// Each plane a format has must come with an address and a stride; the planes it
// does not have are not looked at. One conversion per input and per output code.
TEST(Frame, PlanesNeededPerFormat) {
  for (uint32_t code : {0x103u, 0x203u, 0x303u, 0x403u, 0x500u, 0x800u, 0x900u, 0x000u, 0x004u, 0x005u,
                        0x006u, 0x007u, 0x008u, 0x009u, 0x00Au}) {
    Instance inst({code});
    const int32_t input = static_cast<int32_t>(code) >> 8, output = code & 0xFF;
    for (int i = 0; i < 12; ++i) {
      const bool source = i < 6, zeroStride = i % 2;
      const int plane = i % 6 / 2;
      Picture src, dst;
      MakeFor(src, input, 1);
      MakeFor(dst, output, 9);
      Picture& side = source ? src : dst;
      if (zeroStride) side.strides[plane] = 0;
      if (!zeroStride) side.planes[plane] = nullptr;
      const uint32_t r = Frame(inst, src, dst);
      EXPECT_EQ(r == IMGPRC_E_INVALIDARG, plane < PlanesOf(source ? input : output))
          << std::hex << "conversion " << code << (source ? " source" : " output") << " plane " << plane
          << (zeroStride ? " stride 0" : " null");
    }
  }
}

// A size of 1 is processed as 0: no pixel to read or to resize from. Every
// route reports not implemented and writes nothing.
TEST(Frame, PictureOnePixelWideOrHighIsRefused) {
  const struct {
    uint32_t format, sw, sh, dw, dh, rotation;
  } cases[] = {
      {0x003, 1, 8, 8, 8, 0}, {0x000, 8, 1, 16, 16, 3}, {0x003, 8, 8, 1, 8, 0}, {0x303, 16, 8, 16, 1, 2}};
  for (const auto& c : cases) {
    Instance inst({c.format, c.sw, c.sh, c.dw, c.dh, c.rotation});
    const uint32_t side = std::max({c.sw, c.sh, c.dw, c.dh}) * 4;
    Picture src, dst;
    MakeFor(src, static_cast<int32_t>(c.format) >> 8, 1, side);
    MakeFor(dst, c.format & 0xFF, 7, side);
    const std::vector<uint8_t> before = dst.bytes[0];
    EXPECT_EQ(Frame(inst, src, dst, 3), IMGPRC_E_NOTIMPL)
        << std::hex << c.format << std::dec << " " << c.sw << "x" << c.sh << " to " << c.dw << "x" << c.dh;
    EXPECT_EQ(dst.bytes[0], before);
  }
}

// ---- properties -------------------------------------------------------------------

ImgPrcColorAdjust GetAdjust(const Instance& inst, uint32_t* result = nullptr, uint32_t size = 12) {
  ImgPrcColorAdjust a[2] = {{-1, -1, -1}, {-1, -1, -1}};
  uint32_t written = 0, r = ORU_IMAGEPROC_Get(inst.handle(), IMGPRC_PROP_COLOR_ADJUST, a, size, &written);
  if (result) *result = r;
  EXPECT_EQ(written, r == IMGPRC_E_INVALIDARG ? 0u : 12u);
  return a[0];
}

// Get fills the values for every conversion but reports whether it adjusts;
// an out-of-memory Set keeps the old values and tables.
TEST(Properties, ColorAdjustSizeRulesSupportAndUnknownIds) {
  for (uint32_t format : {0x000u, 0x003u, 0x00Au, 0x209u, 0x006u, 0x007u, 0x008u, 0x300u, 0x303u, 0x800u}) {
    Instance inst({format});
    ImgPrcFailAllocation(1);
    EXPECT_EQ(SetAdjust(inst, 150, 128, 128), IMGPRC_E_OUTOFMEMORY);
    ImgPrcFailAllocation(0);
    EXPECT_EQ(SetAdjust(inst, 140, 120, 200, 13), IMGPRC_E_INVALIDARG);
    EXPECT_EQ(GetAdjust(inst).brightness + inst.ctx()->adjustActive + inst.ctx()->rangeTableY[16], 128u);
    ASSERT_EQ(SetAdjust(inst, 140, 120, 200, 8), IMGPRC_OK);  // saturation reads as 0
    uint32_t r;
    EXPECT_EQ(GetAdjust(inst, &r, 11).brightness, -1);
    EXPECT_EQ(r, IMGPRC_E_INVALIDARG);
    const ImgPrcColorAdjust got = GetAdjust(inst, &r, 16);
    EXPECT_EQ(r, format < 6 || format == 0x00A || format == 0x209 ? IMGPRC_OK : IMGPRC_E_FAIL)
        << std::hex << format;
    EXPECT_EQ((std::vector<int>{got.brightness, got.contrast, got.saturation}),
              (std::vector<int>{140, 120, 0}));
  }
  Instance inst({});
  uint32_t v = 0, written = 0;
  EXPECT_EQ(ORU_IMAGEPROC_Set(nullptr, IMGPRC_PROP_COLOR_ADJUST, &v, 12), IMGPRC_E_INVALIDARG);
  EXPECT_EQ(ORU_IMAGEPROC_Get(nullptr, IMGPRC_PROP_COLOR_ADJUST, &v, 12, &written), IMGPRC_E_INVALIDARG);
  for (uint32_t id : {0u, 3u, 1027u}) {
    EXPECT_EQ(ORU_IMAGEPROC_Set(inst.handle(), id, &v, sizeof v), IMGPRC_E_NOTFOUND) << id;
    EXPECT_EQ(ORU_IMAGEPROC_Get(inst.handle(), id, &v, sizeof v, &written), IMGPRC_E_NOTFOUND) << id;
  }
}

// Tables come with the first change and stay; Reset frees them but keeps the
// stored values, so that setting the same values again is no change.
TEST(Properties, AdjustTablesLifetimeAndReset) {
  Instance inst({});
  const ImgPrcContext* ctx = inst.ctx();
  const struct {
    int brightness;  // -1: Reset
    uint32_t active;
    bool block;
    long newBlocks;
  } steps[] = {{128, 0, false, 0},  // neutral on a fresh instance: nothing happens
               {150, 1, true, 1},  {128, 0, true, 0},  {100, 1, true, 0}, {150, 1, true, 0},
               {-1, 0, false, -1}, {150, 0, false, 0}, {151, 1, true, 1}};
  for (const auto& s : steps) {
    const long live = ImgPrcLiveBlockCount();
    EXPECT_EQ(s.brightness < 0 ? ORU_IMAGEPROC_Reset(inst.handle()) : SetAdjust(inst, s.brightness, 128, 128),
              IMGPRC_OK);
    EXPECT_EQ(ctx->adjustActive, s.active) << s.brightness;
    EXPECT_EQ(ctx->adjustTableBlock != nullptr, s.block) << s.brightness;
    EXPECT_EQ(ImgPrcLiveBlockCount() - live, s.newBlocks) << s.brightness;
    EXPECT_EQ(ctx->lumaAdjustTable, ctx->adjustTableBlock);
    EXPECT_EQ(ctx->chromaAdjustTable, s.block ? ctx->adjustTableBlock + 256 : nullptr);
    // Inactive: the neutral tables (Cb entry 0: -16524 and 3210, worked by hand).
    EXPECT_TRUE(s.active || (ctx->rangeTableY[16] == 0 && ctx->rangeTableCb[0] == int32_t(0xBF740C8A)))
        << s.brightness;
  }
  EXPECT_EQ(ORU_IMAGEPROC_Reset(nullptr), IMGPRC_E_INVALIDARG);
}

// The key is kept as given, RGB555 included (no translation).
TEST(Properties, ColorKey) {
  Instance inst({0x00A});
  uint32_t key = 0x00EB8080, got = 0, written = 0;
  EXPECT_EQ(ORU_IMAGEPROC_Set(inst.handle(), IMGPRC_PROP_COLOR_KEY, &key, 3), IMGPRC_E_INVALIDARG);
  EXPECT_EQ(ORU_IMAGEPROC_Set(inst.handle(), IMGPRC_PROP_COLOR_KEY, &key, 4), IMGPRC_OK);
  EXPECT_EQ(ORU_IMAGEPROC_Get(inst.handle(), IMGPRC_PROP_COLOR_KEY, &got, 3, &written), IMGPRC_E_INVALIDARG);
  EXPECT_EQ(ORU_IMAGEPROC_Get(inst.handle(), IMGPRC_PROP_COLOR_KEY, &got, 4, &written), IMGPRC_OK);
  EXPECT_EQ(got + written, 0x00EB8080u + 4);
}

}  // namespace
