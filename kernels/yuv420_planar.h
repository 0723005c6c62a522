// Planar YCbCr 4:2:0 to YCbCr outputs: copying, and (as they land) rotating,
// resizing, adjusting and packing the three planes. Planes are Y, Cb, Cr with
// strides in bytes; chroma planes are half width and half height.
#pragma once

#include <stdint.h>

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

#ifdef __cplusplus
}
#endif
