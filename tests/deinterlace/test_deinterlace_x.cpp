// Mode 7, the block-adaptive filter: worked examples of each block kind and of
// the direction choice with its tie-break, then whole random interlaced
// pictures against a per-pixel reference written here.
#include <gtest/gtest.h>

#include <string.h>

#include <functional>

#include "deint_test_pictures.h"
#include "imageproc/cpu_features.h"

using namespace deint_test;

namespace {

// One-plane pictures (plane count 1), pitch = width, exact size.
Plane plane_of(unsigned w, unsigned h, const std::function<uint8_t(unsigned x, unsigned y)>& v) {
  Plane p;
  p.pitch = w;
  p.bytes.resize(size_t(w) * h);
  for (unsigned y = 0; y < h; ++y)
    for (unsigned x = 0; x < w; ++x) p.row(y)[x] = v(x, y);
  return p;
}

Plane run_x(const Plane& src, unsigned h) {
  Plane dst = plane_of(src.pitch, h, [](unsigned, unsigned) { return 0xEE; });
  DeintPicture s{1, {const_cast<uint8_t*>(src.bytes.data())}, {src.pitch}};
  DeintPicture d{1, {dst.bytes.data()}, {dst.pitch}};
  EXPECT_EQ(picture_deinterlace_x(&d, &s, 0, src.pitch, h), 0);
  return dst;
}

// ---- worked examples ----------------------------------------------------------

TEST(DeintX, ProgressiveBlockSmoothsOddLines) {
  // Lines 10, 14, 30, 34, 50, ...: per column the adjacent-line sum of a pair
  // is 4² + 16² = 272, the same-field sum 20² + 20² = 800; 3·272 < 4·800, so
  // no pair combs. Odd line 2k+1 = (10+20k + 6·(14+20k) + 30+20k + 4) >> 3
  // = 16 + 20k, even lines unchanged. Width 24: three block columns.
  auto line = [](unsigned y) { return uint8_t(10 + 20 * (y / 2) + 4 * (y % 2)); };
  Plane src = plane_of(24, 16, [&](unsigned, unsigned y) { return line(y); });
  Plane dst = run_x(src, 16);
  for (unsigned y = 0; y < 8; ++y)
    for (unsigned x = 0; x < 24; ++x)
      ASSERT_EQ(dst.at(y, x), y % 2 ? 16 + 20 * (y / 2) : line(y)) << "line " << y << " x " << x;
}

TEST(DeintX, CombedVerticalEdgeTakesTheEvenLines) {
  // Even lines step from 0 to 200 at column 12, odd lines (the other field,
  // moved) at column 16. The block at columns 8-15 combs (same-field sums 0)
  // and is interior: the vertical costs nothing, so each odd pixel becomes
  // (above + below) >> 1 of two equal even pixels. The first block column has
  // the same kind of edge at 4/6 and takes the vertical average directly.
  // Other blocks are flat in both fields and stay as they are.
  auto even = [](unsigned x) { return uint8_t((x >= 4 && x < 8) || x >= 12 ? 200 : 0); };
  auto odd = [](unsigned x) { return uint8_t((x >= 6 && x < 8) || x >= 16 ? 200 : 0); };
  Plane src = plane_of(32, 16, [&](unsigned x, unsigned y) { return y % 2 ? odd(x) : even(x); });
  Plane dst = run_x(src, 16);
  for (unsigned y = 0; y < 8; ++y)
    for (unsigned x = 0; x < 32; ++x) ASSERT_EQ(dst.at(y, x), even(x)) << "line " << y << " x " << x;
}

// The detection thresholds, on the first block of a 16 x 16 plane. Each of its
// eight columns holds lines 0-3 as given and repeats line 3 below, so only the
// first line pair can comb. The first column reads 100, 98 or 99, 100, ...:
// line 1 becomes (100 + 6·98 + 100 + 4) >> 3 = 99 (or 798 >> 3 = 99 for 99)
// when the block is taken as progressive, (100 + 100) >> 1 = 100 when combed.
struct Column {
  uint8_t l[4];
};
constexpr Column kX = {{100, 98, 100, 98}};  // adjacent 8, same field 0
constexpr Column kL = {{100, 99, 100, 99}};  // adjacent 2, same field 0
constexpr Column kF = {{100, 100, 100, 100}};
constexpr Column kQ = {{100, 99, 99, 99}};   // adjacent 1, same field 1
constexpr Column kY = {{100, 98, 96, 98}};   // adjacent 8, same field 16
constexpr Column kY1 = {{100, 98, 97, 98}};  // adjacent 5, same field 9

struct ThresholdCase {
  const char* what;
  Column c[8];
  uint8_t want;
};

const ThresholdCase kThresholdCases[] = {
    {"adjacent sum 16, no same-field difference", {kL, kL, kL, kL, kL, kL, kL, kL}, 99},
    {"adjacent sum exactly 32", {kX, kX, kX, kX, kF, kF, kF, kF}, 99},
    {"adjacent sum 33, same field 1", {kX, kX, kX, kX, kQ, kF, kF, kF}, 100},
    {"three quarters of 64 equal to 48", {kX, kX, kX, kX, kX, kY, kY, kY}, 99},
    {"three quarters of 61 above 41", {kX, kX, kX, kX, kX, kY, kY, kY1}, 100},
};

TEST(DeintX, DetectionThresholds) {
  for (const auto& c : kThresholdCases) {
    Plane src =
        plane_of(16, 16, [&](unsigned x, unsigned y) { return x < 8 ? c.c[x].l[std::min(y, 3u)] : 0; });
    Plane dst = run_x(src, 16);
    EXPECT_EQ(dst.at(1, 0), c.want) << c.what;
  }
}

// Even lines carry a 0/200 step that moves one column per line (slope ±1),
// odd lines are a flat 100 (a field that does not match): every block combs.
// The diagonal along the edge pairs equal pixels and costs nothing, the
// vertical crosses the edge and the other diagonal crosses it twice as often,
// so odd line y takes the step half-way between lines y-1 and y+1.
// Slope +1 follows above-left/below-right, slope -1 above-right/below-left.
TEST(DeintX, DiagonalEdgesFollowTheirDirection) {
  for (int slope : {+1, -1}) {
    const int e0 = slope > 0 ? 18 : 30;
    auto edge = [&](unsigned y) { return e0 + slope * int(y); };
    Plane src = plane_of(
        48, 16, [&](unsigned x, unsigned y) { return uint8_t(y % 2 ? 100 : (int(x) >= edge(y) ? 200 : 0)); });
    Plane dst = run_x(src, 16);
    for (unsigned y = 0; y < 8; ++y)
      for (unsigned x = 0; x < 48; ++x)
        ASSERT_EQ(dst.at(y, x), int(x) >= edge(y) ? 200 : 0)
            << "slope " << slope << " line " << y << " x " << x;
  }
}

// The direction choice at one pixel, x = 12 in the interior block at columns
// 8-15 of a 32 x 16 plane. Line 0 is `above`, line 2 `below`, the odd lines
// are 255 so that the block combs. With pixels around x:
//   above[11] = 50, above[12] = 40, above[13] = 10, below[12] = 40, below[13] = 50
// the three pairs average to: left (above[11], below[13]) 50, vertical 40,
// right (above[13], below[11]) 5. Extra pixels shift the costs, each cost
// being the sum of |above[x+k+d] - below[x+k-d]| over k = -3..4 (d = -1 left,
// 0 vertical, +1 right): above[8] counts for the left only, above[17] for the
// right only, below[9] for vertical and right, below[16] for left and vertical.
struct TieCase {
  const char* what;
  uint8_t a8, a17, b9, b16;
  int left, vert, right;  // the costs these give, worked by hand
  uint8_t want;
};

const TieCase kTieCases[] = {
    {"left below vertical, right above", 0, 0, 10, 0, 90, 100, 180, 50},
    {"left below vertical, right equal to it", 0, 0, 10, 80, 170, 180, 180, 50},
    {"right below vertical, left above", 20, 0, 10, 90, 200, 190, 180, 5},
    {"right below vertical, left equal to it", 10, 0, 10, 90, 190, 190, 180, 5},
    {"both diagonals below vertical, left cheaper", 0, 0, 20, 70, 160, 180, 170, 40},
    {"both diagonals below vertical, right cheaper", 0, 0, 10, 100, 190, 200, 180, 40},
    {"left equal to vertical, right above", 0, 0, 0, 0, 90, 90, 190, 40},
    {"right equal to vertical, left above", 10, 0, 0, 100, 200, 190, 190, 40},
    {"all three equal", 0, 0, 0, 100, 190, 190, 190, 40},
    {"vertical cheapest", 10, 0, 0, 0, 100, 90, 190, 40},
};

TEST(DeintX, DirectionTieBreak) {
  for (const auto& c : kTieCases) {
    uint8_t above[32] = {}, below[32] = {};
    above[11] = 50, above[12] = 40, above[13] = 10, below[12] = 40, below[13] = 50;
    above[8] = c.a8, above[17] = c.a17, below[9] = c.b9, below[16] = c.b16;
    // The hand-worked costs, recounted so that a slip in the table shows.
    auto cost = [&](int d) {
      int s = 0;
      for (int k = -3; k <= 4; ++k) s += std::abs(above[12 + k + d] - below[12 + k - d]);
      return s;
    };
    ASSERT_EQ(cost(-1), c.left) << c.what;
    ASSERT_EQ(cost(0), c.vert) << c.what;
    ASSERT_EQ(cost(+1), c.right) << c.what;
    Plane src = plane_of(32, 16, [&](unsigned x, unsigned y) {
      return uint8_t(y % 2 ? 255 : (y == 0 ? above[x] : (y == 2 ? below[x] : 0)));
    });
    Plane dst = run_x(src, 16);
    EXPECT_EQ(dst.at(1, 12), c.want) << c.what;
  }
}

TEST(DeintX, RemainderBlocksUseTheSimpleRule) {
  // 12 x 8: no full band (a single band of 8 lines is the last one); columns
  // 0-7 one remainder block, 8-11 another. Left: alternating lines 0 and 90
  // (adjacent sum > same-field sum in all three pairs: combed), odd lines the
  // average of the even lines around them (0), the last odd line averaged with
  // the line above: (0 + 90) >> 1 = 45. Right: a smooth ramp of 10·y, not
  // combed: odd lines (10(y-1) + 20y + 10(y+1) + 2) >> 2 = 10y, last odd line
  // (60 + 70) >> 1 = 65.
  Plane src =
      plane_of(12, 8, [](unsigned x, unsigned y) { return uint8_t(x < 8 ? (y % 2 ? 90 : 0) : 10 * y); });
  Plane dst = run_x(src, 8);
  for (unsigned y = 0; y < 8; ++y) {
    uint8_t left = y % 2 == 0 ? 0 : (y == 7 ? 45 : 0);
    uint8_t right = y == 7 ? 65 : 10 * y;
    for (unsigned x = 0; x < 12; ++x)
      ASSERT_EQ(dst.at(y, x), x < 8 ? left : right) << "line " << y << " x " << x;
  }
}

TEST(DeintX, ShortRemaindersNeverComb) {
  // A last band of 4 lines has one line pair: below the count of two, so even
  // perfect combing is smoothed as progressive: line 1 = (0 + 2·90 + 0 + 2) >> 2 = 45,
  // line 3 (last) = (0 + 90) >> 1 = 45.
  Plane src = plane_of(8, 4, [](unsigned, unsigned y) { return uint8_t(y % 2 ? 90 : 0); });
  Plane dst = run_x(src, 4);
  const uint8_t want[4] = {0, 45, 0, 45};
  for (unsigned y = 0; y < 4; ++y)
    for (unsigned x = 0; x < 8; ++x) ASSERT_EQ(dst.at(y, x), want[y]);
}

// ---- the per-pixel reference --------------------------------------------------

struct Tally {
  unsigned progressive = 0, edgeCombed = 0, interiorCombed = 0, restCombed = 0, restProgressive = 0;
  unsigned left = 0, vert = 0, right = 0;
};

struct XReference {
  const Plane& s;
  unsigned h;
  size_t width;  // min of the two pitches
  Tally& tally;

