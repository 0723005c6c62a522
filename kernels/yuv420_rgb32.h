// Planar YCbCr 4:2:0 to 32-bit (ARGB32, ABGR32) and 24-bit (RGB888) kernels.
//
// Each member is its RGB565 sibling of yuv420_rgb16.h (same arguments, walk,
// sampling, line cache and return values) with the 8-bit colour step
// ((L + term) >> 7 clamped to 0..255), its own packing and its own store:
// - ARGB32 pixels are alpha << 24 | R << 16 | G << 8 | B, ABGR32 pixels
//   alpha << 24 | B << 16 | G << 8 | R; only the low 8 bits of `alpha` count.
//   The ABGR32 line members convert lines with ConvertBGR.
// - 32-bit pixels are stored as sign-extended 64-bit words (see
//   rgb32_writers.h for the exact offsets), through the cursors as well, so
//   each store writes the 4 bytes after its pixel too.
// - RGB888 is 3 bytes a pixel, B, G, R, pitch in bytes; the rotated members
//   store each pixel as three bytes.
// Row placement of every member: Row32Offset / Row24Offset in rgb32_writers.h.
#pragma once

#include <stdint.h>

#include "imageproc/imgprc_context.h"

#ifndef SCRIM_API
#define SCRIM_API __attribute__((visibility("default")))
#endif

