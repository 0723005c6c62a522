// The YCbCr to RGB kernels against the shared references, called directly (odd sizes, tight pitches, every
// rotation and level) and through the frame call (set-up picks the member by resize case), with line buffers
// of exact size; their vector rows against the formulas.
#include <gtest/gtest.h>

#include <string>

#include "imageproc/color_affine.h"
#include "imageproc/oru_imageproc.h"
#include "kernel_ref.h"
#include "kernels/yuv420_rgb16.h"
#include "kernels/yuv420_rgb32.h"
#include "kernels/yuv420_rgb565_rows.h"
#include "kernels/yuv422444_rgb.h"
#include "kernels/yuv_color_step.h"

using namespace kref;

namespace {

constexpr uint32_t kNo = 0xFFFFFFFFu;

uint32_t CallKernel(const KRun& r, ImgPrcContext* ctx, Picture& pic, uint8_t* dst, int32_t pitch,
                    const RecordOffsets& ro, uint32_t key) {
  const int32_t sw = r.sw, sh = r.sh, dw = r.dw, dh = r.dh;
  const uint8_t* const* src = pic.raw();
  uint32_t* st = pic.strides();
  // Steps are used rounded down to whole pixels: an odd step means the even one below.
  const int32_t odd = r.pad != 0;
  ImgPrcRotationRecord rec{};
  rec.stepX = ro.stepX | odd, rec.stepY = ro.stepY | odd, rec.pix00 = dst + ro.pix[0];
  rec.pix10 = dst + ro.pix[1], rec.pix01 = dst + ro.pix[2], rec.pix11 = dst + ro.pix[3];
  ctx->rotationRecord = &rec;
  LineSet spread(std::max<size_t>(sw + 1, 4) * 8);
  switch (r.m) {
    case M::Plain:
      if (r.f == Fam::Argb) return _ORUYCbCr420ToARGB32(ctx, src, st, sw, sh, dst, pitch, r.alpha);
      if (r.f == Fam::Abgr) return _ORUYCbCr420ToABGR32(ctx, src, st, sw, sh, dst, pitch, r.alpha);
      if (r.f == Fam::Rgb888) return _ORUYCbCr420ToRGB888(ctx, src, st, sw, sh, dst, pitch);
      return _ORUYCbCr420ToRGB565(ctx, src, st, sw, sh, dst, pitch);
    case M::Plain422:
      return _ORUYCbCr422ToRGB565(ctx, src, st, sw, sh, dst, pitch);
    case M::Rsz422:
      return _ORUYCbCr422ToRGB565Rsz(ctx, src, st, sw, sh, dst, pitch, dw, dh);
    case M::Rgb555:
      return _ORUYCbCr420ToRGB555(ctx, src, st, sw, sh, dst, pitch, key);
    case M::Rot:
      return _ORUYCbCr420ToRGB565Rot(ctx, src, st, sw, sh);
    case M::Rsz:
      return _ORUYCbCr420ToRGB565Rsz(ctx, src, st, sw, sh, dst, pitch, dw, dh);
    case M::RszRot:
      return _ORUYCbCr420ToRGB565RszRot(ctx, src, st, sw, sh, dw, dh);
    case M::RszUp:
      if (r.f == Fam::Argb)
        return _ORUYCbCr420ToARGB32RszUp(ctx, spread.ptr, src, st, sw, sh, dst, pitch, dw, dh, r.alpha);
      return _ORUYCbCr420ToRGB565RszUp(ctx, spread.ptr, src, st, sw, sh, dst, pitch, dw, dh);
    case M::Nearest:
    case M::NearLinear: {
      LineSet lines(std::max(sw, 2) * (r.m == M::Nearest ? 2 : 8));
      return (r.m == M::Nearest ? _ORUYCbCr420ToRGB565RszUp_Nearest : _ORUYCbCr420ToRGB565RszUp_NearLinear)(
          ctx, lines.ptr, src, st, sw, sh, dst, pitch, dw, dh);
    }
    case M::RszUpRot:
      return _ORUYCbCr420ToRGB565RszUpRot(ctx, spread.ptr, src, st, sw, sh, dst + ro.pix[0], ro.stepY / 2,
                                          ro.stepX / 2, dw, dh);
    case M::Case1:
      return _ORUYCbCr420ToRGB565Case1(ctx, spread.ptr, src, st, sw, dst, pitch, dh);
    case M::Case2:
      return _ORUYCbCr420ToRGB565Case2(ctx, spread.ptr, src, st, sw, sh, dst, pitch, dh);
    case M::Case3: {
      LineSet lines(320 * 4, 2);
      return _ORUYCbCr420ToRGB565Case3(ctx, lines.ptr[0], lines.ptr[1], src, st, dst, pitch);
    }
    default:
      return 1;
  }
}

std::vector<KRun> DirectRuns() {
  struct Size {
    int32_t sw, sh, dw, dh;
  };
  std::vector<KRun> runs;
  auto add = [&](int m, std::initializer_list<Size> sizes, std::initializer_list<int> rots,
                 std::initializer_list<int32_t> pads, Fam f = Fam::Rgb565) {
    for (int rot : rots)
      for (const Size s : sizes)
        for (int32_t pad : pads) runs.push_back({m, f, s.sw, s.sh, s.dw, s.dh, rot, pad, 0x80});
  };
  // Odd sizes are walked as the next even one (set-up never hands them over); odd pitches are rounded down.
  add(M::Plain, {{5, 3, 5, 3}}, {0}, {5}, Fam::Argb);
  add(M::Plain, {{1, 1, 1, 1}}, {0}, {3}, Fam::Rgb888);
  for (Fam f : {Fam::Argb, Fam::Abgr, Fam::Rgb888})
    add(M::Plain, {{37, 5, 37, 5}}, {0}, {2}, f);  // vector rows and tails
  add(M::Plain422, {{5, 3, 5, 3}}, {0}, {3});
  add(M::Rsz422, {{6, 4, 5, 1}}, {0}, {0});  // a one-row destination is still drawn
  // Every width up to past two AVX2 steps, for the vector rows and their tails.
  for (int32_t w = 1; w <= 70; ++w) {
    const std::initializer_list<Size> size = {{w, 1 + w % 11, w, 1 + w % 11}};
    add(M::Plain, size, {0}, {w % 3});
    add(M::Rgb555, size, {0}, {w % 3});
    add(M::Rot, size, {0, 1, 2, 3, 4, 5}, {w % 3 * 2});
  }
  add(M::Rot, {{260, 3, 260, 3}}, {1, 4}, {2});  // rotated rows are converted 64 blocks at a time
  // Quarter turns go out turned in groups of 4 row pairs x 4 blocks: bands, groups and pieces with
  // remainders.
  add(M::Rot, {{70, 33, 70, 33}, {260, 17, 260, 17}}, {1, 2}, {0, 2});
  // Rows go through the block row 64 blocks at a time, blending down at most 1024 source columns a piece.
  const auto rsz = {Size{16, 12, 6, 4}, {10, 8, 15, 4}, {6, 4, 13, 9},    {8, 8, 1, 1},     {8, 6, 1, 5},
                    {9, 7, 5, 3},       {4, 4, 4, 4},   {32, 18, 48, 26}, {2400, 4, 18, 2}, {300, 6, 141, 4}};
  add(M::Rsz, rsz, {0}, {8});
  add(M::RszRot, {{12, 10, 6, 4}, {6, 4, 10, 8}, {8, 8, 2, 2}}, {0, 1, 2, 3, 4, 5}, {0, 4});
  add(M::RszRot, {{40, 36, 30, 34}, {300, 20, 141, 10}}, {1, 2}, {0});  // turned in groups, over two pieces
  // 11 rows to 5: row 5 is not cached, so rows 5 and 6 share chroma row 2, rows 7 and 8 chroma row 3.
  const auto up = {Size{4, 4, 8, 8}, {6, 4, 9, 7},   {8, 6, 1, 1}, {10, 8, 16, 30}, {16, 6, 24, 9},
                   {12, 11, 12, 13}, {20, 10, 8, 6}, {2, 2, 3, 2}, {8, 11, 8, 5}};
  add(M::RszUp, up, {0}, {0, 6});
  add(M::RszUp, {{10, 8, 16, 30}}, {0}, {0}, Fam::Argb);
  // A smaller destination skips whole pairs; repeated rows copy half a wide row.
  const auto nearest = {Size{4, 4, 8, 8}, {6, 4, 9, 7}, {8, 6, 16, 12},   {10, 8, 10, 17}, {2, 2, 3, 5},
                        {8, 8, 1, 1},     {6, 6, 7, 1}, {12, 10, 30, 21}, {16, 12, 6, 4},  {14, 9, 7, 3}};
  add(M::Nearest, nearest, {0}, {0, 5});
  add(M::NearLinear, nearest, {0}, {0, 5});
  add(M::RszUpRot, {{4, 4, 8, 6}, {6, 4, 10, 10}, {8, 6, 12, 8}}, {1, 2, 3, 4, 5}, {0, 6});
  // Widths of 9 to 12 rounds of 4 entries: vector steps of 4 rounds, a scalar remainder and the last round.
  add(M::Case2, {{8, 4, 12, 8}, {16, 8, 24, 6}, {4, 6, 6, 9}, {12, 2, 18, 1}, {38, 4, 57, 6}, {44, 6, 66, 9}},
      {0}, {4});
  // Destination heights 2 x source, and 6 (written as 8) and 1 (written as 4).
  add(M::Case1,
      {{8, 4, 20, 8}, {4, 2, 10, 4}, {12, 8, 30, 6}, {16, 4, 40, 1}, {36, 4, 90, 8}, {50, 2, 125, 3}}, {0},
      {2});
  add(M::Case3, {{320, 240, 480, 272}}, {0}, {0, 40});
  return runs;
}

std::string RunName(const KRun& r) {
  const char* fam[] = {"", "Argb_", "Abgr_", "Rgb888_"};
  return std::string(fam[int(r.f)]) + kMemberNames[int(r.m)] + "_" + std::to_string(r.sw) + "x" +
         std::to_string(r.sh) + "_to_" + std::to_string(r.dw) + "x" + std::to_string(r.dh) + "_rot" +
         std::to_string(r.rot) + "_pad" + std::to_string(r.pad);
}

// Renders run r, then `call` runs the kernel on the cut source and a destination of exactly the bytes
// written.
template <class Call>
void Check(const KRun& r, const Tables& t, Picture& pic, int32_t pitch, uint32_t key, Call call) {
  Canvas cv(static_cast<size_t>(4 * pitch + 16) * (std::max(r.dw, r.dh) + 8) + 256);
  const RecordOffsets ro = MakeOffsets(r.rot, r.dw + (r.dw & 1), r.dh + (r.dh & 1), pitch, PixelBytes(r.f));
  Render(r, cv, t, pic, pitch, ro, key);
  pic.Cut();
  std::vector<uint8_t> dst = cv.Target();
  call(dst.data(), ro);
  cv.ExpectEqual(dst);
}

class Direct : public testing::TestWithParam<KRun> {};

TEST_P(Direct, MatchesReferenceExactly) {
  const KRun r = GetParam();
  const int32_t pitch = PitchOf(r);
  // Random tables, narrow and wide (looked up), then tables built at each level (its vector rows).
  const std::vector<CpuLevel> levels = Levels();
  for (size_t i = 0; i < 2 + levels.size(); ++i) {
    SCOPED_TRACE(i < 2 ? i ? "wide tables" : "narrow tables" : cpu_level_name(levels[i - 2]));
    cpu_set_cap(i < 2 ? CPU_NEON : levels[i - 2]);
    Tables t = i < 2 ? Tables(static_cast<uint32_t>(r.sw * 7 + r.dw * 3 + r.rot + i), i == 1)
                     : Tables(1, 0, 150, 170, 190);
    Picture pic = MakePicture(r, r.sw, r.sh, static_cast<uint32_t>(r.sw * 31 + r.dh + r.pad));
    const uint32_t key = r.m == M::Rgb555 ? KeyOf(pic, r.sw > 1, r.sh > 1) : 0;
    Check(r, t, pic, pitch, key, [&](uint8_t* dst, const RecordOffsets& ro) {
      EXPECT_EQ(CallKernel(r, &t.ctx, pic, dst, pitch, ro, key), 0u);
    });
  }
  cpu_set_cap(CPU_NEON);
}

INSTANTIATE_TEST_SUITE_P(All, Direct, testing::ValuesIn(DirectRuns()),
                         [](const auto& i) { return RunName(i.param); });

TEST(Rgb565ColourStep, LookedUpClampsMatchComparisonsOverEveryReachableSum) {
  // Luma entries 0..65535 plus terms -65536..65535: every sum of a channel.
  for (int32_t sum = -65536; sum <= 131070; ++sum) {
    const int32_t l = std::min(std::max(sum, 0), 65535);
    const scrim::ChromaTerms t{sum - l, sum - l, sum - l};
    ASSERT_EQ(scrim::Rgb565(l, t),
              Clamp(sum >> 10, 31) << 11 | Clamp(sum >> 9, 63) << 5 | Clamp(sum >> 10, 31))
        << sum;
  }
}

// The nearest member's line helpers write one block (two pixels a line) for any smaller width or count:
// black and white at neutral BT.601 video range, and the guard after them untouched.
TEST(YuvRgbKernels, LineHelpersWriteOneBlockAtLeast) {
  Tables t(0, 0, 128, 128, 128);
  const uint8_t y[2] = {16, 235}, chroma[1] = {128};
  for (int32_t width : {0, 1}) {
    uint16_t out[2][3] = {{1, 1, 1}, {1, 1, 1}};
    Convert_565(&t.ctx, y, y, chroma, chroma, out[0], out[1], width);
    for (const auto& line : out)
      EXPECT_EQ(std::vector<uint16_t>(line, line + 3), (std::vector<uint16_t>{0, 0xFFFF, 1}));
  }
  const uint64_t white[1] = {uint64_t{63} << 21 | 63 << 10 | 31};
  uint16_t doubled[2][3] = {{1, 1, 1}, {1, 1, 1}};
  DoubleLine(doubled[0], doubled[1], white, white, 0);
  for (const auto& line : doubled)
    EXPECT_EQ(std::vector<uint16_t>(line, line + 3), (std::vector<uint16_t>{0xFFFF, 0xFFFF, 1}));
}

TEST(YuvRgbKernels, MissingRecordsOrLineBuffersAreRefusedAndEmptyPicturesIgnored) {
  Tables t(6, false);
  const uint8_t* np[3] = {nullptr, nullptr, nullptr};
  uint32_t ns[3] = {0, 0, 0};
  uint8_t* none[4] = {nullptr, nullptr, nullptr, nullptr};
  LineSet three(64, 3);
  uint8_t d[8];
  ImgPrcContext* c = &t.ctx;
  c->rotationRecord = nullptr;
  EXPECT_EQ(_ORUYCbCr420ToRGB565Rot(c, np, ns, 4, 4), kNo);
  EXPECT_EQ(_ORUYCbCr420ToRGB565RszRot(c, np, ns, 4, 4, 8, 8), kNo);
  EXPECT_EQ(_ORUYCbCr420ToRGB565RszRot(c, np, ns, 4, 4, 8, 0), 0u);
  EXPECT_EQ(_ORUYCbCr420ToRGB565RszUp_Nearest(c, none, np, ns, 4, 4, d, 8, 8, 8), kNo);
  EXPECT_EQ(_ORUYCbCr420ToRGB565RszUp_NearLinear(c, nullptr, np, ns, 4, 4, d, 8, 8, 8), kNo);
  EXPECT_EQ(_ORUYCbCr420ToRGB565RszUp_Nearest(c, none, np, ns, 4, 4, d, 8, 8, 0), 0u);
  EXPECT_EQ(_ORUYCbCr420ToRGB565RszUp_Nearest(c, none, np, ns, 4, 4, d, 8, 0, 8), 0u);
  EXPECT_EQ(_ORUYCbCr420ToRGB565RszUp(c, nullptr, np, ns, 4, 4, d, 8, 8, 8), kNo);
  EXPECT_EQ(_ORUYCbCr420ToRGB565RszUp(c, three.ptr, np, ns, 4, 4, d, 8, 8, 8), kNo);
  EXPECT_EQ(_ORUYCbCr420ToRGB565RszUp(c, nullptr, np, ns, 4, 4, d, 8, 8, 0), 0u);
  EXPECT_EQ(_ORUYCbCr420ToRGB565Case1(c, three.ptr, np, ns, 4, d, 8, 8), kNo);
  EXPECT_EQ(_ORUYCbCr420ToRGB565Case2(c, three.ptr, np, ns, 4, 4, d, 8, 8), kNo);
  EXPECT_EQ(_ORUYCbCr420ToRGB565Case3(c, nullptr, d, np, ns, d, 8), kNo);
  EXPECT_EQ(_ORUYCbCr420ToRGB565RszUpRot(c, three.ptr, np, ns, 4, 4, d, 8, 2, 8, 8), kNo);
  EXPECT_EQ(_ORUYCbCr420ToARGB32Rot(c, np, ns, 4, 4, 0), kNo);
  EXPECT_EQ(_ORUYCbCr420ToRGB888RszRot(c, np, ns, 4, 4, 8, 8), kNo);
  EXPECT_EQ(_ORUYCbCr420ToARGB32RszUp(c, three.ptr, np, ns, 4, 4, d, 8, 8, 8, 0), kNo);
  EXPECT_EQ(_ORUYCbCr420ToABGR32Case1(c, three.ptr, np, ns, 4, d, 8, 8, 0), kNo);
  EXPECT_EQ(_ORUYCbCr420ToABGR32Case2(c, nullptr, np, ns, 4, 4, d, 8, 0, 0), 0u);  // no rows
  EXPECT_EQ(_ORUYCbCr444ToRGB888RszRot(c, np, ns, 4, 4, 8, 8), 0u);  // these members always report 0

  // Without rows or columns nothing is read or written.
  Picture pic(4, 4, 0, 1);
  pic.Y(0, 0), pic.Cb(0, 0), pic.Cr(0, 0);
  pic.Cut();
  std::vector<uint8_t> dst(32, 0x5A);
  EXPECT_EQ(_ORUYCbCr420ToRGB565(c, pic.raw(), pic.strides(), 4, 0, dst.data(), 8), 0u);
  EXPECT_EQ(_ORUYCbCr420ToRGB565(c, pic.raw(), pic.strides(), 4, -3, dst.data(), 8), 0u);
  EXPECT_EQ(_ORUYCbCr420ToRGB565(c, pic.raw(), pic.strides(), 0, 4, dst.data(), 8), 0u);
  EXPECT_EQ(_ORUYCbCr420ToRGB555(c, pic.raw(), pic.strides(), 4, 0, dst.data(), 8, 0), 0u);
  EXPECT_EQ(dst, std::vector<uint8_t>(32, 0x5A));
}

// The vector rows: blocks of one row pair through the row the tables chose (RGB565, or keyed RGB555 when
// `key` is given), each pixel against the formulas; `quad` gives the four luma samples of block m.
template <class Quad>
void ExpectRowMatches(const Tables& t, const std::vector<uint8_t>& cb, const std::vector<uint8_t>& cr,
                      Quad quad, const uint32_t* key = nullptr) {
  const size_t n = cb.size();
  std::vector<uint8_t> y[2] = {std::vector<uint8_t>(2 * n), std::vector<uint8_t>(2 * n)};
  for (size_t m = 0; m < n; ++m) quad(m, &y[0][2 * m], &y[1][2 * m]);
  std::vector<uint16_t> d[2] = {std::vector<uint16_t>(2 * n), std::vector<uint16_t>(2 * n)};
  uint8_t* out[2] = {reinterpret_cast<uint8_t*>(d[0].data()), reinterpret_cast<uint8_t*>(d[1].data())};
  const Rgb565RowPair rp{y[0].data(), y[1].data(), cb.data(), cr.data(),
                         out[0],      out[1],      &t.ctx,    key ? *key : 0};
  const Rgb565Row* row = key ? Rgb555KeyRowOf(&t.ctx) : Rgb565RowOf(&t.ctx);
  ASSERT_NE(row, nullptr) << "tables not reproduced";
  run_row(*row, 0, n, &rp);
  for (int r = 0; r < 2; ++r)
    for (size_t i = 0; i < 2 * n; ++i) {
      const uint8_t yv = y[r][i], b = cb[i / 2], c = cr[i / 2];
      ASSERT_EQ(d[r][i], Ref16(t, yv, b, c, key != nullptr, key ? *key : 0))
          << "Y " << int(yv) << " Cb " << int(b) << " Cr " << int(c);
    }
}

// Every triple of the neutral tables of each matrix and range; random triples (and keyed RGB555) of the
// tables adjusted in brightness, contrast and saturation, up to the clamps beyond.
TEST(Rgb565VectorRow, MatchesTheFormulas) {
  const int values[] = {-5, 0, 64, 128, 200, 255, 300};
  std::mt19937 rng(5);
  std::vector<uint8_t> all[2] = {std::vector<uint8_t>(65536), std::vector<uint8_t>(65536)};
  for (size_t m = 0; m < 65536; ++m) all[0][m] = uint8_t(m), all[1][m] = uint8_t(m >> 8);
  std::vector<uint8_t> cb(1031), cr(1031);
  for (CpuLevel level : Levels()) {
    if (level == CPU_SCALAR) continue;  // the scalar level keeps the lookups
    cpu_set_cap(level);
    for (uint32_t mr = 0; mr < 8; ++mr)
      for (int b : values)
        for (int c : values)
          for (int s : values) {
            SCOPED_TRACE(testing::Message() << cpu_level_name(level) << " matrix/range " << mr << " adjust "
                                            << b << " " << c << " " << s);
            const Tables t(mr / 2, mr % 2, b, c, s);
            if (b == 128 && c == 128 && s == 128) {
              // Neutral video-range tables take the 16-bit form (full range's chroma is not centred).
              EXPECT_EQ(mr % 2 == 0, t.ctx.affine.narrow.fits != 0);
              for (uint8_t q = 0; q < 64; ++q)
                ExpectRowMatches(t, all[0], all[1], [q](size_t, uint8_t* a, uint8_t* d) {
                  a[0] = 4 * q, a[1] = 4 * q + 1, d[0] = 4 * q + 2, d[1] = 4 * q + 3;
                });
            }
            for (size_t m = 0; m < cb.size(); ++m) cb[m] = uint8_t(rng()), cr[m] = uint8_t(rng());
            auto quad = [&](size_t, uint8_t* a, uint8_t* d) {
              a[0] = uint8_t(rng()), a[1] = uint8_t(rng()), d[0] = uint8_t(rng()), d[1] = uint8_t(rng());
            };
            ExpectRowMatches(t, cb, cr, quad);
            // Keyed RGB555: the key is a triple of the row (its sample 100 is 0x40 on the top row) or, one
            // time in eight, beyond 24 bits.
            const uint32_t key = (b == 300 ? 0x1000000u : 0x400000u) | uint32_t(cb[50]) << 8 | cr[50];
            ExpectRowMatches(
                t, cb, cr,
                [&](size_t m, uint8_t* a, uint8_t* d) { quad(m, a, d), a[0] = m == 50 ? 0x40 : a[0]; }, &key);
            if (HasFatalFailure()) return;
          }
  }
  cpu_set_cap(CPU_NEON);
}

TEST(Rgb565VectorRow, TablesThatAreNotAffineKeepTheLookups) {
  Tables random(3, true);
  EXPECT_FALSE(
      ImgPrcFitAffineTables(random.y.data(), random.cb.data(), random.cr.data(), &random.ctx.affine));
  EXPECT_EQ(Rgb565RowOf(&random.ctx), nullptr);
  // Luma that fits one steep piece, whose 32-bit lanes overflow further along.
  std::fill(random.y.begin() + 2, random.y.end(), 65535), random.y[0] = 1, random.y[1] = 65534;
  std::fill(random.cb.begin(), random.cb.end(), 0), std::fill(random.cr.begin(), random.cr.end(), 0);
  EXPECT_FALSE(
      ImgPrcFitAffineTables(random.y.data(), random.cb.data(), random.cr.data(), &random.ctx.affine));
  // Affine green halves whose doubled sum leaves 16 bits above or below keep the 32-bit form.
  for (int slope : {60, -60}) {
    Tables steep(0, 0, 128, 128, 128);
    for (int i = 0; i < 256; ++i) steep.cb[i] = steep.cr[i] = Tables::Pack(0, slope * i - slope * 5);
    EXPECT_TRUE(ImgPrcFitAffineTables(steep.y.data(), steep.cb.data(), steep.cr.data(), &steep.ctx.affine));
    EXPECT_EQ(0, steep.ctx.affine.narrow.fits) << slope;
  }
}

// ---- Through the frame call: the resize case picks the member ---------------

struct Route {
  uint32_t format, rotation, resizeMode;
  int32_t sw, sh, dw, dh;
  uint32_t resizeCase;
  int m;  // an M
};

// Every member of every family, rotating members in every orientation. Odd sizes are rounded down to even by
// set-up; RGB555 ignores a size change and 4:2:2 RGB565 a rotation.
std::vector<Route> AllRoutes() {
  std::vector<Route> v = {
      {0x00A, 0, 1, 36, 20, 36, 20, 0, M::Rgb555},     {0x00A, 0, 1, 36, 20, 52, 28, 2, M::Rgb555},
      {0x003, 0, 1, 36, 20, 80, 44, 2, M::RszUp},      {0x003, 0, 1, 36, 20, 50, 30, 2, M::RszUp},
      {0x003, 0, 3, 36, 20, 50, 30, 2, M::NearLinear}, {0x003, 2, 1, 36, 20, 80, 44, 2, M::RszUpRot},
      {0x003, 3, 0, 36, 20, 80, 44, 2, M::RszUpRot},   {0x003, 0, 1, 320, 240, 480, 272, 7, M::Case3},
      {0x005, 0, 1, 320, 240, 480, 272, 7, M::RszUp},  {0x103, 0, 1, 36, 20, 36, 20, 0, M::Plain422},
      {0x103, 2, 1, 36, 20, 50, 30, 2, M::Rsz422},     {0x103, 0, 1, 36, 20, 20, 30, 1, M::Rsz422}};
  for (uint32_t out : {3u, 4u, 5u, 9u}) {
    for (uint32_t rot = 1; rot <= 5; ++rot) {
      v.push_back({out, rot, 1, 36, 20, 36, 20, 0, M::Rot});
      v.push_back({out, rot, rot & 1, 36, 20, rot < 3 ? 50 : 20, 12, rot < 3 ? 1u : 3u, M::RszRot});
    }
    v.push_back({out, 0, 1, 37, 21, 37, 21, 0, M::Plain});
    v.push_back({out, 0, 1, 36, 20, 50, 16, 1, M::Rsz});
    v.push_back({out, 0, 1, 36, 20, 20, 12, 3, M::Rsz});
    v.push_back({out, 0, 0, 36, 20, 80, 44, 2, out == 3 ? M::Nearest : M::RszUp});
    v.push_back({out, 0, 1, 36, 20, 72, 40, 4, M::RszUp});
    v.push_back({out, 0, 1, 16, 8, 40, 16, 5, out == 4 ? M::RszUp : M::Case1});
    v.push_back({out, 0, 1, 16, 8, 24, 16, 6, out == 4 ? M::RszUp : M::Case2});
  }
  for (uint32_t code : {0x105u, 0x109u, 0x203u, 0x204u, 0x205u, 0x209u})
    for (uint32_t rot = 0; rot <= 5; ++rot)
      v.push_back({code, rot, 1, 36, 20, rot & 1 ? 36 : 50, rot & 1 ? 20 : 16, rot & 1 ? 0u : 1u,
                   code < 0x200 ? M::RszRot422 : M::RszRot444});
  return v;
}

class Frame : public testing::TestWithParam<Route> {};

TEST_P(Frame, MatchesTheMemberItsCaseSelects) {
  const Route& rt = GetParam();
  const uint32_t out = rt.format & 0xFF;
  const Fam fam = out == 4 ? Fam::Rgb888 : out == 5 ? Fam::Argb : out == 9 ? Fam::Abgr : Fam::Rgb565;
  const uint32_t alphas[] = {0x100, 0x7F, 0x280, 0xFF};  // only the low byte counts
  ImgPrcCreateParams p = {};
  p.size = sizeof p, p.format = rt.format, p.rotation = rt.rotation, p.resizeMode = rt.resizeMode;
  p.srcWidth = rt.sw, p.srcHeight = rt.sh, p.dstWidth = rt.dw, p.dstHeight = rt.dh, p.colorMatrix = 1;
  p.alpha = alphas[(rt.sw + rt.dw + rt.rotation + rt.format) % 4];
  void* h = nullptr;
  ASSERT_EQ(ORU_IMAGEPROC_Create(&h, 0, &p), IMGPRC_OK);
  ImgPrcContext& ctx = *static_cast<ImgPrcContext*>(h);
  EXPECT_EQ(ctx.resizeCase, rt.resizeCase);
  // The 4:2:2 RGB565 path ignores rotation.
  KRun r = {rt.m, fam, 0, 0, 0, 0, rt.format == 0x103 ? 0 : int(rt.rotation), 4, p.alpha};
  r.sw = ctx.workSrcWidth, r.sh = ctx.workSrcHeight, r.dw = ctx.workDstWidth, r.dh = ctx.workDstHeight;
  const int32_t pitch = PitchOf(r);
  // Random tables in place of the instance's own, refitted as a rebuild would.
  for (bool wide : {false, true}) {
    SCOPED_TRACE(wide ? "wide tables" : "narrow tables");
    const Tables t(static_cast<uint32_t>(rt.sw * 7 + rt.dw * 3 + rt.rotation + wide), wide);
    memcpy(ctx.rangeTableY, t.y.data(), 512);
    memcpy(ctx.rangeTableCb, t.cb.data(), 2048);
    memcpy(ctx.rangeTableCr, t.cr.data(), 2048);
    ImgPrcFitAffineTables(ctx.rangeTableY, ctx.rangeTableCb, ctx.rangeTableCr, &ctx.affine);
    Picture pic = MakePicture(r, rt.sw, rt.sh, static_cast<uint32_t>(rt.sw * 13 + rt.dw + rt.rotation));
    const uint32_t key = r.m == M::Rgb555 ? KeyOf(pic, 3, 1) : 0;
    ASSERT_EQ(r.m == M::Rgb555 ? ORU_IMAGEPROC_Set(h, IMGPRC_PROP_COLOR_KEY, &key, sizeof key) : IMGPRC_OK,
              IMGPRC_OK);
    Check(r, t, pic, pitch, key, [&](uint8_t* dst, const RecordOffsets&) {
      uint8_t* dstPlanes[3] = {dst, nullptr, nullptr};
      uint32_t dstStrides[3] = {static_cast<uint32_t>(pitch), 0, 0};
      ImgPrcFrameParams frame = {sizeof frame, 1, 0};
      EXPECT_EQ(ORU_IMAGEPROC_ProcessFrame(h, pic.raw(), pic.strides(), dstPlanes, dstStrides, &frame),
                IMGPRC_OK);
    });
  }
  ORU_IMAGEPROC_Destroy(h);
}

INSTANTIATE_TEST_SUITE_P(Routes, Frame, testing::ValuesIn(AllRoutes()), [](const auto& i) {
  const Route& r = i.param;
  char name[80];
  snprintf(name, sizeof name, "x%03X_%dx%d_to_%dx%d_rot%u_case%u_%s", r.format, r.sw, r.sh, r.dw, r.dh,
           r.rotation, r.resizeCase, kMemberNames[int(r.m)]);
  return std::string(name);
});

}  // namespace
