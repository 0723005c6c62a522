// Planar YCbCr 4:2:2 and 4:4:4 to RGB kernels. They use the colour steps,
// packings and stores of the 4:2:0 kernels (yuv420_rgb16.h, yuv420_rgb32.h);
// only the chroma addressing and the sampling of the RszRot members differ.
// All return 0; a height (output height for the resizing ones) below 1
// returns at once.
#pragma once

#include <stdint.h>

#include "imageproc/imgprc_context.h"

#ifndef SCRIM_API
#define SCRIM_API __attribute__((visibility("default")))
#endif

#ifdef __cplusplus
extern "C" {
#endif

// Same size, row by row: each column pair takes the chroma of its own row at
// column c / 2 (both chroma planes addressed with stride 1); 16-bit pixels,
// rows pitch bytes (rounded down to even) apart. An odd width is walked as
// the next even one.
SCRIM_API uint32_t _ORUYCbCr422ToRGB565(ImgPrcContext* ctx, const uint8_t* const* src,
                                        const uint32_t* srcStrides, int32_t width, int32_t height,
                                        uint8_t* dst, int32_t pitch);
// As _ORUYCbCr420ToRGB565Rsz (same sampling of luma and chroma column, same
// storage), the chroma of each output row taken from that row's own luma row.
SCRIM_API uint32_t _ORUYCbCr422ToRGB565Rsz(ImgPrcContext* ctx, const uint8_t* const* src,
                                           const uint32_t* srcStrides, int32_t srcWidth, int32_t srcHeight,
                                           uint8_t* dst, int32_t pitch, int32_t dstWidth, int32_t dstHeight);

// Any ratio, one pixel at a time through the rotation record's first cursor,
// half its block steps apart (rounded down to an even number of bytes, but
// for RGB888, whose 3-byte steps are used as they are): Y, Cb and Cr each
// bilinear from their own plane (4:2:2 chroma at half the position across).
// As in the 4:2:0 any-ratio kernels the next row is not clamped: a position
// on the last row reads one row beyond. 32-bit pixels are stored as
// sign-extended 64-bit words, as in yuv420_rgb32.h.
SCRIM_API uint32_t _ORUYCbCr422ToARGB32RszRot(ImgPrcContext* ctx, const uint8_t* const* src,
                                              const uint32_t* srcStrides, int32_t srcWidth, int32_t srcHeight,
                                              int32_t dstWidth, int32_t dstHeight, uint32_t alpha);
SCRIM_API uint32_t _ORUYCbCr422ToABGR32RszRot(ImgPrcContext* ctx, const uint8_t* const* src,
                                              const uint32_t* srcStrides, int32_t srcWidth, int32_t srcHeight,
                                              int32_t dstWidth, int32_t dstHeight, uint32_t alpha);
SCRIM_API uint32_t _ORUYCbCr444ToRGB565RszRot(ImgPrcContext* ctx, const uint8_t* const* src,
                                              const uint32_t* srcStrides, int32_t srcWidth, int32_t srcHeight,
                                              int32_t dstWidth, int32_t dstHeight);
SCRIM_API uint32_t _ORUYCbCr444ToRGB888RszRot(ImgPrcContext* ctx, const uint8_t* const* src,
                                              const uint32_t* srcStrides, int32_t srcWidth, int32_t srcHeight,
                                              int32_t dstWidth, int32_t dstHeight);
SCRIM_API uint32_t _ORUYCbCr444ToARGB32RszRot(ImgPrcContext* ctx, const uint8_t* const* src,
                                              const uint32_t* srcStrides, int32_t srcWidth, int32_t srcHeight,
                                              int32_t dstWidth, int32_t dstHeight, uint32_t alpha);
SCRIM_API uint32_t _ORUYCbCr444ToABGR32RszRot(ImgPrcContext* ctx, const uint8_t* const* src,
                                              const uint32_t* srcStrides, int32_t srcWidth, int32_t srcHeight,
                                              int32_t dstWidth, int32_t dstHeight, uint32_t alpha);

#ifdef __cplusplus
}
#endif
