// Mode 7: a block-adaptive deinterlacer. Each plane is cut into bands of eight
// lines and each band into 8x8 blocks. A block whose lines comb (the two
// fields disagree more than lines of one field do) keeps its even lines and
// rebuilds its odd lines from them; a block that looks progressive only has
// its odd lines lightly smoothed.
//
// Plane geometry: the block columns cover the line width in 8-byte steps,
// where the line width is the smaller of the source and destination pitch
// (so neither line is overrun); the pitch mod 8 columns at the right are a
// narrower remainder block. The block rows are (height + 7) / 8 - 1 bands,
// which always leaves a last, shorter band of 1 to 8 lines: a full block reads
// the two lines below it (line 8 for its last odd line, lines 8 and 9 for the
// detection), and those exist for every band but the last. Only a height of
// 1 mod 8 lacks line 9 for the last full band; that read repeats the plane's
// last line. Remainder blocks (right columns and the whole last band, cut into
// 8-column pieces) use a simpler detection and formulas that stay inside them.
// Bands are worked top to bottom, each from left to right with its remainder
// columns last. The picture width plays no part: the blocks cover the pitch.
//
// Remainder detection, per line pair inside the block (lines y, y+1, y+2 with
// y even): the pair combs when the sum of squared differences of lines y and
// y+2 (same field) is below that of lines y and y+1 (adjacent); the block
// combs when more than one pair does. A block of fewer than five lines has
// fewer than two pairs and never combs.
//
// Plane heights: chroma halved for layout 0, full for layouts 1 and 2.
#include <string.h>

#include "deinterlace/deint_filters.h"

