// The exported image-processor interface: creation and destruction of an
// instance, the frame call with its argument checks, and the properties.
#include <stdint.h>
#include <string.h>

#include "imageproc/color_tables.h"
#include "imageproc/imgprc_alloc.h"
#include "imageproc/oru_imageproc.h"
#include "imageproc/pipeline.h"
#include "imageproc/route_kernel.h"

// {17A12BC8-0000-0000-53DF-C74ABACFE854} followed by 74 24 27 AE and padding,
// as the platform's 24-byte _GUID record lays it out.
extern "C" const ImgPrcInterfaceId IID_ORU_IMAGEPROC_C = {
    0x17A12BC8ul, 0xDF53, 0x4AC7, {0xBA, 0xCF, 0xE8, 0x54, 0x74, 0x24, 0x27, 0xAE}};

namespace {

constexpr size_t kFrameParamsSize = sizeof(ImgPrcFrameParams);
constexpr size_t kColorAdjustSize = sizeof(ImgPrcColorAdjust);
static_assert(sizeof(ImgPrcCreateParams) == 48 && kFrameParamsSize == 12 && kColorAdjustSize == 12,
              "record sizes are part of the interface");

void FreeInstance(ImgPrcContext* ctx) {
  ImgPrcFree(ctx->rotationRecord);
  ImgPrcFree(ctx->lineBufferBlock);
  ImgPrcFree(ctx->adjustTableBlock);
  ImgPrcFree(ctx->rangeTableBlock);
  ImgPrcFree(ctx->spareBuffer);
  ImgPrcFree(ctx->deintBlock);
  ImgPrcFree(ctx);
}

uint8_t* AlignUp(uint8_t* p, uintptr_t alignment) {
  const uintptr_t a = reinterpret_cast<uintptr_t>(p);
  return p + ((alignment - a % alignment) % alignment);
}

// Four planes of the 16-aligned source width by the source height, the first
// on a 16-byte boundary, for the deinterlacer to write the progressive picture into.
bool AllocateDeinterlaceArea(ImgPrcContext* ctx) {
  const uint64_t stride = (static_cast<uint64_t>(ctx->srcWidth) + 15) & ~static_cast<uint64_t>(15);
  const uint64_t planeSize = stride * ctx->srcHeight;
  if (planeSize > (SIZE_MAX - 15) / 4) return false;
  uint8_t* block = static_cast<uint8_t*>(ImgPrcMalloc(4 * planeSize + 15));
  if (!block) return false;
  ctx->deintBlock = block;
  uint8_t* plane = AlignUp(block, 16);
  for (int i = 0; i < 4; ++i) ctx->deintPlanes[i] = plane + i * planeSize;
  ctx->deintStride = static_cast<uint32_t>(stride);
  ctx->deintHeight = ctx->srcHeight;
  return true;
}

bool AllocateRangeTables(ImgPrcContext* ctx) {
  uint8_t* block = static_cast<uint8_t*>(ImgPrcMalloc(IMGPRC_RANGE_BLOCK_SIZE));
  if (!block) return false;
  ctx->rangeTableBlock = block;
  uint8_t* tables = AlignUp(block, 4);
  ctx->rangeTableY = reinterpret_cast<uint16_t*>(tables);
  ctx->rangeTableCb = reinterpret_cast<int64_t*>(tables + IMGPRC_RANGE_CB_OFFSET);
  ctx->rangeTableCr = reinterpret_cast<int64_t*>(tables + IMGPRC_RANGE_CR_OFFSET);
  ImgPrcBuildRangeTables(ctx, 128, 128, 128);
  return true;
}

// Planes a frame of format `code` must bring: three for planar YCbCr, two for
// NV12, one for packed and RGB formats.
int PlaneCount(int32_t code) {
  switch (code) {
    case IMGPRC_FMT_YCBCR420:
    case IMGPRC_FMT_YCBCR422:
    case IMGPRC_FMT_YCBCR444:
      return 3;
    case IMGPRC_FMT_NV12:
      return 2;
    default:
      return 1;
  }
}

bool HasPlanes(uint8_t* const* planes, const uint32_t* strides, int count) {
  if (!planes || !strides) return false;
  for (int i = 0; i < count; ++i) {
    if (!planes[i] || strides[i] == 0) return false;
  }
  return true;
}

uint32_t MapFrameResult(int r) {
  switch (r) {
    case 0:
      return IMGPRC_OK;
    case -1:
      return IMGPRC_E_INVALIDARG;
    case -2:
      return IMGPRC_E_OUTOFMEMORY;
    case -3:
      return IMGPRC_E_NOTIMPL;
    default:
      return IMGPRC_OK_NONSTANDARD;
  }
}

}  // namespace

