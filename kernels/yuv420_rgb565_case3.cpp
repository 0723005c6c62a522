// 320x240 YCbCr 4:2:0 to 480x272 RGB565 with fixed weights: 2 to 3 across and
// 15 to 17 down. The frame is 16 bands of 15 source rows, each giving 17 output
// rows. Source row pairs are converted one 2x2 block at a time (_convert); the
// two line buffers hold the current pair's rows as 32-bit spread pixels
// (1280 bytes each) and carry them from one band into the next, and the row
// before the pair is kept aside for output rows that straddle two pairs.
//
// Vertical weights, in eighths of the next row, for output row k of a band
// (source row 15 * band + row), nearest eighth to the exact position 15k/17:
//
//   k    0  1  2  3  4  5  6  7  8  9 10 11 12 13 14 15 16
//   row  0  0  1  2  3  4  5  6  7  8  8  9 10 11 12 13 14
//   w/8  0  7  6  5  4  3  2  1  0  0  7  6  5  4  3  2  1
//
// so that output row k is ((8 - w) * row + w * (row + 1)) / 8, masked; the
// next row after the picture's last is the last row itself. Across, each
// blended line goes through HLerp_23: per two source pixels a, b (c the next)
// the outputs are a, (11a + 21b) / 32 and (21b + 11c) / 32, the last source
// pixel standing in for the one past the right edge.
//
// Output rows use the enlarging kernels' layout: two pixels in the low half of
// a 64-bit word, rows (pitch / 4) * 8 bytes apart.
#include <stddef.h>
#include <string.h>

#include "imageproc/interp.h"
#include "kernels/yuv420_rgb16.h"

namespace {

constexpr int32_t kSrcWidth = 320;
constexpr int32_t kSrcHeight = 240;
constexpr int32_t kBands = 16;
constexpr int32_t kBandRows = 15;
constexpr int32_t kBandOutRows = 17;

struct BandRow {
  uint8_t row;     // source row within the band
  uint8_t weight;  // eighths of the row after it
};
constexpr BandRow kBandRowTable[kBandOutRows] = {{0, 0},  {0, 7},  {1, 6},  {2, 5},  {3, 4}, {4, 3},
                                                 {5, 2},  {6, 1},  {7, 0},  {8, 0},  {8, 7}, {9, 6},
                                                 {10, 5}, {11, 4}, {12, 3}, {13, 2}, {14, 1}};

// Spread source rows, walked downwards one pair at a time.
class RowStream {
 public:
  RowStream(const ImgPrcContext* ctx, uint8_t* line0, uint8_t* line1, const uint8_t* const* src,
            const uint32_t* strides)
      : ctx_(ctx), src_(src), strides_(strides) {
    even_ = reinterpret_cast<uint32_t*>(line0);
    odd_ = reinterpret_cast<uint32_t*>(line1);
  }

  // Source row r: a row of the current pair, or the row just before it. Moving
  // on to a later pair overwrites the buffers, so of two rows needed together
  // ask for the lower one last.
  const uint32_t* Row(int32_t r) {
    while (r >> 1 > pair_) Next();
    if (r == 2 * pair_) return even_;
    return r == 2 * pair_ + 1 ? odd_ : before_;
  }

 private:
  void Next() {
    memcpy(before_, odd_, sizeof before_);
    ++pair_;
    const uint8_t* y0 = src_[0] + static_cast<ptrdiff_t>(2 * pair_) * strides_[0];
    const uint8_t* y1 = y0 + strides_[0];
    const uint8_t* cb = src_[1] + static_cast<ptrdiff_t>(pair_) * strides_[1];
    const uint8_t* cr = src_[2] + static_cast<ptrdiff_t>(pair_) * strides_[2];
    for (int32_t m = 0; m < kSrcWidth / 2; ++m) {
      // The left sample is the low byte of each luma pair.
      const uint16_t pair0 = static_cast<uint16_t>(y0[2 * m] | y0[2 * m + 1] << 8);
      const uint16_t pair1 = static_cast<uint16_t>(y1[2 * m] | y1[2 * m + 1] << 8);
      uint32_t block[4];
      _convert(ctx_, block, pair0, pair1, cb[m], cr[m]);
      even_[2 * m] = block[0];
      even_[2 * m + 1] = block[1];
      odd_[2 * m] = block[2];
      odd_[2 * m + 1] = block[3];
    }
  }

  const ImgPrcContext* ctx_;
  const uint8_t* const* src_;
  const uint32_t* strides_;
  uint32_t* even_;
  uint32_t* odd_;
  uint32_t before_[kSrcWidth] = {};
  int32_t pair_ = -1;
};

}  // namespace

extern "C" SCRIM_API uint32_t _ORUYCbCr420ToRGB565Case3(ImgPrcContext* ctx, uint8_t* line0, uint8_t* line1,
                                                        const uint8_t* const* src, const uint32_t* srcStrides,
                                                        uint8_t* dst, int32_t pitch) {
  if (line0 == nullptr || line1 == nullptr) return 0xFFFFFFFFu;
  RowStream rows(ctx, line0, line1, src, srcStrides);
  const ptrdiff_t rowBytes = static_cast<ptrdiff_t>(pitch >> 2) * 8;
  uint64_t blended[kSrcWidth];
  for (int32_t band = 0; band < kBands; ++band) {
    for (int32_t k = 0; k < kBandOutRows; ++k, dst += rowBytes) {
      const int32_t r = kBandRowTable[k].row + band * kBandRows;
      const uint64_t w = kBandRowTable[k].weight;
      if (w == 0) {
        const uint32_t* a = rows.Row(r);
        for (int32_t x = 0; x < kSrcWidth; ++x) blended[x] = a[x];
      } else {
        const uint32_t* b = rows.Row(r + 1 < kSrcHeight ? r + 1 : r);
        const uint32_t* a = rows.Row(r);
        for (int32_t x = 0; x < kSrcWidth; ++x) blended[x] = (((8 - w) * a[x] + w * b[x]) >> 3) & kSpreadMask;
      }
      HLerp_23(blended, dst, kSrcWidth);
    }
  }
  return 0;
}
