// Creation and destruction: record rules, accepted conversions, resize cases, owned
// buffers, clean-up on every failure path; the rotation set-up's refusals.
#include <gtest/gtest.h>
#include <stdint.h>
#include <string.h>

#include <vector>

#include "imageproc/color_tables.h"
#include "imageproc/imgprc_alloc.h"
#include "imageproc/pipeline.h"
#include "imageproc/rotation.h"
#include "imageproc_test_util.h"

namespace {

TEST(InterfaceId, HoldsTheTwentyFourBytes) {
  ASSERT_EQ(sizeof IID_ORU_IMAGEPROC_C, 24u);
  const uint8_t want[24] = {0xC8, 0x2B, 0xA1, 0x17, 0x00, 0x00, 0x00, 0x00, 0x53, 0xDF, 0xC7, 0x4A,
                            0xBA, 0xCF, 0xE8, 0x54, 0x74, 0x24, 0x27, 0xAE, 0x00, 0x00, 0x00, 0x00};
  EXPECT_EQ(memcmp(&IID_ORU_IMAGEPROC_C, want, 24), 0);
}

TEST(Create, OutHandleMustHoldNull) {
  ImgPrcCreateParams p = MakeParams({});
  void* handle = &p;
  EXPECT_EQ(ORU_IMAGEPROC_Create(&handle, 0, &p), IMGPRC_E_INVALIDARG);
  EXPECT_EQ(ORU_IMAGEPROC_Create(nullptr, 0, &p), IMGPRC_E_INVALIDARG);
  handle = nullptr;
  EXPECT_EQ(ORU_IMAGEPROC_Create(&handle, 0, nullptr), IMGPRC_E_INVALIDARG);
  EXPECT_EQ(handle, nullptr);
}

// 48 bytes set the matrix and range (out of range: BT.601, video range); 40
// stop before them; 20 end after the source width, the rest reading as 0.
TEST(Create, RecordSizeRules) {
  ImgPrcCreateParams p = MakeParams({});
  p.size = 49;
  EXPECT_EQ(Instance::Of(p).result(), IMGPRC_E_INVALIDARG);
  for (uint32_t m = 0; m < 5; ++m) {
    for (uint32_t r = 0; r < 3; ++r) {
      for (uint32_t size : {48u, 40u}) {
        p = MakeParams({0x000, 16, 8, 16, 8, 0, 1, m, r});
        p.size = size;
        Instance inst = Instance::Of(p);
        ASSERT_EQ(inst.result(), IMGPRC_OK);
        const uint32_t wantM = size == 48 && m < 4 ? m : 0, wantR = size == 48 && r < 2 ? r : 0;
        // The RGB to YCbCr block follows the YCbCr to RGB one: this pins both, matrix and range.
        EXPECT_EQ(inst.ctx()->rgbToYuvCoef, csc_coef + wantM * 48 + wantR * 12 + 24) << m << r << size;
      }
    }
  }
  p.size = 20;
  Instance inst = Instance::Of(p);
  const ImgPrcContext* ctx = inst.ctx();
  EXPECT_EQ((std::vector<uint32_t>{ctx->srcWidth, ctx->srcHeight, ctx->dstWidth, ctx->alpha}),
            (std::vector<uint32_t>{16, 0, 0, 0}));
  EXPECT_EQ(ctx->resizeCase, 1u);  // 16x0 to 0x0: width shrinks, height does not
}

// Work sizes: the four sizes rounded down to even; the alpha whole; the deinterlace
// area the source width aligned to 16 by the source height. (Other fields: frames.)
TEST(Create, StoresTheRecord) {
  const ImgPrcCreateParams p = {48, 0x000, 4, 3, 33, 21, 65, 41, 0x1280, 0x00EB8080, 1, 0};
  Instance inst = Instance::Of(p);
  const ImgPrcContext* c = inst.ctx();
  EXPECT_EQ((std::vector<uint32_t>{c->alpha, c->workSrcWidth, c->workSrcHeight, c->workDstWidth,
                                   c->workDstHeight, c->deintStride, c->deintHeight}),
            (std::vector<uint32_t>{0x1280, 32, 20, 64, 40, 48, 21}));
  EXPECT_EQ(c->rotationRecordSize, 80u);
}

// The key is kept as given by every conversion, RGB555 included (no translation).
TEST(Create, AcceptsTheListedConversionsAndRotations) {
  const uint32_t accepted[] = {0x000, 0x003, 0x004, 0x005, 0x006, 0x007, 0x008, 0x009,
                               0x00A, 0x103, 0x105, 0x109, 0x203, 0x204, 0x205, 0x209,
                               0x300, 0x303, 0x305, 0x403, 0x404, 0x500, 0x800, 0x900};
  for (uint32_t code : accepted) {
    ImgPrcCreateParams p = MakeParams({code});
    p.colorKey = 0x00108080;
    Instance inst = Instance::Of(p);
    ASSERT_EQ(inst.result(), IMGPRC_OK) << std::hex << code;
    EXPECT_EQ(inst.ctx()->colorKey, 0x00108080u) << std::hex << code;
  }
  // Unlisted codes, RGB to YCbCr neighbours among them (a listed code moved is seen above).
  const uint32_t refused[] = {0x001, 0x00B, 0x101, 0x301, 0x501, 0x600, 0x901, 0xA00, 0x10000, 0xFFFFFFFF};
  for (uint32_t code : refused) {
    Instance inst({code});
    EXPECT_EQ(inst.result(), IMGPRC_E_FAIL) << std::hex << code;
    EXPECT_EQ(inst.handle(), nullptr);
  }
  for (uint32_t rotation = 0; rotation < 9; ++rotation) {
    EXPECT_EQ(Instance({0x000, 16, 8, 16, 8, rotation}).result(), rotation <= 5 ? IMGPRC_OK : IMGPRC_E_FAIL)
        << rotation;
  }
  // RGB555 takes no rotation; 4:2:2 to RGB565 takes one (and ignores it per frame).
  for (uint32_t rotation : {1u, 3u, 6u})
    EXPECT_EQ(Instance({0x00A, 16, 8, 16, 8, rotation}).result(), IMGPRC_E_FAIL);
  EXPECT_EQ(Instance({0x103, 16, 8, 16, 8, 2}).result(), IMGPRC_OK);
  EXPECT_EQ(Instance({0x00A, 16, 8, 64, 8}).result(), IMGPRC_OK);  // resized RGB555 is accepted
}

// Fast cases (2 x 2: 4, 2.5 x 2: 5, 320x240 to 480x272: 7, 1.5 wide: 6) only with
// method 1, unrotated, every work size a multiple of 4; otherwise enlarge 2, shrink 3
// or mixed 1. The kernel tests' routes pin most plain cases; these are the edges.
TEST(Create, ClassifiesTheResize) {
  const struct {
    uint32_t sw, sh, dw, dh, mode, rotation, want;
  } cases[] = {{176, 144, 352, 288, 1, 0, 4}, {176, 144, 352, 288, 0, 0, 2}, {176, 144, 352, 288, 2, 0, 2},
               {176, 144, 352, 288, 1, 3, 2}, {320, 240, 480, 272, 1, 1, 2}, {320, 240, 480, 200, 1, 0, 6},
               {320, 240, 480, 480, 1, 0, 6}, {322, 240, 483, 360, 1, 0, 2}, {352, 288, 352, 300, 1, 0, 1},
               {352, 288, 200, 288, 1, 0, 1}, {178, 144, 356, 288, 1, 0, 2}, {352, 288, 352, 200, 1, 0, 1},
               {200, 288, 352, 288, 1, 0, 1}, {20, 16, 30, 16, 1, 0, 1},     {320, 240, 480, 272, 1, 0, 7}};
  for (const auto& c : cases) {
    Instance inst({0x000, c.sw, c.sh, c.dw, c.dh, c.rotation, c.mode});
    ASSERT_EQ(inst.result(), IMGPRC_OK);
    EXPECT_EQ(inst.ctx()->resizeCase, c.want) << c.sw << "x" << c.sh << " to " << c.dw << "x" << c.dh
                                              << " method " << c.mode << " rotation " << c.rotation;
  }
}

// Four lines of 64-bit entries (8 bytes a pixel) for the wider work width, plus
// 4; a shrink is the one case where the source width is the wider one.
TEST(Create, LineBuffersSizedForTheWiderWidth) {
  Instance inst({0x000, 300, 150, 100, 50, 0, 3});
  const ImgPrcContext* ctx = inst.ctx();
  EXPECT_EQ(ctx->lineBuffer[3] - ctx->lineBuffer[0], 3 * (300 + 4) * 8);
  memset(ctx->lineBuffer[0], 0x5A, 4 * (300 + 4) * 8);  // all writable (AddressSanitizer checks)
}

TEST(Capability, CodesBelow0x300ExceptThePackedYCbCrOutputs) {
  for (uint32_t code = 0; code < 0x1000; ++code) {
    const bool supported = code <= 767 && code != 6 && code != 7 && code != 8;
    EXPECT_EQ(_CheckCapability_depend(code, code % 8), supported ? 0 : -3) << std::hex << code;
  }
}

// Creation allocates, in order: the instance, the deinterlace area, the range
// tables (failures there are out of memory), then in set-up the line buffers
// (resizing only) and the rotation record (failures there refuse the creation).
TEST(Create, EveryAllocationFailureCleansUp) {
  for (bool resize : {true, false}) {
    const unsigned allocations = resize ? 5 : 4;
    for (unsigned failing = 1; failing <= allocations + 1; ++failing) {
      SCOPED_TRACE(testing::Message() << (resize ? "resized" : "same size") << ", allocation " << failing);
      const uint32_t want = failing <= 3             ? IMGPRC_E_OUTOFMEMORY
                            : failing <= allocations ? IMGPRC_E_FAIL
                                                     : IMGPRC_OK;
      ImgPrcCreateParams p = MakeParams({});
      if (resize) p.dstWidth = 64;
      const long live = ImgPrcLiveBlockCount();
      void* handle = nullptr;
      ImgPrcFailAllocation(failing);
      EXPECT_EQ(ORU_IMAGEPROC_Create(&handle, 0, &p), want);
      ImgPrcFailAllocation(0);
      if (want == IMGPRC_OK) {
        ASSERT_NE(handle, nullptr);
        EXPECT_EQ(ORU_IMAGEPROC_Destroy(handle), IMGPRC_OK);
      } else {
        EXPECT_EQ(handle, nullptr);
      }
      EXPECT_EQ(ImgPrcLiveBlockCount(), live);
    }
  }
  const long live = ImgPrcLiveBlockCount();  // impossible sizes: out of memory too
  EXPECT_EQ(Instance({0x000, 0xFFFFFFF0u, 0xFFFFFFF0u, 0xFFFFFFF0u, 0xFFFFFFF0u}).result(),
            IMGPRC_E_OUTOFMEMORY);
  EXPECT_EQ(ImgPrcLiveBlockCount(), live);
}

TEST(Destroy, FreesEverythingTheInstanceOwns) {
  const long live = ImgPrcLiveBlockCount();
  {
    Instance inst({0x000, 16, 8, 64, 8});
    ASSERT_EQ(SetAdjust(inst, 150, 100, 90), IMGPRC_OK);
    EXPECT_EQ(ImgPrcLiveBlockCount(), live + 6);
  }
  EXPECT_EQ(ImgPrcLiveBlockCount(), live);
  EXPECT_EQ(ORU_IMAGEPROC_Destroy(nullptr), IMGPRC_E_INVALIDARG);
}

// What frames cannot reach (they check every orientation): rotation 6, no layout, no record.
TEST(RotationInit, AcceptsAndRejects) {
  uint8_t buf[64];
  uint8_t* planes[3] = {buf, buf, buf};
  uint32_t strides[3] = {16, 8, 8};
  ImgPrcRotationRecord rec;
  ImgPrcContext ctx = {};
  const struct {
    uint32_t format, rotation;
    int want;
  } cases[] = {{0x101, 0, -3}, {0x00B, 0, -3}, {0x000, 6, -3}, {0x007, 1, 0}};
  for (const auto& c : cases) {
    ctx.format = c.format, ctx.rotation = c.rotation, ctx.rotationRecord = &rec;
    EXPECT_EQ(_ORU_RotationInit(&ctx, planes, 4, 2, strides), c.want) << std::hex << c.format;
  }
  ctx.rotationRecord = nullptr;
  EXPECT_EQ(_ORU_RotationInit(&ctx, planes, 4, 4, strides), -1);
  EXPECT_EQ(_ORU_RotationInit(nullptr, planes, 4, 4, strides), -1);
}

}  // namespace
