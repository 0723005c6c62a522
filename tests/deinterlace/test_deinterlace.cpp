// The deinterlacer: its line arithmetic, the filters of modes 1 to 7, and the
// entry points DeInterlace and ORU_DeInterlace.
//
// Each filter runs on random pictures with padded pitches, for the three
// chroma layouts, and is compared byte for byte, padding included, with a
// reference built here from the rules. Planes are vectors of exactly the bytes
// a filter may read or write, so AddressSanitizer reports any byte more: modes
// 2 to 6 move whole source pitches per line, and in layout 1 discard, bob and
// blend read the chroma planes over about twice their height.
#include <gtest/gtest.h>
#include <stdint.h>

#include <algorithm>
#include <cmath>
#include <functional>
#include <random>
#include <vector>

#include "deinterlace/deint_filters.h"
#include "deinterlace/deinterlace.h"
#include "imageproc/cpu_features.h"
#include "imageproc/oru_imageproc.h"

namespace {
struct Plane {
  uint32_t pitch = 0;
  std::vector<uint8_t> bytes;

  uint8_t* row(unsigned y) { return bytes.data() + size_t(y) * pitch; }
  uint8_t at(unsigned y, size_t x) const { return bytes[size_t(y) * pitch + x]; }
};

// `rows` lines at `pitch`, the last one only `lastRowBytes` long.
Plane random_plane(unsigned rows, uint32_t pitch, size_t lastRowBytes, std::mt19937& rng) {
  Plane p;
  p.pitch = pitch;
  p.bytes.resize(rows == 0 ? 0 : size_t(rows - 1) * pitch + lastRowBytes);
  for (auto& b : p.bytes) b = static_cast<uint8_t>(rng());
  return p;
}

struct Picture {
  Plane planes[3];

