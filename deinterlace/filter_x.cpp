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
#include "deinterlace/filter_x_rows.h"

namespace {

constexpr unsigned kBlock = kXBlock;
typedef XBand Band;

inline int square(int d) { return d * d; }

// ---- full 8x8 blocks: the scalar reference -----------------------------------

// Over the four line pairs (y, y+1, y+2, y+3 for y = 0, 2, 4, 6), adjacent
// lines against lines of one field; a pair combs when three quarters of the
// adjacent sum exceeds the same-field sum (compared exactly: 3·fr > 4·ff) and
// the adjacent sum exceeds 32. Any combing pair makes the block combed.
bool block_is_combed(const Band& b, size_t x) {
  for (unsigned y = 0; y < kBlock; y += 2) {
    uint32_t adjacent = 0, sameField = 0;
    for (size_t i = x; i < x + kBlock; ++i) {
      const int l0 = b.s[y][i], l1 = b.s[y + 1][i], l2 = b.s[y + 2][i], l3 = b.s[y + 3][i];
      adjacent += square(l0 - l1) + square(l1 - l2);
      sameField += square(l0 - l2) + square(l1 - l3);
    }
    if (3 * adjacent > 4 * sameField && adjacent > 32) return true;
  }
  return false;
}

// Progressive: odd line y := (y-1 + 6·y + y+1 + 4) >> 3.
void block_progressive(const Band& b, size_t x) {
  for (unsigned y = 0; y < kBlock; y += 2) {
    memcpy(b.d[y] + x, b.s[y] + x, kBlock);
    for (size_t i = x; i < x + kBlock; ++i)
      b.d[y + 1][i] = static_cast<uint8_t>((b.s[y][i] + 6 * b.s[y + 1][i] + b.s[y + 2][i] + 4) >> 3);
  }
}

// Combed, first or last block column: odd line y := (y-1 + y+1) >> 1.
void block_field_vertical(const Band& b, size_t x) {
  for (unsigned y = 0; y < kBlock; y += 2) {
    memcpy(b.d[y] + x, b.s[y] + x, kBlock);
    Merge(b.d[y + 1] + x, b.s[y] + x, b.s[y + 2] + x, kBlock);
  }
}

// Cost of pairing above[i + k + dir] with below[i + k - dir] around pixel i:
// sum over k = -3..4 of the absolute differences. dir -1 is the diagonal
// above-left to below-right, 0 the vertical, +1 above-right to below-left.
// Reads columns i-4 .. i+5.
int direction_cost(const uint8_t* above, const uint8_t* below, size_t i, int dir) {
  int cost = 0;
  for (int k = -3; k <= 4; ++k) {
    const int d = above[i + k + dir] - below[i + k - dir];
    cost += d < 0 ? -d : d;
  }
  return cost;
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
    for (size_t i = x; i < x + kBlock; ++i) {
      const int left = direction_cost(above, below, i, -1);
      const int vert = direction_cost(above, below, i, 0);
      const int right = direction_cost(above, below, i, +1);
      int dir = 0;
      if (left < vert && right >= vert) dir = -1;
      if (right < vert && left >= vert) dir = +1;
      b.d[y + 1][i] = static_cast<uint8_t>((above[i + dir] + below[i - dir]) >> 1);
    }
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

// The first and the last block column of a full band.
void edge_block(const Band& b, size_t x) {
  if (block_is_combed(b, x))
    block_field_vertical(b, x);
  else
    block_progressive(b, x);
}

void x_plane(uint8_t* dst, size_t dstPitch, const uint8_t* src, size_t srcPitch, unsigned h,
             const Row<const Band*>& interior) {
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

    if (band == bands) {
      for (size_t c = 0; c < columns; ++c) remainder_block(b, c * kBlock, kBlock);
    } else if (columns > 0) {
      edge_block(b, 0);
      if (columns > 1) {
        run_row(interior, 1, columns - 1, static_cast<const Band*>(&b));
        edge_block(b, (columns - 1) * kBlock);
      }
    }
    if (restColumns != 0) remainder_block(b, columns * kBlock, restColumns);
  }
}

}  // namespace

void x_interior_blocks_scalar(size_t begin, size_t end, const XBand* band) {
  for (size_t c = begin; c < end; ++c) {
    if (block_is_combed(*band, c * kBlock))
      block_field_directional(*band, c * kBlock);
    else
      block_progressive(*band, c * kBlock);
  }
}

SCRIM_ROW_SET(const XBand*, x_interior_rows, x_interior_blocks, 2, 4, 2);

int picture_deinterlace_x(DeintPicture* dst, const DeintPicture* src, unsigned layout, unsigned,
                          unsigned height) {
  if (dst == nullptr || src == nullptr || layout > DEINT_LAYOUT_444) return -1;
  const Row<const XBand*> interior = pick_row(x_interior_rows);
  unsigned planes = src->planeCount < 3 ? src->planeCount : 3;
  for (unsigned i = 0; i < planes; ++i) {
    if (src->planes[i] == nullptr || dst->planes[i] == nullptr) continue;
    unsigned h = deint_plane_height(i, height, layout);
    if (h == 0) continue;
    x_plane(dst->planes[i], dst->pitches[i], src->planes[i], src->pitches[i], h, interior);
  }
  return 0;
}