  int S(unsigned y, size_t x) const { return s.at(std::min(y, h - 1), x); }

  bool full_block_combed(unsigned top, size_t x0) const {
    for (unsigned y = top; y < top + 8; y += 2) {
      long fr = 0, ff = 0;
      for (size_t x = x0; x < x0 + 8; ++x) {
        auto sq = [](int v) { return long(v) * v; };
        fr += sq(S(y, x) - S(y + 1, x)) + sq(S(y + 1, x) - S(y + 2, x));
        ff += sq(S(y, x) - S(y + 2, x)) + sq(S(y + 1, x) - S(y + 3, x));
      }
      if (0.75 * double(fr) > double(ff) && fr > 32) return true;
    }
    return false;
  }

  bool rest_combed(unsigned top, unsigned lines, size_t x0, size_t w) const {
    int pairs = 0;
    for (unsigned y = top; y + 2 < top + lines; y += 2) {
      long adjacent = 0, same = 0;
      for (size_t x = x0; x < x0 + w; ++x) {
        adjacent += long(S(y, x) - S(y + 1, x)) * (S(y, x) - S(y + 1, x));
        same += long(S(y, x) - S(y + 2, x)) * (S(y, x) - S(y + 2, x));
      }
      if (same < adjacent) ++pairs;
    }
    return pairs >= 2;
  }

