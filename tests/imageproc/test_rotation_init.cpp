// Rotation set-up: each source pixel addressed through the record lands where a
// plain rotation puts it (a packed half turn against the end of the row).
#include <gtest/gtest.h>
#include <stdint.h>
#include <string.h>

#include <vector>

#include "imageproc/imgprc_context.h"
#include "imageproc/rotation.h"
#include "support/pictures.h"

namespace {

struct Target {
  ImgPrcRotationRecord rec;
  ImgPrcContext ctx;
  Target(uint32_t format, uint32_t rotation) {
    memset(&rec, 0xCD, sizeof rec);
    memset(&ctx, 0, sizeof ctx);
    ctx.format = format;
    ctx.rotation = rotation;
    ctx.rotationRecord = &rec;
    ctx.rotationRecordSize = sizeof rec;
  }
};

// Byte offset of source pixel (x, y) of a w x h picture once turned, in a
// destination of `stride` bytes a row, `rowPixels` pixels of `size` bytes.
long Placed(uint32_t rotation, int x, int y, int w, int h, int rowPixels, long stride, long size) {
  int col, row;
  scrimtest::Rotated(rotation, x, y, rotation == 3 ? rowPixels : w, h, &col, &row);
  return row * stride + col * size;
}

// Planar output (code 0: three planes, chroma halved) and the packed outputs
// (pixel pairs addressed from four corners).
TEST(RotationInit, EveryOrientationPutsEachSampleInPlace) {
  const long pixelSizes[11] = {1, 0, 0, 2, 3, 4, 0, 0, 0, 4, 2};
  const int w = 8, h = 6, rowPixels = 10;  // rows wider than either orientation needs
  for (uint32_t code : {0u, 3u, 4u, 5u, 9u, 10u}) {
    for (uint32_t rotation = 0; rotation <= 5; ++rotation) {
      Target s(code, rotation);
      const long size = pixelSizes[code];
      uint32_t strides[3] = {static_cast<uint32_t>(rowPixels * size), 11, 13};  // differ per plane
      std::vector<uint8_t> dst(strides[0] * 10), cb(11 * 4), cr(13 * 4);
      uint8_t* planes[3] = {dst.data(), cb.data(), cr.data()};
      ASSERT_EQ(_ORU_RotationInit(&s.ctx, planes, w, h, strides), 0);
      const ImgPrcRotationRecord& r = s.rec;
      uint8_t *starts[3] = {r.yStart, r.cbStart, r.crStart},
              *pix[2][2] = {{r.pix00, r.pix01}, {r.pix10, r.pix11}};
      const int32_t stepX[3] = {r.stepX, r.cbStepX, r.crStepX}, stepY[3] = {r.stepY, r.cbStepY, r.crStepY};
      for (int p = 0; p < (code ? 1 : 3); ++p) {
        const int pw = p ? w / 2 : w, ph = p ? h / 2 : h;
        for (int y = 0; y < ph; ++y) {
          for (int x = 0; x < pw; ++x) {
            uint8_t* got = code ? pix[x % 2][y % 2] + x / 2 * r.stepX + y / 2 * r.stepY
                                : starts[p] + x * stepX[p] + y * stepY[p];
            ASSERT_EQ(got,
                      planes[p] + Placed(rotation, x, y, pw, ph, code ? rowPixels : pw, strides[p], size))
                << "output " << code << " rotation " << rotation << " plane " << p << " at " << x << "," << y;
          }
        }
      }
    }
  }
}

// Inputs 1 and 2 carry no rotation of their own; the packed YCbCr outputs are
// accepted though no route rotates them. A refusal leaves the record alone.
TEST(RotationInit, AcceptsAndRejects) {
  uint8_t buf[64];
  uint8_t* planes[3] = {buf, buf, buf};
  uint32_t strides[3] = {16, 8, 8};
  const struct {
    uint32_t format, rotation;
    int want;
  } cases[] = {{0x101, 0, -3}, {0x102, 0, -3}, {0x00B, 0, -3}, {0x000, 6, -3},
               {0x003, 7, -3}, {0x006, 1, 0},  {0x007, 1, 0},  {0x008, 1, 0}};
  for (const auto& c : cases) {
    Target s(c.format, c.rotation);
    const ImgPrcRotationRecord before = s.rec;
    EXPECT_EQ(_ORU_RotationInit(&s.ctx, planes, 4, 2, strides), c.want) << std::hex << c.format;
    EXPECT_TRUE(c.want == 0 || memcmp(&before, &s.rec, sizeof before) == 0);
  }
  Target s(0x000, 0);
  s.ctx.rotationRecord = nullptr;
  EXPECT_EQ(_ORU_RotationInit(&s.ctx, planes, 4, 4, strides), -1);
  EXPECT_EQ(_ORU_RotationInit(nullptr, planes, 4, 4, strides), -1);
}

}  // namespace
