// Matrix selection and the range tables of the YCbCr-to-RGB kernels.
#include "imageproc/color_tables.h"
#include "imageproc/color_terms.h"

namespace {

// Contrast and saturation factor: linear up to 1.9921875.
double LinearFactor(int value) {
  if (value < 0) return 0.0;
  if (value < 256) return value / 128.0;
  return 1.9921875;
}

// Brightness offset, worked in single precision and clamped to +-255.
double BrightnessOffset(int brightness) {
  float offset = (static_cast<float>(brightness) - 128.0f) * 2.0f;
  if (offset < -255.0f) offset = -255.0f;
  if (offset > 255.0f) offset = 255.0f;
  return offset;
}

// lumaBase and chromaBase are what the index is reduced by before scaling:
// 16 and 128 for video range, 0 and 0 for full range.
void BuildTables(const double* coef, uint16_t* tableY, int64_t* tableCb, int64_t* tableCr, int brightness,
                 int contrast, int saturation, int lumaBase, int chromaBase) {
  const double bo = BrightnessOffset(brightness);
  const double cf = LinearFactor(contrast);
  const double sf = LinearFactor(saturation);
  for (int i = 0; i < 256; ++i) {
    tableY[i] = static_cast<uint16_t>(ImgPrcLumaTerm((i - lumaBase) * cf + bo, coef[IMGPRC_COEF_YGAIN]));
    const double d = i - chromaBase;
    tableCb[i] = ImgPrcPackTerms(ImgPrcChromaTerm(d, coef[IMGPRC_COEF_BCB], sf),
                                 ImgPrcChromaTerm(d, coef[IMGPRC_COEF_GCB], sf));
    tableCr[i] = ImgPrcPackTerms(ImgPrcChromaTerm(d, coef[IMGPRC_COEF_RCR], sf),
                                 ImgPrcChromaTerm(d, coef[IMGPRC_COEF_GCR], sf));
  }
}

}  // namespace

int UpdateColorMatrix(ImgPrcContext* ctx, uint32_t matrix, uint32_t range) {
  ctx->matrixIndex = (matrix >= 1 && matrix <= 3) ? matrix : 0;
  ctx->fullRange = range == 1 ? 1 : 0;
  // Addressed with the selected values, so that a matrix above 3 or a range
  // above 1 falls back to BT.601 video range instead of reading past the table.
  ctx->yuvToRgbCoef =
      csc_coef + ctx->matrixIndex * IMGPRC_CSC_MATRIX_VALUES + ctx->fullRange * IMGPRC_CSC_BLOCK_VALUES;
  ctx->rgbToYuvCoef = ctx->yuvToRgbCoef + 2 * IMGPRC_CSC_BLOCK_VALUES;
  return 0;
}

int set_transtable(const double* coef, uint16_t* tableY, int64_t* tableCb, int64_t* tableCr, int brightness,
                   int contrast, int saturation) {
  BuildTables(coef, tableY, tableCb, tableCr, brightness, contrast, saturation, 16, 128);
  return 0;
}

int set_transtable_fullrange(const double* coef, uint16_t* tableY, int64_t* tableCb, int64_t* tableCr,
                             int brightness, int contrast, int saturation) {
  BuildTables(coef, tableY, tableCb, tableCr, brightness, contrast, saturation, 0, 0);
  return 0;
}

void ImgPrcBuildRangeTables(ImgPrcContext* ctx, int brightness, int contrast, int saturation) {
  if (ctx->fullRange) {
    set_transtable_fullrange(ctx->yuvToRgbCoef, ctx->rangeTableY, ctx->rangeTableCb, ctx->rangeTableCr,
                             brightness, contrast, saturation);
  } else {
    set_transtable(ctx->yuvToRgbCoef, ctx->rangeTableY, ctx->rangeTableCb, ctx->rangeTableCr, brightness,
                   contrast, saturation);
  }
  ImgPrcFitAffineTables(ctx->rangeTableY, ctx->rangeTableCb, ctx->rangeTableCr, &ctx->affine);
}
