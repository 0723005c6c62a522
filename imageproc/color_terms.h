// The fixed-point terms the range tables and the colour key are made of,
// computed in double precision from single-precision coefficients.
#pragma once

#include <math.h>
#include <stdint.h>

// Coefficient positions inside a YCbCr->RGB block (rows R, G, B; columns Y, Cb, Cr, offset).
enum {
  IMGPRC_COEF_YGAIN = 0,  // row R, column Y
  IMGPRC_COEF_RCR = 2,    // row R, column Cr
  IMGPRC_COEF_GCB = 5,    // row G, column Cb
  IMGPRC_COEF_GCR = 6,    // row G, column Cr
  IMGPRC_COEF_BCB = 9,    // row B, column Cb
};

// Rounds by adding one half and truncating toward zero (so -2.7 becomes -2,
// not -3: the tables have always been built this way), then clamps.
inline int32_t ImgPrcRoundClamp(double value, double lo, double hi) {
  double t = trunc(value + 0.5);
  if (t < lo) return static_cast<int32_t>(lo);
  if (t > hi) return static_cast<int32_t>(hi);
  return static_cast<int32_t>(t);
}

// Luma entry with 7 fractional bits: level x scaled by the luma gain.
inline int32_t ImgPrcLumaTerm(double level, double gain) {
  return ImgPrcRoundClamp(level * gain * 128, 0, 65535);
}

// Chroma term with 6 fractional bits: centred sample d x weight x saturation factor.
inline int32_t ImgPrcChromaTerm(double d, double weight, double satFactor) {
  return ImgPrcRoundClamp(d * weight * satFactor * 64, -32768, 32767);
}

// Two signed 16-bit terms in one 32-bit word (high, low), sign-extended to 64 bits.
inline int64_t ImgPrcPackTerms(int32_t high, int32_t low) {
  uint32_t word = (static_cast<uint32_t>(high) << 16) | (static_cast<uint32_t>(low) & 0xFFFFu);
  return static_cast<int64_t>(static_cast<int32_t>(word));
}
