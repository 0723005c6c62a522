// Planar YCbCr 4:2:0 to RGB565 and RGB555 kernels.
//
// Every kernel takes the image-processor context (range tables, line buffers,
// rotation record, colour key), the three source planes Y, Cb, Cr and their
// strides in bytes, and returns 0, or 0xFFFFFFFF when a line-buffer set or the
// rotation record it needs is missing. A height below 1 returns 0 without
// writing. Planes, strides and sizes are otherwise trusted.
//
// Source reads: the unscaled kernels use stride 0 for luma and stride 1 for
// both chroma planes; the scaling kernels use all three. An odd width or
// height is converted as the next even one (the last pair reads and writes one
// column or row beyond).
//
// Destination layouts, which callers depend on:
// - unscaled and rotated kernels: 16-bit pixels, pitch in bytes;
// - Rsz: each row's pair of pixels is one 32-bit value (first pixel low),
//   sign-extended and stored as a 64-bit word, pairs 8 bytes apart, pitch in
//   bytes, whole row pairs written;
// - enlarging kernels (RszUp, _Nearest, _NearLinear, Case1, Case2, Case3): a
//   pair of pixels in the low 32 bits of a 64-bit word whose high 32 bits are
//   zero, and each row (pitch >> 2) * 8 bytes after the one before;
// - rotated kernels write through the context's rotation record (2x2 block
//   cursors pix00/pix10/pix01/pix11, block steps stepX/stepY in bytes, used
//   rounded down to whole 16-bit pixels).
//
// Line buffers: a kernel that takes the set uses slots 0-2 for converted source
// lines and slot 3 for a blend, each holding at least max(source width + 1, 4)
// 64-bit entries (Case3 uses two buffers of 1280 bytes). Lines are converted in
// pixel pairs, so these kernels take even source widths, as set-up gives them.
#pragma once

#include <stdint.h>

#include "imageproc/imgprc_context.h"

#ifndef SCRIM_API
#define SCRIM_API __attribute__((visibility("default")))
#endif

