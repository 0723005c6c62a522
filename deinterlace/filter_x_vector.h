// Mode 7's interior blocks, vector rows: one portable source (GCC and Clang
// vector extensions) built once per instruction set by the file that
// includes it after defining
//   X_VECTOR_BYTES  pixels per step, one register of bytes (16; AVX2 32)
//   X_VECTOR_ROW    the name of the row function.
// It computes what the scalar row in filter_x.cpp computes, X_VECTOR_BYTES / 8
// blocks a step: the detection of each block, then per odd line the
// directional result of the step's pixels when any block combs, the
// progressive one when any does not, and per block the one its detection
// asks for. The directional averages are taken in bytes.
//
// x86 replaces two pieces with intrinsics, measured on the 1080p benchmark:
// the detection's squares and sums (pmaddwd, phaddd) and the direction costs
// (psadbw, eight absolute differences summed in one instruction).
#include <string.h>

#include <utility>

#include "deinterlace/filter_x_rows.h"

#if defined(__AVX2__)
#include <immintrin.h>
#elif defined(__SSE4_1__)
#include <smmintrin.h>
#endif

namespace {

// Pixels per step: one register of bytes, two or four blocks.
constexpr unsigned P = X_VECTOR_BYTES;

typedef uint8_t U8v __attribute__((vector_size(P)));
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

#if defined(__SSE4_1__) || defined(__AVX2__)
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

// ---- which direction each pixel takes (see block_field_directional) ----

// All ones where the pixel takes the left diagonal, or the right one, from
// the three direction costs: a diagonal only when strictly cheaper than the
// vertical while the other diagonal is not.
struct Directions {
  U8v left, right;
};

#if defined(__AVX2__) || defined(__SSE4_1__)
// psadbw sums eight absolute differences at once: the load at offset k gives,
// per 128-bit half, the costs of the half's pixels k and k+8 in the low words
// of its two 64-bit lanes. Two rounds of packs gather the sixteen costs of a
// half as pixels 0 8 1 9 2 10 3 11 | 4 12 5 13 6 14 7 15; the three
// directions share that order, so they are compared in it, and one byte
// shuffle per mask puts the pixels back in order.
#if defined(__AVX2__)
typedef __m256i Reg;
X_INLINE Reg loadu(const uint8_t* p) { return _mm256_loadu_si256((const Reg*)p); }
X_INLINE Reg sad(Reg a, Reg b) { return _mm256_sad_epu8(a, b); }
X_INLINE Reg packus32(Reg a, Reg b) { return _mm256_packus_epi32(a, b); }
X_INLINE Reg packs16(Reg a, Reg b) { return _mm256_packs_epi16(a, b); }
X_INLINE Reg greater16(Reg a, Reg b) { return _mm256_cmpgt_epi16(a, b); }
X_INLINE Reg and_not(Reg a, Reg b) { return _mm256_andnot_si256(a, b); }
X_INLINE Reg shuffle_bytes(Reg a, Reg order) { return _mm256_shuffle_epi8(a, order); }
X_INLINE Reg byte_order(const int8_t* o) {
  return _mm256_broadcastsi128_si256(_mm_loadu_si128((const __m128i*)o));
}
#else
typedef __m128i Reg;
X_INLINE Reg loadu(const uint8_t* p) { return _mm_loadu_si128((const Reg*)p); }
X_INLINE Reg sad(Reg a, Reg b) { return _mm_sad_epu8(a, b); }
X_INLINE Reg packus32(Reg a, Reg b) { return _mm_packus_epi32(a, b); }
X_INLINE Reg packs16(Reg a, Reg b) { return _mm_packs_epi16(a, b); }
X_INLINE Reg greater16(Reg a, Reg b) { return _mm_cmpgt_epi16(a, b); }
X_INLINE Reg and_not(Reg a, Reg b) { return _mm_andnot_si128(a, b); }
X_INLINE Reg shuffle_bytes(Reg a, Reg order) { return _mm_shuffle_epi8(a, order); }
X_INLINE Reg byte_order(const int8_t* o) { return _mm_loadu_si128((const __m128i*)o); }
#endif

// The costs of one direction, as two vectors of 16-bit lanes in the order
// above. Reads columns x-4 .. x+P+4.
template <int dir>
X_INLINE void direction_costs(const uint8_t* above, const uint8_t* below, Reg* c0, Reg* c1) {
  const uint8_t* a = above - 3 + dir;
  const uint8_t* b = below - 3 - dir;
  Reg r[8];
  X_UNROLL for (int k = 0; k < 8; ++k) r[k] = sad(loadu(a + k), loadu(b + k));
  *c0 = packus32(packus32(r[0], r[1]), packus32(r[2], r[3]));
  *c1 = packus32(packus32(r[4], r[5]), packus32(r[6], r[7]));
}

X_INLINE Directions directions(const uint8_t* above, const uint8_t* below) {
  static const int8_t kInOrder[16] = {0, 2, 4, 6, 8, 10, 12, 14, 1, 3, 5, 7, 9, 11, 13, 15};
  Reg l0, l1, v0, v1, r0, r1;
  direction_costs<-1>(above, below, &l0, &l1);
  direction_costs<0>(above, below, &v0, &v1);
  direction_costs<+1>(above, below, &r0, &r1);
  const Reg leftLess = packs16(greater16(v0, l0), greater16(v1, l1));
  const Reg rightLess = packs16(greater16(v0, r0), greater16(v1, r1));
  const Reg order = byte_order(kInOrder);
  return Directions{(U8v)shuffle_bytes(and_not(rightLess, leftLess), order),
                    (U8v)shuffle_bytes(and_not(leftLess, rightLess), order)};
}
#else
// Lanes s .. s+7 of the sixteen lanes lo, hi.
template <int s>
X_INLINE I16x8 lanes_from(I16x8 lo, I16x8 hi) {
  return __builtin_shufflevector(lo, hi, s, s + 1, s + 2, s + 3, s + 4, s + 5, s + 6, s + 7);
}

// Costs of the eight pixels from x: the differences for x-3 .. x+12 are
// formed once and summed over sliding windows of 2, 4 and 8. Reads columns
// x-4 .. x+13.
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

X_INLINE U8x16 join_masks(I16x8 lo, I16x8 hi) {
  typedef int8_t I8x8 __attribute__((vector_size(8)));
  const I8x8 l = __builtin_convertvector(lo, I8x8), h = __builtin_convertvector(hi, I8x8);
  return (U8x16)__builtin_shufflevector(l, h, 0, 1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14, 15);
}

X_INLINE Directions directions(const uint8_t* above, const uint8_t* below) {
  I16x8 leftLess[2], rightLess[2];
  for (unsigned h = 0; h < 2; ++h) {
    const I16x8 left = direction_cost8<-1>(above + 8 * h, below + 8 * h);
    const I16x8 vert = direction_cost8<0>(above + 8 * h, below + 8 * h);
    const I16x8 right = direction_cost8<+1>(above + 8 * h, below + 8 * h);
    leftLess[h] = left < vert;
    rightLess[h] = right < vert;
  }
  const U8x16 l = join_masks(leftLess[0], leftLess[1]), r = join_masks(rightLess[0], rightLess[1]);
  return Directions{l & ~r, r & ~l};
}
#endif

// ---- the odd lines, P pixels at a time ----

X_INLINE U8v load(const uint8_t* p) {
  U8v v;
  memcpy(&v, p, P);
  return v;
}

// (a + b) >> 1 without leaving 8 bits.
X_INLINE U8v average_down(U8v a, U8v b) { return (a & b) + ((a ^ b) >> 1); }

X_INLINE U8v directional(const uint8_t* above, const uint8_t* below) {
  const Directions d = directions(above, below);
  const U8v vert = average_down(load(above), load(below));
  const U8v left = average_down(load(above - 1), load(below + 1));
  const U8v right = average_down(load(above + 1), load(below - 1));
  return (d.left & left) | (d.right & right) | (~(d.left | d.right) & vert);
}

// (above + 6·line + below + 4) >> 3, eight pixels at a time.
X_INLINE U8v progressive(const uint8_t* above, const uint8_t* line, const uint8_t* below) {
  uint8_t out[P];
  for (unsigned i = 0; i < P; i += 8) {
    const I16x8 r = (widen8(above + i) + 6 * widen8(line + i) + widen8(below + i) + 4) >> 3;
    const U8x8 n = __builtin_convertvector(r, U8x8);
    memcpy(out + i, &n, 8);
  }
  return load(out);
}

}  // namespace