  uint8_t directional(unsigned y, size_t x) {
    auto cost = [&](int d) {
      int c = 0;
      for (int k = -3; k <= 4; ++k) c += std::abs(S(y - 1, x + k + d) - S(y + 1, x + k - d));
      return c;
    };
    int cl = cost(-1), cv = cost(0), cr = cost(+1);
    if (cl < cv && !(cr < cv)) {
      ++tally.left;
      return avg_down(S(y - 1, x - 1), S(y + 1, x + 1));
    }
    if (cr < cv && !(cl < cv)) {
      ++tally.right;
      return avg_down(S(y - 1, x + 1), S(y + 1, x - 1));
    }
    ++tally.vert;
    return avg_down(S(y - 1, x), S(y + 1, x));
  }

  // The whole plane, block by block.
  void run(Plane& d) {
    const unsigned bands = (h + 7) / 8 - 1;
    const size_t columns = width / 8;
    for (unsigned band = 0; band <= bands; ++band) {
      const unsigned top = band * 8, lines = band < bands ? 8 : h - top;
      for (size_t x0 = 0; x0 < width; x0 += 8) {
        const size_t w = std::min<size_t>(8, width - x0);
        const bool full = band < bands && w == 8;
        if (full) {
          const bool combed = full_block_combed(top, x0);
          const bool edge = x0 == 0 || x0 / 8 + 1 == columns;
          (combed ? (edge ? tally.edgeCombed : tally.interiorCombed) : tally.progressive)++;
          for (unsigned y = top; y < top + 8; ++y)
            for (size_t x = x0; x < x0 + 8; ++x) {
              uint8_t v;
              if (y % 2 == 0)
                v = S(y, x);
              else if (!combed)
                v = uint8_t((S(y - 1, x) + 6 * S(y, x) + S(y + 1, x) + 4) / 8);
              else if (edge)
                v = avg_down(S(y - 1, x), S(y + 1, x));
              else
                v = directional(y, x);
              d.row(y)[x] = v;
            }
        } else {
          const bool combed = rest_combed(top, lines, x0, w);
          (combed ? tally.restCombed : tally.restProgressive)++;
          for (unsigned y = top; y < top + lines; ++y)
            for (size_t x = x0; x < x0 + w; ++x) {
              uint8_t v;
              if ((y - top) % 2 == 0)
                v = S(y, x);
              else if (y + 1 == top + lines)
                v = avg_down(S(y - 1, x), S(y, x));
              else if (combed)
                v = avg_down(S(y - 1, x), S(y + 1, x));
              else
                v = uint8_t((S(y - 1, x) + 2 * S(y, x) + S(y + 1, x) + 2) / 4);
              d.row(y)[x] = v;
            }
        }
      }
    }
  }
};

// An interlaced picture: stripes at slope -1, 0 or +1 chosen per 8x8 area;
// in "moving" areas the odd field is the same stripes shifted sideways, in
// "still" areas both fields agree; a little noise everywhere.
Plane interlaced_plane(unsigned rows, uint32_t pitch, size_t lastRowBytes, std::mt19937& rng) {
  Plane p = random_plane(rows, pitch, lastRowBytes, rng);
  std::vector<int> slope((pitch / 8 + 1) * (rows / 8 + 1)), shift(slope.size());
  for (size_t i = 0; i < slope.size(); ++i) {
    slope[i] = int(rng() % 3) - 1;
    shift[i] = rng() % 2 ? int(rng() % 5) + 2 : 0;
  }
  for (unsigned y = 0; y < rows; ++y)
    for (size_t x = 0; x < pitch && size_t(y) * pitch + x < p.bytes.size(); ++x) {
      size_t area = (y / 8) * (pitch / 8 + 1) + x / 8;
      int u = int(x) + slope[area] * int(y) + (y % 2 ? shift[area] : 0);
      int v = ((u + 64) / 3) % 2 ? 190 : 40;
      p.row(y)[x] = uint8_t(v + int(rng() % 7) - 3);
    }
  return p;
}

struct XGeometry {
  unsigned width, height, layout, srcPad, dstPad;
};

void check_x_geometries(const std::vector<XGeometry>& geometries);

TEST(DeintX, MatchesPerPixelReferenceOnInterlacedPictures) {
  const std::vector<XGeometry> geometries = {
      {64, 40, 0, 0, 0}, {72, 33, 1, 5, 3}, {50, 26, 2, 3, 0},  {40, 17, 2, 0, 8}, {64, 24, 0, 8, 0},
      {6, 5, 0, 1, 2},   {24, 9, 1, 0, 0},  {96, 64, 0, 16, 4}, {30, 16, 0, 7, 7}, {131, 25, 0, 3, 1},
  };
  // Every row set the CPU offers, the scalar reference first.
  for (unsigned level = CPU_SCALAR; level <= CPU_NEON; ++level) {
    if (cpu_set_cap(CpuLevel(level)) != CpuLevel(level)) continue;
    SCOPED_TRACE(cpu_level_name(CpuLevel(level)));
    check_x_geometries(geometries);
  }
  cpu_set_cap(CPU_NEON);
}

void check_x_geometries(const std::vector<XGeometry>& geometries) {
  Tally tally;
  uint32_t seed = 2000;
  for (const auto& g : geometries) {
    SCOPED_TRACE(testing::Message() << "layout " << g.layout << " " << g.width << "x" << g.height << " pads "
                                    << g.srcPad << "/" << g.dstPad);
    std::mt19937 rng(seed++);
    Picture src, dst, want;
    for (unsigned i = 0; i < 3; ++i) {
      unsigned w = plane_width(i, g.width, g.layout), h = plane_height(i, g.height, g.layout);
      uint32_t sp = w + g.srcPad, dp = w + g.dstPad;
      size_t width = std::min(sp, dp);
      src.planes[i] = interlaced_plane(h, sp, width, rng);
      dst.planes[i] = random_plane(h, dp, width, rng);
      want.planes[i] = dst.planes[i];
      if (h > 0) XReference{src.planes[i], h, width, tally}.run(want.planes[i]);
    }
    DeintPicture s = src.record(), d = dst.record();
    ASSERT_EQ(DeInterlace(&d, &s, g.width, g.height, 0, g.layout, 7), 0);
    expect_same(dst, want);
  }
  // The pictures reach every kind of block and every direction.
  EXPECT_GT(tally.progressive, 10u);
  EXPECT_GT(tally.edgeCombed, 10u);
  EXPECT_GT(tally.interiorCombed, 10u);
  EXPECT_GT(tally.restCombed, 5u);
  EXPECT_GT(tally.restProgressive, 5u);
  EXPECT_GT(tally.left, 50u);
  EXPECT_GT(tally.right, 50u);
  EXPECT_GT(tally.vert, 50u);
}

TEST(DeintX, RefusesUnknownLayoutAndNullRecords) {
  std::mt19937 rng(3000);
  Plane src = random_plane(16, 16, 16, rng), dst = random_plane(16, 16, 16, rng);
  const Plane before = dst;
  DeintPicture s{1, {src.bytes.data()}, {16}}, d{1, {dst.bytes.data()}, {16}};
  EXPECT_EQ(picture_deinterlace_x(&d, &s, 3, 16, 16), -1);
  EXPECT_EQ(picture_deinterlace_x(nullptr, &s, 0, 16, 16), -1);
  EXPECT_EQ(picture_deinterlace_x(&d, nullptr, 0, 16, 16), -1);
  EXPECT_EQ(dst.bytes, before.bytes);
}

}  // namespace