  DeintPicture record() {
    DeintPicture r{3, {}, {}};
    for (int i = 0; i < 3; ++i) {
      r.planes[i] = planes[i].bytes.empty() ? nullptr : planes[i].bytes.data();
      r.pitches[i] = planes[i].pitch;
    }
    return r;
  }
};

// Every plane, byte for byte, padding included.
void expect_same(const Picture& got, const Picture& want) {
  for (int i = 0; i < 3; ++i) EXPECT_EQ(got.planes[i].bytes, want.planes[i].bytes) << "plane " << i;
}

// Plane sizes of a picture by chroma layout (0 4:2:0, 1 4:2:2, 2 4:4:4).
unsigned plane_width(unsigned plane, unsigned width, unsigned layout) {
  return plane > 0 && layout != 2 ? width / 2 : width;
}
unsigned plane_height(unsigned plane, unsigned height, unsigned layout) {
  return plane > 0 && layout == 0 ? height / 2 : height;
}

uint8_t avg_down(int a, int b) { return static_cast<uint8_t>((a + b) / 2); }
uint8_t five_tap(int p0, int p1, int p2, int p3, int p4) {
  // Rounded towards minus infinity, as an arithmetic shift does, then clamped.
  int v = static_cast<int>(std::floor((-p0 + 4 * p1 + 2 * p2 + 4 * p3 - p4 + 4) / 8.0));
  return static_cast<uint8_t>(std::min(255, std::max(0, v)));
}

// The fast filter: line 2k is kept; line 2k+1 is filtered from lines 2k-1 ..
// 2k+3, with lines above the plane reading as line 0 and lines below it as
// the last line.
void fast_reference(Plane& out, const Plane& in, unsigned w, unsigned h) {
  auto at = [&](int y, unsigned x) { return in.at(unsigned(std::min(std::max(y, 0), int(h) - 1)), x); };
  for (int y = 0; y < int(h); ++y)
    for (unsigned x = 0; x < w; ++x)
      out.row(y)[x] =
          y % 2 == 0 ? at(y, x) : five_tap(at(y - 2, x), at(y - 1, x), at(y, x), at(y + 1, x), at(y + 2, x));
}

TEST(DeintLines, ClipTableClampsValuePlus1024) {
  ASSERT_EQ(deint_clip_table.size(), 2304u);
  for (int i = 0; i < 2304; ++i) ASSERT_EQ(deint_clip_table[i], std::min(255, std::max(0, i - 1024))) << i;
  for (int v : {-1024, -1, 0, 200, 256, 1279}) EXPECT_EQ(deint_clip(v), std::min(255, std::max(0, v))) << v;
}

// Lengths run from 0 to past two 16-byte vectors, so that both the wide loops
// and their tails meet the formulas; every buffer has exactly n bytes.
// Merge, the five-tap filter, and the in-place filter, also as the last odd
// line of a plane calls it: passing its own line as b, c and d.
TEST(DeintLines, MatchThePlainFormulasAtEveryLength) {
  std::mt19937 rng(11);
  for (size_t n = 0; n <= 70; ++n) {
    SCOPED_TRACE(n);
    auto random_bytes = [&] { return random_plane(1, uint32_t(n), n, rng).bytes; };
    std::vector<uint8_t> p[5], dst(n + 1, 0xEE);  // one guard byte: no build may write it
    for (auto& v : p) v = random_bytes();
    Merge(dst.data(), p[0].data(), p[1].data(), n);
    for (size_t i = 0; i <= n; ++i) ASSERT_EQ(dst[i], i < n ? avg_down(p[0][i], p[1][i]) : 0xEE) << i;
    deinterlace_line(dst.data(), p[0].data(), p[1].data(), p[2].data(), p[3].data(), p[4].data(), n);
    for (size_t i = 0; i < n; ++i)
      ASSERT_EQ(dst[i], five_tap(p[0][i], p[1][i], p[2][i], p[3][i], p[4][i])) << i;
    for (bool last : {false, true}) {
      auto tmp = random_bytes(), b = random_bytes();
      const auto tmp0 = tmp, b0 = b;
      uint8_t *c = last ? b.data() : p[3].data(), *d = last ? b.data() : p[4].data();
      deinterlace_line_inplace(tmp.data(), p[1].data(), b.data(), c, d, n);
      for (size_t i = 0; i < n; ++i) {
        ASSERT_EQ(b[i], five_tap(tmp0[i], p[1][i], b0[i], last ? b0[i] : p[3][i], last ? b0[i] : p[4][i]))
            << i << (last ? " last" : "");
        ASSERT_EQ(tmp[i], b0[i]) << i;
      }
    }
  }
}

// ---- modes 2 to 6: every destination line is the average of two source lines
// (a copy is the average of a line with itself) ------------------------------

struct Rows {
  unsigned a, b;
};

// Rules of one plane: h lines, field 0 or 1, `two`: layout 1 chroma.
Rows discard_rule(unsigned o, unsigned h, unsigned field, bool two) {
  if (two) return {field + 2 * o, field + 2 * o};
  unsigned i = field + 2 * (o / 2);
  if (i >= h) i = h >= 2 ? h - 2 : 0;  // field 1, odd height: the last line repeats the kept line above
  return {i, i};
}

Rows bob_rule(unsigned o, unsigned h, unsigned field, bool two) {
  if (two) {
    if (field == 1) return o == 0 ? Rows{0, 0} : Rows{2 * o - 1, 2 * o - 1};
    if (o + 1 == h && h >= 2) return {2 * h - 3, 2 * h - 3};
    return {2 * o, 2 * o};
  }
  if (field == 1) {
    if (o == 0) return {0, 0};
    unsigned i = o % 2 ? o : o - 1;
    return {i, i};
  }
  if (h % 2 == 0 && o == h - 1) return {o, o};  // the line below the last kept line
  return {o & ~1u, o & ~1u};
}

Rows blend_rule(unsigned o, unsigned, unsigned, bool two) {
  return o == 0 ? Rows{0, 0} : two ? Rows{2 * o - 2, 2 * o - 1} : Rows{o - 1, o};
}

Rows mean_rule(unsigned o, unsigned h, unsigned, bool) {
  unsigned top = o & ~1u;
  return {top, top + 1 == h ? top : top + 1};
}

Rows linear_rule(unsigned o, unsigned h, unsigned field, bool) {
  bool kept = (o % 2) == field;
  if (field == 1 && o == 0) return {0, 0};
  if (kept) return {o, o};
  if (o + 1 < h) return {o - 1, o + 1};                 // between the kept lines above and below
  return field == 0 ? Rows{o, o} : Rows{o - 1, o - 1};  // no kept line below
}

const struct FieldMode {
  unsigned mode;
  const char* name;
  Rows (*rule)(unsigned o, unsigned h, unsigned field, bool two);
  bool stepsTwoInLayout1, acts444;
} kFieldModes[] = {
    {2, "discard", discard_rule, true, false}, {3, "bob", bob_rule, true, false},
    {4, "blend", blend_rule, true, false},     {5, "mean", mean_rule, false, false},
    {6, "linear", linear_rule, false, true},
};

struct Geometry {
  unsigned width, height, layout, srcPad, dstPad;  // pitch = plane width + pad
};

// Runs one field mode on a random picture and checks it against the rules.
// Any non-zero field acts as field 1.
// Through ORU_DeInterlace (field 0) the lines are no wider than the
// destination pitch: the image processor's work area is only that wide.
void check_field_mode(const FieldMode& m, const Geometry& g, unsigned passed, uint32_t seed,
                      bool oru = false) {
  const unsigned field = passed != 0;
  SCOPED_TRACE(testing::Message() << m.name << " layout " << g.layout << " " << g.width << "x" << g.height
                                  << " field " << passed << " seed " << seed
                                  << (oru ? " ORU_DeInterlace" : ""));
  std::mt19937 rng(seed);
  Picture src, dst, expected;
  for (unsigned i = 0; i < 3; ++i) {
    const unsigned w = plane_width(i, g.width, g.layout), h = plane_height(i, g.height, g.layout);
    const bool two = m.stepsTwoInLayout1 && g.layout == 1 && i > 0;
    const uint32_t sp = w + g.srcPad, dp = w + g.dstPad, line = oru ? std::min(sp, dp) : sp;
    unsigned rows = 0;
    for (unsigned o = 0; o < h; ++o) {
      Rows r = m.rule(o, h, field, two);
      rows = std::max({rows, r.a + 1, r.b + 1});
    }
    src.planes[i] = random_plane(rows, sp, sp, rng);
    // Every line is written `line` bytes wide: with a narrower destination
    // pitch each line's tail is overwritten by the next and the last one runs past.
    dst.planes[i] = random_plane(h, dp, line, rng);
    expected.planes[i] = dst.planes[i];
    const bool acts = g.layout < 2 || m.acts444;
    for (unsigned o = 0; acts && o < h; ++o) {
      Rows r = m.rule(o, h, field, two);
      for (uint32_t x = 0; x < line; ++x)
        expected.planes[i].row(o)[x] = avg_down(src.planes[i].at(r.a, x), src.planes[i].at(r.b, x));
    }
  }
  DeintPicture s = src.record(), d = dst.record();
  ImgPrcContext c{};
  c.format = g.layout << 8, c.srcWidth = g.width, c.srcHeight = g.height, c.deinterlaceMode = m.mode;
  ASSERT_EQ(oru ? ORU_DeInterlace(&c, s.planes, s.pitches, d.planes, d.pitches)
                : DeInterlace(&d, &s, g.width, g.height, passed, g.layout, m.mode),
            0);
  expect_same(dst, expected);
}

const Geometry kGeometries[] = {
    {16, 8, 0, 0, 0},   {24, 12, 0, 5, 3}, {20, 10, 0, 3, 7},  // chroma 5 lines: odd height
    {20, 14, 1, 4, 0},  {18, 9, 1, 0, 6},  {12, 6, 2, 9, 1},  {10, 7, 2, 2, 2},
    {32, 20, 0, 13, 1}, {4, 2, 0, 1, 1},   {6, 3, 1, 0, 0},   {2, 1, 2, 1, 0},
};

TEST(DeintFieldModes, MatchPerLineRulesOnRandomPictures) {
  uint32_t seed = 100;
  for (const auto& m : kFieldModes)
    for (const auto& g : kGeometries) {
      for (unsigned field : {0u, 1u, 5u}) check_field_mode(m, g, field, seed++);
      check_field_mode(m, g, 0, seed++, true);
    }
}

// ---- mode 1 -----------------------------------------------------------------

struct FastPictures {
  Picture src, dst, expected;
};

FastPictures make_fast(const Geometry& g, uint32_t seed) {
  std::mt19937 rng(seed);
  FastPictures p;
  for (unsigned i = 0; i < 3; ++i) {
    unsigned w = plane_width(i, g.width, g.layout), h = plane_height(i, g.height, g.layout);
    p.src.planes[i] = random_plane(h, w + g.srcPad, w, rng);
    p.dst.planes[i] = random_plane(h, w + g.dstPad, w, rng);
    p.expected.planes[i] = p.dst.planes[i];
    fast_reference(p.expected.planes[i], p.src.planes[i], w, h);
  }
  return p;
}

const Geometry kFastGeometries[] = {
    {4, 4, 0, 0, 0},   {8, 4, 1, 3, 0},    {16, 8, 2, 0, 5}, {36, 12, 0, 7, 2},
    {40, 16, 1, 1, 9}, {64, 20, 0, 16, 0}, {12, 8, 2, 3, 3},
};

TEST(DeintFast, MatchesFiveTapReferenceOutOfPlaceAndInPlace) {
  uint32_t seed = 500;
  for (const auto& g : kFastGeometries) {
    SCOPED_TRACE(testing::Message() << "layout " << g.layout << " " << g.width << "x" << g.height);
    FastPictures p = make_fast(g, seed++);
    for (unsigned mode : {0u, 1u, 8u, 9u, 200u}) {  // 0: the filter itself, else DeInterlace
      Picture out = p.dst;
      DeintPicture s = p.src.record(), o = out.record();
      EXPECT_EQ(mode ? DeInterlace(&o, &s, g.width, g.height, 0, g.layout, mode)
                     : picture_deinterlace_fast(&o, &s, g.layout, g.width, g.height),
                0);
      expect_same(out, p.expected);
    }
    // In place, through one record or two naming the same planes (source pitches).
    Picture want = p.src, one = p.src, two = p.src;
    for (unsigned i = 0; i < 3; ++i)
      fast_reference(want.planes[i], p.src.planes[i], plane_width(i, g.width, g.layout),
                     plane_height(i, g.height, g.layout));
    DeintPicture r = one.record(), s2 = two.record(), d2 = two.record();
    EXPECT_EQ(DeInterlace(&r, &r, g.width, g.height, 0, g.layout, 1), 0);
    EXPECT_EQ(picture_deinterlace_fast(&d2, &s2, g.layout, g.width, g.height), 0);
    expect_same(one, want);
    expect_same(two, want);
  }
}

TEST(DeintFast, RefusalsWriteNothingAndNullPlanesAreSkipped) {
  FastPictures p = make_fast({16, 8, 0, 2, 2}, 700);
  const Picture before = p.dst;
  DeintPicture s = p.src.record(), d = p.dst.record();
  // Sizes not a multiple of 4 and unknown layouts: DeInterlace does not pass
  // the refusal on.
  const unsigned bad[][3] = {{0, 16, 6}, {0, 6, 8}, {1, 18, 8}, {2, 16, 10}, {3, 16, 8}, {0, 16, 1}};
  for (const auto& b : bad) {
    EXPECT_EQ(picture_deinterlace_fast(&d, &s, b[0], b[1], b[2]), -1);
    EXPECT_EQ(DeInterlace(&d, &s, b[1], b[2], 0, b[0], 1), 0);
  }
  EXPECT_EQ(DeInterlace(nullptr, &s, 16, 8, 0, 0, 1), -1);
  EXPECT_EQ(DeInterlace(&d, nullptr, 16, 8, 0, 0, 1), -1);
  EXPECT_EQ(picture_deinterlace_x(&d, &s, 3, 16, 8), -1);
  EXPECT_EQ(picture_deinterlace_x(nullptr, &s, 0, 16, 8), -1);
  EXPECT_EQ(picture_deinterlace_x(&d, nullptr, 0, 16, 8), -1);
  EXPECT_EQ(DeInterlace(&d, &s, 16, 8, 0, 0, 0), 0);
  expect_same(p.dst, before);
  s.planes[1] = nullptr;  // no Cb source
  s.planeCount = 2;       // Cr not looked at
  EXPECT_EQ(picture_deinterlace_fast(&d, &s, 0, 16, 8), 0);
  EXPECT_EQ(p.dst.planes[0].bytes, p.expected.planes[0].bytes);
  EXPECT_EQ(p.dst.planes[1].bytes, before.planes[1].bytes);
  EXPECT_EQ(p.dst.planes[2].bytes, before.planes[2].bytes);
}

// ---- ORU_DeInterlace ----------------------------------------------------------

TEST(OruDeInterlace, RunsTheContextModeWithLayoutFromTheInputFormat) {
  FastPictures p = make_fast({24, 12, 1, 4, 0}, 1000);
  const Picture before = p.dst;
  DeintPicture s = p.src.record(), d = p.dst.record();
  auto run = [&](ImgPrcContext* c) { return ORU_DeInterlace(c, s.planes, s.pitches, d.planes, d.pitches); };
  auto context = [](uint32_t format, uint32_t mode) {
    ImgPrcContext c{};
    c.format = format, c.srcWidth = 24, c.srcHeight = 12, c.deinterlaceMode = mode;
    return c;
  };
  for (uint32_t format : {0x300u, 0x305u, 0x800u, 0x900u, 0x10000u, 0xFFFFFF00u}) {
    ImgPrcContext c = context(format, 1);
    EXPECT_EQ(run(&c), -1) << std::hex << format;
  }
  ImgPrcContext c = context(0x103, 1);  // 4:2:2 in, RGB565 out
  EXPECT_EQ(run(nullptr), -1);
  EXPECT_EQ(ORU_DeInterlace(&c, nullptr, s.pitches, d.planes, d.pitches), -1);
  EXPECT_EQ(ORU_DeInterlace(&c, s.planes, nullptr, d.planes, d.pitches), -1);
  EXPECT_EQ(ORU_DeInterlace(&c, s.planes, s.pitches, nullptr, d.pitches), -1);
  EXPECT_EQ(ORU_DeInterlace(&c, s.planes, s.pitches, d.planes, nullptr), -1);
  ImgPrcContext off = context(0x204, 0);  // mode 0: accepted, nothing written
  EXPECT_EQ(run(&off), 0);
  expect_same(p.dst, before);
  // Mode 1: the fast filter on half-width, full-height chroma.
  EXPECT_EQ(run(&c), 0);
  expect_same(p.dst, p.expected);
}

// ---- mode 7, the block-adaptive filter -------------------------------------
// Worked examples of the detection thresholds and of the direction tie-break
// (exact ties random pictures do not reach), then whole random interlaced
// pictures, through every row set, against a per-pixel reference.

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

// The direction choice at one pixel, x = 12 in the interior block at columns
// 8-15 of a 32 x 16 plane. Line 0 is `above`, line 2 `below`, the odd lines
// are 255 so that the block combs. Around x, above[11..13] = 50 40 10 and
// below[12..13] = 40 50: the left pair averages to 50, the vertical to 40, the
// right to 5. Each cost is the sum of |above[x+k+d] - below[x+k-d]| over
// k = -3..4 (d = -1 left, 0 vertical, +1 right); above[8] counts for the left
// only, below[9] for vertical and right, below[16] for left and vertical.
const struct {
  const char* costs;  // left / vertical / right, worked by hand
  uint8_t a8, b9, b16, want;
} kTieCases[] = {
    {"90/100/180", 0, 10, 0, 50},   {"170/180/180", 0, 10, 80, 50},  {"200/190/180", 20, 10, 90, 5},
    {"190/190/180", 10, 10, 90, 5}, {"160/180/170", 0, 20, 70, 40},  {"190/200/180", 0, 10, 100, 40},
    {"90/90/190", 0, 0, 0, 40},     {"200/190/190", 10, 0, 100, 40}, {"190/190/190", 0, 0, 100, 40},
    {"100/90/190", 10, 0, 0, 40},
};

TEST(DeintX, DirectionTieBreak) {
  for (const auto& c : kTieCases) {
    uint8_t above[32] = {}, below[32] = {};
    above[11] = 50, above[12] = 40, above[13] = 10, below[12] = 40, below[13] = 50;
    above[8] = c.a8, below[9] = c.b9, below[16] = c.b16;
    Plane src = plane_of(32, 16, [&](unsigned x, unsigned y) {
      return uint8_t(y % 2 ? 255 : (y == 0 ? above[x] : (y == 2 ? below[x] : 0)));
    });
    EXPECT_EQ(run_x(src, 16).at(1, 12), c.want) << "costs " << c.costs;
  }
}

// ---- mode 7: the per-pixel reference --------------------------------------------------

// What the reference chose, counted to show that the pictures reach every
// kind of block and every direction.
enum Kind { kProgressive, kEdgeCombed, kInteriorCombed, kRestCombed, kRestProgressive, kLeft, kVert, kRight };

struct XReference {
  const Plane& s;
  unsigned h;
  size_t width;  // min of the two pitches
  unsigned* tally;

