// RGB sources: RGB565, ARGB32 and ABGR32 to planar YCbCr 4:2:0, and RGB565 or
// RGB888 to RGB565, RGB888 or ARGB32.
//
// RGB to YCbCr 4:2:0 members take (source, source pitch in bytes, destination
// planes Y, Cb, Cr, their strides, width, height) and return 0. Each 2x2 block
// gives four luma samples and one Cb and one Cr, both from the block's
// bottom-left pixel (chroma is not averaged). Odd sizes are converted as the
// next even size. Coefficients are integers applied to 8-bit R, G, B (RGB565
// widened by shifting, low bits zero), sums shifted right by 8:
// - YCbCr420 members write studio range: Y + 16, chroma + 128; the 32-bit
//   sources round (+128 before the shift), RGB565 sources do not;
// - YUV420 members write full range without offsets: the chroma bytes hold
//   signed values centred on 0.
// The digit is the matrix: 0 BT.601, 1 BT.709, 2 SMPTE 240M, 3 FCC.
//
// Source spacing, kept as callers lay their pictures out: a pixel pair is the
// low 32 bits of a 64-bit word, pairs 8 bytes apart (for the 32-bit sources
// that is the packed layout); the bottom row of a row pair is read
// (pitch / 4) x 8 bytes after the top row, and row pairs are 2 x pitch apart.
// ARGB32 holds red in bits 23-16 and blue in 7-0, ABGR32 the reverse; alpha is
// not read.
#pragma once

#include <stdint.h>

#include "imageproc/imgprc_context.h"

#ifndef SCRIM_API
#define SCRIM_API __attribute__((visibility("default")))
#endif

// The 24 members in GetPFN_rgb2yuv's order: index (2 x source kind + full
// range) x 4 + matrix, source kinds RGB565, ARGB32, ABGR32. X(name, source,
// range, matrix).
#define SCRIM_RGB_TO_YUV420_MEMBERS(X)                        \
  X(_ORURGB565ToYCbCr420_0, Rgb565Source, StudioTruncated, 0) \
  X(_ORURGB565ToYCbCr420_1, Rgb565Source, StudioTruncated, 1) \
  X(_ORURGB565ToYCbCr420_2, Rgb565Source, StudioTruncated, 2) \
  X(_ORURGB565ToYCbCr420_3, Rgb565Source, StudioTruncated, 3) \
  X(_ORURGB565ToYUV420_0, Rgb565Source, FullRange, 0)         \
  X(_ORURGB565ToYUV420_1, Rgb565Source, FullRange, 1)         \
  X(_ORURGB565ToYUV420_2, Rgb565Source, FullRange, 2)         \
  X(_ORURGB565ToYUV420_3, Rgb565Source, FullRange, 3)         \
  X(_ORUARGB32ToYCbCr420_0, Argb32Source, StudioRounded, 0)   \
  X(_ORUARGB32ToYCbCr420_1, Argb32Source, StudioRounded, 1)   \
  X(_ORUARGB32ToYCbCr420_2, Argb32Source, StudioRounded, 2)   \
  X(_ORUARGB32ToYCbCr420_3, Argb32Source, StudioRounded, 3)   \
  X(_ORUARGB32ToYUV420_0, Argb32Source, FullRange, 0)         \
  X(_ORUARGB32ToYUV420_1, Argb32Source, FullRange, 1)         \
  X(_ORUARGB32ToYUV420_2, Argb32Source, FullRange, 2)         \
  X(_ORUARGB32ToYUV420_3, Argb32Source, FullRange, 3)         \
  X(_ORUABGR32ToYCbCr420_0, Abgr32Source, StudioRounded, 0)   \
  X(_ORUABGR32ToYCbCr420_1, Abgr32Source, StudioRounded, 1)   \
  X(_ORUABGR32ToYCbCr420_2, Abgr32Source, StudioRounded, 2)   \
  X(_ORUABGR32ToYCbCr420_3, Abgr32Source, StudioRounded, 3)   \
  X(_ORUABGR32ToYUV420_0, Abgr32Source, FullRange, 0)         \
  X(_ORUABGR32ToYUV420_1, Abgr32Source, FullRange, 1)         \
  X(_ORUABGR32ToYUV420_2, Abgr32Source, FullRange, 2)         \
  X(_ORUABGR32ToYUV420_3, Abgr32Source, FullRange, 3)

#ifdef __cplusplus
extern "C" {
#endif

#define SCRIM_DECLARE_RGB_TO_YUV420(name, source, range, matrix)                                         \
  SCRIM_API uint32_t name(const uint8_t* src, uint32_t pitch, uint8_t** dstPlanes, uint32_t* dstStrides, \
                          uint32_t width, uint32_t height);
SCRIM_RGB_TO_YUV420_MEMBERS(SCRIM_DECLARE_RGB_TO_YUV420)
#undef SCRIM_DECLARE_RGB_TO_YUV420

// Bilinear resize through the rotation record's packed fields: the output
// starts at pix00, moves one pixel per column (half of stepX, rounded down to
// whole pixels for RGB565) and one row per row (half of stepY, likewise).
// The first and last output pixels sample the first and last source pixels;
// the row below and the column right of a sample are clamped to the picture.
// Weights are 5 bits, no rounding. RGB565 source stride in pixels, RGB888
// (bytes blue, green, red) in bytes. A height below 1 returns 0 at once;
// 0xFFFFFFFF without a record.
SCRIM_API uint32_t _ORURGB565RszRot(const ImgPrcRotationRecord* rec, const uint8_t* src, int32_t stride,
                                    int32_t srcWidth, int32_t srcHeight, int32_t dstWidth, int32_t dstHeight);
SCRIM_API uint32_t _ORURGB888ToRGB565RszRot(const ImgPrcRotationRecord* rec, const uint8_t* src,
                                            int32_t stride, int32_t srcWidth, int32_t srcHeight,
                                            int32_t dstWidth, int32_t dstHeight);
SCRIM_API uint32_t _ORURGB888RszRot(const ImgPrcRotationRecord* rec, const uint8_t* src, int32_t stride,
                                    int32_t srcWidth, int32_t srcHeight, int32_t dstWidth, int32_t dstHeight);

// RGB565 to ARGB32 with 8-bit channels whose low bits are zero, alpha in bits
// 24-31. Wide layout on both sides, as callers read it: a source pixel pair is
// the low 32 bits of a 64-bit word (pairs 8 bytes apart, rows (stride >> 1) x 8
// bytes apart), and each output pixel is one 64-bit word holding the pixel
// with alpha << 24 sign-extended above it (rows stride x 8 bytes apart).
// Strides count pixels. width >> 1 pairs a row and height rows, at least one
// of each.
SCRIM_API uint32_t _ORURGB565ToARGB32(const uint8_t* src, int32_t stride, uint8_t* dst, int32_t dstStride,
                                      int32_t width, int32_t height, uint32_t alpha);

#ifdef __cplusplus
}
#endif
