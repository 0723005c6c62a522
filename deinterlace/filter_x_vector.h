// Mode 7's interior blocks, vector rows: one portable source (GCC and Clang
// vector extensions) built once per instruction set by the file that
// includes it after defining X_VECTOR_ROW, the name of the row function.
// It computes what the scalar row in filter_x.cpp computes, two blocks a
// step: the detection of both blocks, then per odd line the three direction
// costs of the sixteen pixels when either block combs, and per block the
// directional or the progressive result, as its detection asks.
//
// SSE4.1 replaces two pieces with intrinsics, each measured on the 1080p
// benchmark: the detection's squares and sums (pmaddwd, phaddd) and the
// direction costs (psadbw); together they took mode 7 from 4.2 to N ms.
#include <string.h>

#include <utility>

#include "deinterlace/filter_x_rows.h"

#if defined(__SSE4_1__)
#include <smmintrin.h>
#endif

namespace {

// Sixteen columns (two blocks) per step, in vectors of one 16-byte register:
// sixteen bytes, or eight 16-bit lanes for one block.
typedef uint8_t U8x16 __attribute__((vector_size(16)));
typedef uint8_t U8x8 __attribute__((vector_size(8)));
typedef int16_t I16x8 __attribute__((vector_size(16)));
typedef uint16_t U16x8 __attribute__((vector_size(16)));
typedef uint32_t U32x4 __attribute__((vector_size(16)));

#define X_INLINE inline __attribute__((always_inline))
// The short fixed loops below are unrolled so that their arrays stay in registers.
#define X_UNROLL _Pragma("GCC unroll 10")

X_INLINE I16x8 widen8(const uint8_t* p) {
  U8x8 v;
  memcpy(&v, p, 8);
  return __builtin_convertvector(v, I16x8);
}

X_INLINE void store8(uint8_t* p, I16x8 v) {  // lanes hold 0..255
  U8x8 r = __builtin_convertvector(v, U8x8);
  memcpy(p, &r, 8);
}

// ---- detection of the block at x (see block_is_combed in filter_x.cpp) ----

#if defined(__SSE4_1__)
// pmaddwd squares and pairs the differences in one step; three horizontal
// adds leave the four line pairs' sums side by side.
X_INLINE bool block_combed(const XBand& b, size_t x) {
  __m128i l[kXBlock + 2], adjacent[4], sameField[4];
  X_UNROLL for (unsigned j = 0; j < kXBlock + 2; ++j) l[j] = (__m128i)widen8(b.s[j] + x);
  auto sq = [](__m128i d) { return _mm_madd_epi16(d, d); };
  X_UNROLL for (unsigned y = 0; y < kXBlock; y += 2) {
    const __m128i d01 = _mm_sub_epi16(l[y], l[y + 1]), d12 = _mm_sub_epi16(l[y + 1], l[y + 2]);
    const __m128i d02 = _mm_sub_epi16(l[y], l[y + 2]), d13 = _mm_sub_epi16(l[y + 1], l[y + 3]);
    adjacent[y / 2] = _mm_add_epi32(sq(d01), sq(d12));
    sameField[y / 2] = _mm_add_epi32(sq(d02), sq(d13));
  }
  const __m128i a =
      _mm_hadd_epi32(_mm_hadd_epi32(adjacent[0], adjacent[1]), _mm_hadd_epi32(adjacent[2], adjacent[3]));
  const __m128i f =
      _mm_hadd_epi32(_mm_hadd_epi32(sameField[0], sameField[1]), _mm_hadd_epi32(sameField[2], sameField[3]));
  const __m128i a3 = _mm_add_epi32(a, _mm_add_epi32(a, a)), f4 = _mm_slli_epi32(f, 2);
  const __m128i combs = _mm_and_si128(_mm_cmpgt_epi32(a3, f4), _mm_cmpgt_epi32(a, _mm_set1_epi32(32)));
  return _mm_movemask_epi8(combs) != 0;
}
#else
// Squares of byte differences (below 2^16) are exact in unsigned 16-bit
// lanes; their sums are taken in 32-bit lanes.
X_INLINE U32x4 square_sum(I16x8 d) {
  U16x8 du = (U16x8)d;
  U16x8 sq = du * du;
  return __builtin_convertvector(__builtin_shufflevector(sq, sq, 0, 1, 2, 3), U32x4) +
         __builtin_convertvector(__builtin_shufflevector(sq, sq, 4, 5, 6, 7), U32x4);
}

X_INLINE uint32_t lanes_sum(U32x4 v) {
  v += __builtin_shufflevector(v, v, 2, 3, 0, 1);
  return v[0] + v[1];
}

X_INLINE bool block_combed(const XBand& b, size_t x) {
  I16x8 l[kXBlock + 2];
  X_UNROLL for (unsigned j = 0; j < kXBlock + 2; ++j) l[j] = widen8(b.s[j] + x);
  X_UNROLL for (unsigned y = 0; y < kXBlock; y += 2) {
    uint32_t adjacent = lanes_sum(square_sum(l[y] - l[y + 1]) + square_sum(l[y + 1] - l[y + 2]));
    uint32_t sameField = lanes_sum(square_sum(l[y] - l[y + 2]) + square_sum(l[y + 1] - l[y + 3]));
    if (3 * adjacent > 4 * sameField && adjacent > 32) return true;
  }
  return false;
}
#endif

// ---- direction costs of sixteen pixels (see direction_cost in filter_x.cpp) ----

// |above[x + k + dir] - below[x + k - dir]| summed over k = -3..4, for the
// pixels x .. x+7 (lo) and x+8 .. x+15 (hi).
struct Costs {
  I16x8 lo, hi;
};

#if defined(__SSE4_1__)
// psadbw sums eight absolute differences at once: the load at offset k gives
// the costs of pixels x+k and x+k+8, which are then packed in order. Reads
// columns x-4 .. x+20.
template <int dir>
X_INLINE Costs direction_costs(const uint8_t* above, const uint8_t* below) {
  const uint8_t* a = above - 3 + dir;
  const uint8_t* b = below - 3 - dir;
  __m128i r[8];
  X_UNROLL for (int k = 0; k < 8; ++k) r[k] =
      _mm_sad_epu8(_mm_loadu_si128((const __m128i*)(a + k)), _mm_loadu_si128((const __m128i*)(b + k)));
  auto four = [](__m128i c0, __m128i c1, __m128i c2, __m128i c3) {
    return _mm_or_si128(_mm_or_si128(c0, _mm_slli_epi64(c1, 16)),
                        _mm_or_si128(_mm_slli_epi64(c2, 32), _mm_slli_epi64(c3, 48)));
  };
  const __m128i first = four(r[0], r[1], r[2], r[3]);  // x..x+3 | x+8..x+11
  const __m128i second = four(r[4], r[5], r[6], r[7]);
  return Costs{(I16x8)_mm_unpacklo_epi64(first, second), (I16x8)_mm_unpackhi_epi64(first, second)};
}
#else
// Lanes s .. s+7 of the sixteen lanes lo, hi.
template <int s>
X_INLINE I16x8 lanes_from(I16x8 lo, I16x8 hi) {
  return __builtin_shufflevector(lo, hi, s, s + 1, s + 2, s + 3, s + 4, s + 5, s + 6, s + 7);
}

// The differences for x-3 .. x+12 are formed once and summed over sliding
// windows of 2, 4 and 8. Reads columns x-4 .. x+13.
template <int dir>
X_INLINE I16x8 direction_cost8(const uint8_t* above, const uint8_t* below) {
  U8x16 va, vb;
  memcpy(&va, above - 3 + dir, 16);
  memcpy(&vb, below - 3 - dir, 16);
  const U8x16 diff = (va > vb ? va : vb) - (va > vb ? vb : va);
  I16x8 lo = __builtin_convertvector(__builtin_shufflevector(diff, diff, 0, 1, 2, 3, 4, 5, 6, 7), I16x8);
  I16x8 hi =
      __builtin_convertvector(__builtin_shufflevector(diff, diff, 8, 9, 10, 11, 12, 13, 14, 15), I16x8);
  const I16x8 zero = {};
  lo += lanes_from<1>(lo, hi);  // lane i: sum of 2 from i
  hi += lanes_from<1>(hi, zero);
  lo += lanes_from<2>(lo, hi);  // of 4
  hi += lanes_from<2>(hi, zero);
  return lo + lanes_from<4>(lo, hi);  // of 8
}

template <int dir>
X_INLINE Costs direction_costs(const uint8_t* above, const uint8_t* below) {
  return Costs{direction_cost8<dir>(above, below), direction_cost8<dir>(above + 8, below + 8)};
}
#endif

// See block_field_directional in filter_x.cpp: eight pixels from the costs
// of their three directions.
X_INLINE I16x8 directional8(const uint8_t* above, const uint8_t* below, I16x8 costLeft, I16x8 costVert,
                            I16x8 costRight) {
  I16x8 useLeft = (costLeft < costVert) & (costRight >= costVert);
  I16x8 useRight = (costRight < costVert) & (costLeft >= costVert);
  I16x8 vert = (widen8(above) + widen8(below)) >> 1;
  I16x8 left = (widen8(above - 1) + widen8(below + 1)) >> 1;
  I16x8 right = (widen8(above + 1) + widen8(below - 1)) >> 1;
  return (useLeft & left) | (useRight & right) | (~(useLeft | useRight) & vert);
}

X_INLINE I16x8 progressive8(const uint8_t* above, const uint8_t* line, const uint8_t* below) {
  return (widen8(above) + 6 * widen8(line) + widen8(below) + 4) >> 3;
}

}  // namespace