  int S(unsigned y, size_t x) const { return s.at(std::min(y, h - 1), x); }
  long ssd(unsigned y0, unsigned y1, size_t x0, size_t w) const {
    long sum = 0;
    for (size_t x = x0; x < x0 + w; ++x) sum += long(S(y0, x) - S(y1, x)) * (S(y0, x) - S(y1, x));
    return sum;
  }

  bool full_block_combed(unsigned top, size_t x0) const {
    for (unsigned y = top; y < top + 8; y += 2) {
      long fr = ssd(y, y + 1, x0, 8) + ssd(y + 1, y + 2, x0, 8);
      long ff = ssd(y, y + 2, x0, 8) + ssd(y + 1, y + 3, x0, 8);
      if (0.75 * double(fr) > double(ff) && fr > 32) return true;
    }
    return false;
  }

  bool rest_combed(unsigned top, unsigned lines, size_t x0, size_t w) const {
    int pairs = 0;
    for (unsigned y = top; y + 2 < top + lines; y += 2) pairs += ssd(y, y + 2, x0, w) < ssd(y, y + 1, x0, w);
    return pairs >= 2;
  }

  uint8_t directional(unsigned y, size_t x) {
    auto cost = [&](int d) {
      int c = 0;
      for (int k = -3; k <= 4; ++k) c += std::abs(S(y - 1, x + k + d) - S(y + 1, x + k - d));
      return c;
    };
    int cl = cost(-1), cv = cost(0), cr = cost(+1);
    int d = cl < cv && !(cr < cv) ? -1 : (cr < cv && !(cl < cv) ? 1 : 0);
    ++tally[kVert + d];
    return avg_down(S(y - 1, x + d), S(y + 1, x - d));
  }

