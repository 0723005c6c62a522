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

// What a row-by-row copy leaves in dst: rows x width bytes of each plane from
// src, every other byte as it was.
std::vector<uint8_t> ExpectRows(const std::vector<uint8_t>& dstBefore, uint32_t dstStride, const uint8_t* src,
                                uint32_t srcStride, uint32_t width, uint32_t rows) {
  std::vector<uint8_t> want = dstBefore;
  for (uint32_t y = 0; y < rows; ++y) {
    for (uint32_t x = 0; x < width; ++x) want[y * dstStride + x] = src[y * srcStride + x];
  }
  return want;
}

uint32_t Copy(Picture& src, uint32_t width, uint32_t height, Picture& dst) {
  return _ORUYCbCr420Copy(src.planes, src.strides, width, height, dst.planes, dst.strides);
}

// Copies with the general row walk and checks all three planes.
void CheckRowCopy(uint32_t w, uint32_t h, const uint32_t srcStrides[3], const uint32_t dstStrides[3]) {
  SCOPED_TRACE(testing::Message() << w << "x" << h << " src strides " << srcStrides[0] << "/" << srcStrides[1]
                                  << "/" << srcStrides[2] << " dst " << dstStrides[0] << "/" << dstStrides[1]
                                  << "/" << dstStrides[2]);
  Picture src, dst;
  MakePlanar(src, w, h, srcStrides[0], srcStrides[1], srcStrides[2], 1);
  MakePlanar(dst, w, h, dstStrides[0], dstStrides[1], dstStrides[2], 200);
  const uint32_t chromaRows = h < 2 ? 0 : h / 2;
  std::vector<uint8_t> want[3] = {
      ExpectRows(dst.bytes[0], dstStrides[0], src.planes[0], srcStrides[0], w, h),
      ExpectRows(dst.bytes[1], dstStrides[1], src.planes[1], srcStrides[1], w / 2, chromaRows),
      ExpectRows(dst.bytes[2], dstStrides[2], src.planes[2], srcStrides[2], w / 2, chromaRows)};
  EXPECT_EQ(Copy(src, w, h, dst), 0u);
  for (int p = 0; p < 3; ++p) EXPECT_EQ(dst.bytes[p], want[p]) << "plane " << p;
}

TEST(PlanarCopy, PaddedStridesCopyRowByRow) {
  const uint32_t src[3] = {40, 24, 28}, dst[3] = {48, 20, 32};
  CheckRowCopy(32, 10, src, dst);
  const uint32_t sameSrc[3] = {40, 20, 20};
  CheckRowCopy(32, 10, sameSrc, sameSrc);
}

TEST(PlanarCopy, OddSizesCopyTheWholeRowsAndHalvedChroma) {
  const uint32_t src[3] = {9, 5, 4}, dst[3] = {11, 3, 6};
  CheckRowCopy(7, 5, src, dst);
}

TEST(PlanarCopy, TightSourceIntoPaddedDestinationCopiesRows) {
  const uint32_t src[3] = {16, 8, 8}, dst[3] = {20, 8, 8};
  CheckRowCopy(16, 6, src, dst);
  const uint32_t crWider[3] = {16, 8, 10};  // tight luma, one chroma stride off
  CheckRowCopy(16, 6, crWider, crWider);
}

TEST(PlanarCopy, OneRowPictureGetsNoChroma) {
  const uint32_t strides[3] = {24, 16, 16};
  CheckRowCopy(16, 1, strides, strides);
  CheckRowCopy(16, 0, strides, strides);
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
    src.AddPlane(0, size, 1, size, 5);
    src.AddPlane(1, quarter, 1, quarter, 6);
    src.AddPlane(2, quarter, 1, quarter, 7);
    dst.AddPlane(0, size, 1, size, 50);
    dst.AddPlane(1, quarter, 1, quarter, 60);
    dst.AddPlane(2, quarter, 1, quarter, 70);
    for (int p = 0; p < 3; ++p) src.strides[p] = dst.strides[p] = p == 0 ? w : w / 2;
    EXPECT_EQ(Copy(src, w, h, dst), 0u);
    for (int p = 0; p < 3; ++p) EXPECT_EQ(dst.bytes[p], src.bytes[p]) << "plane " << p << " height " << h;
  }
}

TEST(PlanarCopy, TightButOnlyOneSideContiguous) {
  // Contiguous source, destination planes apart: three copies, same bytes.
  Contiguous src(12, 4, 9);
  Picture dst;
  dst.AddPlane(0, 48, 1, 48, 1);
  dst.AddPlane(1, 12, 1, 12, 2);
  dst.AddPlane(2, 12, 1, 12, 3);
  uint32_t strides[3] = {12, 6, 6};
  EXPECT_EQ(_ORUYCbCr420Copy(src.planes, src.strides, 12, 4, dst.planes, strides), 0u);
  EXPECT_TRUE(std::equal(dst.bytes[0].begin(), dst.bytes[0].end(), src.planes[0]));
  EXPECT_TRUE(std::equal(dst.bytes[1].begin(), dst.bytes[1].end(), src.planes[1]));
  EXPECT_TRUE(std::equal(dst.bytes[2].begin(), dst.bytes[2].end(), src.planes[2]));
}

}  // namespace
