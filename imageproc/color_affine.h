// Integer forms of the range tables, for the vector colour steps: each term
// of a table entry is an affine function of the index, rounded and clamped.
// When (index * mul + add) >> shift, saturated to the entry's range, gives
// every one of the 256 entries exactly (checked whenever the tables are
// built), a vector row computes the terms instead of looking them up. Two
// pieces per term, split at an index, because the tables round half away
// from the centre differently on either side of it; both pieces have one
// slope, so that a row multiplies once.
#pragma once

#include <stdint.h>

#ifdef __cplusplus
extern "C" {
#endif

// Fractional bits of mul and add.
#define IMGPRC_AFFINE_SHIFT 14

typedef struct ImgPrcAffineTerm {
  int32_t split;   // indices below it use piece 0, the others piece 1
  int32_t mul[2];  // per piece, the same for both
  int32_t add[2];
} ImgPrcAffineTerm;

// Fractional bits of the narrow form's luma fraction.
#define IMGPRC_NARROW_SHIFT 11

// The 16-bit form of the colour step, when the tables allow it (fits = 1).
// The luma entry comes from 16-bit products: with
//   a = y * mul + ((y * fracMul + fracAdd) >> IMGPRC_NARROW_SHIFT),
// every step of it within 0..65535, the entry is a + add saturated to
// 0..65535. And red's and green's chroma terms (Cr >> 15, the doubled green
// sum) fit signed 16 bits, so that each meets the luma entry in one
// saturating add. Luma is half the work of a pixel: 16-bit lanes take it at
// twice the rate of the 32-bit form.
typedef struct ImgPrcNarrowStep {
  int32_t fits;
  uint16_t mul, fracMul, fracAdd;
  int16_t add;
} ImgPrcNarrowStep;

// The five terms of the range tables and the RGB565 row chosen for them.
typedef struct ImgPrcAffineTables {
  ImgPrcAffineTerm y;    // luma entry, saturated to 0..65535
  ImgPrcAffineTerm rcr;  // high half of a Cr entry, saturated to signed 16 bits
  ImgPrcAffineTerm gcr;  // low half of a Cr entry
  ImgPrcAffineTerm gcb;  // low half of a Cb entry
  ImgPrcAffineTerm bcb;  // high half of a Cb entry
  ImgPrcNarrowStep narrow;
  // The RGB565 and keyed RGB555 rows (two Row<const Rgb565RowPair*>,
  // kernels/yuv420_rgb565_rows.h) chosen for the CPU when the tables were
  // built; null when a table is not reproduced exactly or no vector set is in
  // force: the kernels look up.
  const void* rgb565Row;
} ImgPrcAffineTables;

#ifdef __cplusplus
}

// Fits `out` to the tables and chooses its rows; false (rows null) when some
// entry cannot be reproduced.
bool ImgPrcFitAffineTables(const uint16_t* tableY, const int64_t* tableCb, const int64_t* tableCr,
                           ImgPrcAffineTables* out);

// A term's value at index i, before saturation, as the vector rows compute it.
inline int64_t ImgPrcAffineAt(const ImgPrcAffineTerm& t, int32_t i) {
  const int p = i >= t.split ? 1 : 0;
  return (static_cast<int64_t>(i) * t.mul[p] + t.add[p]) >> IMGPRC_AFFINE_SHIFT;
}

// The narrow form's luma entry of sample y as the rows compute it, or -1
// where a step would leave 16 bits.
inline int32_t ImgPrcNarrowLumaAt(const ImgPrcNarrowStep& n, int32_t y) {
  const int32_t t = y * n.fracMul + n.fracAdd, a = y * n.mul + (t >> IMGPRC_NARROW_SHIFT);
  if (t > 65535 || a > 65535) return -1;
  return a + n.add < 0 ? 0 : a + n.add > 65535 ? 65535 : a + n.add;
}
#endif
