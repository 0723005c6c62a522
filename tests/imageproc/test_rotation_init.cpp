// Rotation set-up: for every orientation and output layout, each source pixel
// addressed through the record lands where a plain rotation of the picture puts
// it (a packed half turn against the end of the destination row).
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

TEST(RotationInit, PlanarEveryOrientationPutsEachSampleInPlace) {
  const int w = 12, h = 8;
  for (uint32_t rotation = 0; rotation <= 5; ++rotation) {
    Target s(0x000, rotation);
    // Strides wide enough for either orientation and different per plane.
    std::vector<uint8_t> y(20 * 12), cb(11 * 6), cr(13 * 6);
    uint8_t* planes[3] = {y.data(), cb.data(), cr.data()};
    uint32_t strides[3] = {20, 11, 13};
    ASSERT_EQ(_ORU_RotationInit(&s.ctx, planes, w, h, strides), 0);
    const ImgPrcRotationRecord& r = s.rec;
    uint8_t* starts[3] = {r.yStart, r.cbStart, r.crStart};
    const int32_t stepX[3] = {r.stepX, r.cbStepX, r.crStepX}, stepY[3] = {r.stepY, r.cbStepY, r.crStepY};
    for (int p = 0; p < 3; ++p) {
      const int pw = p ? w / 2 : w, ph = p ? h / 2 : h;
      for (int sy = 0; sy < ph; ++sy) {
        for (int sx = 0; sx < pw; ++sx) {
          ASSERT_EQ(starts[p] + sx * stepX[p] + sy * stepY[p],
                    planes[p] + Placed(rotation, sx, sy, pw, ph, pw, strides[p], 1))
              << "rotation " << rotation << " plane " << p << " sample " << sx << "," << sy;
        }
      }
    }
  }
}

TEST(RotationInit, PackedEveryOrientationPutsEachPixelInPlace) {
  const long pixelSizes[11] = {0, 0, 0, 2, 3, 4, 0, 0, 0, 4, 2};
  const int w = 8, h = 6, rowPixels = 10;  // rows wider than either orientation needs
  for (uint32_t code : {3u, 4u, 5u, 9u, 10u}) {
    for (uint32_t rotation = 0; rotation <= 5; ++rotation) {
      Target s(code, rotation);
      const long size = pixelSizes[code], stride = rowPixels * size;
      std::vector<uint8_t> dst(stride * 10);
      uint8_t* planes[3] = {dst.data(), nullptr, nullptr};
      uint32_t strides[3] = {static_cast<uint32_t>(stride), 0, 0};
      ASSERT_EQ(_ORU_RotationInit(&s.ctx, planes, w, h, strides), 0);
      uint8_t* pix[2][2] = {{s.rec.pix00, s.rec.pix01}, {s.rec.pix10, s.rec.pix11}};
      for (int y = 0; y < h; ++y) {
        for (int x = 0; x < w; ++x) {
          ASSERT_EQ(pix[x % 2][y % 2] + x / 2 * s.rec.stepX + y / 2 * s.rec.stepY,
                    dst.data() + Placed(rotation, x, y, w, h, rowPixels, stride, size))
              << "output " << code << " rotation " << rotation << " pixel " << x << "," << y;
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
