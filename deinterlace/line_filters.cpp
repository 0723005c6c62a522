// The per-line arithmetic shared by the filters: the clamp table, the
// truncating average of two lines and the five-tap vertical filter.
//
// The wide loops use the compilers' generic vector types, so the same source
// turns into SSE2 on x86-64 and NEON on aarch64; the tails run the plain
// per-byte formula with the clamp table. Both give the same bytes (the tests
// compare every length from 1 to past two vectors against the plain formula).
#include <string.h>

#include "deinterlace/deint_filters.h"

namespace {

typedef uint8_t u8x16 __attribute__((vector_size(16)));
typedef int16_t i16x16 __attribute__((vector_size(32)));

constexpr std::array<uint8_t, 2304> make_clip_table() {
  std::array<uint8_t, 2304> t{};
  for (int i = 0; i < 2304; ++i) {
    int v = i - kDeintClipBias;
    t[i] = static_cast<uint8_t>(v < 0 ? 0 : (v > 255 ? 255 : v));
  }
  return t;
}

inline u8x16 load16(const uint8_t* p) {
  u8x16 v;
  memcpy(&v, p, 16);
  return v;
}

inline void store16(uint8_t* p, u8x16 v) { memcpy(p, &v, 16); }

// Sixteen pixels of the five-tap filter. The sum stays within -506..2554, so
// 16-bit lanes hold it. The clamp is done with sign masks, which does what
// the table does for this range (-64..319 after the shift): lanes below 0
// are cleared, lanes above 255 saturate. A macro rather than a function:
// 32-byte vectors cannot cross a call without an ABI change on plain SSE2.
#define DEINT_TAPS16(out, q0, q1, q2, q3, q4)                                                             \
  do {                                                                                                    \
    i16x16 s_ =                                                                                           \
        4 * (__builtin_convertvector(load16(q1), i16x16) + __builtin_convertvector(load16(q3), i16x16)) + \
        2 * __builtin_convertvector(load16(q2), i16x16) - __builtin_convertvector(load16(q0), i16x16) -   \
        __builtin_convertvector(load16(q4), i16x16) + 4;                                                  \
    s_ >>= 3;                                                                                             \
    s_ &= ~(s_ >> 15);      /* negative: 0 */                                                             \
    s_ |= (255 - s_) >> 15; /* above 255: all ones, 255 once truncated */                                 \
    (out) = __builtin_convertvector(s_ & 255, u8x16);                                                     \
  } while (0)

inline uint8_t taps(int p0, int p1, int p2, int p3, int p4) {
  // >> of a negative sum rounds towards minus infinity (arithmetic shift).
  return deint_clip((-p0 + 4 * p1 + 2 * p2 + 4 * p3 - p4 + 4) >> 3);
}

}  // namespace

const std::array<uint8_t, 2304> deint_clip_table = make_clip_table();

void Merge(uint8_t* dst, const uint8_t* a, const uint8_t* b, size_t n) {
  size_t i = 0;
  for (; i + 16 <= n; i += 16) {
    u8x16 va = load16(a + i);
    u8x16 vb = load16(b + i);
    // (a + b) >> 1 without leaving 8 bits: common bits plus half the others.
    store16(dst + i, (va & vb) + ((va ^ vb) >> 1));
  }
  for (; i < n; ++i) dst[i] = static_cast<uint8_t>((a[i] + b[i]) >> 1);
}

void deinterlace_line(uint8_t* dst, const uint8_t* p0, const uint8_t* p1, const uint8_t* p2,
                      const uint8_t* p3, const uint8_t* p4, size_t n) {
  size_t i = 0;
  for (; i + 16 <= n; i += 16) {
    u8x16 r;
    DEINT_TAPS16(r, p0 + i, p1 + i, p2 + i, p3 + i, p4 + i);
    store16(dst + i, r);
  }
  for (; i < n; ++i) dst[i] = taps(p0[i], p1[i], p2[i], p3[i], p4[i]);
}

void deinterlace_line_inplace(uint8_t* tmp, const uint8_t* a, uint8_t* b, const uint8_t* c, const uint8_t* d,
                              size_t n) {
  size_t i = 0;
  for (; i + 16 <= n; i += 16) {
    // Everything is read before b is written: c and d may be b itself.
    u8x16 r;
    u8x16 orig = load16(b + i);
    DEINT_TAPS16(r, tmp + i, a + i, b + i, c + i, d + i);
    store16(tmp + i, orig);
    store16(b + i, r);
  }
  for (; i < n; ++i) {
    uint8_t orig = b[i];
    uint8_t r = taps(tmp[i], a[i], orig, c[i], d[i]);
    tmp[i] = orig;
    b[i] = r;
  }
}
