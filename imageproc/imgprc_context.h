// The instance record behind an image-processor handle, which every kernel
// receives, and the destination addressing record of the rotating kernels.
#pragma once

#include <stdint.h>

#include "imageproc/color_affine.h"
#include "imageproc/oru_imageproc.h"

#ifdef __cplusplus
extern "C" {
#endif

// Destination addressing for one frame. Planar output uses the step and start
// fields per plane; packed output uses stepX/stepY and the four pixel pointers
// of a 2x2 source block.
typedef struct ImgPrcRotationRecord {
  int32_t stepX;
  int32_t stepY;
  uint8_t* pix00;
  uint8_t* pix10;
  uint8_t* pix01;
  uint8_t* pix11;
  int32_t cbStepX;
  int32_t cbStepY;
  int32_t crStepX;
  int32_t crStepY;
  uint8_t* yStart;
  uint8_t* cbStart;
  uint8_t* crStart;
} ImgPrcRotationRecord;

// RGB (RGB565, ARGB32 or ABGR32) to planar YCbCr 4:2:0, one per matrix and range.
typedef uint32_t (*ImgPrcRgbToYuvKernel)(const uint8_t* src, uint32_t srcStride, uint8_t** dstPlanes,
                                         uint32_t* dstStrides, uint32_t width, uint32_t height);

typedef struct ImgPrcContext {
  uint32_t format;
  uint32_t rotation;
  uint32_t resizeMode;
  uint32_t resizeCase;
  uint32_t matrixIndex;
  uint32_t fullRange;
  const double* yuvToRgbCoef;
  const double* rgbToYuvCoef;
  int32_t brightness;
  int32_t contrast;
  int32_t saturation;
  uint32_t adjustActive;
  uint8_t* adjustTableBlock;
  uint8_t* lumaAdjustTable;
  uint8_t* chromaAdjustTable;
  uint8_t* rangeTableBlock;
  uint16_t* rangeTableY;
  int64_t* rangeTableCb;
  int64_t* rangeTableCr;
  uint8_t* spareBuffer;
  uint32_t srcWidth;
  uint32_t srcHeight;
  uint32_t dstWidth;
  uint32_t dstHeight;
  uint32_t workSrcWidth;
  uint32_t workSrcHeight;
  uint32_t workDstWidth;
  uint32_t workDstHeight;
  uint8_t* lineBufferBlock;
  uint8_t* lineBuffer[4];
  uint32_t alpha;
  uint32_t colorKey;
  uint32_t deinterlaceMode;
  uint8_t* deintBlock;
  uint8_t* deintPlanes[4];
  uint32_t deintStride;
  uint32_t deintHeight;
  uint32_t rotationRecordSize;
  ImgPrcRotationRecord* rotationRecord;
  ImgPrcRgbToYuvKernel rgbToYuvKernel;
  // The range tables as integer arithmetic and the vector rows chosen for
  // them, refreshed whenever the tables are built.
  ImgPrcAffineTables affine;
  // Where the enlarging stretch keeps a picture's positions (after the line
  // buffers, in their block); null in a record that has none.
  uint8_t* stretchPlan;
} ImgPrcContext;

#ifdef __cplusplus
}
#endif