#ifdef __cplusplus
extern "C" {
#endif

// ARGB32
SCRIM_API uint32_t _ORUYCbCr420ToARGB32(ImgPrcContext* ctx, const uint8_t* const* src,
                                        const uint32_t* srcStrides, int32_t width, int32_t height,
                                        uint8_t* dst, int32_t pitch, uint32_t alpha);
SCRIM_API uint32_t _ORUYCbCr420ToARGB32Rot(ImgPrcContext* ctx, const uint8_t* const* src,
                                           const uint32_t* srcStrides, int32_t width, int32_t height,
                                           uint32_t alpha);
SCRIM_API uint32_t _ORUYCbCr420ToARGB32Rsz(ImgPrcContext* ctx, const uint8_t* const* src,
                                           const uint32_t* srcStrides, int32_t srcWidth, int32_t srcHeight,
                                           uint8_t* dst, int32_t pitch, int32_t dstWidth, int32_t dstHeight,
                                           uint32_t alpha);
SCRIM_API uint32_t _ORUYCbCr420ToARGB32RszRot(ImgPrcContext* ctx, const uint8_t* const* src,
                                              const uint32_t* srcStrides, int32_t srcWidth, int32_t srcHeight,
                                              int32_t dstWidth, int32_t dstHeight, uint32_t alpha);
SCRIM_API uint32_t _ORUYCbCr420ToARGB32RszUp(ImgPrcContext* ctx, uint8_t* const* lineBuffers,
                                             const uint8_t* const* src, const uint32_t* srcStrides,
                                             int32_t srcWidth, int32_t srcHeight, uint8_t* dst, int32_t pitch,
                                             int32_t dstWidth, int32_t dstHeight, uint32_t alpha);
SCRIM_API uint32_t _ORUYCbCr420ToARGB32Case1(ImgPrcContext* ctx, uint8_t* const* lineBuffers,
                                             const uint8_t* const* src, const uint32_t* srcStrides,
                                             int32_t srcWidth, uint8_t* dst, int32_t pitch, int32_t dstHeight,
                                             uint32_t alpha);
SCRIM_API uint32_t _ORUYCbCr420ToARGB32Case2(ImgPrcContext* ctx, uint8_t* const* lineBuffers,
                                             const uint8_t* const* src, const uint32_t* srcStrides,
                                             int32_t srcWidth, int32_t srcHeight, uint8_t* dst, int32_t pitch,
                                             int32_t dstHeight, uint32_t alpha);

// ABGR32
SCRIM_API uint32_t _ORUYCbCr420ToABGR32(ImgPrcContext* ctx, const uint8_t* const* src,
                                        const uint32_t* srcStrides, int32_t width, int32_t height,
                                        uint8_t* dst, int32_t pitch, uint32_t alpha);
SCRIM_API uint32_t _ORUYCbCr420ToABGR32Rot(ImgPrcContext* ctx, const uint8_t* const* src,
                                           const uint32_t* srcStrides, int32_t width, int32_t height,
                                           uint32_t alpha);
SCRIM_API uint32_t _ORUYCbCr420ToABGR32Rsz(ImgPrcContext* ctx, const uint8_t* const* src,
                                           const uint32_t* srcStrides, int32_t srcWidth, int32_t srcHeight,
                                           uint8_t* dst, int32_t pitch, int32_t dstWidth, int32_t dstHeight,
                                           uint32_t alpha);
SCRIM_API uint32_t _ORUYCbCr420ToABGR32RszRot(ImgPrcContext* ctx, const uint8_t* const* src,
                                              const uint32_t* srcStrides, int32_t srcWidth, int32_t srcHeight,
                                              int32_t dstWidth, int32_t dstHeight, uint32_t alpha);
SCRIM_API uint32_t _ORUYCbCr420ToABGR32RszUp(ImgPrcContext* ctx, uint8_t* const* lineBuffers,
                                             const uint8_t* const* src, const uint32_t* srcStrides,
                                             int32_t srcWidth, int32_t srcHeight, uint8_t* dst, int32_t pitch,
                                             int32_t dstWidth, int32_t dstHeight, uint32_t alpha);
SCRIM_API uint32_t _ORUYCbCr420ToABGR32Case1(ImgPrcContext* ctx, uint8_t* const* lineBuffers,
                                             const uint8_t* const* src, const uint32_t* srcStrides,
                                             int32_t srcWidth, uint8_t* dst, int32_t pitch, int32_t dstHeight,
                                             uint32_t alpha);
SCRIM_API uint32_t _ORUYCbCr420ToABGR32Case2(ImgPrcContext* ctx, uint8_t* const* lineBuffers,
                                             const uint8_t* const* src, const uint32_t* srcStrides,
                                             int32_t srcWidth, int32_t srcHeight, uint8_t* dst, int32_t pitch,
                                             int32_t dstHeight, uint32_t alpha);

// RGB888
SCRIM_API uint32_t _ORUYCbCr420ToRGB888(ImgPrcContext* ctx, const uint8_t* const* src,
                                        const uint32_t* srcStrides, int32_t width, int32_t height,
                                        uint8_t* dst, int32_t pitch);
SCRIM_API uint32_t _ORUYCbCr420ToRGB888Rot(ImgPrcContext* ctx, const uint8_t* const* src,
                                           const uint32_t* srcStrides, int32_t width, int32_t height);
SCRIM_API uint32_t _ORUYCbCr420ToRGB888Rsz(ImgPrcContext* ctx, const uint8_t* const* src,
                                           const uint32_t* srcStrides, int32_t srcWidth, int32_t srcHeight,
                                           uint8_t* dst, int32_t pitch, int32_t dstWidth, int32_t dstHeight);
SCRIM_API uint32_t _ORUYCbCr420ToRGB888RszRot(ImgPrcContext* ctx, const uint8_t* const* src,
                                              const uint32_t* srcStrides, int32_t srcWidth, int32_t srcHeight,
                                              int32_t dstWidth, int32_t dstHeight);
SCRIM_API uint32_t _ORUYCbCr420ToRGB888RszUp(ImgPrcContext* ctx, uint8_t* const* lineBuffers,
                                             const uint8_t* const* src, const uint32_t* srcStrides,
                                             int32_t srcWidth, int32_t srcHeight, uint8_t* dst, int32_t pitch,
                                             int32_t dstWidth, int32_t dstHeight);

#ifdef __cplusplus
}
#endif