extern "C" uint32_t ORU_IMAGEPROC_Create(void** handle, uint32_t /*reserved*/,
                                         const ImgPrcCreateParams* params) {
  if (!handle || *handle || !params || params->size > sizeof(ImgPrcCreateParams)) return IMGPRC_E_INVALIDARG;
  ImgPrcCreateParams p;
  memset(&p, 0, sizeof p);
  memcpy(&p, params, params->size);

  ImgPrcContext* ctx = static_cast<ImgPrcContext*>(ImgPrcCalloc(sizeof(ImgPrcContext)));
  if (!ctx) return IMGPRC_E_OUTOFMEMORY;
  ctx->format = p.format;
  ctx->rotation = p.rotation;
  ctx->resizeMode = p.resizeMode;
  ctx->srcWidth = p.srcWidth;
  ctx->srcHeight = p.srcHeight;
  ctx->dstWidth = p.dstWidth;
  ctx->dstHeight = p.dstHeight;
  ctx->alpha = p.alpha;
  if (UpdateColorMatrix(ctx, p.colorMatrix, p.fullRange) < 0) {
    FreeInstance(ctx);
    return IMGPRC_E_UNEXPECTED;
  }
  ctx->colorKey = p.colorKey;
  if (ctx->format == 0x00A) ctx->colorKey = CalcColorKey(ctx->colorKey);
  ctx->brightness = ctx->contrast = ctx->saturation = 128;
  ctx->adjustActive = 0;

  if (!AllocateDeinterlaceArea(ctx) || !AllocateRangeTables(ctx)) {
    FreeInstance(ctx);
    return IMGPRC_E_OUTOFMEMORY;
  }
  if (_ImgPrcInit_depend(ctx) != 0) {
    FreeInstance(ctx);
    *handle = nullptr;
    return IMGPRC_E_FAIL;
  }
  *handle = ctx;
  return IMGPRC_OK;
}

extern "C" uint32_t ORU_IMAGEPROC_Destroy(void* handle) {
  if (!handle) return IMGPRC_E_INVALIDARG;
  FreeInstance(static_cast<ImgPrcContext*>(handle));
  return IMGPRC_OK;
}

extern "C" uint32_t ORU_IMAGEPROC_ProcessFrame(void* handle, uint8_t** srcPlanes, uint32_t* srcStrides,
                                               uint8_t** dstPlanes, uint32_t* dstStrides,
                                               const ImgPrcFrameParams* frame) {
  if (!handle || !frame || frame->size > kFrameParamsSize) return IMGPRC_E_INVALIDARG;
  ImgPrcFrameParams f;
  memset(&f, 0, sizeof f);
  memcpy(&f, frame, frame->size);
  ImgPrcContext* ctx = static_cast<ImgPrcContext*>(handle);

  const int32_t input = ImgPrcInputCode(ctx);
  // A mode once set stays in force for later frames that pass 0; only planar
  // YCbCr inputs can be deinterlaced.
  if (f.deinterlace != 0) ctx->deinterlaceMode = (input >= 0 && input <= 2) ? f.deinterlace : 0;

  if (input > 9 || input < 0) return IMGPRC_E_UNEXPECTED;
  if (!HasPlanes(srcPlanes, srcStrides, PlaneCount(input))) return IMGPRC_E_INVALIDARG;
  const int32_t output = static_cast<int32_t>(ImgPrcOutputCode(ctx));
  if (output > 10) return IMGPRC_E_UNEXPECTED;
  if (!HasPlanes(dstPlanes, dstStrides, PlaneCount(output))) return IMGPRC_E_INVALIDARG;

  return MapFrameResult(_ImgPrcOneFrame_depend(ctx, srcPlanes, srcStrides, dstPlanes, dstStrides));
}

