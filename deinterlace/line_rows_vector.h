// The five-tap filter's vector rows (see deinterlace_line): one portable
// source (GCC and Clang vector extensions) built once per instruction set by
// the file that includes it after defining
//   TAPS_BYTES    pixels per step, one register of bytes (16; AVX2 32)
//   TAPS_ROW      the out-of-place row's name
//   TAPS_INPLACE  the in-place row's name.
#include <string.h>

#include "deinterlace/deint_filters.h"

namespace {

constexpr unsigned P = TAPS_BYTES;
typedef uint8_t U8v __attribute__((vector_size(P)));
typedef uint8_t U8h __attribute__((vector_size(P / 2)));
typedef int16_t I16h __attribute__((vector_size(P)));

#define TAPS_INLINE inline __attribute__((always_inline))

TAPS_INLINE U8v load(const uint8_t* p) {
  U8v v;
  memcpy(&v, p, P);
  return v;
}

// Zero extension of the low or high half of v to 16-bit lanes. x86 converts
// (pmovzxbw); GCC 12 builds that conversion lane by lane on aarch64, where
// an interleave with zeros is one zip instead.
template <unsigned half>
TAPS_INLINE I16h widen(U8v v) {
#if defined(__x86_64__)
  U8h h;
  memcpy(&h, reinterpret_cast<const uint8_t*>(&v) + half * P / 2, P / 2);
  return __builtin_convertvector(h, I16h);
#else
  static_assert(P == 16, "NEON rows are one 16-byte register");
  const U8v z = {};
  if (half == 0)
    return (I16h)__builtin_shufflevector(v, z, 0, 16, 1, 17, 2, 18, 3, 19, 4, 20, 5, 21, 6, 22, 7, 23);
  return (I16h)__builtin_shufflevector(v, z, 8, 24, 9, 25, 10, 26, 11, 27, 12, 28, 13, 29, 14, 30, 15, 31);
#endif
}

// Half of the filter: the sum stays within -506..2554, so 16-bit lanes hold
// it. The clamp is done with sign masks, which does what the table does for
// this range (-64..319 after the shift): lanes below 0 are cleared, lanes
// above 255 saturate.
template <unsigned half>
TAPS_INLINE U8h taps_half(U8v q0, U8v q1, U8v q2, U8v q3, U8v q4) {
  I16h s =
      4 * (widen<half>(q1) + widen<half>(q3)) + 2 * widen<half>(q2) - widen<half>(q0) - widen<half>(q4) + 4;
  s >>= 3;
  s &= ~(s >> 15);       // negative: 0
  s |= (255 - s) >> 15;  // above 255: all ones, 255 once truncated
  return __builtin_convertvector(s & 255, U8h);
}

TAPS_INLINE void taps(uint8_t* out, U8v q0, U8v q1, U8v q2, U8v q3, U8v q4) {
  const U8h lo = taps_half<0>(q0, q1, q2, q3, q4), hi = taps_half<1>(q0, q1, q2, q3, q4);
  memcpy(out, &lo, P / 2);
  memcpy(out + P / 2, &hi, P / 2);
}

}  // namespace

void TAPS_ROW(size_t begin, size_t end, const DeintTapLines* l) {
  for (size_t i = begin; i < end; i += P)
    taps(l->dst + i, load(l->p[0] + i), load(l->p[1] + i), load(l->p[2] + i), load(l->p[3] + i),
         load(l->p[4] + i));
}

// Everything of a step is read before its bytes of dst (= p[2], and maybe
// p[3] and p[4]) are written.
void TAPS_INPLACE(size_t begin, size_t end, const DeintTapLines* l) {
  for (size_t i = begin; i < end; i += P) {
    const U8v orig = load(l->p[2] + i);
    const U8v q0 = load(l->p[0] + i), q1 = load(l->p[1] + i), q3 = load(l->p[3] + i), q4 = load(l->p[4] + i);
    memcpy(l->keep + i, &orig, P);
    taps(l->dst + i, q0, q1, orig, q3, q4);
  }
}
