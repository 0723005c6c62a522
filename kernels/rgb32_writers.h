// Stores of the 32-bit (ARGB32, ABGR32) and 24-bit (RGB888) families, for the
// block writers of rgb565_writers.h and the cursor writers of resize_walk.h.
#pragma once

#include <stddef.h>
#include <stdint.h>

#include "kernels/yuv_color_step.h"

namespace scrim {

// A 32-bit pixel is stored as a 64-bit word holding the value sign-extended:
// callers read these outputs as 64-bit words, so an alpha of 0x80 or more
// fills the four bytes after the pixel with ones (a later pixel may cover them).
inline void StoreWide32(uint8_t* at, uint32_t v) {
  Store64(at, static_cast<uint64_t>(static_cast<int64_t>(static_cast<int32_t>(v))));
}

struct Store32Wide {
  using Pixel = uint32_t;
  static constexpr int kPixelBytes = 4;
  static void Put(uint8_t* at, uint32_t v) { StoreWide32(at, v); }
};

// RGB888 through a cursor: three byte stores, B, G, R.
struct Store888 {
  using Pixel = uint32_t;  // R << 16 | G << 8 | B
  static constexpr int kPixelBytes = 3;
  static void Put(uint8_t* at, uint32_t v) {
    at[0] = static_cast<uint8_t>(v);
    at[1] = static_cast<uint8_t>(v >> 8);
    at[2] = static_cast<uint8_t>(v >> 16);
  }
};

// 32-bit rows: the pixel at even column c at byte 8c, c + 1 at 8c + 4 (its
// upper half covers bytes 8c + 8 to 8c + 11; 8c + 12 to 8c + 15 are never
// written), the second row of a pair pitch bytes after the first and row pairs
// (pitch / 2, rounded towards minus infinity) x 8 bytes apart.
struct Wide32Pair {
  using Pixel = uint32_t;
  static constexpr ptrdiff_t kBytes = 16;
  static ptrdiff_t RowPairBytes(int32_t pitch) { return static_cast<ptrdiff_t>(pitch >> 1) * 8; }
  static void Store(uint8_t* at, uint32_t lo, uint32_t hi) {
    StoreWide32(at, lo);
    StoreWide32(at + 4, hi);
  }
};

// RGB888 rows: two pixels as three 16-bit words (B0 | G0 << 8), (R0 | B1 << 8),
// (G1 | R1 << 8), at 3 bytes a pixel, rows pitch bytes apart.
struct Rgb888Pair {
  using Pixel = uint32_t;  // R << 16 | G << 8 | B
  static constexpr ptrdiff_t kBytes = 6;
  static ptrdiff_t RowPairBytes(int32_t pitch) { return 2 * static_cast<ptrdiff_t>(pitch); }
  static void Store(uint8_t* at, uint32_t p0, uint32_t p1) {
    Store16(at, static_cast<uint16_t>(p0));
    Store16(at + 2, static_cast<uint16_t>((p0 >> 16 & 0xFF) | (p1 & 0xFF) << 8));
    Store16(at + 4, static_cast<uint16_t>(p1 >> 8));
  }
};

// Where output row j starts in every member of a family, the any-ratio (Rsz)
// and line-stretching (RszUp, Case1, Case2) ones included, so that a caller
// finds row j in the same place whichever member ran: for the 32-bit families
// where the block members put it (row pairs (pitch / 2) x 8 bytes apart, the
// second row pitch bytes after the first), for RGB888 at j x pitch. Inside a
// row the block members (plain, Rsz) store wide words as Wide32Pair does,
// while the line members store what HLerp32, HLerp32_25, HLerp32_23 and
// HLerp24 write: consecutive 32-bit pixels, or 3 bytes a pixel.
inline ptrdiff_t Row32Offset(int32_t j, int32_t pitch) {
  return (j >> 1) * Wide32Pair::RowPairBytes(pitch) + (j & 1) * static_cast<ptrdiff_t>(pitch);
}
inline ptrdiff_t Row24Offset(int32_t j, int32_t pitch) { return static_cast<ptrdiff_t>(j) * pitch; }

}  // namespace scrim
