// Pipeline set-up: which conversions exist, the work sizes, the resize case,
// and the per-instance buffers the kernels share across frames.
#include <stdint.h>

#include "imageproc/imgprc_alloc.h"
#include "imageproc/pipeline.h"
#include "kernels/enlarge_rows.h"
#include "kernels/rgb_convert.h"

namespace {

// Conversions with a fixed kernel choice; 0x300, 0x500, 0x900 and 0x00A are
// checked apart.
bool IsPlainConversion(uint32_t format) {
  static const uint32_t kCodes[] = {0x000, 0x003, 0x004, 0x005, 0x006, 0x007, 0x008, 0x009, 0x103, 0x105,
                                    0x109, 0x203, 0x204, 0x205, 0x209, 0x303, 0x305, 0x403, 0x404, 0x800};
  for (uint32_t code : kCodes) {
    if (code == format) return true;
  }
  return false;
}

// Source kind of GetPFN_rgb2yuv for the RGB to YCbCr 4:2:0 conversions, or -1.
int RgbToYuvSourceKind(uint32_t format) {
  switch (format) {
    case 0x300:
      return 0;
    case 0x500:
      return 1;
    case 0x900:
      return 2;
    default:
      return -1;
  }
}

uint32_t ClassifyResize(const ImgPrcContext* c) {
  const uint32_t sw = c->workSrcWidth, sh = c->workSrcHeight, dw = c->workDstWidth, dh = c->workDstHeight;
  uint32_t resizeCase = IMGPRC_CASE_MIXED;
  if (sw < dw && sh < dh) {
    resizeCase = IMGPRC_CASE_ENLARGE;
  } else if (sw > dw && sh > dh) {
    resizeCase = IMGPRC_CASE_SHRINK;
  }
  const bool quads = sw % 4 == 0 && sh % 4 == 0 && dw % 4 == 0 && dh % 4 == 0;
  if (!quads || c->rotation != 0 || c->resizeMode != IMGPRC_RESIZE_BILINEAR_FAST) return resizeCase;
  // In this order: 320x240 to 480x272 also has the 1.5 width ratio but takes its own kernel.
  const uint64_t sw64 = sw, sh64 = sh, dw64 = dw, dh64 = dh;
  if (dw64 == 2 * sw64 && dh64 == 2 * sh64) return IMGPRC_CASE_DOUBLE;
  if (2 * dw64 == 5 * sw64 && dh64 == 2 * sh64) return IMGPRC_CASE_5_2_BY_2;
  if (sw == 320 && sh == 240 && dw == 480 && dh == 272) return IMGPRC_CASE_QVGA_TO_WQVGA;
  if (2 * dw64 == 3 * sw64) return IMGPRC_CASE_3_2_WIDTH;
  return resizeCase;
}

// Four line buffers of the wider work width plus 4 pixels of filter-tap margin.
// Every entry is a 64-bit word (a spread pixel in its low half, or a pair of
// RGB565 pixels), so a line takes 8 bytes a pixel: at 4 bytes a 1.5x or any
// enlargement under 2x would run each line into the next and the last one off
// the block. The stretch's plan for the destination's pixel pairs follows them.
int AllocateLineBuffers(ImgPrcContext* c) {
  const uint64_t widest = c->workSrcWidth > c->workDstWidth ? c->workSrcWidth : c->workDstWidth;
  const uint64_t lineSize = (widest + 4) * 8;
  const uint64_t planSize = StretchPlanBytes(c->workDstWidth / 2 + 1);
  uint8_t* block = static_cast<uint8_t*>(ImgPrcMalloc(4 * lineSize + 4 + planSize));
  if (!block) return -2;
  c->lineBufferBlock = block;
  uint8_t* line = block + ((4 - reinterpret_cast<uintptr_t>(block) % 4) % 4);
  for (int i = 0; i < 4; ++i) c->lineBuffer[i] = line + i * lineSize;
  c->stretchPlan = line + 4 * lineSize;
  return 0;
}

int AllocateRotationRecord(ImgPrcContext* c) {
  c->rotationRecordSize = IMGPRC_ROTATION_RECORD_SIZE;
  c->rotationRecord = static_cast<ImgPrcRotationRecord*>(ImgPrcCalloc(IMGPRC_ROTATION_RECORD_SIZE));
  return c->rotationRecord ? 0 : -2;
}

}  // namespace

static_assert(sizeof(ImgPrcRotationRecord) == IMGPRC_ROTATION_RECORD_SIZE, "rotation record is 80 bytes");

int _ImgPrcInit_depend(ImgPrcContext* ctx) {
  const uint32_t format = ctx->format;
  const int rgbKind = RgbToYuvSourceKind(format);
  if (format == 0x00A) {
    // RGB555 with a colour key is written unrotated only.
    if (ctx->rotation != 0) return -3;
  } else if (rgbKind >= 0) {
    ctx->rgbToYuvKernel = GetPFN_rgb2yuv(static_cast<uint32_t>(rgbKind), ctx->matrixIndex, ctx->fullRange);
  } else if (!IsPlainConversion(format)) {
    return -3;
  }
  if (ctx->rotation > IMGPRC_FLIP_TOP_BOTTOM) return -3;

  // Odd sizes are processed as the next even size down.
  ctx->workSrcWidth = ctx->srcWidth & ~1u;
  ctx->workSrcHeight = ctx->srcHeight & ~1u;
  ctx->workDstWidth = ctx->dstWidth & ~1u;
  ctx->workDstHeight = ctx->dstHeight & ~1u;

  if (ctx->workSrcWidth == ctx->workDstWidth && ctx->workSrcHeight == ctx->workDstHeight) {
    ctx->resizeCase = IMGPRC_CASE_SAME;
    return AllocateRotationRecord(ctx);
  }
  ctx->resizeCase = ClassifyResize(ctx);
  int r = AllocateLineBuffers(ctx);
  if (r != 0) return r;
  return AllocateRotationRecord(ctx);
}

ImgPrcRgbToYuvKernel GetPFN_rgb2yuv(uint32_t sourceKind, uint32_t matrixIndex, uint32_t fullRange) {
  // Index (2 x kind + range) x 4 + matrix, in the order the member list gives.
#define SCRIM_RGB_TO_YUV420_ENTRY(name, source, range, matrix) name,
  static const ImgPrcRgbToYuvKernel kTable[24] = {SCRIM_RGB_TO_YUV420_MEMBERS(SCRIM_RGB_TO_YUV420_ENTRY)};
#undef SCRIM_RGB_TO_YUV420_ENTRY
  const uint64_t index = (2 * static_cast<uint64_t>(sourceKind) + fullRange) * 4 + matrixIndex;
  return index < 24 ? kTable[index] : nullptr;
}

int _CheckCapability_depend(uint32_t format, uint32_t resizeCase) {
  (void)resizeCase;
  if (format > 767 || format == 6 || format == 7 || format == 8) return -3;
  return 0;
}