namespace {

typedef int16_t i16x8 __attribute__((vector_size(16)));
typedef uint16_t u16x8 __attribute__((vector_size(16)));
typedef uint16_t u16x4 __attribute__((vector_size(8)));
typedef uint32_t u32x4 __attribute__((vector_size(16)));
typedef uint8_t u8x8 __attribute__((vector_size(8)));
typedef uint8_t u8x16 __attribute__((vector_size(16)));

constexpr unsigned kBlock = 8;

inline i16x8 widen8(const uint8_t* p) {
  u8x8 v;
  memcpy(&v, p, 8);
  return __builtin_convertvector(v, i16x8);
}

// Values are known to lie in 0..255.
inline void narrow8(uint8_t* p, i16x8 v) {
  u8x8 r = __builtin_convertvector(v, u8x8);
  memcpy(p, &r, 8);
}

// |a - b| of sixteen bytes at a and b, as the larger less the smaller (one
// instruction on NEON, three on SSE2).
inline u8x16 absdiff16(const uint8_t* a, const uint8_t* b) {
  u8x16 va, vb;
  memcpy(&va, a, 16);
  memcpy(&vb, b, 16);
  return (va > vb ? va : vb) - (va > vb ? vb : va);
}

inline i16x8 low_half(u8x16 v) {
  return __builtin_convertvector(__builtin_shufflevector(v, v, 0, 1, 2, 3, 4, 5, 6, 7), i16x8);
}
inline i16x8 high_half(u8x16 v) {
  return __builtin_convertvector(__builtin_shufflevector(v, v, 8, 9, 10, 11, 12, 13, 14, 15), i16x8);
}

// Squares of differences of bytes (at most 255², below 2^16) are exact in
// 16-bit lanes; their sums are taken in 32-bit lanes.
inline u32x4 square_sum(i16x8 d) {
  u16x8 du = (u16x8)d;  // unsigned: the product wraps, its low 16 bits are d²
  u16x8 sq = du * du;
  u16x4 lo = __builtin_shufflevector(sq, sq, 0, 1, 2, 3);
  u16x4 hi = __builtin_shufflevector(sq, sq, 4, 5, 6, 7);
  return __builtin_convertvector(lo, u32x4) + __builtin_convertvector(hi, u32x4);
}

inline uint32_t lanes_sum(u32x4 v) { return v[0] + v[1] + v[2] + v[3]; }

// Lanes s .. s+7 of the sixteen lanes lo, hi. Made of two one-vector shifts
// so that plain SSE2 gets whole-register byte shifts (a two-vector shuffle
// would go lane by lane there); NEON gets its EXT either way.
template <int s>
inline i16x8 lanes_from(i16x8 lo, i16x8 hi) {
  const i16x8 zero = {};
  return __builtin_shufflevector(lo, zero, s, s + 1, s + 2, s + 3, s + 4, s + 5, s + 6, s + 7) |
         __builtin_shufflevector(zero, hi, s, s + 1, s + 2, s + 3, s + 4, s + 5, s + 6, s + 7);
}

// One band of a plane: source lines 0..9 from its top (lines below the plane
// repeat its last line) and destination lines 0..7; `lines` of them belong to
// the band.
struct Band {
  const uint8_t* s[kBlock + 2];
  uint8_t* d[kBlock];
  unsigned lines;
};

// ---- full 8x8 blocks -------------------------------------------------------

// Over the four line pairs (y, y+1, y+2, y+3 for y = 0, 2, 4, 6), adjacent
// lines against lines of one field; a pair combs when three quarters of the
// adjacent sum exceeds the same-field sum (compared exactly: 3·fr > 4·ff) and
// the adjacent sum exceeds 32. Any combing pair makes the block combed.
bool block_is_combed(const Band& b, size_t x) {
  i16x8 l[kBlock + 2];
  for (unsigned j = 0; j < kBlock + 2; ++j) l[j] = widen8(b.s[j] + x);
  for (unsigned y = 0; y < kBlock; y += 2) {
    uint32_t adjacent = lanes_sum(square_sum(l[y] - l[y + 1]) + square_sum(l[y + 1] - l[y + 2]));
    uint32_t sameField = lanes_sum(square_sum(l[y] - l[y + 2]) + square_sum(l[y + 1] - l[y + 3]));
    if (3 * adjacent > 4 * sameField && adjacent > 32) return true;
  }
  return false;
}

// Progressive: odd line y := (y-1 + 6·y + y+1 + 4) >> 3.
void block_progressive(const Band& b, size_t x) {
  for (unsigned y = 0; y < kBlock; y += 2) {
    memcpy(b.d[y] + x, b.s[y] + x, kBlock);
    i16x8 r = (widen8(b.s[y] + x) + 6 * widen8(b.s[y + 1] + x) + widen8(b.s[y + 2] + x) + 4) >> 3;
    narrow8(b.d[y + 1] + x, r);
  }
}

// Combed, first or last block column: odd line y := (y-1 + y+1) >> 1.
void block_field_vertical(const Band& b, size_t x) {
  for (unsigned y = 0; y < kBlock; y += 2) {
    memcpy(b.d[y] + x, b.s[y] + x, kBlock);
    narrow8(b.d[y + 1] + x, (widen8(b.s[y] + x) + widen8(b.s[y + 2] + x)) >> 1);
  }
}

// Cost of pairing above[x + k + dir] with below[x + k - dir] for the eight
// pixels x..x+7: sum over k = -3..4 of the absolute differences. dir -1 is the
// diagonal above-left to below-right, 0 the vertical, +1 above-right to
// below-left. The sixteen differences for x-3 .. x+12 (the last one unused)
// are formed once and summed over sliding windows of 2, 4 and 8. Reads
// columns x-4 .. x+13.
template <int dir>
inline i16x8 direction_cost(const uint8_t* above, const uint8_t* below, size_t x) {
  u8x16 diff = absdiff16(above + x - 3 + dir, below + x - 3 - dir);
  i16x8 lo = low_half(diff);
  i16x8 hi = high_half(diff);
  const i16x8 zero = {};
  lo += lanes_from<1>(lo, hi);  // lane i: sum of 2 from i
  hi += lanes_from<1>(hi, zero);
  lo += lanes_from<2>(lo, hi);  // of 4
  hi += lanes_from<2>(hi, zero);
  return lo + lanes_from<4>(lo, hi);  // of 8
}

// Combed, interior block column: each odd pixel is the truncating average of
// the even pixels above and below along the cheapest of three directions. A
// diagonal wins only when it is strictly cheaper than the vertical and the
// other diagonal is not; ties, and both diagonals beating the vertical, keep
// the vertical.
void block_field_directional(const Band& b, size_t x) {
  for (unsigned y = 0; y < kBlock; y += 2) {
    const uint8_t* above = b.s[y];
    const uint8_t* below = b.s[y + 2];
    memcpy(b.d[y] + x, above + x, kBlock);
    i16x8 costLeft = direction_cost<-1>(above, below, x);
    i16x8 costVert = direction_cost<0>(above, below, x);
    i16x8 costRight = direction_cost<+1>(above, below, x);
    i16x8 useLeft = (costLeft < costVert) & (costRight >= costVert);
    i16x8 useRight = (costRight < costVert) & (costLeft >= costVert);
    i16x8 vert = (widen8(above + x) + widen8(below + x)) >> 1;
    i16x8 left = (widen8(above + x - 1) + widen8(below + x + 1)) >> 1;
    i16x8 right = (widen8(above + x + 1) + widen8(below + x - 1)) >> 1;
    i16x8 r = (useLeft & left) | (useRight & right) | (~(useLeft | useRight) & vert);
    narrow8(b.d[y + 1] + x, r);
  }
}

// ---- remainder blocks (w columns, the band's lines) --------------------------

int ssd(const uint8_t* a, const uint8_t* c, size_t n) {
  int s = 0;
  for (size_t i = 0; i < n; ++i) {
    int d = a[i] - c[i];
    s += d * d;
  }
  return s;
}

bool remainder_is_combed(const Band& b, size_t x, size_t w) {
  unsigned combedPairs = 0;
  for (unsigned y = 0; y + 2 < b.lines; y += 2)
    if (ssd(b.s[y] + x, b.s[y + 2] + x, w) < ssd(b.s[y] + x, b.s[y + 1] + x, w)) ++combedPairs;
  return combedPairs > 1;
}

// Even lines copied. Odd lines from the even lines around them: combed
// (y-1 + y+1) >> 1, progressive (y-1 + 2·y + y+1 + 2) >> 2. An odd line with
// no even line below it inside the block (the last line of the 8-line band,
// or of an even-height last band) is averaged with the line above instead:
// (y-1 + y) >> 1.
void remainder_filter(const Band& b, size_t x, size_t w, bool combed) {
  for (unsigned y = 0; y < b.lines; ++y) {
    const uint8_t* s = b.s[y] + x;
    uint8_t* d = b.d[y] + x;
    if ((y & 1) == 0) {
      memcpy(d, s, w);
      continue;
    }
    const uint8_t* above = b.s[y - 1] + x;
    if (y + 1 == b.lines) {
      Merge(d, above, s, w);
      continue;
    }
    const uint8_t* below = b.s[y + 1] + x;
    if (combed)
      Merge(d, above, below, w);
    else
      for (size_t i = 0; i < w; ++i) d[i] = static_cast<uint8_t>((above[i] + 2 * s[i] + below[i] + 2) >> 2);
  }
}

void remainder_block(const Band& b, size_t x, size_t w) {
  remainder_filter(b, x, w, remainder_is_combed(b, x, w));
}

// ---- the walk over a plane --------------------------------------------------

void x_plane(uint8_t* dst, size_t dstPitch, const uint8_t* src, size_t srcPitch, unsigned h) {
  const size_t width = dstPitch < srcPitch ? dstPitch : srcPitch;
  const size_t columns = width / kBlock;
  const size_t restColumns = width % kBlock;
  const unsigned bands = (h + kBlock - 1) / kBlock - 1;

  for (unsigned band = 0; band <= bands; ++band) {
    const unsigned top = band * kBlock;
    Band b;
    b.lines = band < bands ? kBlock : h - top;
    for (unsigned j = 0; j < kBlock + 2; ++j) {
      unsigned y = top + j < h ? top + j : h - 1;
      b.s[j] = src + y * srcPitch;
    }
    for (unsigned j = 0; j < kBlock; ++j) b.d[j] = j < b.lines ? dst + (top + j) * dstPitch : nullptr;

    for (size_t c = 0; c < columns; ++c) {
      const size_t x = c * kBlock;
      if (band == bands)
        remainder_block(b, x, kBlock);
      else if (!block_is_combed(b, x))
        block_progressive(b, x);
      else if (c == 0 || c + 1 == columns)
        block_field_vertical(b, x);
      else
        block_field_directional(b, x);
    }
    if (restColumns != 0) remainder_block(b, columns * kBlock, restColumns);
  }
}

}  // namespace

int picture_deinterlace_x(DeintPicture* dst, const DeintPicture* src, unsigned layout, unsigned,
                          unsigned height) {
  if (dst == nullptr || src == nullptr || layout > DEINT_LAYOUT_444) return -1;
  unsigned planes = src->planeCount < 3 ? src->planeCount : 3;
  for (unsigned i = 0; i < planes; ++i) {
    if (src->planes[i] == nullptr || dst->planes[i] == nullptr) continue;
    unsigned h = deint_plane_height(i, height, layout);
    if (h == 0) continue;
    x_plane(dst->planes[i], dst->pitches[i], src->planes[i], src->pitches[i], h);
  }
  return 0;
}
