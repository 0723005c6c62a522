// Brightness, contrast and saturation. RGB outputs get them folded into the
// range tables (linear curves); YCbCr outputs go through two byte tables whose
// contrast and saturation curves rise quadratically above 128. The two curves
// differ on purpose and are kept apart.
#include <string.h>

#include "imageproc/color_tables.h"
#include "imageproc/imgprc_alloc.h"
#include "imageproc/pipeline.h"

namespace {

uint8_t ClampByte(int value) { return static_cast<uint8_t>(value < 0 ? 0 : value > 255 ? 255 : value); }

void BuildLumaAdjustTable(uint8_t* table, int brightness, int contrast) {
  int offset;
  if (brightness < 0) {
    offset = -256;
  } else if (brightness >= 256) {
    offset = 254;
  } else {
    offset = 2 * (brightness - 128);
  }
  int slope;
  if (contrast < 0) {
    slope = 0;
  } else if (contrast >= 256) {
    slope = 506;
  } else if (contrast > 128) {
    slope = (((contrast - 128) * (contrast - 128) * 3) >> 7) + 128;
  } else {
    slope = contrast;
  }
  for (int i = 0; i < 256; ++i) table[i] = ClampByte(offset + ((i * slope) >> 7));
}

void BuildChromaAdjustTable(uint8_t* table, int saturation) {
  double factor;
  if (saturation < 0) {
    factor = 0.0;
  } else if (saturation >= 256) {
    factor = 7.890625;
  } else if (saturation > 128) {
    factor = ((((saturation - 128) * (saturation - 128) * 7) >> 7) + 128) / 128.0;
  } else {
    factor = saturation / 128.0;
  }
  for (int i = 0; i < 256; ++i) table[i] = ClampByte(static_cast<int>((i - 128) * factor + 128));
}

}  // namespace

int SetImgColorAdjust(ImgPrcContext* ctx, const ImgPrcColorAdjust* adjust) {
  const int b = adjust->brightness, c = adjust->contrast, s = adjust->saturation;
  if (b == ctx->brightness && c == ctx->contrast && s == ctx->saturation) return 0;
  if (b == 128 && c == 128 && s == 128) {
    // Back to neutral: the tables stay allocated for the next adjustment.
    ctx->brightness = ctx->contrast = ctx->saturation = 128;
    ctx->adjustActive = 0;
    ImgPrcBuildRangeTables(ctx, 128, 128, 128);
    return 0;
  }
  if (!ctx->adjustTableBlock) {
    uint8_t* block = static_cast<uint8_t*>(ImgPrcMalloc(IMGPRC_ADJUST_BLOCK_SIZE));
    if (!block) return -1;
    ctx->adjustTableBlock = block;
    ctx->lumaAdjustTable = block;
    ctx->chromaAdjustTable = block + 256;
  }
  ctx->brightness = b;
  ctx->contrast = c;
  ctx->saturation = s;
  ctx->adjustActive = 1;
  ImgPrcBuildRangeTables(ctx, b, c, s);
  BuildLumaAdjustTable(ctx->lumaAdjustTable, b, c);
  BuildChromaAdjustTable(ctx->chromaAdjustTable, s);
  return 0;
}

int GetImgColorAdjust(const ImgPrcContext* ctx, ImgPrcColorAdjust* adjust) {
  adjust->brightness = ctx->brightness;
  adjust->contrast = ctx->contrast;
  adjust->saturation = ctx->saturation;
  return _CheckCapability_depend(ctx->format, ctx->resizeCase);
}
