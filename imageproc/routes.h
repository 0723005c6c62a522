// The per-frame dispatcher hands each frame to the router of its output
// family, which picks the one kernel for the conversion code, rotation, resize
// case, resize method and adjustment state, and calls it. A router returns 0
// once its kernel has run (kernel results are not looked at), -2 when a
// temporary buffer cannot be had, or -3 for a route with no kernel.
#pragma once

#include <stdint.h>

#include "imageproc/imgprc_context.h"

// One frame's planes as the dispatcher resolved them (after deinterlacing).
struct ImgPrcFrameIO {
  uint8_t** src;         // three source plane pointers
  uint32_t* srcStrides;  // three source strides in bytes
  uint8_t** dst;         // three destination plane pointers
  uint32_t* dstStrides;  // three destination strides in bytes
};

// YCbCr 4:2:0 input to RGB565 (output 3) and RGB555 (output 10).
int ImgPrcRoute_YCbCr420ToRGB16(ImgPrcContext* ctx, const ImgPrcFrameIO& io);
// YCbCr 4:2:0 input to YCbCr outputs: planar 4:2:0 (0), YUY2 (6), UYVY (7), NV12 (8).
int ImgPrcRoute_YCbCr420ToYCbCr(ImgPrcContext* ctx, const ImgPrcFrameIO& io);
// YCbCr 4:2:0 input to RGB888 (4), ARGB32 (5) and ABGR32 (9).
int ImgPrcRoute_YCbCr420ToRGB32(ImgPrcContext* ctx, const ImgPrcFrameIO& io);
// YCbCr 4:2:2 and 4:4:4 inputs (0x1nn, 0x2nn).
int ImgPrcRoute_YCbCr422444ToRGB(ImgPrcContext* ctx, const ImgPrcFrameIO& io);
// RGB and NV12 inputs (0x3nn, 0x4nn, 0x5nn, 0x8nn, 0x9nn).
int ImgPrcRoute_OtherInputs(ImgPrcContext* ctx, const ImgPrcFrameIO& io);
