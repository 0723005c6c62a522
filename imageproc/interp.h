// Line interpolators of the resizing YCbCr to RGB kernels: source lines are
// converted into "spread" pixels, blended vertically, then stretched
// horizontally while being packed into the output format.
//
// Spread pixel: one pixel in the low 32 bits of a 64-bit line-buffer entry,
// blue in bits 0-4, green in bits 10-15, red in bits 21-26, every other bit 0
// (mask kSpreadMask). The empty bits above each field take the carries of a
// weighted sum whose weights add up to 32, so a blend is one multiply-add per
// entry with no unpacking.
//
// Horizontal positions are unsigned 16.16 fixed point: bits 16-31 index the
// source entry and bits 11-15 are the 5-bit weight of the next entry.
//
// Output of the RGB565 stretchers: two pixels per 64-bit entry, the first in
// the low half of the low 32 bits, the high 32 bits zero. The enlarging
// kernels' callers read the rows that way, so this spacing is kept.
#pragma once

#include <stdint.h>

#include "imageproc/imgprc_context.h"

constexpr uint64_t kSpreadMask = 0x7E0FC1F;

// Two spread lines from two luma lines sharing one 4:2:0 chroma line;
// width / 2 pairs, at least one.
void Convert(const ImgPrcContext* ctx, const uint8_t* y0, const uint8_t* y1, const uint8_t* cb,
             const uint8_t* cr, uint64_t* out0, uint64_t* out1, int32_t width);
// The same with the 5-bit blue value in the red field and the 6-bit red value
// in the low field.
void ConvertBGR(const ImgPrcContext* ctx, const uint8_t* y0, const uint8_t* y1, const uint8_t* cb,
                const uint8_t* cr, uint64_t* out0, uint64_t* out1, int32_t width);
// One 2x2 block as four spread pixels in consecutive 32-bit words: line 0
// left, line 0 right, line 1 left, line 1 right. The left sample is the low
// byte of each luma pair.
void _convert(const ImgPrcContext* ctx, uint32_t* out, uint16_t yPair0, uint16_t yPair1, uint8_t cb,
              uint8_t cr);

// out = ((32 - w) * a + w * b) / 32, masked, over count entries.
void VLerp(const uint64_t* a, const uint64_t* b, uint64_t* out, int32_t w, int32_t count);
// out = (a + b) / 2, masked, over count entries.
void VLerp_12(const uint64_t* a, const uint64_t* b, uint64_t* out, int32_t count);

// Linear stretch to RGB565, width / 2 output entries (at least one). Reads
// src[i + 1] beside every src[i] used, one entry past the last position.
void HLerp(const uint64_t* src, uint8_t* out, uint32_t step, int32_t width);
// As HLerp, one 16-bit pixel per store, each pixelStep pixels (signed) after
// the one before.
void HLerpRot(const uint64_t* src, uint8_t* out, uint32_t step, int32_t width, int32_t pixelStep);
// As HLerp, to 3 bytes a pixel in the memory order B, G, R.
void HLerp24(const uint64_t* src, uint8_t* out, uint32_t step, int32_t width);
// As HLerp, to one 32-bit ARGB word a pixel: alpha << 24, then red and green as
// their 6-bit value x 4 and blue as its 5-bit value x 8.
void HLerp32(const uint64_t* src, uint32_t* out, uint32_t step, int32_t width, uint32_t alpha);

// Nearest-neighbour stretch of an RGB565 line to n pixels: the source advances
// q pixels per output, one more whenever the accumulated r reaches n. Writes
// n / 2 entries.
void HLerp_Nearest(const uint16_t* src, uint8_t* out, int32_t n, int32_t q, int32_t r);

// Fixed 2.5x stretch: (width >> 2) rounds (at least one) of 4 source entries
// to 5 output entries. The last source pixel is written twice instead of
// reading past the line.
void HLerp_25(const uint64_t* src, uint8_t* out, int32_t width);
void HLerp32_25(const uint64_t* src, uint32_t* out, int32_t width, uint32_t alpha);
// Fixed 1.5x stretch: (width >> 2) rounds (at least one) of 4 source entries
// to 3 output entries (6 pixels); the last round blends the last source pixel
// with itself instead of reading past the line.
void HLerp_23(const uint64_t* src, uint8_t* out, int32_t width);
void HLerp32_23(const uint64_t* src, uint32_t* out, int32_t width, uint32_t alpha);
