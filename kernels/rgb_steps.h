// Colour steps of the YCbCr to RGB output families as functors that the walks
// call per luma sample with the chroma pair's terms: Step(luma entry, terms)
// returns one finished pixel of the family.
#pragma once

#include <stddef.h>
#include <stdint.h>

#include "kernels/yuv_color_step.h"

namespace scrim {

struct Rgb565Step {
  uint16_t operator()(ptrdiff_t l, ChromaTerms t) const { return Rgb565(l, t); }
};

// 8-bit channels from the same tables: (L + term) >> 7, clamped to 0..255
// (upper bound first), where RGB565 shifts by 10 and 9. Looked up like the
// RGB565 clamps: sums of -65536..131070 shift to -512..1023.
inline constexpr FieldClamp<uint8_t, 1536> kClamp8 = MakeFieldClamp<uint8_t, 1536>(512, 255, 0);
inline uint32_t Channel8(ptrdiff_t sum) { return (kClamp8.at + 512)[sum >> 7]; }

// alpha << 24 | R << 16 | G << 8 | B. RGB888 is the same value with alpha 0:
// its bytes B, G, R are the low three of the little-endian word.
struct ArgbStep {
  uint32_t alpha;  // already in bits 31-24
  uint32_t operator()(ptrdiff_t l, ChromaTerms t) const {
    return alpha | Channel8(l + t.r) << 16 | Channel8(l + t.g) << 8 | Channel8(l + t.b);
  }
};

// alpha << 24 | B << 16 | G << 8 | R.
struct AbgrStep {
  uint32_t alpha;  // already in bits 31-24
  uint32_t operator()(ptrdiff_t l, ChromaTerms t) const {
    return alpha | Channel8(l + t.b) << 16 | Channel8(l + t.g) << 8 | Channel8(l + t.r);
  }
};

// Only the low 8 bits of a kernel's alpha argument count.
inline uint32_t AlphaBits(uint32_t alpha) { return (alpha & 0xFF) << 24; }

}  // namespace scrim
