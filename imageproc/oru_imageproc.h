// The image processor: one picture in, one picture out, in any of a set of
// planar, packed and RGB formats, optionally resized, rotated, deinterlaced and
// colour-adjusted. Plain C functions over plain records.
#pragma once

#include <stdint.h>

#ifndef SCRIM_API
#define SCRIM_API __attribute__((visibility("default")))
#endif

#ifdef __cplusplus
extern "C" {
#endif

// Format codes. A conversion code holds the input format in bits 8-15 and the
// output format in bits 0-7 (0x103: 4:2:2 planar in, RGB565 out).
typedef enum ImgPrcFormat {
  IMGPRC_FMT_YCBCR420 = 0,
  IMGPRC_FMT_YCBCR422 = 1,
  IMGPRC_FMT_YCBCR444 = 2,
  IMGPRC_FMT_RGB565 = 3,
  IMGPRC_FMT_RGB888 = 4,
  IMGPRC_FMT_ARGB32 = 5,
  IMGPRC_FMT_YUY2 = 6,
  IMGPRC_FMT_UYVY = 7,
  IMGPRC_FMT_NV12 = 8,
  IMGPRC_FMT_ABGR32 = 9,
  IMGPRC_FMT_RGB555 = 10,
} ImgPrcFormat;

typedef enum ImgPrcRotation {
  IMGPRC_ROTATE_NONE = 0,
  IMGPRC_ROTATE_90_ANTICLOCKWISE = 1,
  IMGPRC_ROTATE_90_CLOCKWISE = 2,
  IMGPRC_ROTATE_180 = 3,
  IMGPRC_MIRROR_LEFT_RIGHT = 4,
  IMGPRC_FLIP_TOP_BOTTOM = 5,
} ImgPrcRotation;

typedef enum ImgPrcResizeMethod {
  IMGPRC_RESIZE_NEAREST = 0,
  IMGPRC_RESIZE_BILINEAR_FAST = 1,  // bilinear with the fixed-ratio fast paths
  IMGPRC_RESIZE_NEAR_LINEAR = 3,
} ImgPrcResizeMethod;

typedef enum ImgPrcColorMatrix {
  IMGPRC_MATRIX_BT601 = 0,
  IMGPRC_MATRIX_BT709 = 1,
  IMGPRC_MATRIX_SMPTE240M = 2,
  IMGPRC_MATRIX_FCC = 3,
} ImgPrcColorMatrix;

typedef enum ImgPrcRange {
  IMGPRC_RANGE_VIDEO = 0,
  IMGPRC_RANGE_FULL = 1,
} ImgPrcRange;

// Result codes of the six functions.
#define IMGPRC_OK 0x00000000u
#define IMGPRC_OK_NONSTANDARD 0x00000001u  // a kernel result other than 0, -1, -2, -3
#define IMGPRC_E_INVALIDARG 0x80070057u
#define IMGPRC_E_OUTOFMEMORY 0x8007000Eu
#define IMGPRC_E_FAIL 0x80004005u
#define IMGPRC_E_NOTIMPL 0x80004001u
#define IMGPRC_E_UNEXPECTED 0x8000FFFFu
#define IMGPRC_E_NOTFOUND 0x80070490u

// Property ids of ORU_IMAGEPROC_Set / ORU_IMAGEPROC_Get.
#define IMGPRC_PROP_COLOR_ADJUST 1u  // ImgPrcColorAdjust
#define IMGPRC_PROP_COLOR_KEY 2u     // uint32_t

// Records carry the number of bytes the caller filled in their first field; the
// callee copies that many over a zero-filled record.
typedef struct ImgPrcCreateParams {
  uint32_t size;  // at most 48
  uint32_t format;
  uint32_t rotation;
  uint32_t resizeMode;
  uint32_t srcWidth;
  uint32_t srcHeight;
  uint32_t dstWidth;
  uint32_t dstHeight;
  uint32_t alpha;
  uint32_t colorKey;
  uint32_t colorMatrix;
  uint32_t fullRange;
} ImgPrcCreateParams;

typedef struct ImgPrcFrameParams {
  uint32_t size;  // at most 12
  uint32_t reserved;
  uint32_t deinterlace;  // 0 leaves the current mode in force
} ImgPrcFrameParams;

typedef struct ImgPrcColorAdjust {
  int32_t brightness;  // neutral 128
  int32_t contrast;    // neutral 128
  int32_t saturation;  // neutral 128
} ImgPrcColorAdjust;

// 24 bytes laid out as the library's _GUID record.
typedef struct ImgPrcInterfaceId {
  unsigned long Data1;
  unsigned short Data2;
  unsigned short Data3;
  unsigned char Data4[8];
} ImgPrcInterfaceId;
SCRIM_API extern const ImgPrcInterfaceId IID_ORU_IMAGEPROC_C;

SCRIM_API uint32_t ORU_IMAGEPROC_Create(void** handle, uint32_t reserved, const ImgPrcCreateParams* params);
SCRIM_API uint32_t ORU_IMAGEPROC_Destroy(void* handle);
SCRIM_API uint32_t ORU_IMAGEPROC_ProcessFrame(void* handle, uint8_t** srcPlanes, uint32_t* srcStrides,
                                              uint8_t** dstPlanes, uint32_t* dstStrides,
                                              const ImgPrcFrameParams* frame);
SCRIM_API uint32_t ORU_IMAGEPROC_Set(void* handle, uint32_t propId, const void* data, uint32_t size);
SCRIM_API uint32_t ORU_IMAGEPROC_Get(void* handle, uint32_t propId, void* data, uint32_t size,
                                     uint32_t* sizeWritten);
SCRIM_API uint32_t ORU_IMAGEPROC_Reset(void* handle);

// Converts a YCbCr colour key 0x00YYUUVV to RGB565 (kind 3 only).
SCRIM_API uint32_t ORU_TranslateColorKey(uint32_t kind, uint32_t key, uint32_t* out);

#ifdef __cplusplus
}
#endif
