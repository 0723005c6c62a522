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
AddRange AddRangeFor(const TermValues& t, int a, int b, int64_t mul) {
  AddRange r{-kUnbounded, kUnbounded};
  for (int i = a; i < b; ++i) {
    const int64_t at = i * mul;
    if (t.v[i] > t.lo) r.lowest = std::max(r.lowest, t.v[i] * kOne - at);
    if (t.v[i] < t.hi) r.highest = std::min(r.highest, (t.v[i] + 1) * kOne - at - 1);
  }
  return r;
}

// Width of the add interval for a slope: concave in mul, so its best integer
// slope is found by ternary search over a range that holds every feasible one.
bool FitPiece(const TermValues& t, int a, int b, int32_t* mul, int32_t* add,
              const int32_t* onlyMul = nullptr) {
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
  TermValues y{{}, 0, 65535, int64_t{32768} << kShift};
  for (int i = 0; i < 256; ++i) y.v[i] = tableY[i];
  // Luma rows use one piece (its negative levels all clamp to 0).
  const bool exact = FitTerm(y, &out->y) && out->y.split == 0 && FitTerm(Half(tableCr, true), &out->rcr) &&
                     FitTerm(Half(tableCr, false), &out->gcr) && FitTerm(Half(tableCb, false), &out->gcb) &&
                     FitTerm(Half(tableCb, true), &out->bcb);
  if (exact) out->rgb565Row = ImgPrcChooseRgb565Row();
  return exact;
}
