// The frame call's deinterlacing step and its result mapping, seen through a
// stand-in for the deinterlacer: this program defines ORU_DeInterlace itself,
// so the linker takes it instead of the library's (the library's object is
// only pulled in to resolve that symbol). The stand-in records its arguments,
// writes a known picture into the work area and returns a chosen result. The
// real deinterlacer only ever returns 0 or -1, so the mapping of its other
// results can only be seen this way; its pictures through the frame call are
// checked with the real one in the deinterlace tests.
#include <gtest/gtest.h>
#include <stdint.h>
#include <string.h>

#include <vector>

#include "deinterlace/deinterlace.h"
#include "imageproc_test_util.h"

namespace {

struct DeinterlaceCall {
  int calls = 0;
  ImgPrcContext* ctx = nullptr;
  uint8_t* src[3] = {};
  uint32_t srcPitches[3] = {};
  uint8_t* dst[3] = {};
  uint32_t dstPitches[3] = {};
  uint32_t mode = 0;
};
DeinterlaceCall g_call;
int g_result = 0;

// The value the stand-in writes at (x, y) of plane p of the work area.
uint8_t WorkSample(int p, uint32_t x, uint32_t y) { return static_cast<uint8_t>(p * 80 + x * 3 + y * 11); }

}  // namespace

extern "C" int ORU_DeInterlace(ImgPrcContext* ctx, uint8_t* srcPlanes[3], uint32_t srcPitches[3],
                               uint8_t* dstPlanes[3], uint32_t dstPitches[3]) {
  ++g_call.calls;
  g_call.ctx = ctx;
  g_call.mode = ctx->deinterlaceMode;
  for (int p = 0; p < 3; ++p) {
    g_call.src[p] = srcPlanes[p];
    g_call.srcPitches[p] = srcPitches[p];
    g_call.dst[p] = dstPlanes[p];
    g_call.dstPitches[p] = dstPitches[p];
  }
  if (g_result != 0) return g_result;
  for (int p = 0; p < 3; ++p) {
    const uint32_t w = p == 0 ? ctx->srcWidth : ctx->srcWidth / 2,
                   h = p == 0 ? ctx->srcHeight : ctx->srcHeight / 2;
    for (uint32_t y = 0; y < h; ++y) {
      for (uint32_t x = 0; x < w; ++x) dstPlanes[p][y * dstPitches[p] + x] = WorkSample(p, x, y);
    }
  }
  return 0;
}

namespace {

class Deinterlace : public testing::Test {
 protected:
  void SetUp() override {
    g_call = {};
    g_result = 0;
  }
};

TEST_F(Deinterlace, ModeRunsTheDeinterlacerIntoTheWorkArea) {
  Instance inst({0x000, 20, 6, 20, 6});  // work-area stride 32
  ASSERT_EQ(inst.result(), IMGPRC_OK);
  Picture src, dst;
  MakePlanar(src, 20, 6, 24, 12, 16, 1);
  MakePlanar(dst, 20, 6, 20, 10, 10, 2);
  ASSERT_EQ(Frame(inst, src, dst, 0), IMGPRC_OK);  // no mode, no call
  EXPECT_EQ(g_call.calls, 0);
  ASSERT_EQ(Frame(inst, src, dst, 2), IMGPRC_OK);
  ASSERT_EQ(g_call.calls, 1);
  EXPECT_EQ(g_call.ctx, inst.ctx());
  EXPECT_EQ(g_call.mode, 2u);
  for (int p = 0; p < 3; ++p) {
    EXPECT_EQ(g_call.src[p], src.planes[p]);
    EXPECT_EQ(g_call.srcPitches[p], src.strides[p]);
    EXPECT_EQ(g_call.dst[p], inst.ctx()->deintPlanes[p]);
    EXPECT_EQ(g_call.dstPitches[p], 32u);
  }
  // A later frame passing 0 keeps the mode; one passing another mode replaces it.
  ASSERT_EQ(Frame(inst, src, dst, 0), IMGPRC_OK);
  EXPECT_EQ(g_call.calls, 2);
  EXPECT_EQ(g_call.mode, 2u);
  ASSERT_EQ(Frame(inst, src, dst, 5), IMGPRC_OK);
  EXPECT_EQ(g_call.mode, 5u);
  // The picture converted is the work area's, read at the work-area stride.
  for (int p = 0; p < 3; ++p) {
    const uint32_t w = p == 0 ? 20 : 10, h = p == 0 ? 6 : 3;
    for (uint32_t y = 0; y < h; ++y) {
      for (uint32_t x = 0; x < w; ++x) {
        ASSERT_EQ(dst.planes[p][y * dst.strides[p] + x], WorkSample(p, x, y)) << p << ": " << x << "," << y;
      }
    }
  }
}

TEST_F(Deinterlace, OnlyPlanarYCbCrInputsKeepAMode) {
  struct Case {
    uint32_t format, stored;
  };
  const Case cases[] = {{0x000, 3}, {0x103, 3}, {0x205, 3}, {0x303, 0}, {0x403, 0}, {0x500, 0}, {0x800, 0}};
  for (const Case& c : cases) {
    Instance inst({c.format});
    ASSERT_EQ(inst.result(), IMGPRC_OK);
    inst.ctx()->deinterlaceMode = 7;  // an RGB source also drops a mode it had
    // The mode is stored before the planes are checked, so even a refused frame sets it.
    uint8_t* none[3] = {nullptr, nullptr, nullptr};
    uint32_t zero[3] = {0, 0, 0};
    ImgPrcFrameParams f = {sizeof f, 0, 3};
    EXPECT_EQ(ORU_IMAGEPROC_ProcessFrame(inst.handle(), none, zero, none, zero, &f), IMGPRC_E_INVALIDARG);
    EXPECT_EQ(inst.ctx()->deinterlaceMode, c.stored) << std::hex << c.format;
  }
  EXPECT_EQ(g_call.calls, 0);
}

TEST_F(Deinterlace, ResultsAreMappedAndStopTheFrame) {
  struct Case {
    int result;
    uint32_t want;
  };
  const Case cases[] = {{-1, IMGPRC_E_INVALIDARG},  {-2, IMGPRC_E_OUTOFMEMORY},
                        {-3, IMGPRC_E_NOTIMPL},     {-4, IMGPRC_OK_NONSTANDARD},
                        {1, IMGPRC_OK_NONSTANDARD}, {0x7FFFFFFF, IMGPRC_OK_NONSTANDARD}};
  Instance inst({});
  for (const Case& c : cases) {
    Picture src, dst, before;
    MakePlanar(src, 16, 8, 16, 8, 8, 1);
    MakePlanar(dst, 16, 8, 16, 8, 8, 2);
    MakePlanar(before, 16, 8, 16, 8, 8, 2);
    g_result = c.result;
    EXPECT_EQ(Frame(inst, src, dst, 1), c.want) << c.result;
    for (int p = 0; p < 3; ++p) EXPECT_EQ(dst.bytes[p], before.bytes[p]) << c.result;
  }
}

}  // namespace
