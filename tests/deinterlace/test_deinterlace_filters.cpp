// Modes 0 to 6 and the two entry points (DeInterlace, ORU_DeInterlace).
//
// Each filter runs on random pictures with padded pitches, for the three
// chroma layouts, and is compared byte for byte, padding included, with a
// reference built here from the per-line rules. Planes hold exactly the bytes
// the filter may read or write: modes 2 to 6 move whole source pitches per
// line, and in layout 1 discard, bob and blend read the chroma planes over
// about twice their height.
#include <gtest/gtest.h>

#include <string.h>

#include <functional>

#include "deint_test_pictures.h"
#include "deinterlace/deinterlace.h"

using namespace deint_test;

namespace {

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
  if (o == 0) return {0, 0};
  return two ? Rows{2 * o - 2, 2 * o - 1} : Rows{o - 1, o};
}

Rows mean_rule(unsigned o, unsigned h, unsigned, bool) {
  unsigned top = o & ~1u;
  if (top + 1 == h) return {top, top};
  return {top, top + 1};
}

Rows linear_rule(unsigned o, unsigned h, unsigned field, bool) {
  bool kept = (o % 2) == field;
  if (field == 1 && o == 0) return {0, 0};
  if (kept) return {o, o};
  if (o + 1 < h) return {o - 1, o + 1};                 // between the kept lines above and below
  return field == 0 ? Rows{o, o} : Rows{o - 1, o - 1};  // no kept line below
}

struct FieldMode {
  unsigned mode;
  const char* name;
  std::function<Rows(unsigned, unsigned, unsigned, bool)> rule;
  bool stepsTwoInLayout1;
  bool acts444;
};

const FieldMode kFieldModes[] = {
    {2, "discard", discard_rule, true, false}, {3, "bob", bob_rule, true, false},
    {4, "blend", blend_rule, true, false},     {5, "mean", mean_rule, false, false},
    {6, "linear", linear_rule, false, true},
};

struct Geometry {
  unsigned width, height, layout;
  unsigned srcPad, dstPad;  // pitch = plane width + pad
};

// Runs one field mode on a random picture and checks it against the rules.
// Any non-zero field acts as field 1.
void check_field_mode(const FieldMode& m, const Geometry& g, unsigned passed, uint32_t seed,
                      bool dstNarrower = false) {
  const unsigned field = passed != 0;
  SCOPED_TRACE(testing::Message() << m.name << " layout " << g.layout << " " << g.width << "x" << g.height
                                  << " field " << passed << " seed " << seed);
  std::mt19937 rng(seed);
  Picture src, dst, expected;
  for (unsigned i = 0; i < 3; ++i) {
    const unsigned w = plane_width(i, g.width, g.layout);
    const unsigned h = plane_height(i, g.height, g.layout);
    const bool two = m.stepsTwoInLayout1 && g.layout == 1 && i > 0;
    const uint32_t sp = w + g.srcPad;
    const uint32_t dp = dstNarrower ? w : w + g.dstPad;
    unsigned rows = 0;
    for (unsigned o = 0; o < h; ++o) {
      Rows r = m.rule(o, h, field, two);
      rows = std::max({rows, r.a + 1, r.b + 1});
    }
    src.planes[i] = random_plane(rows, sp, sp, rng);
    dst.planes[i] = random_plane(h, dp, sp, rng);  // every line is written sp bytes wide
    expected.planes[i] = dst.planes[i];
    const bool acts = g.layout < 2 || m.acts444;
    for (unsigned o = 0; acts && o < h; ++o) {
      Rows r = m.rule(o, h, field, two);
      for (uint32_t x = 0; x < sp; ++x)
        expected.planes[i].row(o)[x] = avg_down(src.planes[i].at(r.a, x), src.planes[i].at(r.b, x));
    }
  }
  DeintPicture s = src.record(), d = dst.record();
  ASSERT_EQ(DeInterlace(&d, &s, g.width, g.height, passed, g.layout, m.mode), 0);
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
    for (const auto& g : kGeometries)
      for (unsigned field : {0u, 1u, 5u}) check_field_mode(m, g, field, seed++);
}

