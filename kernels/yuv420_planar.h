// Planar YCbCr 4:2:0 to YCbCr outputs: copying, rotating, resizing, adjusting
// and packing the three planes, and NV12 back to planar. Planes are Y, Cb, Cr
// with strides in bytes; chroma planes are half width and half height. NV12 is
// a Y plane and one plane of (Cb, Cr) byte pairs at half height.
//
// Same-size kernels write width x height luma and, when height is 2 or more,
// (width / 2) x (height / 2) of each chroma plane. Rotated kernels write
// through the planar fields of the rotation record (start, sample step and row
// step per plane). Resizing kernels sample luma bilinearly with 5-bit weights
// (the row below is not clamped: a position on the last row reads one row
// beyond the plane) and chroma at the nearest sample to the centre of each 2x2
// output block; they write whole 2x2 blocks. Adjusting kernels pass luma
// through the context's luma table and chroma through its chroma table.
#pragma once

#include <stdint.h>

#include "imageproc/imgprc_context.h"

#ifndef SCRIM_API
#define SCRIM_API __attribute__((visibility("default")))
#endif

#ifdef __cplusplus
extern "C" {
#endif

// Copies width x height luma and (width / 2) x (height / 2) of each chroma plane.
// Tightly packed pictures (luma stride = width, chroma strides half of it, the
// same strides on both sides) are moved with whole-plane copies, and with one
// copy when both sides hold the planes back to back; for those, each chroma
// plane is (width x height) / 4 bytes. Otherwise row by row; a picture of one
// row gets no chroma. Returns 0.
SCRIM_API uint32_t _ORUYCbCr420Copy(const uint8_t* const srcPlanes[3], const uint32_t srcStrides[3],
                                    uint32_t width, uint32_t height, uint8_t* const dstPlanes[3],
                                    const uint32_t dstStrides[3]);

// Luma table to every Y sample, chroma table to every Cb and Cr sample.
// 0xFFFFFFFF, before any write, when a plane pointer or a table is missing.
SCRIM_API uint32_t _ORUYCbCrAdjust(ImgPrcContext* ctx, const uint8_t* const srcPlanes[3],
                                   const uint32_t srcStrides[3], uint32_t width, uint32_t height,
                                   uint8_t* const dstPlanes[3], const uint32_t dstStrides[3]);
// Same size through the rotation record; 0xFFFFFFFF without one.
SCRIM_API uint32_t _ORUYCbCr420Rot(const ImgPrcRotationRecord* rec, const uint8_t* const srcPlanes[3],
                                   const uint32_t srcStrides[3], uint32_t width, uint32_t height);
// As Rot with the context's record and adjustment tables; 0xFFFFFFFF when either is missing.
SCRIM_API uint32_t _ORUYCbCr420RotAdjust(ImgPrcContext* ctx, const uint8_t* const srcPlanes[3],
                                         const uint32_t srcStrides[3], uint32_t width, uint32_t height);

SCRIM_API uint32_t _ORUYCbCr420Rsz(const uint8_t* const srcPlanes[3], const uint32_t srcStrides[3],
                                   int32_t srcWidth, int32_t srcHeight, uint8_t* const dstPlanes[3],
                                   const uint32_t dstStrides[3], int32_t dstWidth, int32_t dstHeight);
// 0xFFFFFFFF without a record.
SCRIM_API uint32_t _ORUYCbCr420RszRot(const ImgPrcRotationRecord* rec, const uint8_t* const srcPlanes[3],
                                      const uint32_t srcStrides[3], int32_t srcWidth, int32_t srcHeight,
                                      int32_t dstWidth, int32_t dstHeight);
// 0xFFFFFFFF without the adjustment tables.
SCRIM_API uint32_t _ORUYCbCr420RszAdjust(ImgPrcContext* ctx, const uint8_t* const srcPlanes[3],
                                         const uint32_t srcStrides[3], int32_t srcWidth, int32_t srcHeight,
                                         uint8_t* const dstPlanes[3], const uint32_t dstStrides[3],
                                         int32_t dstWidth, int32_t dstHeight);
// 0xFFFFFFFF without the record or the adjustment tables.
SCRIM_API uint32_t _ORUYCbCr420RszRotAdjust(ImgPrcContext* ctx, const uint8_t* const srcPlanes[3],
                                            const uint32_t srcStrides[3], int32_t srcWidth, int32_t srcHeight,
                                            int32_t dstWidth, int32_t dstHeight);

// YUY2 (Y0 Cb Y1 Cr): height / 2 row pairs (an odd last row is not written)
// and width / 8 groups of 8 pixels a row (pixels past the last whole group
// are not written); both rows of a pair share one chroma row.
SCRIM_API uint32_t _ORUYCbCr420ToYUY2(uint8_t* dst, uint32_t pitch, const uint8_t* const srcPlanes[3],
                                      const uint32_t srcStrides[3], uint32_t width, uint32_t height);
// UYVY (Cb Y0 Cr Y1), every row, luma row r with chroma row r / 2: pixel pairs
// one at a time until the luma read position is 8-byte aligned, then whole
// groups of 8 pixels (a remainder past the last whole group is not written).
SCRIM_API uint32_t _ORUYCbCr420ToUYVY(uint8_t* dst, uint32_t pitch, const uint8_t* const srcPlanes[3],
                                      const uint32_t srcStrides[3], uint32_t width, uint32_t height);
// Luma rows copied, chroma interleaved as (Cb, Cr) pairs into plane 1.
SCRIM_API uint32_t _ORUYCbCr420ToNV12(const uint8_t* const srcPlanes[3], const uint32_t srcStrides[3],
                                      uint32_t width, uint32_t height, uint8_t* const dstPlanes[3],
                                      const uint32_t dstStrides[3]);
// The reverse: source plane 1 split into destination planes 1 and 2.
SCRIM_API uint32_t _ORUNV12ToYCbCr420(const uint8_t* const srcPlanes[3], const uint32_t srcStrides[3],
                                      uint32_t width, uint32_t height, uint8_t* const dstPlanes[3],
                                      const uint32_t dstStrides[3]);

#ifdef __cplusplus
}
#endif
