// Colour keys: a YCbCr key turned into the RGB565 value clients compare against.
#include "imageproc/color_tables.h"
#include "imageproc/color_terms.h"

namespace {
// Results that come out negative read as large unsigned values and so clamp to
// the top, not to 0; the keys clients hold were made this way.
uint32_t ClampUnsigned(int32_t value, uint32_t top) {
  return static_cast<uint32_t>(value) > top ? top : static_cast<uint32_t>(value);
}
}  // namespace

extern "C" uint32_t ORU_TranslateColorKey(uint32_t kind, uint32_t key, uint32_t* out) {
  if (!out) return IMGPRC_E_INVALIDARG;
  if (kind != IMGPRC_FMT_RGB565) return IMGPRC_E_FAIL;
  // Always BT.601 video range, whatever matrix an instance uses.
  const double* coef = csc_coef;
  const int y = (key >> 16) & 0xFF, cb = (key >> 8) & 0xFF, cr = key & 0xFF;
  const int32_t luma = ImgPrcLumaTerm(y - 16, coef[IMGPRC_COEF_YGAIN]);
  const int32_t rcr = ImgPrcChromaTerm(cr - 128, coef[IMGPRC_COEF_RCR], 1.0);
  const int32_t gcb = ImgPrcChromaTerm(cb - 128, coef[IMGPRC_COEF_GCB], 1.0);
  const int32_t gcr = ImgPrcChromaTerm(cr - 128, coef[IMGPRC_COEF_GCR], 1.0);
  const int32_t bcb = ImgPrcChromaTerm(cb - 128, coef[IMGPRC_COEF_BCB], 1.0);
  // Red and blue take their chroma terms undoubled (6 fractional bits against
  // the luma's 7), so saturated keys come out paler in red and blue than in
  // green. Clients' stored keys depend on it.
  const uint32_t r5 = ClampUnsigned((luma + rcr) >> 10, 31);
  const uint32_t g6 = ClampUnsigned((luma + 2 * (gcb + gcr)) >> 9, 63);
  const uint32_t b5 = ClampUnsigned((luma + bcb) >> 10, 31);
  *out = (r5 << 11) | (g6 << 5) | b5;
  return IMGPRC_OK;
}

uint32_t CalcColorKey(uint32_t key) { return key; }