  uint8_t pixel(bool full, bool edge, bool combed, unsigned end, unsigned y, size_t x) {
    if (y % 2 == 0) return S(y, x);
    const int a = S(y - 1, x), c = S(y, x), b = S(y + 1, x);
    if (full) return !combed ? uint8_t((a + 6 * c + b + 4) / 8) : edge ? avg_down(a, b) : directional(y, x);
    if (y + 1 == end) return avg_down(a, c);
    return combed ? avg_down(a, b) : uint8_t((a + 2 * c + b + 2) / 4);
  }

  // The whole plane, block by block.
  void run(Plane& d) {
    const unsigned bands = (h + 7) / 8 - 1;
    for (unsigned band = 0; band <= bands; ++band) {
      const unsigned top = band * 8, lines = band < bands ? 8 : h - top;
      for (size_t x0 = 0; x0 < width; x0 += 8) {
        const size_t w = std::min<size_t>(8, width - x0);
        const bool full = band < bands && w == 8, edge = x0 == 0 || x0 / 8 + 1 == width / 8;
        const bool combed = full ? full_block_combed(top, x0) : rest_combed(top, lines, x0, w);
        ++tally[full ? (combed ? (edge ? kEdgeCombed : kInteriorCombed) : kProgressive)
                     : (combed ? kRestCombed : kRestProgressive)];
        for (unsigned y = top; y < top + lines; ++y)
          for (size_t x = x0; x < x0 + w; ++x) d.row(y)[x] = pixel(full, edge, combed, top + lines, y, x);
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

TEST(DeintX, MatchesPerPixelReferenceOnInterlacedPictures) {
  const struct {
    unsigned width, height, layout, srcPad, dstPad;
  } geometries[] = {
      {64, 40, 0, 0, 0}, {72, 33, 1, 5, 3}, {50, 26, 2, 3, 0},  {40, 17, 2, 0, 8}, {64, 24, 0, 8, 0},
      {6, 5, 0, 1, 2},   {24, 9, 1, 0, 0},  {96, 64, 0, 16, 4}, {30, 16, 0, 7, 7}, {131, 25, 0, 3, 1},
  };
  // Every row set the CPU offers, the scalar rows first.
  for (unsigned level = CPU_SCALAR; level <= CPU_NEON; ++level) {
    if (cpu_set_cap(CpuLevel(level)) != CpuLevel(level)) continue;
    SCOPED_TRACE(cpu_level_name(CpuLevel(level)));
    unsigned tally[kRight + 1] = {};
    uint32_t seed = 2000;
    for (const auto& g : geometries) {
      SCOPED_TRACE(testing::Message() << "layout " << g.layout << " " << g.width << "x" << g.height
                                      << " pads " << g.srcPad << "/" << g.dstPad);
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
    const unsigned least[] = {10, 10, 10, 5, 5, 50, 50, 50};
    for (unsigned k = 0; k <= kRight; ++k) EXPECT_GT(tally[k], least[k]) << "kind " << k;
  }
  cpu_set_cap(CPU_NEON);
}

}  // namespace