void X_VECTOR_ROW(size_t begin, size_t end, const XBand* band) {
  const XBand& b = *band;
  for (size_t x = begin * kXBlock; x < end * kXBlock; x += P) {
    // All ones in the bytes of a combed block (built in a register: a
    // vector load of smaller stores just made would stall).
    typedef uint64_t U64v __attribute__((vector_size(P)));
    U64v blockMasks = {};
    bool any = false, all = true;
    X_UNROLL for (unsigned g = 0; g < P / kXBlock; ++g) {
      const bool c = block_combed(b, x + g * kXBlock);
      blockMasks[g] = c ? ~uint64_t(0) : 0;
      any |= c;
      all &= c;
    }
    const U8v combed = (U8v)blockMasks;
    X_UNROLL for (unsigned y = 0; y < kXBlock; y += 2) {
      const uint8_t* above = b.s[y] + x;
      const uint8_t* below = b.s[y + 2] + x;
      memcpy(b.d[y] + x, above, P);
      U8v r;
      if (all)
        r = directional(above, below);
      else if (any)
        r = (combed & directional(above, below)) | (~combed & progressive(above, b.s[y + 1] + x, below));
      else
        r = progressive(above, b.s[y + 1] + x, below);
      memcpy(b.d[y + 1] + x, &r, P);
    }
  }
}
