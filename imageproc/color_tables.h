// Colour arithmetic of the image processor: the coefficient table, the
// fixed-point range tables the YCbCr-to-RGB kernels look samples up in, the
// byte tables of the YCbCr-to-YCbCr adjustment, and the colour key.
#pragma once

#include <stdint.h>

#include "imageproc/imgprc_context.h"
#include "imageproc/oru_imageproc.h"

#ifdef __cplusplus
extern "C" {
#endif

// 4 matrices (BT.601, BT.709, SMPTE 240M, FCC) x 4 blocks x 12 values: blocks
// are YCbCr->RGB video range, YCbCr->RGB full range, RGB->YCbCr video range,
// RGB->YCbCr full range; each three rows of (three weights, offset).
enum { IMGPRC_CSC_BLOCK_VALUES = 12, IMGPRC_CSC_MATRIX_VALUES = 4 * 12 };
SCRIM_API extern const double csc_coef[4 * 4 * 12];

#ifdef __cplusplus
}
#endif

// Byte layout of the range-table block: the luma table, then the Cb and Cr
// tables, used from the first 4-byte-aligned address of the block.
enum {
  IMGPRC_RANGE_BLOCK_SIZE = 4612,
  IMGPRC_RANGE_CB_OFFSET = 256 * 2,
  IMGPRC_RANGE_CR_OFFSET = 256 * 2 + 256 * 8,
  IMGPRC_ADJUST_BLOCK_SIZE = 512,
};

// Selects the matrix (1-3, else 0) and range (1, else 0) and points
// yuvToRgbCoef / rgbToYuvCoef at their blocks. Returns 0.
int UpdateColorMatrix(ImgPrcContext* ctx, uint32_t matrix, uint32_t range);

// Fill the three range tables from a YCbCr->RGB block with brightness,
// contrast and saturation (neutral 128). The video-range builder centres luma
// on 16 and chroma on 128; the full-range one indexes the raw sample and
// leaves the 128 chroma offset to the kernels. Both return 0.
int set_transtable(const double* coef, uint16_t* tableY, int64_t* tableCb, int64_t* tableCr, int brightness,
                   int contrast, int saturation);
int set_transtable_fullrange(const double* coef, uint16_t* tableY, int64_t* tableCb, int64_t* tableCr,
                             int brightness, int contrast, int saturation);
// Rebuilds the instance's range tables with the builder of its range.
void ImgPrcBuildRangeTables(ImgPrcContext* ctx, int brightness, int contrast, int saturation);

// Applies a colour adjustment: 0, or -1 when the adjustment tables cannot be
// allocated (nothing changes then).
int SetImgColorAdjust(ImgPrcContext* ctx, const ImgPrcColorAdjust* adjust);
// Copies the stored values out; 0 when the conversion supports adjustment, else -3.
int GetImgColorAdjust(const ImgPrcContext* ctx, ImgPrcColorAdjust* adjust);

// The RGB555 path compares pixels against the key as stored, so nothing is derived.
uint32_t CalcColorKey(uint32_t key);
