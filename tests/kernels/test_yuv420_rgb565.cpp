// The YCbCr 4:2:0 to RGB565 / RGB555 kernels, called directly, against the
// per-pixel references: random pictures with padded strides, both kinds of
// range tables, sources cut to exactly the bytes the reference reads and
// destinations and line buffers exactly as large as what it writes (so that
// AddressSanitizer sees any stray access). Then the worked examples and the
// refusals.
#include <gtest/gtest.h>

#include <string>

#include "kernels/yuv420_rgb16.h"
#include "kernels/yuv_color_step.h"
#include "rgb16_kernel_ref.h"

using namespace rgb16test;

namespace {

struct KernelRun {
  Kernel k;
  int32_t sw, sh, dw, dh;  // dw x dh = sw x sh for the same-size kernels
  int rot;
  int32_t pad;  // destination row bytes past the least the kernel needs
};

// Least row bytes: 16-bit pixels in whole blocks, pairs in 64-bit words for
// Rsz, and the pitches whose doubled spacing the enlarging kernels use.
int32_t TightPitch(const KernelRun& r) {
  const int32_t w = QuarterTurn(r.rot) ? r.dh : r.dw;
  switch (r.k) {
    case Kernel::Plain:
    case Kernel::Rgb555:
      return 2 * (w + (w & 1));
    case Kernel::Rsz:
      return 8 * ((r.dw + 1) / 2);
    case Kernel::Case1:
      return 5 * r.sw;
    case Kernel::Case2:
      return 3 * r.sw;
    case Kernel::Case3:
      return 960;
    default:
      return 2 * w;
  }
}

uint32_t CallKernel(const KernelRun& r, ImgPrcContext* ctx, Picture& pic, uint8_t* dst, int32_t pitch,
                    const RecordOffsets& ro, uint32_t key) {
  const int32_t sw = r.sw, sh = r.sh, dw = r.dw, dh = r.dh;
  const auto* src = pic.planes();
  uint32_t* st = pic.strides();
  ImgPrcRotationRecord rec = MakeRecord(ro, dst);
  ctx->rotationRecord = &rec;
  LineSet spread(SpreadLineBytes(sw));
  switch (r.k) {
    case Kernel::Plain:
      return _ORUYCbCr420ToRGB565(ctx, src, st, sw, sh, dst, pitch);
    case Kernel::Rgb555:
      return _ORUYCbCr420ToRGB555(ctx, src, st, sw, sh, dst, pitch, key);
    case Kernel::Rot:
      return _ORUYCbCr420ToRGB565Rot(ctx, src, st, sw, sh);
    case Kernel::Rsz:
      return _ORUYCbCr420ToRGB565Rsz(ctx, src, st, sw, sh, dst, pitch, dw, dh);
    case Kernel::RszRot:
      return _ORUYCbCr420ToRGB565RszRot(ctx, src, st, sw, sh, dw, dh);
    case Kernel::RszUp:
      return _ORUYCbCr420ToRGB565RszUp(ctx, spread.ptr, src, st, sw, sh, dst, pitch, dw, dh);
    case Kernel::Nearest: {
      LineSet lines(std::max(sw, 2) * 2);
      return _ORUYCbCr420ToRGB565RszUp_Nearest(ctx, lines.ptr, src, st, sw, sh, dst, pitch, dw, dh);
    }
    case Kernel::NearLinear: {
      LineSet lines(std::max(sw, 2) * 8);
      return _ORUYCbCr420ToRGB565RszUp_NearLinear(ctx, lines.ptr, src, st, sw, sh, dst, pitch, dw, dh);
    }
    case Kernel::RszUpRot:
      return _ORUYCbCr420ToRGB565RszUpRot(ctx, spread.ptr, src, st, sw, sh, dst + ro.pix[0], ro.stepY / 2,
                                          ro.stepX / 2, dw, dh);
    case Kernel::Case1:
      return _ORUYCbCr420ToRGB565Case1(ctx, spread.ptr, src, st, sw, dst, pitch, dh);
    case Kernel::Case2:
      return _ORUYCbCr420ToRGB565Case2(ctx, spread.ptr, src, st, sw, sh, dst, pitch, dh);
    case Kernel::Case3: {
      LineSet lines(320 * 4, 2);
      return _ORUYCbCr420ToRGB565Case3(ctx, lines.ptr[0], lines.ptr[1], src, st, dst, pitch);
    }
  }
  return 1;
}

std::vector<KernelRun> AllRuns() {
  struct Size {
    int32_t sw, sh, dw, dh;
  };
  std::vector<KernelRun> runs;
  auto add = [&](Kernel k, std::initializer_list<Size> sizes, std::initializer_list<int> rots,
                 std::initializer_list<int32_t> pads) {
    for (int rot : rots)
      for (const Size s : sizes)
        for (int32_t pad : pads) runs.push_back({k, s.sw, s.sh, s.dw, s.dh, rot, pad});
  };
  const auto same = {Size{2, 2, 2, 2}, {1, 1, 1, 1},     {5, 3, 5, 3},
                     {16, 8, 16, 8},   {33, 17, 33, 17}, {64, 2, 64, 2}};
  add(Kernel::Plain, same, {0}, {0, 6});
  add(Kernel::Rgb555, same, {0}, {4});
  add(Kernel::Rot, {{2, 2, 2, 2}, {8, 4, 8, 4}, {6, 10, 6, 10}}, {0, 1, 2, 3, 4, 5}, {0, 6});
  add(Kernel::Rsz,
      {{16, 12, 6, 4},  // shrink
       {10, 8, 15, 4},  // mixed
       {6, 4, 13, 9},   // grow, odd destination
       {8, 8, 1, 1},    // destination of one pixel: step 0
       {8, 6, 1, 5},
       {9, 7, 5, 3},  // odd everything
       {4, 4, 4, 4},
       {32, 18, 48, 26}},
      {0}, {8});
  add(Kernel::RszRot, {{12, 10, 6, 4}, {6, 4, 10, 8}, {8, 8, 2, 2}}, {0, 1, 2, 3, 4, 5}, {0, 4});
  add(Kernel::RszUp,
      {{4, 4, 8, 8},
       {6, 4, 9, 7},
       {8, 6, 1, 1},
       {10, 8, 16, 30},
       {16, 6, 24, 9},
       {12, 11, 12, 13},
       {20, 10, 8, 6},
       {2, 2, 3, 2}},
      {0}, {0, 6});
  const auto nearest = {Size{4, 4, 8, 8},
                        {6, 4, 9, 7},
                        {8, 6, 16, 12},
                        {10, 8, 10, 17},
                        {2, 2, 3, 5},
                        {8, 8, 1, 1},
                        {6, 6, 7, 1},
                        {12, 10, 30, 21},
                        {16, 12, 6, 4},  // a smaller destination skips whole
                                         // pairs
                        {14, 9, 7, 3}};
  add(Kernel::Nearest, nearest, {0}, {0, 5});
  add(Kernel::NearLinear, nearest, {0}, {0, 5});
  add(Kernel::RszUpRot, {{4, 4, 8, 6}, {6, 4, 10, 10}, {8, 6, 12, 8}}, {1, 2, 3, 4, 5}, {0, 6});
  add(Kernel::Case2, {{8, 4, 12, 8}, {16, 8, 24, 6}, {4, 6, 6, 9}, {12, 2, 18, 1}}, {0}, {4});
  // Destination heights 2 x source, and 6 (written as 8) and 1 (written as 4).
  add(Kernel::Case1, {{8, 4, 20, 8}, {4, 2, 10, 4}, {12, 8, 30, 6}, {16, 4, 40, 1}}, {0}, {2});
  add(Kernel::Case3, {{320, 240, 480, 272}}, {0}, {0, 40});
  return runs;
}

class Rgb565Kernel : public testing::TestWithParam<KernelRun> {};

TEST_P(Rgb565Kernel, MatchesReferenceExactly) {
  const KernelRun r = GetParam();
  const int32_t pitch = TightPitch(r) + r.pad;
  const int32_t rows = QuarterTurn(r.rot) ? r.dw : r.dh;
  for (bool wide : {false, true}) {
    SCOPED_TRACE(wide ? "wide tables" : "narrow tables");
    Tables t(static_cast<uint32_t>(r.sw * 7 + r.dw * 3 + r.rot + wide), wide);
    Picture pic(r.sw, r.sh, r.pad / 2 + 1, static_cast<uint32_t>(r.sw * 31 + r.dh + r.pad), r.sh + 8);
    Canvas cv(static_cast<size_t>(2 * pitch + 16) * (rows + 4) + 64);
    const RecordOffsets ro = MakeOffsets(r.rot, r.dw, r.dh, pitch);
    const uint32_t key = r.k == Kernel::Rgb555 ? KeyOf(pic, r.sw > 1, r.sh > 1) : 0;
    const auto grid = RenderKernel(r.k, cv, t, pic, r.sw, r.sh, r.dw, r.dh, pitch, ro, key);
    pic.Cut();
    auto dst = cv.Target();
    EXPECT_EQ(CallKernel(r, &t.ctx, pic, dst.data(), pitch, ro, key), 0u);
    cv.ExpectEqual(dst);
    if (r.k == Kernel::Case1) {  // whole groups of four rows, the last pair past the picture
      const int32_t groups = (r.dh - 1) / 4 + 1;
      EXPECT_EQ(pic.reach(0), (2 * groups + 1) * int64_t{pic.stride(0)} + r.sw - 1);
    }
    if (r.k == Kernel::Case3) {
      EXPECT_EQ(dst.size(), static_cast<size_t>(WideRow(pitch) * 271 + 240 * 8));
    }
    if (!Rotating(r.k) || r.pad != 0) continue;
    // With a tight stride, every pixel is where a plain rotation puts it.
    for (int32_t y = 0; y < r.dh; ++y)
      for (int32_t x = 0; x < r.dw; ++x) {
        const auto [dx, dy] = Rotated(r.rot, x, y, r.dw, r.dh);
        EXPECT_EQ(cv.Get16(dy * pitch + 2 * dx), grid.at(static_cast<size_t>(y) * r.dw + x)) << x << "," << y;
      }
  }
}

const char* const kNames[] = {"Plain",   "Rgb555",     "Rot",      "Rsz",   "RszRot", "RszUp",
                              "Nearest", "NearLinear", "RszUpRot", "Case1", "Case2",  "Case3"};

INSTANTIATE_TEST_SUITE_P(All, Rgb565Kernel, testing::ValuesIn(AllRuns()), [](const auto& i) {
  const KernelRun& r = i.param;
  return std::string(kNames[static_cast<int>(r.k)]) + "_" + std::to_string(r.sw) + "x" +
         std::to_string(r.sh) + "_to_" + std::to_string(r.dw) + "x" + std::to_string(r.dh) + "_rot" +
         std::to_string(r.rot) + "_pad" + std::to_string(r.pad);
});

// ---- The colour step ---------------------------------------------------------

TEST(Rgb565ColourStep, LookedUpClampsMatchComparisonsOverEveryReachableSum) {
  // Luma entries 0..65535 plus terms -65536..65535: every sum of a channel.
  for (int32_t sum = -65536; sum <= 131070; ++sum) {
    const int32_t l = std::min(std::max(sum, 0), 65535);
    const scrim::ChromaTerms t{sum - l, sum - l, sum - l};
    const uint16_t want =
        static_cast<uint16_t>(Clamp(sum >> 10, 31) << 11 | Clamp(sum >> 9, 63) << 5 | Clamp(sum >> 10, 31));
    ASSERT_EQ(scrim::Rgb565(l, t), want) << sum;
  }
}

// One 2x2 block of luma y with chroma (cb, cr), through the plain kernel or
// (key != 0) the RGB555 one; the four pixels must agree.
uint16_t Block(Tables& t, uint8_t y, uint8_t cb, uint8_t cr, uint32_t key = 0) {
  const uint8_t ys[4] = {y, y, y, y}, cbs[1] = {cb}, crs[1] = {cr};
  const uint8_t* planes[3] = {ys, cbs, crs};
  uint32_t strides[3] = {2, 1, 1};
  uint16_t out[4];
  auto* o = reinterpret_cast<uint8_t*>(out);
  if (key == 0) {
    _ORUYCbCr420ToRGB565(&t.ctx, planes, strides, 2, 2, o, 4);
  } else {
    _ORUYCbCr420ToRGB555(&t.ctx, planes, strides, 2, 2, o, 4, key);
  }
  for (uint16_t v : out) EXPECT_EQ(v, out[0]);
  return out[0];
}

TEST(Rgb565Plain, ClampsAndTheDroppedGreenCarry) {
  Tables t(3, false);
  t.y[10] = 65535;
  t.cr[20] = Tables::Pack(32767, 0);   // red term 65534: red far above 31
  t.cb[30] = Tables::Pack(-32768, 0);  // blue term -65536: blue below 0
  EXPECT_EQ(Block(t, 10, 30, 20), 0xFFE0);
  t.y[1] = 16384;
  t.cb[40] = Tables::Pack(0, -32768);  // word 0x00008000
  t.cr[50] = Tables::Pack(0, -32768);  // low halves sum to 0x10000: green term 0, not -131072
  EXPECT_EQ(Block(t, 1, 40, 50), 16 << 11 | 32 << 5 | 16);
  t.y[2] = 0;
  t.cb[60] = Tables::Pack(0, -3);
  t.cr[70] = Tables::Pack(-100, 0);
  EXPECT_EQ(Block(t, 2, 60, 70), 0);
}

TEST(Rgb555, FiveBitGreenAndOpaqueBit) {
  Tables t(5, false);
  t.y[100] = 31 << 10;  // every field 31 with zero terms
  t.cb[0] = t.cr[0] = 0;
  EXPECT_EQ(Block(t, 100, 0, 0, 0x01000000), 31 << 11 | 31 << 6 | 31 << 1 | 1);
  // Green 63 in RGB565 terms is 31 here: L >> 10, not >> 9. A keyed pixel is 0.
  EXPECT_EQ(Block(t, 100, 0, 0, 100 << 16), 0);
}

TEST(Rgb565Rot, StepsAreUsedRoundedDownToWholePixels) {
  const Tables t(301, false);
  Picture pic(4, 4, 0, 2);
  Canvas cv(200);
  const RecordOffsets odd = {9, 41, {0, 2, 20, 22}};  // steps used as 8 and 40
  RenderBlocks(cv, t, pic, 4, 4, odd);
  pic.Cut();
  auto dst = cv.Target();
  ImgPrcRotationRecord ro = MakeRecord(odd, dst.data());
  Tables tt(t);
  tt.ctx.rotationRecord = &ro;
  _ORUYCbCr420ToRGB565Rot(&tt.ctx, pic.planes(), pic.strides(), 4, 4);
  cv.ExpectEqual(dst);
}

TEST(Rgb565Rsz, UpperHalfIsTheSignOfTheSecondPixel) {
  Tables t(8, false);
  for (int i = 0; i < 256; ++i) t.y[i] = static_cast<uint16_t>(i * 256), t.cb[i] = t.cr[i] = 0;
  const uint8_t ys[4] = {0, 255, 0, 255}, c[1] = {0};
  const uint8_t* planes[3] = {ys, c, c};
  uint32_t strides[3] = {2, 1, 1};
  uint64_t out[2];
  _ORUYCbCr420ToRGB565Rsz(&t.ctx, planes, strides, 2, 1, reinterpret_cast<uint8_t*>(out), 8, 2, 2);
  // Pixel 0 black, pixel 1 white: the 32-bit pair 0xFFFF0000 is sign-extended.
  EXPECT_EQ(out[0], 0xFFFFFFFFFFFF0000ull);
}

TEST(Rgb565Nearest, RepeatedRowCopiesOnlyHalfOfTheWideRow) {
  // 2 rows to 4: rows 1 and 3 repeat rows 0 and 2; the copy is dw * 2 bytes of
  // a row that holds dw * 4, so the second half of a repeated row is left as it was.
  Tables t(1300, false);
  Picture pic(4, 2, 0, 9);
  pic.Y(3, 1), pic.Cb(1, 0), pic.Cr(1, 0);
  pic.Cut();
  std::vector<uint8_t> dst(16 * 4, 0xAB);  // pitch 8: rows 16 bytes apart
  LineSet lines(8);
  _ORUYCbCr420ToRGB565RszUp_Nearest(&t.ctx, lines.ptr, pic.planes(), pic.strides(), 4, 2, dst.data(), 8, 4,
                                    4);
  for (int row : {1, 3}) {
    EXPECT_TRUE(std::equal(dst.begin() + 16 * row, dst.begin() + 16 * row + 8, dst.begin() + 16 * (row - 1)));
    EXPECT_EQ(std::vector<uint8_t>(dst.begin() + 16 * row + 8, dst.begin() + 16 * row + 16),
              std::vector<uint8_t>(8, 0xAB));
  }
}

TEST(Rgb565RszUp, PairsStartingOnOddRowsShareTheirFirstRowsChroma) {
  // 11 rows to 5: positions 0, 2.5, 5, 7.5, 10. Row 5 is not cached, so rows
  // 5 and 6 are converted with chroma row 2; then 7 and 8 with chroma row 3,
  // and output row 3 blends rows 7 and 8 both with chroma row 3.
  const Tables t(610, false);
  Picture pic(8, 11, 2, 3);
  RefCache cache(t, pic, 8);
  ASSERT_EQ(Step(11, 5), 0x28000u);
  Line l;
  for (uint32_t j = 0; j <= 3; ++j) l = cache.At(j * 0x28000u);
  EXPECT_EQ(l, Blend(SpreadRow(t, pic, 8, 7, 3), SpreadRow(t, pic, 8, 8, 3), 16, 32));
  EXPECT_NE(l, Blend(SpreadRow(t, pic, 8, 7, 3), SpreadRow(t, pic, 8, 8, 4), 16, 32));
  Canvas cv(WideRow(16) * 5);
  RenderRszUp(cv, t, pic, 8, 11, 8, 5, 16);
  pic.Cut();
  auto dst = cv.Target();
  LineSet lines(SpreadLineBytes(8));
  Tables tt(t);
  _ORUYCbCr420ToRGB565RszUp(&tt.ctx, lines.ptr, pic.planes(), pic.strides(), 8, 11, dst.data(), 16, 8, 5);
  cv.ExpectEqual(dst);
}

TEST(Rgb565Case3, BandStartsRepeatTheirSourceRow) {
  // A picture whose rows each have one colour: output row 17b is exactly
  // source row 15b, and the last row of the frame blends row 239 with itself.
  Tables t(1001, false);
  Picture pic(320, 240, 0, 5);
  for (int32_t r = 0; r < 240; ++r)
    for (int32_t x = 0; x < 320; ++x) pic.Set(0, int64_t{r} * 320 + x, static_cast<uint8_t>(r));
  for (int p = 1; p <= 2; ++p)
    for (int32_t r = 0; r < 120; ++r)
      for (int32_t x = 0; x < 160; ++x) pic.Set(p, int64_t{r} * pic.stride(p) + x, 128);
  const Line last = SpreadRow(t, pic, 320, 239, 119);
  for (int32_t r = 0; r < 240; ++r) SpreadRow(t, pic, 320, r, r / 2);
  pic.Cut();
  std::vector<uint8_t> dst(960 / 4 * 8 * 272);
  LineSet lines(320 * 4, 2);
  _ORUYCbCr420ToRGB565Case3(&t.ctx, lines.ptr[0], lines.ptr[1], pic.planes(), pic.strides(), dst.data(), 960);
  auto px = [&](int32_t row, int32_t k) {
    uint16_t v;
    memcpy(&v, &dst[row * 1920 + (k / 2) * 8 + (k % 2) * 2], 2);
    return v;
  };
  for (int32_t b = 0; b < 16; ++b) {
    const uint64_t s = RefSpread(t, static_cast<uint8_t>(15 * b), 128, 128);
    EXPECT_EQ(px(17 * b, 0), Blend565({{1, s}}, 1)) << b;
    EXPECT_EQ(px(17 * b, 479), Blend565({{1, s}}, 1)) << b;
  }
  EXPECT_EQ(px(271, 7), Blend565({{1, last[0]}}, 1));
}

// ---- Refusals and empty pictures ----------------------------------------------

TEST(Rgb565Kernels, MissingRecordsOrLineBuffersAreRefusedAndEmptyPicturesIgnored) {
  Tables t(6, false);
  const uint8_t* np[3] = {nullptr, nullptr, nullptr};
  uint32_t ns[3] = {0, 0, 0};
  uint8_t* none[4] = {nullptr, nullptr, nullptr, nullptr};
  LineSet three(64, 3);
  uint8_t d[8];
  constexpr uint32_t kNo = 0xFFFFFFFFu;
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

  // Without rows or columns nothing is read or written.
  Picture pic(4, 4, 0, 1);
  pic.Y(0, 0), pic.Cb(0, 0), pic.Cr(0, 0);
  pic.Cut();
  std::vector<uint8_t> dst(32, 0x5A);
  EXPECT_EQ(_ORUYCbCr420ToRGB565(c, pic.planes(), pic.strides(), 4, 0, dst.data(), 8), 0u);
  EXPECT_EQ(_ORUYCbCr420ToRGB565(c, pic.planes(), pic.strides(), 4, -3, dst.data(), 8), 0u);
  EXPECT_EQ(_ORUYCbCr420ToRGB565(c, pic.planes(), pic.strides(), 0, 4, dst.data(), 8), 0u);
  EXPECT_EQ(_ORUYCbCr420ToRGB555(c, pic.planes(), pic.strides(), 4, 0, dst.data(), 8, 0), 0u);
  EXPECT_EQ(dst, std::vector<uint8_t>(32, 0x5A));
}

}  // namespace
