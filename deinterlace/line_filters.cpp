// The per-line arithmetic shared by the filters: the clamp table, the
// truncating average of two lines and the five-tap vertical filter.
//
// Merge's wide loop uses the compilers' generic vector types (SSE2 on x86-64,
// NEON on aarch64). The five-tap filter's scalar rows are here; its vector
// rows are in line_rows_vector.h.
#include <string.h>

#include "deinterlace/deint_filters.h"

namespace {

typedef uint8_t u8x16 __attribute__((vector_size(16)));

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

// The scalar rows: the plain formula with the clamp table.
void deint_taps_scalar(size_t begin, size_t end, const DeintTapLines* l) {
  for (size_t i = begin; i < end; ++i)
    l->dst[i] = taps(l->p[0][i], l->p[1][i], l->p[2][i], l->p[3][i], l->p[4][i]);
}

// Each byte of p[2] (which is dst) is read before it is replaced.
void deint_taps_inplace_scalar(size_t begin, size_t end, const DeintTapLines* l) {
  for (size_t i = begin; i < end; ++i) {
    const uint8_t orig = l->p[2][i];
    const uint8_t r = taps(l->p[0][i], l->p[1][i], orig, l->p[3][i], l->p[4][i]);
    l->keep[i] = orig;
    l->dst[i] = r;
  }
}

void deinterlace_line(uint8_t* dst, const uint8_t* p0, const uint8_t* p1, const uint8_t* p2,
                      const uint8_t* p3, const uint8_t* p4, size_t n) {
  const DeintTapLines lines{dst, {p0, p1, p2, p3, p4}, nullptr};
  deint_taps_scalar(0, n, &lines);
}

void deinterlace_line_inplace(uint8_t* tmp, const uint8_t* a, uint8_t* b, const uint8_t* c, const uint8_t* d,
                              size_t n) {
  const DeintTapLines lines{b, {tmp, a, b, c, d}, tmp};
  deint_taps_inplace_scalar(0, n, &lines);
}

SCRIM_ROW_SET(const DeintTapLines*, deint_taps_rows, deint_taps, 16, 32, 16);
SCRIM_ROW_SET(const DeintTapLines*, deint_taps_inplace_rows, deint_taps_inplace, 16, 32, 16);
