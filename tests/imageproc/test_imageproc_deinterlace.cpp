// The frame call's deinterlacing step through a stand-in ORU_DeInterlace (the linker takes
// this program's): the real one only returns 0 or -1, so other results show only this way.
#include <gtest/gtest.h>
#include <stdint.h>

#include <vector>

#include "deinterlace/deinterlace.h"
#include "imageproc_test_util.h"

namespace {

// Planes and pitches pass through untouched: the picture read back pins them.
struct DeinterlaceCall {
  int calls = 0;
  uint32_t mode = 0;
};
DeinterlaceCall g_call;
int g_result = 0;

// The value the stand-in writes at (x, y) of plane p of the work area.
uint8_t WorkSample(int p, uint32_t x, uint32_t y) { return static_cast<uint8_t>(p * 80 + x * 3 + y * 11); }

}  // namespace

// Records the call and, unless told to fail, writes a known picture.
extern "C" int ORU_DeInterlace(ImgPrcContext* ctx, uint8_t** /*srcPlanes*/, uint32_t* /*srcPitches*/,
                               uint8_t* dstPlanes[3], uint32_t dstPitches[3]) {
  g_call = {g_call.calls + 1, ctx->deinterlaceMode};
  if (g_result != 0) return g_result;
  for (int p = 0; p < 3; ++p) {
    for (uint32_t y = 0; y < (p ? ctx->srcHeight / 2 : ctx->srcHeight); ++y) {
      for (uint32_t x = 0; x < (p ? ctx->srcWidth / 2 : ctx->srcWidth); ++x)
        dstPlanes[p][y * dstPitches[p] + x] = WorkSample(p, x, y);
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
  Picture src, dst;
  MakeFor(src, 0, 1);  // 64-byte strides
  MakeFor(dst, 0, 2);
  ASSERT_EQ(Frame(inst, src, dst, 0), IMGPRC_OK);  // no mode, no call
  EXPECT_EQ(g_call.calls, 0);
  ASSERT_EQ(Frame(inst, src, dst, 5), IMGPRC_OK);
  EXPECT_EQ(g_call.calls, 1);
  EXPECT_EQ(g_call.mode, 5u);
  // The picture converted is the work area's, read at the work-area stride.
  for (int p = 0; p < 3; ++p) {
    for (uint32_t y = 0; y < (p ? 3u : 6u); ++y) {
      for (uint32_t x = 0; x < (p ? 10u : 20u); ++x)
        ASSERT_EQ(dst.planes[p][y * dst.strides[p] + x], WorkSample(p, x, y)) << p << ": " << x << "," << y;
    }
  }
}

TEST_F(Deinterlace, OnlyPlanarYCbCrInputsKeepAMode) {
  const struct {
    uint32_t format, stored;
  } cases[] = {{0x000, 3}, {0x103, 3}, {0x205, 3}, {0x303, 0}, {0x403, 0}, {0x500, 0}, {0x800, 0}};
  for (const auto& c : cases) {
    Instance inst({c.format});
    inst.ctx()->deinterlaceMode = 7;  // an RGB source drops it; stored even by a refused frame
    uint8_t* none[3] = {nullptr, nullptr, nullptr};
    uint32_t zero[3] = {0, 0, 0};
    EXPECT_EQ(Frame(inst, none, zero, none, zero, 3), IMGPRC_E_INVALIDARG);
    EXPECT_EQ(inst.ctx()->deinterlaceMode, c.stored) << std::hex << c.format;
  }
  EXPECT_EQ(g_call.calls, 0);
}

TEST_F(Deinterlace, ResultsAreMappedAndStopTheFrame) {
  const struct {
    int result;
    uint32_t want;
  } cases[] = {{-1, IMGPRC_E_INVALIDARG},   {-2, IMGPRC_E_OUTOFMEMORY}, {-3, IMGPRC_E_NOTIMPL},
               {-4, IMGPRC_OK_NONSTANDARD}, {1, IMGPRC_OK_NONSTANDARD}, {0x7FFFFFFF, IMGPRC_OK_NONSTANDARD}};
  Instance inst({});
  Picture src, dst;
  MakeFor(src, 0, 1);
  MakeFor(dst, 0, 2);
  const std::vector<uint8_t> before = dst.bytes[0];
  for (const auto& c : cases) {
    g_result = c.result;
    EXPECT_EQ(Frame(inst, src, dst, 1), c.want) << c.result;
    EXPECT_EQ(dst.bytes[0], before) << c.result;
  }
}

}  // namespace
