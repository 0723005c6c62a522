// Mode 7's interior blocks, vector rows: one portable source (GCC and Clang
// vector extensions) built once per instruction set by the files that
// include it, each after defining
//   X_VECTOR_BYTES  register bytes (16: SSE4.1, NEON)
//   X_VECTOR_ROW    the name of the row function.
// It computes what the scalar row in filter_x.cpp computes, for
// X_VECTOR_BYTES / 16 blocks at a time: the detection of every block, and for
// each odd line both the progressive and (when any block of the step combs)
// the directional result, then keeps per block the one its detection asks for.
#include <string.h>

#include <utility>

#include "deinterlace/filter_x_rows.h"

namespace {

// Columns per iteration: one 16-bit lane each, one register of X_VECTOR_BYTES.
// Every vector below is exactly one register wide: wider generic vectors are
// split lane by lane by the compilers.
constexpr unsigned C = X_VECTOR_BYTES / 2;

typedef uint8_t U8v __attribute__((vector_size(C)));
typedef int16_t I16v __attribute__((vector_size(2 * C)));
typedef uint16_t U16v __attribute__((vector_size(2 * C)));
typedef uint16_t U16x8 __attribute__((vector_size(16)));
typedef int16_t I16x8 __attribute__((vector_size(16)));
typedef uint32_t U32x4 __attribute__((vector_size(16)));
typedef uint8_t U8x8 __attribute__((vector_size(8)));

#define X_INLINE inline __attribute__((always_inline))

X_INLINE I16v widen(const uint8_t* p) {
  U8v v;
  memcpy(&v, p, C);
  return __builtin_convertvector(v, I16v);
}

X_INLINE void store(uint8_t* p, I16v v) {  // lanes hold 0..255
  U8v r = __builtin_convertvector(v, U8v);
  memcpy(p, &r, C);
}

// Lanes s .. s+C-1 of the 2C lanes lo, hi.
template <int s, size_t... I>
X_INLINE I16v lanes_from(I16v lo, I16v hi, std::index_sequence<I...>) {
  return __builtin_shufflevector(lo, hi, (I + s)...);
}
template <int s>
X_INLINE I16v lanes_from(I16v lo, I16v hi) {
  return lanes_from<s>(lo, hi, std::make_index_sequence<C>());
}

// ---- detection, one block at a time (eight 16-bit lanes) ----

X_INLINE I16x8 widen8(const uint8_t* p) {
  U8x8 v;
  memcpy(&v, p, 8);
  return __builtin_convertvector(v, I16x8);
}

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

// See block_is_combed in filter_x.cpp.
X_INLINE bool block_is_combed(const XBand& b, size_t x) {
  I16x8 l[kXBlock + 2];
  for (unsigned j = 0; j < kXBlock + 2; ++j) l[j] = widen8(b.s[j] + x);
  for (unsigned y = 0; y < kXBlock; y += 2) {
    uint32_t adjacent = lanes_sum(square_sum(l[y] - l[y + 1]) + square_sum(l[y + 1] - l[y + 2]));
    uint32_t sameField = lanes_sum(square_sum(l[y] - l[y + 2]) + square_sum(l[y + 1] - l[y + 3]));
    if (3 * adjacent > 4 * sameField && adjacent > 32) return true;
  }
  return false;
}

// ---- the odd lines, C columns at a time ----

X_INLINE I16v absdiff(I16v a, I16v b) {
  I16v d = a - b;
  return d < 0 ? -d : d;
}

// |above[x + k + dir] - below[x + k - dir]| summed over k = -3..4 for the C
// pixels from x: the differences for x-3 .. x+C+4 are formed once and summed
// over sliding windows of 2, 4 and 8. Reads columns x-4 .. x+C+5.
template <int dir>
X_INLINE I16v direction_cost(const uint8_t* above, const uint8_t* below) {
  const uint8_t* a = above - 3 + dir;
  const uint8_t* b = below - 3 - dir;
  U8v ah = {}, bh = {};
  memcpy(&ah, a + C, 8);
  memcpy(&bh, b + C, 8);
  I16v lo = absdiff(widen(a), widen(b));
  I16v hi = absdiff(__builtin_convertvector(ah, I16v), __builtin_convertvector(bh, I16v));
  const I16v zero = {};
  lo += lanes_from<1>(lo, hi);  // lane i: sum of 2 from i
  hi += lanes_from<1>(hi, zero);
  lo += lanes_from<2>(lo, hi);  // of 4
  hi += lanes_from<2>(hi, zero);
  return lo + lanes_from<4>(lo, hi);  // of 8
}

// See block_field_directional in filter_x.cpp.
X_INLINE I16v directional(const uint8_t* above, const uint8_t* below) {
  I16v costLeft = direction_cost<-1>(above, below);
  I16v costVert = direction_cost<0>(above, below);
  I16v costRight = direction_cost<+1>(above, below);
  I16v useLeft = (costLeft < costVert) & (costRight >= costVert);
  I16v useRight = (costRight < costVert) & (costLeft >= costVert);
  I16v vert = (widen(above) + widen(below)) >> 1;
  I16v left = (widen(above - 1) + widen(below + 1)) >> 1;
  I16v right = (widen(above + 1) + widen(below - 1)) >> 1;
  return (useLeft & left) | (useRight & right) | (~(useLeft | useRight) & vert);
}

}  // namespace

void X_VECTOR_ROW(size_t begin, size_t end, const XBand* band) {
  const XBand& b = *band;
  for (size_t x = begin * kXBlock; x < end * kXBlock; x += C) {
    // All ones in the lanes of a combed block.
    I16v combed;
    bool anyCombed = false;
    for (unsigned g = 0; g < C; g += kXBlock) {
      const bool c = block_is_combed(b, x + g);
      anyCombed |= c;
      for (unsigned i = 0; i < kXBlock; ++i) combed[g + i] = c ? -1 : 0;
    }
    for (unsigned y = 0; y < kXBlock; y += 2) {
      memcpy(b.d[y] + x, b.s[y] + x, C);
      const uint8_t* above = b.s[y] + x;
      const uint8_t* below = b.s[y + 2] + x;
      I16v r = (widen(above) + 6 * widen(b.s[y + 1] + x) + widen(below) + 4) >> 3;
      if (anyCombed) r = (combed & directional(above, below)) | (~combed & r);
      store(b.d[y + 1] + x, r);
    }
  }
}
