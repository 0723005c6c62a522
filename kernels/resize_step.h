// The 16.16 step of the resizing kernels and their bilinear luma sampler.
#pragma once

#include <stddef.h>
#include <stdint.h>

namespace scrim {

// ((source - 1) << 16) / (destination - 1) as a signed 32-bit division: a
// destination of 1 gives 0 (every sample from position 0) and a divisor of -1
// gives the negated dividend.
inline int32_t ResizeStep(int32_t source, int32_t destination) {
  const uint32_t num = static_cast<uint32_t>(source - 1) << 16;
  const int32_t den = destination - 1;
  if (den == 0) return 0;
  if (den == -1) return static_cast<int32_t>(0u - num);
  return static_cast<int32_t>(num) / den;
}

// Two rows of a plane around a vertical position and the 5-bit weight between
// them. The lower row is never clamped: a position on the last row reads one
// beyond.
struct PlaneRowPair {
  const uint8_t* a;
  const uint8_t* b;
  int32_t wy;
  int32_t yi;
  PlaneRowPair(const uint8_t* plane, ptrdiff_t stride, uint32_t pos)
      : a(plane + static_cast<ptrdiff_t>(pos >> 16) * stride),
        b(a + stride),
        wy(static_cast<int32_t>((pos >> 11) & 31)),
        yi(static_cast<int32_t>(pos >> 16)) {}

  // First down each column (values x 2), then across; the column after xi is
  // clamped to `last`.
  uint8_t At(uint32_t pos, int32_t last) const {
    const int32_t xi = static_cast<int32_t>(pos >> 16);
    const int32_t wx = static_cast<int32_t>((pos >> 11) & 31);
    if ((wx | wy) == 0) return a[xi];  // a whole position: the blend gives the sample itself
    const int32_t xn = xi + 1 > last ? last : xi + 1;
    const int32_t s0 = (a[xi] * 32 + (b[xi] - a[xi]) * wy) >> 4;
    const int32_t s1 = (a[xn] * 32 + (b[xn] - a[xn]) * wy) >> 4;
    return static_cast<uint8_t>(((s1 - s0) * wx + (s0 << 5)) >> 6);
  }
};

// Output row pair n of a 4:2:0 any-ratio walk with vertical step sy: the luma
// rows its two output rows sample, and the chroma rows at the block centre,
// (top + bottom + 1) >> 2.
struct RowPairSources420 {
  PlaneRowPair top, bottom;
  const uint8_t* cb;
  const uint8_t* cr;
  RowPairSources420(const uint8_t* const* src, const uint32_t* strides, uint32_t sy, uint32_t n)
      : top(src[0], strides[0], 2 * n * sy), bottom(src[0], strides[0], 2 * n * sy + sy) {
    const ptrdiff_t c = (top.yi + bottom.yi + 1) >> 2;
    cb = src[1] + c * static_cast<ptrdiff_t>(strides[1]);
    cr = src[2] + c * static_cast<ptrdiff_t>(strides[2]);
  }
};

}  // namespace scrim
