// Block writers shared by the YCbCr to RGB kernels: where the four pixels of
// one 2x2 block go. A walker calls RowPair(k) before the blocks of row pair k
// and Block(m, ...) for column pair m with the four finished pixels. The
// writers are the same for every output family; a pixel store (Px::Put) or a
// pair store (Pair::Store) says how one family's pixels land in memory.
#pragma once

#include <stddef.h>
#include <stdint.h>

#include "imageproc/imgprc_context.h"
#include "kernels/yuv_color_step.h"

namespace scrim {

// Byte steps of the rotating kernels are used rounded down to an even number.
constexpr ptrdiff_t EvenBytes(int32_t step) { return static_cast<ptrdiff_t>(step >> 1) * 2; }

// One RGB565 pixel as a 16-bit word.
struct Store565 {
  using Pixel = uint16_t;
  static constexpr int kPixelBytes = 2;
  static void Put(uint8_t* at, uint16_t v) { Store16(at, v); }
};

// Through the rotation record's four cursors.
template <class Px>
class CursorWriter {
 public:
  using Pixel = typename Px::Pixel;
  explicit CursorWriter(const ImgPrcRotationRecord& rec)
      : colStep_(EvenBytes(rec.stepX)), rowStep_(EvenBytes(rec.stepY)) {
    base_[0] = rec.pix00;
    base_[1] = rec.pix10;
    base_[2] = rec.pix01;
    base_[3] = rec.pix11;
  }
  void RowPair(int32_t k) { rowOffset_ = k * rowStep_; }
  void Block(int32_t m, Pixel p00, Pixel p10, Pixel p01, Pixel p11) {
    const ptrdiff_t at = rowOffset_ + m * colStep_;
    Px::Put(base_[0] + at, p00);
    Px::Put(base_[1] + at, p10);
    Px::Put(base_[2] + at, p01);
    Px::Put(base_[3] + at, p11);
  }

 private:
  uint8_t* base_[4];
  ptrdiff_t colStep_;
  ptrdiff_t rowStep_;
  ptrdiff_t rowOffset_ = 0;
};
using CursorBlockWriter = CursorWriter<Store565>;

// Two rows pitch bytes apart, row pairs Pair::RowPairBytes(pitch) apart; Pair
// decides how a row's two pixels of a block are stored and how far apart
// blocks lie.
template <class Pair>
class RowsBlockWriter {
 public:
  using Pixel = typename Pair::Pixel;
  RowsBlockWriter(uint8_t* dst, int32_t pitch) : dst_(dst), pitch_(pitch) {}
  void RowPair(int32_t k) {
    row0_ = dst_ + static_cast<ptrdiff_t>(k) * Pair::RowPairBytes(pitch_);
    row1_ = row0_ + pitch_;
  }
  void Block(int32_t m, Pixel p00, Pixel p10, Pixel p01, Pixel p11) {
    Pair::Store(row0_ + Pair::kBytes * m, p00, p10);
    Pair::Store(row1_ + Pair::kBytes * m, p01, p11);
  }

 private:
  uint8_t* dst_;
  int32_t pitch_;
  uint8_t* row0_ = nullptr;
  uint8_t* row1_ = nullptr;
};

// Packed 16-bit pixels: the pair as one 32-bit word, first pixel low.
struct PackedPair {
  using Pixel = uint16_t;
  static constexpr ptrdiff_t kBytes = 4;
  static ptrdiff_t RowPairBytes(int32_t pitch) { return 2 * static_cast<ptrdiff_t>(pitch); }
  static void Store(uint8_t* at, uint16_t lo, uint16_t hi) {
    Store32(at, static_cast<uint32_t>(lo) | static_cast<uint32_t>(hi) << 16);
  }
};

// The pair as a 32-bit value sign-extended into a 64-bit word, words 8 bytes apart.
struct WidePair {
  using Pixel = uint16_t;
  static constexpr ptrdiff_t kBytes = 8;
  static ptrdiff_t RowPairBytes(int32_t pitch) { return 2 * static_cast<ptrdiff_t>(pitch); }
  static void Store(uint8_t* at, uint16_t lo, uint16_t hi) {
    const int32_t v = static_cast<int32_t>(static_cast<uint32_t>(lo) | static_cast<uint32_t>(hi) << 16);
    Store64(at, static_cast<uint64_t>(static_cast<int64_t>(v)));
  }
};

using PlainBlockWriter = RowsBlockWriter<PackedPair>;
using WidePairBlockWriter = RowsBlockWriter<WidePair>;

}  // namespace scrim
