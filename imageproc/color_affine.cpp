// Fitting the range tables with integer affine pieces (see color_affine.h).
#include "imageproc/color_affine.h"

#include <stdint.h>

#include <algorithm>

namespace {

constexpr int32_t kShift = IMGPRC_AFFINE_SHIFT;
constexpr int64_t kOne = int64_t{1} << kShift;

// One table term: 256 values that the vector rows saturate to lo..hi.
struct TermValues {
  int32_t v[256];
  int32_t lo, hi;
  int64_t bias;  // what the row subtracts from add before shifting (luma: 32768 << shift)
};

// The add values that make (i * mul + add) >> shift give every entry of
// a..b-1 (clamped entries only need to land in their clamp): an interval,
// empty when lowest > highest.
struct AddRange {
  int64_t lowest, highest;
};
constexpr int64_t kUnbounded = int64_t{1} << 45;
AddRange AddRangeFor(const TermValues& t, int a, int b, int64_t mul, int shift = kShift) {
  AddRange r{-kUnbounded, kUnbounded};
  const int64_t one = int64_t{1} << shift;
  for (int i = a; i < b; ++i) {
    const int64_t at = i * mul;
    if (t.v[i] > t.lo) r.lowest = std::max(r.lowest, t.v[i] * one - at);
    if (t.v[i] < t.hi) r.highest = std::min(r.highest, (t.v[i] + 1) * one - at - 1);
  }
  return r;
}

// Width of the add interval for a slope: concave in mul, so its best integer
// slope is found by ternary search over a range that holds every feasible one.
bool FitPiece(const TermValues& t, int a, int b, int32_t* mul, int32_t* add,
              const int32_t* onlyMul = nullptr) {
  if (a >= b) {  // a split after the last index leaves piece 1 empty: any form
    *mul = onlyMul != nullptr ? *onlyMul : 0, *add = 0;
    return true;
  }
  int first = -1, last = -1;
  for (int i = a; i < b; ++i)
    if (t.v[i] > t.lo && t.v[i] < t.hi) {
      if (first < 0) first = i;
      last = i;
    }
  if (first < 0 && std::all_of(t.v + a, t.v + b, [&](int32_t v) { return v == t.v[a]; })) {
    *mul = 0;  // a piece held at one clamp, as with contrast or saturation 0
    *add = static_cast<int32_t>(t.v[a] * kOne);
    return true;
  }
  int64_t lo = -(int64_t{1} << 26), hi = int64_t{1} << 26;
  if (onlyMul != nullptr) {
    lo = hi = *onlyMul;
  } else if (last > first) {
    const int64_t rise = t.v[last] - t.v[first], run = last - first;
    lo = ((rise - 1) * kOne) / run - 1;
    hi = ((rise + 1) * kOne) / run + 1;
  }
  auto width = [&](int64_t m) {
    const AddRange r = AddRangeFor(t, a, b, m);
    return r.highest - r.lowest;
  };
  while (hi - lo > 2 && onlyMul == nullptr) {
    const int64_t m1 = lo + (hi - lo) / 3, m2 = hi - (hi - lo) / 3;
    if (width(m1) < width(m2))
      lo = m1 + 1;
    else
      hi = m2;
  }
  for (int64_t m = lo; m <= hi; ++m) {
    const AddRange r = AddRangeFor(t, a, b, m);
    if (r.lowest > r.highest) continue;
    const int64_t chosen = r.lowest != -kUnbounded ? r.lowest : (r.highest != kUnbounded ? r.highest : 0);
    if (m < INT32_MIN || m > INT32_MAX || chosen < INT32_MIN || chosen > INT32_MAX) return false;
    *mul = static_cast<int32_t>(m);
    *add = static_cast<int32_t>(chosen);
    return true;
  }
  return false;
}

// Every index through the 32-bit lanes of the rows, against the table. Some
// rows take the bias off the lane and some do not: both must fit.
bool Reproduces(const TermValues& t, const ImgPrcAffineTerm& f) {
  for (int32_t i = 0; i < 256; ++i) {
    const int p = i >= f.split ? 1 : 0;
    const int64_t lane = int64_t{i} * f.mul[p] + f.add[p];
    if (std::min(lane, lane - t.bias) < INT32_MIN || std::max(lane, lane - t.bias) > INT32_MAX) return false;
    const int64_t v = std::clamp<int64_t>(ImgPrcAffineAt(f, i), t.lo, t.hi);
    if (v != t.v[i]) return false;
  }
  return true;
}

// One piece when it fits, else two: half rounds up on one side of a zero
// term and down on the other, so the split falls where the entries change
// sign (or one index after, by the sign of the weight).
bool FitTerm(const TermValues& t, ImgPrcAffineTerm* f) {
  *f = ImgPrcAffineTerm{0, {0, 0}, {0, 0}};
  if (FitPiece(t, 0, 256, &f->mul[1], &f->add[1]) && Reproduces(t, *f)) return true;
  auto sign = [&](int i) { return (t.v[i] > 0) - (t.v[i] < 0); };
  for (int32_t i = 1; i < 256; ++i) {
    if (sign(i) == sign(i - 1)) continue;
    for (int32_t split : {i, i + 1}) {
      // One slope for both pieces, so that the rows multiply once and only
      // the add differs.
      f->split = split;
      if (!FitPiece(t, split, 256, &f->mul[1], &f->add[1])) continue;
      if (FitPiece(t, 0, split, &f->mul[0], &f->add[0], &f->mul[1]) && Reproduces(t, *f)) return true;
      if (!FitPiece(t, 0, split, &f->mul[0], &f->add[0])) continue;
      if (FitPiece(t, split, 256, &f->mul[1], &f->add[1], &f->mul[0]) && Reproduces(t, *f)) return true;
    }
  }
  return false;
}

// The narrow form's luma: a slope of s = mul + fracMul / 2^shift, near the
// 32-bit form's, and the lowest or highest add that the table allows; each
// candidate checked through the rows' arithmetic. fracMul is bounded so that
// y * fracMul plus a fractional add stays within 16 bits, mul by the 8-bit
// multipliers of the NEON rows.
bool FitNarrowLuma(const TermValues& t, const ImgPrcAffineTerm& wide, ImgPrcNarrowStep* n) {
  constexpr int kNarrow = IMGPRC_NARROW_SHIFT;
  constexpr int64_t kOneNarrow = int64_t{1} << kNarrow;
  constexpr int32_t kMaxFrac = (65536 - kOneNarrow) / 255;
  const int32_t base = wide.mul[1] >> kShift;
  for (int32_t mul = std::max(base - 1, 0); mul <= std::min(base + 1, 255); ++mul)
    for (int32_t frac = 0; frac <= kMaxFrac; ++frac) {
      const AddRange r = AddRangeFor(t, 0, 256, mul * kOneNarrow + frac, kNarrow);
      const int64_t lowest = std::max(r.lowest, -32768 * kOneNarrow);
      const int64_t highest = std::min(r.highest, 32768 * kOneNarrow - 1);
      for (const int64_t add : {lowest, highest}) {
        if (lowest > highest) break;
        *n = {1, uint16_t(mul), uint16_t(frac), uint16_t(add & (kOneNarrow - 1)), int16_t(add >> kNarrow)};
        bool all = true;
        for (int32_t y = 0; y < 256 && all; ++y) all = ImgPrcNarrowLumaAt(*n, y) == t.v[y];
        if (all) return true;
      }
    }
  *n = {};
  return false;
}

// Whether red's and green's chroma terms fit signed 16 bits: Cr >> 15 of
// every entry, and twice every sum of a Cb and a Cr low half (which then
// never carries).
bool TermsFitNarrow(const int64_t* tableCb, const int64_t* tableCr) {
  int32_t low[2][2] = {{0, 0}, {0, 0}};  // least and most low half of Cb, of Cr
  for (int i = 0; i < 256; ++i)
    for (int c = 0; c < 2; ++c) {
      const int32_t e = static_cast<int32_t>(static_cast<uint32_t>((c ? tableCr : tableCb)[i]));
      if (c == 1 && ((e >> 15) < INT16_MIN || (e >> 15) > INT16_MAX)) return false;
      low[c][0] = std::min<int32_t>(low[c][0], static_cast<int16_t>(e));
      low[c][1] = std::max<int32_t>(low[c][1], static_cast<int16_t>(e));
    }
  return 2 * (low[0][0] + low[1][0]) >= INT16_MIN && 2 * (low[0][1] + low[1][1]) <= INT16_MAX;
}

TermValues Half(const int64_t* table, bool high) {
  TermValues t{{}, -32768, 32767, 0};
  for (int i = 0; i < 256; ++i) {
    const uint32_t w = static_cast<uint32_t>(table[i]);
    t.v[i] = static_cast<int16_t>(high ? w >> 16 : w & 0xFFFF);
  }
  return t;
}

}  // namespace

const void* ImgPrcChooseRgb565Row();  // kernels/yuv420_rgb565_rows.cpp

bool ImgPrcFitAffineTables(const uint16_t* tableY, const int64_t* tableCb, const int64_t* tableCr,
                           ImgPrcAffineTables* out) {
  out->rgb565Row = nullptr;
  out->narrow = {};
  TermValues y{{}, 0, 65535, int64_t{32768} << kShift};
  for (int i = 0; i < 256; ++i) y.v[i] = tableY[i];
  // Luma rows use one piece (its negative levels all clamp to 0).
  const bool exact = FitTerm(y, &out->y) && out->y.split == 0 && FitTerm(Half(tableCr, true), &out->rcr) &&
                     FitTerm(Half(tableCr, false), &out->gcr) && FitTerm(Half(tableCb, false), &out->gcb) &&
                     FitTerm(Half(tableCb, true), &out->bcb);
  if (exact) {
    out->rgb565Row = ImgPrcChooseRgb565Row();
    if (TermsFitNarrow(tableCb, tableCr)) FitNarrowLuma(y, out->y, &out->narrow);
  }
  return exact;
}