TEST(DeintFieldModes, NarrowerDestinationPitchTakesEachLineOverTheNext) {
  // The lines are source-pitch wide: written top to bottom, each keeps its
  // first destination-pitch bytes and the last one runs past the plane.
  uint32_t seed = 300;
  for (const auto& m : kFieldModes)
    for (unsigned layout : {0u, 1u, 2u}) check_field_mode(m, {16, 12, layout, 8, 0}, 0, seed++, true);
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
    const Picture blank = p.dst;
    DeintPicture s = p.src.record(), d = p.dst.record();
    EXPECT_EQ(picture_deinterlace_fast(&d, &s, g.layout, g.width, g.height), 0);
    expect_same(p.dst, p.expected);
    for (unsigned mode : {1u, 8u, 9u, 200u}) {  // DeInterlace: mode 1 and every mode above 7
      Picture out = blank;
      DeintPicture o = out.record();
      EXPECT_EQ(DeInterlace(&o, &s, g.width, g.height, 0, g.layout, mode), 0);
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

TEST(DeintFast, RefusesSizesNotMultipleOf4AndUnknownLayouts) {
  struct {
    unsigned layout, width, height;
  } bad[] = {{0, 16, 6}, {0, 6, 8}, {1, 18, 8}, {2, 16, 10}, {3, 16, 8}, {0, 16, 1}};
  for (const auto& b : bad) {
    FastPictures p = make_fast({16, 8, 0, 2, 2}, 700);
    const Picture before = p.dst;
    DeintPicture s = p.src.record(), d = p.dst.record();
    EXPECT_EQ(picture_deinterlace_fast(&d, &s, b.layout, b.width, b.height), -1);
    // DeInterlace does not pass the refusal on; nothing is written either way.
    EXPECT_EQ(DeInterlace(&d, &s, b.width, b.height, 0, b.layout, 1), 0);
    expect_same(p.dst, before);
  }
}

TEST(DeintFast, SkipsNullPlanesAndCountsOnlyGivenPlanes) {
  FastPictures p = make_fast({16, 8, 0, 0, 0}, 800);
  const Picture before = p.dst;
  DeintPicture s = p.src.record(), d = p.dst.record();
  s.planes[1] = nullptr;  // no Cb source
  s.planeCount = 2;       // Cr not looked at
  EXPECT_EQ(picture_deinterlace_fast(&d, &s, 0, 16, 8), 0);
  EXPECT_EQ(p.dst.planes[0].bytes, p.expected.planes[0].bytes);
  EXPECT_EQ(p.dst.planes[1].bytes, before.planes[1].bytes);
  EXPECT_EQ(p.dst.planes[2].bytes, before.planes[2].bytes);
}

// ---- DeInterlace: mode dispatch and the edge cases ----------------------------

TEST(DeInterlaceModes, NullRecordsAreRefusedAndMode0WritesNothing) {
  FastPictures p = make_fast({16, 8, 0, 1, 1}, 902);
  const Picture before = p.dst;
  DeintPicture s = p.src.record(), d = p.dst.record();
  for (unsigned mode = 0; mode <= 9; ++mode) {
    EXPECT_EQ(DeInterlace(nullptr, &s, 16, 8, 0, 0, mode), -1);
    EXPECT_EQ(DeInterlace(&d, nullptr, 16, 8, 0, 0, mode), -1);
  }
  EXPECT_EQ(DeInterlace(&d, &s, 16, 8, 0, 0, 0), 0);
  expect_same(p.dst, before);
}

TEST(DeInterlaceModes, BlendOfAlternatingBlackAndWhiteLinesIs127) {
  Picture src = lines_picture(16, 8, 0, [](unsigned y) { return y % 2 ? 255 : 0; });
  Picture dst = lines_picture(16, 8, 0, [](unsigned) { return 9; });
  DeintPicture s = src.record(), d = dst.record();
  ASSERT_EQ(DeInterlace(&d, &s, 16, 8, 0, 0, 4), 0);
  for (int i = 0; i < 3; ++i)
    for (unsigned y = 0; y < plane_height(i, 8, 0); ++y)
      for (unsigned x = 0; x < dst.planes[i].pitch; ++x)
        ASSERT_EQ(dst.planes[i].at(y, x), y == 0 ? 0 : 127) << "plane " << i << " line " << y;
}

TEST(DeInterlaceModes, DiscardOfTheTopFieldDoublesItsLines) {
  // Worked example: lines valued 10·y, 4:2:0, 8 lines; chroma 4 lines.
  Picture src = lines_picture(8, 8, 0, [](unsigned y) { return 10 * y; });
  Picture dst = lines_picture(8, 8, 0, [](unsigned) { return 1; });
  DeintPicture s = src.record(), d = dst.record();
  ASSERT_EQ(DeInterlace(&d, &s, 8, 8, 0, 0, 2), 0);
  const uint8_t luma[8] = {0, 0, 20, 20, 40, 40, 60, 60};
  const uint8_t chroma[4] = {0, 0, 20, 20};
  for (unsigned y = 0; y < 8; ++y) EXPECT_EQ(dst.planes[0].at(y, 3), luma[y]);
  for (unsigned y = 0; y < 4; ++y) EXPECT_EQ(dst.planes[2].at(y, 3), chroma[y]);
}

// ---- ORU_DeInterlace ----------------------------------------------------------

ImgPrcContext context(uint32_t format, uint32_t w, uint32_t h, uint32_t mode) {
  ImgPrcContext c;
  memset(&c, 0, sizeof c);
  c.format = format;
  c.srcWidth = w;
  c.srcHeight = h;
  c.deinterlaceMode = mode;
  return c;
}

TEST(OruDeInterlace, RunsTheContextModeWithLayoutFromTheInputFormat) {
  // 4:2:2 in, RGB565 out (0x103), mode 1: the fast filter on half-width, full-height chroma.
  FastPictures p = make_fast({24, 12, 1, 4, 0}, 1000);
  ImgPrcContext c = context(0x103, 24, 12, 1);
  DeintPicture s = p.src.record(), d = p.dst.record();
  EXPECT_EQ(ORU_DeInterlace(&c, s.planes, s.pitches, d.planes, d.pitches), 0);
  expect_same(p.dst, p.expected);
}

TEST(OruDeInterlace, PassesFieldZeroToTheLineDoublers) {
  // 4:2:0 (0x000), mode 3 bob: compare with the rules for field 0.
  Picture src = lines_picture(8, 8, 0, [](unsigned y) { return 10 * y + 5; });
  Picture dst = lines_picture(8, 8, 0, [](unsigned) { return 1; });
  ImgPrcContext c = context(0x000, 8, 8, 3);
  DeintPicture s = src.record(), d = dst.record();
  EXPECT_EQ(ORU_DeInterlace(&c, s.planes, s.pitches, d.planes, d.pitches), 0);
  for (unsigned y = 0; y < 8; ++y) EXPECT_EQ(dst.planes[0].at(y, 0), 10 * bob_rule(y, 8, 0, false).a + 5);
}

TEST(OruDeInterlace, RefusesOtherInputFormatsAndMissingArguments) {
  FastPictures p = make_fast({16, 8, 0, 0, 0}, 1001);
  const Picture before = p.dst;
  DeintPicture s = p.src.record(), d = p.dst.record();
  for (uint32_t format : {0x300u, 0x305u, 0x800u, 0x900u, 0x10000u, 0xFFFFFF00u}) {
    ImgPrcContext c = context(format, 16, 8, 1);
    EXPECT_EQ(ORU_DeInterlace(&c, s.planes, s.pitches, d.planes, d.pitches), -1) << std::hex << format;
  }
  ImgPrcContext c = context(0x000, 16, 8, 1);
  EXPECT_EQ(ORU_DeInterlace(nullptr, s.planes, s.pitches, d.planes, d.pitches), -1);
  EXPECT_EQ(ORU_DeInterlace(&c, nullptr, s.pitches, d.planes, d.pitches), -1);
  EXPECT_EQ(ORU_DeInterlace(&c, s.planes, nullptr, d.planes, d.pitches), -1);
  EXPECT_EQ(ORU_DeInterlace(&c, s.planes, s.pitches, nullptr, d.pitches), -1);
  EXPECT_EQ(ORU_DeInterlace(&c, s.planes, s.pitches, d.planes, nullptr), -1);
  expect_same(p.dst, before);

  // Mode 0 in the context: accepted, nothing written.
  ImgPrcContext off = context(0x204, 16, 8, 0);
  EXPECT_EQ(ORU_DeInterlace(&off, s.planes, s.pitches, d.planes, d.pitches), 0);
  expect_same(p.dst, before);
}

}  // namespace