extern "C" uint32_t ORU_IMAGEPROC_Set(void* handle, uint32_t propId, const void* data, uint32_t size) {
  if (!handle) return IMGPRC_E_INVALIDARG;
  ImgPrcContext* ctx = static_cast<ImgPrcContext*>(handle);
  switch (propId) {
    case IMGPRC_PROP_COLOR_ADJUST: {
      if (size > kColorAdjustSize || (size != 0 && !data)) return IMGPRC_E_INVALIDARG;
      ImgPrcColorAdjust adjust;
      memset(&adjust, 0, sizeof adjust);
      if (size != 0) memcpy(&adjust, data, size);
      return SetImgColorAdjust(ctx, &adjust) == 0 ? IMGPRC_OK : IMGPRC_E_OUTOFMEMORY;
    }
    case IMGPRC_PROP_COLOR_KEY: {
      if (size < sizeof(uint32_t) || !data) return IMGPRC_E_INVALIDARG;
      memcpy(&ctx->colorKey, data, sizeof(uint32_t));
      if (ctx->format == 0x00A) ctx->colorKey = CalcColorKey(ctx->colorKey);
      return IMGPRC_OK;
    }
    default:
      return IMGPRC_E_NOTFOUND;
  }
}

extern "C" uint32_t ORU_IMAGEPROC_Get(void* handle, uint32_t propId, void* data, uint32_t size,
                                      uint32_t* sizeWritten) {
  if (!handle) return IMGPRC_E_INVALIDARG;
  const ImgPrcContext* ctx = static_cast<const ImgPrcContext*>(handle);
  switch (propId) {
    case IMGPRC_PROP_COLOR_ADJUST: {
      if (size < kColorAdjustSize || !data) return IMGPRC_E_INVALIDARG;
      if (sizeWritten) *sizeWritten = kColorAdjustSize;
      ImgPrcColorAdjust adjust;
      const int supported = GetImgColorAdjust(ctx, &adjust);
      memcpy(data, &adjust, sizeof adjust);
      // The values are written whether or not the conversion can apply them.
      return supported == 0 ? IMGPRC_OK : IMGPRC_E_FAIL;
    }
    case IMGPRC_PROP_COLOR_KEY: {
      if (size < sizeof(uint32_t) || !data) return IMGPRC_E_INVALIDARG;
      memcpy(data, &ctx->colorKey, sizeof(uint32_t));
      if (sizeWritten) *sizeWritten = sizeof(uint32_t);
      return IMGPRC_OK;
    }
    default:
      return IMGPRC_E_NOTFOUND;
  }
}

extern "C" uint32_t ORU_IMAGEPROC_Reset(void* handle) {
  if (!handle) return IMGPRC_E_INVALIDARG;
  ImgPrcContext* ctx = static_cast<ImgPrcContext*>(handle);
  // The stored brightness, contrast and saturation stay: Get still reports
  // them, and a later Set of the same values is taken as no change.
  ctx->adjustActive = 0;
  ImgPrcFree(ctx->adjustTableBlock);
  ctx->adjustTableBlock = ctx->lumaAdjustTable = ctx->chromaAdjustTable = nullptr;
  ImgPrcBuildRangeTables(ctx, 128, 128, 128);
  return IMGPRC_OK;
}
