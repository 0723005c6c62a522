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

}  // namespace scrim
