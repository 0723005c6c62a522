// Helpers of the sources built once per instruction set (*_sse41.cpp,
// *_avx2.cpp, *_neon.cpp). They stay in an unnamed namespace and always
// inline on purpose: each of those units is compiled for its own instruction
// set, and one shared inline definition could be linked from the AVX2 unit
// into an SSE4.1 row and run on a CPU without AVX2.
#pragma once

#include <string.h>

#define V_INLINE inline __attribute__((always_inline))
// After a lambda's parameters.
#define V_INLINE_LAMBDA __attribute__((always_inline))

namespace {

// Same bits, another lane layout.
template <class To, class From>
V_INLINE To As(From v) {
  static_assert(sizeof(To) == sizeof(From), "same size");
  To t;
  memcpy(&t, &v, sizeof t);
  return t;
}

}  // namespace
