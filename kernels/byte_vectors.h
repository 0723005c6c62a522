// 16-byte vectors in the compiler's generic vector extension: one SSE2 or NEON
// register each, so that the copy-like kernels move bytes as fast as the
// memory lets them without target-specific code.
#pragma once

#include <stdint.h>
#include <string.h>

namespace scrim {

typedef uint8_t Bytes16 __attribute__((vector_size(16)));
typedef uint8_t Bytes8 __attribute__((vector_size(8)));
typedef uint8_t Bytes4 __attribute__((vector_size(4)));
typedef uint16_t U16x8 __attribute__((vector_size(16)));
typedef int16_t I16x8 __attribute__((vector_size(16)));
typedef uint32_t U32x4 __attribute__((vector_size(16)));
typedef uint64_t U64x2 __attribute__((vector_size(16)));

template <class V>
inline V LoadVector(const uint8_t* p) {
  V v;
  memcpy(&v, p, sizeof v);
  return v;
}
template <class V>
inline void StoreVector(uint8_t* p, V v) {
  memcpy(p, &v, sizeof v);
}
// Same bits, another lane layout.
template <class To, class From>
inline To Lanes(From v) {
  static_assert(sizeof(To) == sizeof(From), "same size");
  To t;
  memcpy(&t, &v, sizeof t);
  return t;
}

// Eight bytes into the low half (one register load; the high half is zero).
inline Bytes16 LoadLow8(const uint8_t* p) {
  uint64_t w;
  memcpy(&w, p, 8);
  const U64x2 v = {w, 0};
  return Lanes<Bytes16>(v);
}

// a0 b0 a1 b1 ... from the low (first) or high (second) halves of a and b.
inline Bytes16 ZipLow(Bytes16 a, Bytes16 b) {
  return __builtin_shufflevector(a, b, 0, 16, 1, 17, 2, 18, 3, 19, 4, 20, 5, 21, 6, 22, 7, 23);
}
inline Bytes16 ZipHigh(Bytes16 a, Bytes16 b) {
  return __builtin_shufflevector(a, b, 8, 24, 9, 25, 10, 26, 11, 27, 12, 28, 13, 29, 14, 30, 15, 31);
}
// Bytes 0, 2, ..., 30 and 1, 3, ..., 31 of the 32 bytes a, b.
inline Bytes16 Evens(Bytes16 a, Bytes16 b) {
  return __builtin_shufflevector(a, b, 0, 2, 4, 6, 8, 10, 12, 14, 16, 18, 20, 22, 24, 26, 28, 30);
}
inline Bytes16 Odds(Bytes16 a, Bytes16 b) {
  return __builtin_shufflevector(a, b, 1, 3, 5, 7, 9, 11, 13, 15, 17, 19, 21, 23, 25, 27, 29, 31);
}

// Interleaves of kElement-byte elements of rows i and i + kDistance, for
// every i below kRows whose kDistance bit is clear, in place.
template <int kDistance, int kElement = kDistance, int kRows = 16>
inline void ZipRows(Bytes16 r[kRows]) {
#pragma GCC unroll 16
  for (int i = 0; i < kRows; ++i) {
    if (i & kDistance) continue;
    const Bytes16 a = r[i], b = r[i + kDistance];
    if (kElement == 1) {
      r[i] = ZipLow(a, b), r[i + kDistance] = ZipHigh(a, b);
    } else if (kElement == 2) {
      const U16x8 x = Lanes<U16x8>(a), y = Lanes<U16x8>(b);
      r[i] = Lanes<Bytes16>(U16x8(__builtin_shufflevector(x, y, 0, 8, 1, 9, 2, 10, 3, 11)));
      r[i + kDistance] = Lanes<Bytes16>(U16x8(__builtin_shufflevector(x, y, 4, 12, 5, 13, 6, 14, 7, 15)));
    } else if (kElement == 4) {
      const U32x4 x = Lanes<U32x4>(a), y = Lanes<U32x4>(b);
      r[i] = Lanes<Bytes16>(U32x4(__builtin_shufflevector(x, y, 0, 4, 1, 5)));
      r[i + kDistance] = Lanes<Bytes16>(U32x4(__builtin_shufflevector(x, y, 2, 6, 3, 7)));
    } else {
      const U64x2 x = Lanes<U64x2>(a), y = Lanes<U64x2>(b);
      r[i] = Lanes<Bytes16>(U64x2(__builtin_shufflevector(x, y, 0, 2)));
      r[i + kDistance] = Lanes<Bytes16>(U64x2(__builtin_shufflevector(x, y, 1, 3)));
    }
  }
}

// Rows become columns: afterwards r[i] holds byte i of every input row, in
// row order. Interleaving pairs of rows at widening element sizes transposes
// in place, in registers, leaving column bit-reverse(i) in row i; the last
// copy only renames registers.
inline void Transpose16x16(Bytes16 r[16]) {
  static constexpr int kColumn[16] = {0, 8, 4, 12, 2, 10, 6, 14, 1, 9, 5, 13, 3, 11, 7, 15};
  ZipRows<1>(r);
  ZipRows<2>(r);
  ZipRows<4>(r);
  ZipRows<8>(r);
  Bytes16 t[16];
#pragma GCC unroll 16
  for (int i = 0; i < 16; ++i) t[kColumn[i]] = r[i];
#pragma GCC unroll 16
  for (int i = 0; i < 16; ++i) r[i] = t[i];
}

// The same for an 8 x 8 tile of 16-bit pixels: afterwards r[i] holds pixel
// i of every input row, in row order.
inline void Transpose8x8x16(Bytes16 r[8]) {
  static constexpr int kColumn[8] = {0, 4, 2, 6, 1, 5, 3, 7};
  ZipRows<1, 2, 8>(r);
  ZipRows<2, 4, 8>(r);
  ZipRows<4, 8, 8>(r);
  Bytes16 t[8];
#pragma GCC unroll 8
  for (int i = 0; i < 8; ++i) t[kColumn[i]] = r[i];
#pragma GCC unroll 8
  for (int i = 0; i < 8; ++i) r[i] = t[i];
}

// The eight 16-bit lanes last first.
inline Bytes16 Reverse16(Bytes16 v) {
  const U16x8 x = Lanes<U16x8>(v);
  return Lanes<Bytes16>(U16x8(__builtin_shufflevector(x, x, 7, 6, 5, 4, 3, 2, 1, 0)));
}

}  // namespace scrim