#ifdef __cplusplus
extern "C" {
#endif

// The reference member: same size, no rotation.
SCRIM_API uint32_t _ORUYCbCr420ToRGB565(ImgPrcContext* ctx, const uint8_t* const* src,
                                        const uint32_t* srcStrides, int32_t width, int32_t height,
                                        uint8_t* dst, int32_t pitch);
// Same size, through the four cursors of the rotation record.
SCRIM_API uint32_t _ORUYCbCr420ToRGB565Rot(ImgPrcContext* ctx, const uint8_t* const* src,
                                           const uint32_t* srcStrides, int32_t width, int32_t height);
// Same size to opaque RGB555 (bit 0 set); a pixel whose (Y << 16 | Cb << 8 | Cr)
// equals colorKey is written as 0x0000.
SCRIM_API uint32_t _ORUYCbCr420ToRGB555(ImgPrcContext* ctx, const uint8_t* const* src,
                                        const uint32_t* srcStrides, int32_t width, int32_t height,
                                        uint8_t* dst, int32_t pitch, uint32_t colorKey);

// Any ratio: bilinear luma with 5-bit weights (the next row is not clamped, so
// a position on the last row reads one row beyond), nearest chroma at the
// centre of each 2x2 output block.
SCRIM_API uint32_t _ORUYCbCr420ToRGB565Rsz(ImgPrcContext* ctx, const uint8_t* const* src,
                                           const uint32_t* srcStrides, int32_t srcWidth, int32_t srcHeight,
                                           uint8_t* dst, int32_t pitch, int32_t dstWidth, int32_t dstHeight);
SCRIM_API uint32_t _ORUYCbCr420ToRGB565RszRot(ImgPrcContext* ctx, const uint8_t* const* src,
                                              const uint32_t* srcStrides, int32_t srcWidth, int32_t srcHeight,
                                              int32_t dstWidth, int32_t dstHeight);

// Bilinear enlargement through the line cache (slots 0-2) and blend slot 3.
SCRIM_API uint32_t _ORUYCbCr420ToRGB565RszUp(ImgPrcContext* ctx, uint8_t* const* lineBuffers,
                                             const uint8_t* const* src, const uint32_t* srcStrides,
                                             int32_t srcWidth, int32_t srcHeight, uint8_t* dst, int32_t pitch,
                                             int32_t dstWidth, int32_t dstHeight);
// Nearest-neighbour enlargement from RGB565 lines in slots 0 and 1. A row that
// repeats the previous source row is copied as dstWidth * 2 bytes from the row
// before (the first half of its pixel pairs).
SCRIM_API uint32_t _ORUYCbCr420ToRGB565RszUp_Nearest(ImgPrcContext* ctx, uint8_t* const* lineBuffers,
                                                     const uint8_t* const* src, const uint32_t* srcStrides,
                                                     int32_t srcWidth, int32_t srcHeight, uint8_t* dst,
                                                     int32_t pitch, int32_t dstWidth, int32_t dstHeight);
// As _Nearest, sampling lines first doubled across by averaging (DoubleLine).
SCRIM_API uint32_t _ORUYCbCr420ToRGB565RszUp_NearLinear(ImgPrcContext* ctx, uint8_t* const* lineBuffers,
                                                        const uint8_t* const* src, const uint32_t* srcStrides,
                                                        int32_t srcWidth, int32_t srcHeight, uint8_t* dst,
                                                        int32_t pitch, int32_t dstWidth, int32_t dstHeight);
// As RszUp, each output row written one 16-bit pixel at a time from
// first + j * rowStep, pixels colStep apart. rowStep and colStep are byte steps
// per output row and per output pixel (half the rotation record's block
// steps), used rounded down to whole 16-bit pixels.
SCRIM_API uint32_t _ORUYCbCr420ToRGB565RszUpRot(ImgPrcContext* ctx, uint8_t* const* lineBuffers,
                                                const uint8_t* const* src, const uint32_t* srcStrides,
                                                int32_t srcWidth, int32_t srcHeight, uint8_t* first,
                                                int32_t rowStep, int32_t colStep, int32_t dstWidth,
                                                int32_t dstHeight);
// Fixed 5:2 across and 2:1 down. Writes whole groups of 4 rows,
// ((dstHeight - 1) & ~3) + 4 of them; the last group's second source pair lies
// past the picture (two luma rows and one chroma row beyond it are read).
SCRIM_API uint32_t _ORUYCbCr420ToRGB565Case1(ImgPrcContext* ctx, uint8_t* const* lineBuffers,
                                             const uint8_t* const* src, const uint32_t* srcStrides,
                                             int32_t srcWidth, uint8_t* dst, int32_t pitch,
                                             int32_t dstHeight);
// Fixed 3:2 across (HLerp_23), bilinear down as RszUp.
SCRIM_API uint32_t _ORUYCbCr420ToRGB565Case2(ImgPrcContext* ctx, uint8_t* const* lineBuffers,
                                             const uint8_t* const* src, const uint32_t* srcStrides,
                                             int32_t srcWidth, int32_t srcHeight, uint8_t* dst, int32_t pitch,
                                             int32_t dstHeight);
// Exactly 320x240 to 480x272: 2 to 3 across, 15 to 17 down, fixed weights.
// line0 and line1 each hold one converted source row (1280 bytes).
SCRIM_API uint32_t _ORUYCbCr420ToRGB565Case3(ImgPrcContext* ctx, uint8_t* line0, uint8_t* line1,
                                             const uint8_t* const* src, const uint32_t* srcStrides,
                                             uint8_t* dst, int32_t pitch);

#ifdef __cplusplus
}
#endif

#ifdef __cplusplus
// One source row pair straight to two lines of RGB565 words; width / 2 blocks,
// at least one.
void Convert_565(const ImgPrcContext* ctx, const uint8_t* y0, const uint8_t* y1, const uint8_t* cb,
                 const uint8_t* cr, uint16_t* out0, uint16_t* out1, int32_t width);
// Two lines of count spread entries (at least one) to two lines of 2 * count
// RGB565 pixels: pixel 2i the average of entries i - 1 and i (entry -1 being
// entry 0), pixel 2i + 1 entry i. May work in place (out == in): 4 bytes are
// written for every 8 read.
void DoubleLine(uint16_t* out0, uint16_t* out1, const uint64_t* in0, const uint64_t* in1, int32_t count);
#endif