void X_VECTOR_ROW(size_t begin, size_t end, const XBand* band) {
  const XBand& b = *band;
  for (size_t x = begin * kXBlock; x < end * kXBlock; x += 2 * kXBlock) {
    const bool combedLo = block_combed(b, x), combedHi = block_combed(b, x + kXBlock);
    X_UNROLL for (unsigned y = 0; y < kXBlock; y += 2) {
      const uint8_t* above = b.s[y] + x;
      const uint8_t* line = b.s[y + 1] + x;
      const uint8_t* below = b.s[y + 2] + x;
      uint8_t* out = b.d[y + 1] + x;
      memcpy(b.d[y] + x, above, 2 * kXBlock);
      if (combedLo || combedHi) {
        const Costs left = direction_costs<-1>(above, below);
        const Costs vert = direction_costs<0>(above, below);
        const Costs right = direction_costs<+1>(above, below);
        store8(out, combedLo ? directional8(above, below, left.lo, vert.lo, right.lo)
                             : progressive8(above, line, below));
        store8(out + 8, combedHi ? directional8(above + 8, below + 8, left.hi, vert.hi, right.hi)
                                 : progressive8(above + 8, line + 8, below + 8));
      } else {
        store8(out, progressive8(above, line, below));
        store8(out + 8, progressive8(above + 8, line + 8, below + 8));
      }
    }
  }
}
