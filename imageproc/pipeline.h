// Pipeline set-up at creation and the per-frame dispatch.
#pragma once

#include <stdint.h>

#include "imageproc/imgprc_context.h"

// Resize cases (ImgPrcContext::resizeCase).
enum ImgPrcResizeCase {
  IMGPRC_CASE_SAME = 0,           // work sizes equal
  IMGPRC_CASE_MIXED = 1,          // one dimension grows, the other does not
  IMGPRC_CASE_ENLARGE = 2,        // both grow
  IMGPRC_CASE_SHRINK = 3,         // both shrink
  IMGPRC_CASE_DOUBLE = 4,         // exactly 2x by 2x
  IMGPRC_CASE_5_2_BY_2 = 5,       // width x2.5, height x2
  IMGPRC_CASE_3_2_WIDTH = 6,      // width x1.5, any height
  IMGPRC_CASE_QVGA_TO_WQVGA = 7,  // exactly 320x240 to 480x272
};

enum { IMGPRC_ROTATION_RECORD_SIZE = 80 };

// Checks the conversion, rounds the sizes, classifies the resize and allocates
// the line buffers and the rotation record. 0, -3 unsupported, -2 out of memory
// (what was allocated stays in the context for the caller to free).
int _ImgPrcInit_depend(ImgPrcContext* ctx);

// Converts one frame: deinterlacing, destination addressing, one kernel.
// 0, or the negative result of the deinterlacer or the rotation set-up, -2
// when the rotated RGB to YCbCr path cannot have its temporary planes, or -3
// for a work size of 0.
int _ImgPrcOneFrame_depend(ImgPrcContext* ctx, uint8_t** srcPlanes, uint32_t* srcStrides, uint8_t** dstPlanes,
                           uint32_t* dstStrides);

// RGB (source kind 0 RGB565, 1 ARGB32, 2 ABGR32) to YCbCr 4:2:0 kernel for a
// matrix and range; null for an index past the table.
ImgPrcRgbToYuvKernel GetPFN_rgb2yuv(uint32_t sourceKind, uint32_t matrixIndex, uint32_t fullRange);

// 0 when the conversion supports colour adjustment (codes below 0x300 except
// 6, 7 and 8), else -3. The resize case plays no part.
int _CheckCapability_depend(uint32_t format, uint32_t resizeCase);
