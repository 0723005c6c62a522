// Rotation set-up: the worked examples, and for every orientation and output
// layout, each source pixel addressed through the record lands where a plain
// rotation of the picture puts it (a packed half turn against the row's end).
#include <gtest/gtest.h>
#include <stdint.h>
#include <string.h>

#include <vector>

#include "imageproc/imgprc_context.h"
#include "imageproc/rotation.h"

namespace {

struct Target {
  ImgPrcRotationRecord rec;
  ImgPrcContext ctx;
  explicit Target(uint32_t format, uint32_t rotation) {
    memset(&rec, 0xCD, sizeof rec);
    memset(&ctx, 0, sizeof ctx);
    ctx.format = format;
    ctx.rotation = rotation;
    ctx.rotationRecord = &rec;
    ctx.rotationRecordSize = sizeof rec;
  }
};

// Destination (row, column) of source pixel (x, y) of a w x h picture; quarter
// turns give a picture of w rows and h columns. rowPixels is the width of a
// destination row in pixels, against whose end a packed half turn is placed.
struct RowCol {
  long row, col;
};
RowCol Rotate(uint32_t rotation, long x, long y, long w, long h, long rowPixels) {
  switch (rotation) {
    case 1:
      return {w - 1 - x, y};  // anticlockwise: the top row becomes the left column, read upwards
    case 2:
      return {x, h - 1 - y};  // clockwise: the top row becomes the right column, read downwards
    case 3:
      return {h - 1 - y, rowPixels - 1 - x};
    case 4:
      return {y, w - 1 - x};
    case 5:
      return {h - 1 - y, x};
    default:
      return {y, x};
  }
}

TEST(RotationInit, WorkedExamples) {
  uint8_t buf[64];
  uint8_t* planes[3] = {buf, nullptr, nullptr};
  {
    Target s(0x003, 3);  // RGB565, half turn, W = 4, H = 2, S = 16
    uint32_t strides[3] = {16, 0, 0};
    ASSERT_EQ(_ORU_RotationInit(&s.ctx, planes, 4, 2, strides), 0);
    EXPECT_EQ(s.rec.pix00, buf + 30);
    EXPECT_EQ(s.rec.stepX, -4);
    EXPECT_EQ(s.rec.stepY, -32);
  }
  {
    Target s(0x003, 1);  // RGB565, quarter turn anticlockwise, W = 4, H = 2, S = 4
    uint32_t strides[3] = {4, 0, 0};
    ASSERT_EQ(_ORU_RotationInit(&s.ctx, planes, 4, 2, strides), 0);
    EXPECT_EQ(s.rec.pix00, buf + 12);
    EXPECT_EQ(s.rec.stepX, -8);
    EXPECT_EQ(s.rec.stepY, 4);
  }
  {
    Target s(0x000, 2);  // planar, quarter turn clockwise, W = 8, H = 4
    uint8_t cb[16], cr[16];
    uint8_t* yuv[3] = {buf, cb, cr};
    uint32_t strides[3] = {4, 2, 2};
    ASSERT_EQ(_ORU_RotationInit(&s.ctx, yuv, 8, 4, strides), 0);
    EXPECT_EQ(s.rec.yStart, buf + 3);
    EXPECT_EQ(s.rec.cbStart, cb + 1);
    EXPECT_EQ(s.rec.crStart, cr + 1);
  }
}

TEST(RotationInit, PlanarEveryOrientationPutsEachSampleInPlace) {
  const long w = 12, h = 8;
  for (uint32_t rotation = 0; rotation <= 5; ++rotation) {
    SCOPED_TRACE(testing::Message() << "rotation " << rotation);
    Target s(0x000, rotation);
    // Strides wide enough for either orientation and different per plane.
    std::vector<uint8_t> y(20 * 12), cb(11 * 6), cr(13 * 6);
    uint8_t* planes[3] = {y.data(), cb.data(), cr.data()};
    uint32_t strides[3] = {20, 11, 13};
    ASSERT_EQ(_ORU_RotationInit(&s.ctx, planes, w, h, strides), 0);
    struct Plane {
      uint8_t* start;
      int32_t stepX, stepY;
      uint8_t* base;
      long stride, pw, ph;
    };
    const Plane ps[3] = {{s.rec.yStart, s.rec.stepX, s.rec.stepY, y.data(), 20, w, h},
                         {s.rec.cbStart, s.rec.cbStepX, s.rec.cbStepY, cb.data(), 11, w / 2, h / 2},
                         {s.rec.crStart, s.rec.crStepX, s.rec.crStepY, cr.data(), 13, w / 2, h / 2}};
    for (const Plane& p : ps) {
      for (long sy = 0; sy < p.ph; ++sy) {
        for (long sx = 0; sx < p.pw; ++sx) {
          RowCol rc = Rotate(rotation, sx, sy, p.pw, p.ph, p.pw);
          ASSERT_EQ(p.start + sx * p.stepX + sy * p.stepY, p.base + rc.row * p.stride + rc.col)
              << "sample " << sx << "," << sy;
        }
      }
    }
  }
}

TEST(RotationInit, PackedEveryOrientationPutsEachPixelInPlace) {
  struct Output {
    uint32_t code;
    long pixelSize;
  };
  const Output outputs[] = {{3, 2}, {4, 3}, {5, 4}, {9, 4}, {10, 2}};
  const long w = 8, h = 6;
  for (const Output& out : outputs) {
    for (uint32_t rotation = 0; rotation <= 5; ++rotation) {
      SCOPED_TRACE(testing::Message() << "output " << out.code << " rotation " << rotation);
      Target s(out.code, rotation);
      const long rowPixels = 10;  // wider than either orientation needs
      const long stride = rowPixels * out.pixelSize;
      std::vector<uint8_t> dst(stride * 10);
      uint8_t* planes[3] = {dst.data(), nullptr, nullptr};
      uint32_t strides[3] = {static_cast<uint32_t>(stride), 0, 0};
      ASSERT_EQ(_ORU_RotationInit(&s.ctx, planes, w, h, strides), 0);
      uint8_t* pix[2][2] = {{s.rec.pix00, s.rec.pix01}, {s.rec.pix10, s.rec.pix11}};
      for (long by = 0; by < h / 2; ++by) {
        for (long bx = 0; bx < w / 2; ++bx) {
          for (int dy = 0; dy < 2; ++dy) {
            for (int dx = 0; dx < 2; ++dx) {
              RowCol rc = Rotate(rotation, 2 * bx + dx, 2 * by + dy, w, h, rowPixels);
              ASSERT_EQ(pix[dx][dy] + bx * s.rec.stepX + by * s.rec.stepY,
                        dst.data() + rc.row * stride + rc.col * out.pixelSize)
                  << "pixel " << 2 * bx + dx << "," << 2 * by + dy;
            }
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
  struct Case {
    uint32_t format, rotation;
    int want;
  };
  const Case cases[] = {{0x101, 0, -3}, {0x102, 0, -3}, {0x00B, 0, -3}, {0x000, 6, -3},
                        {0x003, 7, -3}, {0x006, 1, 0},  {0x007, 1, 0},  {0x008, 1, 0}};
  for (const Case& c : cases) {
    Target s(c.format, c.rotation);
    ImgPrcRotationRecord before;
    memcpy(&before, &s.rec, sizeof before);
    EXPECT_EQ(_ORU_RotationInit(&s.ctx, planes, 4, 2, strides), c.want) << std::hex << c.format;
    if (c.want != 0) {
      EXPECT_EQ(memcmp(&before, &s.rec, sizeof before), 0);
    }
  }
  Target s(0x000, 0);
  s.ctx.rotationRecord = nullptr;
  EXPECT_EQ(_ORU_RotationInit(&s.ctx, planes, 4, 4, strides), -1);
  EXPECT_EQ(_ORU_RotationInit(nullptr, planes, 4, 4, strides), -1);
}

}  // namespace
