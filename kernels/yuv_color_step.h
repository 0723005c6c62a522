// The per-sample colour step of the YCbCr to RGB kernels: the three range
// tables of a context turned into red, green and blue terms once per chroma
// pair, then applied to each luma sample that shares that pair.
#pragma once

#include <stddef.h>
#include <stdint.h>
#include <string.h>

#include "imageproc/imgprc_context.h"

namespace scrim {

// Clamp order matters for no result but is kept as the tables expect it: upper
// bound first, then lower.
constexpr ptrdiff_t ClampTo(ptrdiff_t v, ptrdiff_t hi) {
  v = v > hi ? hi : v;
  return v < 0 ? 0 : v;
}

// The three range tables of a context, held apart from it so that a walk
// keeps them in registers while it stores pixels.
struct ColorTables {
  const uint16_t* y;
  const int64_t* cb;
  const int64_t* cr;
  explicit ColorTables(const ImgPrcContext* ctx)
      : y(ctx->rangeTableY), cb(ctx->rangeTableCb), cr(ctx->rangeTableCr) {}
  ptrdiff_t Luma(uint8_t v) const { return y[v]; }
};

// Colour terms of one chroma pair. Table entries are signed 32-bit words held
// in 64-bit slots; only the low 32 bits take part. The terms and the sums
// with a luma entry fit 32 bits; they are held in address-sized integers so
// that the sums index the clamp tables directly.
struct ChromaTerms {
  ptrdiff_t r;  // Cr entry >> 15
  ptrdiff_t g;  // low halves of Cb + Cr entries, as signed 16-bit, doubled
  ptrdiff_t b;  // Cb entry >> 15
};

inline ChromaTerms ChromaTermsOf(const ColorTables& tab, uint8_t cb, uint8_t cr) {
  const uint32_t eb = static_cast<uint32_t>(tab.cb[cb]);
  const uint32_t er = static_cast<uint32_t>(tab.cr[cr]);
  ChromaTerms t;
  t.r = static_cast<int32_t>(er) >> 15;
  t.b = static_cast<int32_t>(eb) >> 15;
  // The sum is formed on 32 bits, so a carry between the two low halves is
  // dropped here on purpose.
  t.g = static_cast<ptrdiff_t>(static_cast<int16_t>(static_cast<uint16_t>(eb + er))) * 2;
  return t;
}

// RGB565: red and blue (L + term) >> 10 clamped to 0..31, green >> 9 clamped
// to 0..63. The clamps are looked up rather than compared: luma entries are
// 0..65535 and terms -65536..65535, so the shifted sums stay in -64..127
// (>> 10) and -128..255 (>> 9), which index these tables directly.
// One clamped colour field, already shifted into place, indexed by a shifted
// sum plus `bias` (the table's first entry stands for -bias).
template <typename T, int N>
struct FieldClamp {
  T at[N];
};
template <typename T, int N>
constexpr FieldClamp<T, N> MakeFieldClamp(int bias, int max, int shift) {
  FieldClamp<T, N> f{};
  for (int i = 0; i < N; ++i) f.at[i] = static_cast<T>(ClampTo(i - bias, max) << shift);
  return f;
}

struct Rgb565ClampTables {
  FieldClamp<uint16_t, 192> red;    // (sum >> 10) + 64 -> clamped red << 11
  FieldClamp<uint16_t, 384> green;  // (sum >> 9) + 128 -> clamped green << 5
  FieldClamp<uint16_t, 192> blue;   // (sum >> 10) + 64 -> clamped blue
};
constexpr Rgb565ClampTables MakeRgb565ClampTables() {
  return {MakeFieldClamp<uint16_t, 192>(64, 31, 11), MakeFieldClamp<uint16_t, 384>(128, 63, 5),
          MakeFieldClamp<uint16_t, 192>(64, 31, 0)};
}
inline constexpr Rgb565ClampTables kRgb565Clamp = MakeRgb565ClampTables();

inline uint16_t Rgb565(ptrdiff_t l, ChromaTerms t) {
  return static_cast<uint16_t>((kRgb565Clamp.red.at + 64)[(l + t.r) >> 10] |
                               (kRgb565Clamp.green.at + 128)[(l + t.g) >> 9] |
                               (kRgb565Clamp.blue.at + 64)[(l + t.b) >> 10]);
}

// RGB555 as the keyed kernel writes it: R in 15-11, G in 10-6, B in 5-1 and
// bit 0 set (opaque), so that 0x0000 stays free to mark a keyed-out pixel.
inline uint16_t Rgb555Opaque(ptrdiff_t l, ChromaTerms t) {
  const ptrdiff_t r = ClampTo((l + t.r) >> 10, 31);
  const ptrdiff_t g = ClampTo((l + t.g) >> 10, 31);
  const ptrdiff_t b = ClampTo((l + t.b) >> 10, 31);
  return static_cast<uint16_t>(r << 11 | g << 6 | b << 1 | 1);
}

// Spread pixel of the line interpolators: red 6 bits at bit 21, green 6 bits
// at bit 10, blue 5 bits at bit 0, zero everywhere else.
// The clamps are looked up as for RGB565, over the same index ranges, with the
// fields already in place.
struct SpreadClampTables {
  FieldClamp<uint32_t, 384> red;    // (sum >> 9) + 128 -> clamped red << 21
  FieldClamp<uint32_t, 384> green;  // (sum >> 9) + 128 -> clamped green << 10
  FieldClamp<uint32_t, 192> blue;   // (sum >> 10) + 64 -> clamped blue
};
constexpr SpreadClampTables MakeSpreadClampTables() {
  return {MakeFieldClamp<uint32_t, 384>(128, 63, 21), MakeFieldClamp<uint32_t, 384>(128, 63, 10),
          MakeFieldClamp<uint32_t, 192>(64, 31, 0)};
}
inline constexpr SpreadClampTables kSpreadClamp = MakeSpreadClampTables();

inline uint32_t SpreadRgb(ptrdiff_t l, ChromaTerms t) {
  return (kSpreadClamp.red.at + 128)[(l + t.r) >> 9] | (kSpreadClamp.green.at + 128)[(l + t.g) >> 9] |
         (kSpreadClamp.blue.at + 64)[(l + t.b) >> 10];
}

// The same values with red and blue exchanged: 5-bit blue in the red field,
// 6-bit red in the low field (which then reaches into bit 5).
inline uint32_t SpreadBgr(ptrdiff_t l, ChromaTerms t) {
  const uint32_t r = static_cast<uint32_t>(ClampTo((l + t.r) >> 9, 63));
  const uint32_t g = static_cast<uint32_t>(ClampTo((l + t.g) >> 9, 63));
  const uint32_t b = static_cast<uint32_t>(ClampTo((l + t.b) >> 10, 31));
  return b << 21 | g << 10 | r;
}

// Unaligned-safe stores: rotated cursors may point anywhere a caller's buffer
// lets them.
inline void Store16(uint8_t* p, uint16_t v) { memcpy(p, &v, 2); }
inline void Store32(uint8_t* p, uint32_t v) { memcpy(p, &v, 4); }
inline void Store64(uint8_t* p, uint64_t v) { memcpy(p, &v, 8); }

}  // namespace scrim
