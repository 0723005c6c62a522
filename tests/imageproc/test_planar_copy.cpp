// _ORUYCbCr420Copy on tight contiguous, tight separate, padded, odd-sized and
// one-row pictures. Destination planes are exactly as large as the copy may
// write; every byte the copy must not write is checked to be unchanged.
#include <gtest/gtest.h>
#include <stdint.h>

#include <algorithm>
#include <vector>

#include "imageproc_test_util.h"
#include "kernels/yuv420_planar.h"

namespace {

TEST(PlanarCopy, PicturesThatAreNotTightCopyRowByRow) {
  struct Case {
    uint32_t w, h, src[3], dst[3];
  };
  const Case cases[] = {
      {32, 10, {40, 24, 28}, {48, 20, 32}},  // padded
      {32, 10, {40, 20, 20}, {40, 20, 20}},  // padded alike
      {7, 5, {9, 5, 4}, {11, 3, 6}},         // odd: whole rows, chroma halved
      {16, 6, {16, 8, 8}, {20, 8, 8}},       // tight source, padded destination
      {16, 6, {16, 8, 10}, {16, 8, 10}},     // tight luma, one chroma stride off
      {16, 1, {24, 16, 16}, {24, 16, 16}},   // one row: no chroma
      {16, 0, {24, 16, 16}, {24, 16, 16}},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(testing::Message() << c.w << "x" << c.h << " strides " << c.src[0] << "/" << c.src[1] << "/"
                                    << c.src[2] << " to " << c.dst[0] << "/" << c.dst[1] << "/" << c.dst[2]);
    Picture src, dst;
    MakePlanar(src, c.w, c.h, c.src[0], c.src[1], c.src[2], 1);
    MakePlanar(dst, c.w, c.h, c.dst[0], c.dst[1], c.dst[2], 200);
    std::vector<uint8_t> want[3];
    for (int p = 0; p < 3; ++p) {
      want[p] = CopiedRows(dst.bytes[p], c.dst[p], src.planes[p], c.src[p], p ? c.w / 2 : c.w,
                           p ? (c.h < 2 ? 0 : c.h / 2) : c.h);
    }
    EXPECT_EQ(_ORUYCbCr420Copy(src.planes, src.strides, c.w, c.h, dst.planes, dst.strides), 0u);
    for (int p = 0; p < 3; ++p) EXPECT_EQ(dst.bytes[p], want[p]) << "plane " << p;
  }
}

// One block holding Y, Cb and Cr back to back, as the tight single-copy case sees it.
struct Contiguous {
  std::vector<uint8_t> bytes;
  uint8_t* planes[3];
  uint32_t strides[3];
  Contiguous(uint32_t w, uint32_t h, uint8_t seed) : bytes(w * h + 2 * (w * h / 4)) {
    for (size_t i = 0; i < bytes.size(); ++i) bytes[i] = static_cast<uint8_t>(seed + i * 31 + (i >> 7));
    planes[0] = bytes.data();
    planes[1] = planes[0] + w * h;
    planes[2] = planes[1] + w * h / 4;
    strides[0] = w;
    strides[1] = strides[2] = w / 2;
  }
};

TEST(PlanarCopy, TightContiguousPictureMovesAsOneBlock) {
  for (uint32_t h : {8u, 1u}) {
    Contiguous src(16, h, 3), dst(16, h, 90);
    EXPECT_EQ(_ORUYCbCr420Copy(src.planes, src.strides, 16, h, dst.planes, dst.strides), 0u);
    // Everything moves, the chroma of a one-row picture included: the block is
    // size + 2 x (size / 4) bytes.
    EXPECT_EQ(dst.bytes, src.bytes) << h;
  }
}

TEST(PlanarCopy, TightSeparatePlanesMoveWhole) {
  // Width 6, height 3: each chroma plane moves (6 x 3) / 4 = 4 bytes, one more
  // than the 3 x 1 a row walk would copy.
  for (uint32_t h : {8u, 3u}) {
    const uint32_t w = 6, size = w * h, quarter = size / 4;
    Picture src, dst;
    for (int p = 0; p < 3; ++p) {
      src.AddPlane(p, p ? quarter : size, 1, 0, static_cast<uint8_t>(5 + p));
      dst.AddPlane(p, p ? quarter : size, 1, 0, static_cast<uint8_t>(50 + 10 * p));
      src.strides[p] = dst.strides[p] = p == 0 ? w : w / 2;
    }
    EXPECT_EQ(_ORUYCbCr420Copy(src.planes, src.strides, w, h, dst.planes, dst.strides), 0u);
    for (int p = 0; p < 3; ++p) EXPECT_EQ(dst.bytes[p], src.bytes[p]) << "plane " << p << " height " << h;
  }
}

TEST(PlanarCopy, TightButOnlyOneSideContiguous) {
  // Contiguous source, destination planes apart: three copies, same bytes.
  Contiguous src(12, 4, 9);
  Picture dst;
  for (int p = 0; p < 3; ++p) dst.AddPlane(p, p ? 12 : 48, 1, 0, static_cast<uint8_t>(p + 1));
  uint32_t strides[3] = {12, 6, 6};
  EXPECT_EQ(_ORUYCbCr420Copy(src.planes, src.strides, 12, 4, dst.planes, strides), 0u);
  for (int p = 0; p < 3; ++p)
    EXPECT_TRUE(std::equal(dst.bytes[p].begin(), dst.bytes[p].end(), src.planes[p]));
}

}  // namespace
