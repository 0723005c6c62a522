// The ARGB32, ABGR32 and RGB888 kernels of 4:2:0 input and the 4:2:2 / 4:4:4
// kernels, called directly and through the frame call, against the shared
// references with each family's colour step, packing and store: random
// pictures with padded strides, odd sizes, every rotation, both kinds of range
// tables (wide ones clamp most channels at 0 and 255), alpha 0, 0x7F, 0x80 and
// 0xFF, sources cut to the bytes the reference reads and destinations exactly
// as large as what it writes.
#include <gtest/gtest.h>

#include <string>

#include "imageproc/oru_imageproc.h"
#include "kernels/yuv420_rgb32.h"
#include "kernels/yuv422444_rgb.h"
#include "rgb16_kernel_ref.h"

using namespace rgb16test;

namespace {

enum class Fam { Rgb565, Argb, Abgr, Rgb888 };
enum class M { Plain, Rot, Rsz, RszRot, RszUp, Case1, Case2, Plain422, Rsz422, RszRot422, RszRot444 };
const char* const kMemberNames[] = {"Plain", "Rot",      "Rsz",    "RszRot",    "RszUp",    "Case1",
                                    "Case2", "Plain422", "Rsz422", "RszRot422", "RszRot444"};

struct KRun {
  M m;
  Fam f;
  int32_t sw, sh, dw, dh;  // dw x dh = sw x sh for the same-size members
  int rot;
  int32_t pad;
  uint32_t alpha;
};

bool Is32(Fam f) { return f == Fam::Argb || f == Fam::Abgr; }
int64_t PixelBytes(Fam f) { return f == Fam::Rgb565 ? 2 : f == Fam::Rgb888 ? 3 : 4; }
bool BlockRows(M m) { return m == M::Plain || m == M::Rsz; }

PixelFn RefPixel(Fam f, const Tables& t, uint32_t alpha) {
  return [f, &t, alpha](uint8_t y, uint8_t cb, uint8_t cr) -> uint32_t {
    const uint32_t v = RefRgb8(t, y, cb, cr), a = (alpha & 0xFF) << 24;
    switch (f) {
      case Fam::Rgb565:
        return Ref565(t, y, cb, cr);
      case Fam::Argb:
        return a | v;
      case Fam::Abgr:
        return a | (v & 0xFF) << 16 | (v & 0xFF00) | v >> 16;
      default:
        return v;
    }
  };
}

// One pixel where a block or cursor puts it: 32-bit values as sign-extended
// 64-bit words, RGB888 as 3 bytes.
PutFn RefPut(Fam f) {
  return [f](Canvas& cv, int64_t at, uint32_t v) {
    if (Is32(f)) return cv.Put64(at, static_cast<uint64_t>(static_cast<int64_t>(static_cast<int32_t>(v))));
    cv.Put(at, &v, static_cast<size_t>(PixelBytes(f)));
  };
}

// Rows of the block members as cursor offsets: 32-bit pixels at 8c and 8c + 4,
// row pairs (pitch / 2) x 8 bytes apart; RGB888 pairs 6 bytes apart.
RecordOffsets RowOffsets(Fam f, int64_t pitch) {
  if (Is32(f)) return {16, int32_t((pitch >> 1) * 8), {0, 4, pitch, pitch + 4}};
  return {6, int32_t(2 * pitch), {0, 3, pitch, pitch + 3}};
}
// Row j of the line members: where the block members put it.
int64_t LineRow(Fam f, int64_t j, int32_t pitch) {
  return Is32(f) ? (j >> 1) * ((pitch >> 1) * 8) + (j & 1) * pitch : j * pitch;
}

void Render(const KRun& r, Canvas& cv, const Tables& t, Picture& pic, int32_t pitch,
            const RecordOffsets& ro) {
  const PixelFn px = RefPixel(r.f, t, r.alpha);
  const PutFn put = RefPut(r.f);
  const bool bgr = r.f == Fam::Abgr;
  PhaseRows rows;
  switch (r.m) {
    case M::Plain:
    case M::Rot:
      RenderBlocks(cv, pic, r.sw, r.sh, r.m == M::Rot ? ro : RowOffsets(r.f, pitch), px, put);
      return;
    case M::Rsz:
    case M::RszRot:
      RenderRszRot(cv, t, pic, r.sw, r.sh, r.dw, r.dh, r.m == M::RszRot ? ro : RowOffsets(r.f, pitch), px,
                   put);
      return;
    case M::RszUp:
      rows = RszUpPhases(t, pic, r.sw, r.sh, r.dw, r.dh, bgr);
      break;
    case M::Case1:
      rows = Case1Phases(t, pic, r.sw, r.dh, bgr);
      break;
    case M::Case2:
      rows = Case2Phases(t, pic, r.sw, r.sh, r.dh, bgr);
      break;
    case M::Plain422:  // row by row, chroma of its own row, both planes with stride 1
      for (int32_t y = 0; y < r.sh; ++y)
        for (int32_t x = 0; x < r.sw + (r.sw & 1); ++x)
          Put565(cv, y * (pitch & ~1) + 2 * x,
                 px(pic.Y(x, y), pic.C(1, x / 2, y, pic.stride(1)), pic.C(2, x / 2, y, pic.stride(1))));
      return;
    case M::Rsz422:
      RenderRsz(cv, t, pic, r.sw, r.sh, r.dw, r.dh, pitch, true);
      return;
    default: {  // one pixel at a time, half the block steps apart (even bytes but for RGB888)
      const uint32_t sx = Step(r.sw, r.dw), sy = Step(r.sh, r.dh);
      auto half = [&](int32_t s) -> int64_t { return r.f == Fam::Rgb888 ? s / 2 : (s >> 2) * 2; };
      const bool halfC = r.m == M::RszRot422;
      const int32_t lastC = halfC ? r.sw / 2 - 1 : r.sw - 1;
      for (int32_t j = 0; j < r.dh; ++j)
        for (int32_t i = 0; i < r.dw; ++i) {
          const uint32_t x = i * sx, y = j * sy, xc = halfC ? x >> 1 : x;
          put(cv, ro.pix[0] + i * half(ro.stepX) + j * half(ro.stepY),
              px(Bilinear(pic, 0, r.sw - 1, x, y), Bilinear(pic, 1, lastC, xc, y),
                 Bilinear(pic, 2, lastC, xc, y)));
        }
      return;
    }
  }
  // Line members: HLerp32's consecutive 32-bit pixels, or HLerp24's 3 bytes.
  for (size_t j = 0; j < rows.size(); ++j)
    for (size_t k = 0; k < rows[j].size(); ++k) {
      uint32_t v = bgr ? Blend32Words(rows[j][k], r.alpha & 0xFF) : Blend32(rows[j][k], r.alpha & 0xFF);
      cv.Put(LineRow(r.f, j, pitch) + int64_t(k) * PixelBytes(r.f), &v, static_cast<size_t>(PixelBytes(r.f)));
    }
}

uint32_t Call(const KRun& r, ImgPrcContext* ctx, Picture& pic, uint8_t* d, int32_t p) {
  const auto* s = pic.planes();
  uint32_t* st = pic.strides();
  const int32_t sw = r.sw, sh = r.sh, dw = r.dw, dh = r.dh;
  const uint32_t a = r.alpha;
  const bool argb = r.f == Fam::Argb, abgr = r.f == Fam::Abgr;
  LineSet lines(SpreadLineBytes(sw));
  uint8_t* const* l = lines.ptr;
  switch (r.m) {
    case M::Plain:
      return argb   ? _ORUYCbCr420ToARGB32(ctx, s, st, sw, sh, d, p, a)
             : abgr ? _ORUYCbCr420ToABGR32(ctx, s, st, sw, sh, d, p, a)
                    : _ORUYCbCr420ToRGB888(ctx, s, st, sw, sh, d, p);
    case M::Rot:
      return argb   ? _ORUYCbCr420ToARGB32Rot(ctx, s, st, sw, sh, a)
             : abgr ? _ORUYCbCr420ToABGR32Rot(ctx, s, st, sw, sh, a)
                    : _ORUYCbCr420ToRGB888Rot(ctx, s, st, sw, sh);
    case M::Rsz:
      return argb   ? _ORUYCbCr420ToARGB32Rsz(ctx, s, st, sw, sh, d, p, dw, dh, a)
             : abgr ? _ORUYCbCr420ToABGR32Rsz(ctx, s, st, sw, sh, d, p, dw, dh, a)
                    : _ORUYCbCr420ToRGB888Rsz(ctx, s, st, sw, sh, d, p, dw, dh);
    case M::RszRot:
      return argb   ? _ORUYCbCr420ToARGB32RszRot(ctx, s, st, sw, sh, dw, dh, a)
             : abgr ? _ORUYCbCr420ToABGR32RszRot(ctx, s, st, sw, sh, dw, dh, a)
                    : _ORUYCbCr420ToRGB888RszRot(ctx, s, st, sw, sh, dw, dh);
    case M::RszUp:
      return argb   ? _ORUYCbCr420ToARGB32RszUp(ctx, l, s, st, sw, sh, d, p, dw, dh, a)
             : abgr ? _ORUYCbCr420ToABGR32RszUp(ctx, l, s, st, sw, sh, d, p, dw, dh, a)
                    : _ORUYCbCr420ToRGB888RszUp(ctx, l, s, st, sw, sh, d, p, dw, dh);
    case M::Case1:
      return argb ? _ORUYCbCr420ToARGB32Case1(ctx, l, s, st, sw, d, p, dh, a)
                  : _ORUYCbCr420ToABGR32Case1(ctx, l, s, st, sw, d, p, dh, a);
    case M::Case2:
      return argb ? _ORUYCbCr420ToARGB32Case2(ctx, l, s, st, sw, sh, d, p, dh, a)
                  : _ORUYCbCr420ToABGR32Case2(ctx, l, s, st, sw, sh, d, p, dh, a);
    case M::Plain422:
      return _ORUYCbCr422ToRGB565(ctx, s, st, sw, sh, d, p);
    case M::Rsz422:
      return _ORUYCbCr422ToRGB565Rsz(ctx, s, st, sw, sh, d, p, dw, dh);
    case M::RszRot422:
      return argb ? _ORUYCbCr422ToARGB32RszRot(ctx, s, st, sw, sh, dw, dh, a)
                  : _ORUYCbCr422ToABGR32RszRot(ctx, s, st, sw, sh, dw, dh, a);
    case M::RszRot444:
      switch (r.f) {
        case Fam::Rgb565:
          return _ORUYCbCr444ToRGB565RszRot(ctx, s, st, sw, sh, dw, dh);
        case Fam::Rgb888:
          return _ORUYCbCr444ToRGB888RszRot(ctx, s, st, sw, sh, dw, dh);
        default:
          return argb ? _ORUYCbCr444ToARGB32RszRot(ctx, s, st, sw, sh, dw, dh, a)
                      : _ORUYCbCr444ToABGR32RszRot(ctx, s, st, sw, sh, dw, dh, a);
      }
  }
  return 1;
}

// Least row bytes of a run's layout, plus its pad.
int32_t PitchOf(const KRun& r) {
  const bool same = r.m == M::Plain || r.m == M::Rot || r.m == M::Plain422;
  const int32_t w = QuarterTurn(r.rot) ? r.dh : same ? r.sw : r.dw;
  const int64_t bytes = BlockRows(r.m) && Is32(r.f) ? 8 : r.m == M::Rsz422 ? 4 : PixelBytes(r.f);
  return static_cast<int32_t>(bytes * (w + (w & 1))) + r.pad;
}

Picture MakePicture(const KRun& r) {
  const int cols = r.m == M::RszRot444 ? 1 : 2, rows = r.m >= M::Plain422 ? 1 : 2;
  return Picture(r.sw, r.sh, r.pad / 2 + 1, static_cast<uint32_t>(r.sw * 31 + r.dh + r.pad), r.sh + 8, cols,
                 rows);
}

std::vector<KRun> AllRuns() {
  struct Size {
    int32_t sw, sh, dw, dh;
  };
  const uint32_t alphas[] = {0, 0x7F, 0x80, 0xFF};
  std::vector<KRun> runs;
  auto add = [&](M m, std::initializer_list<Fam> fams, std::initializer_list<Size> sizes,
                 std::initializer_list<int> rots, int32_t pad) {
    for (Fam f : fams)
      for (int rot : rots)
        for (const Size s : sizes)
          runs.push_back({m, f, s.sw, s.sh, s.dw, s.dh, rot, pad, alphas[runs.size() % 4]});
  };
  const auto all3 = {Fam::Argb, Fam::Abgr, Fam::Rgb888};
  const auto both32 = {Fam::Argb, Fam::Abgr};
  add(M::Plain, all3, {{1, 1, 1, 1}, {5, 3, 5, 3}, {16, 8, 16, 8}, {33, 17, 33, 17}}, {0}, 5);
  add(M::Rot, all3, {{2, 2, 2, 2}, {6, 10, 6, 10}}, {0, 1, 2, 3, 4, 5}, 4);
  add(M::Rsz, all3, {{16, 12, 6, 4}, {10, 8, 15, 4}, {9, 7, 5, 3}, {8, 6, 1, 5}}, {0}, 3);
  add(M::RszRot, all3, {{12, 10, 6, 4}, {6, 4, 10, 8}}, {0, 1, 2, 3, 4, 5}, 4);
  add(M::RszUp, all3, {{4, 4, 8, 8}, {6, 4, 9, 7}, {10, 8, 16, 30}, {20, 10, 8, 6}}, {0}, 6);
  add(M::Case1, both32, {{8, 4, 20, 8}, {12, 8, 30, 6}}, {0}, 8);
  add(M::Case2, both32, {{8, 4, 12, 8}, {16, 8, 24, 6}}, {0}, 4);
  add(M::Plain422, {Fam::Rgb565}, {{1, 1, 1, 1}, {5, 3, 5, 3}, {16, 7, 16, 7}}, {0}, 3);
  add(M::Rsz422, {Fam::Rgb565}, {{16, 12, 6, 4}, {6, 4, 13, 9}}, {0}, 8);
  add(M::RszRot422, both32, {{12, 10, 6, 4}, {6, 4, 9, 7}}, {0, 1, 2, 3, 4, 5}, 4);
  add(M::RszRot444, {Fam::Rgb565, Fam::Rgb888, Fam::Argb, Fam::Abgr}, {{12, 10, 6, 4}, {5, 4, 9, 1}},
      {0, 1, 2, 3, 4, 5}, 4);
  return runs;
}

class Rgb8Kernel : public testing::TestWithParam<KRun> {};

TEST_P(Rgb8Kernel, MatchesReferenceExactly) {
  const KRun r = GetParam();
  const int32_t pitch = PitchOf(r);
  for (bool wide : {false, true}) {
    SCOPED_TRACE(wide ? "wide tables" : "narrow tables");
    Tables t(static_cast<uint32_t>(r.sw * 7 + r.dw * 3 + r.rot + wide), wide);
    Picture pic = MakePicture(r);
    Canvas cv(static_cast<size_t>(4 * pitch + 16) * (std::max(r.dw, r.dh) + 8) + 256);
    const RecordOffsets ro = MakeOffsets(r.rot, r.dw, r.dh, pitch, PixelBytes(r.f));
    Render(r, cv, t, pic, pitch, ro);
    pic.Cut();
    auto dst = cv.Target();
    ImgPrcRotationRecord rec = MakeRecord(ro, dst.data());
    t.ctx.rotationRecord = &rec;
    EXPECT_EQ(Call(r, &t.ctx, pic, dst.data(), pitch), 0u);
    cv.ExpectEqual(dst);
  }
}

const char* const kFamNames[] = {"RGB565", "ARGB32", "ABGR32", "RGB888"};

INSTANTIATE_TEST_SUITE_P(All, Rgb8Kernel, testing::ValuesIn(AllRuns()), [](const auto& i) {
  const KRun& r = i.param;
  return std::string(kMemberNames[int(r.m)]) + "_" + kFamNames[int(r.f)] + "_" + std::to_string(r.sw) + "x" +
         std::to_string(r.sh) + "_to_" + std::to_string(r.dw) + "x" + std::to_string(r.dh) + "_rot" +
         std::to_string(r.rot) + "_a" + std::to_string(r.alpha);
});

// ---- Through the frame call: the resize case picks the member ---------------

struct Route {
  uint32_t format, rotation, resizeMode;
  int32_t sw, sh, dw, dh;
  uint32_t resizeCase;
  M m;
};

const Route kRoutes[] = {
    {0x005, 0, 1, 36, 20, 36, 20, 0, M::Plain},     {0x009, 3, 1, 36, 20, 36, 20, 0, M::Rot},
    {0x004, 1, 1, 37, 21, 37, 21, 0, M::Rot},       {0x005, 0, 1, 36, 20, 50, 16, 1, M::Rsz},
    {0x004, 0, 1, 36, 20, 20, 12, 3, M::Rsz},       {0x009, 2, 1, 36, 20, 20, 12, 3, M::RszRot},
    {0x004, 4, 0, 36, 20, 50, 16, 1, M::RszRot},    {0x009, 0, 0, 36, 20, 80, 44, 2, M::RszUp},
    {0x005, 0, 1, 36, 20, 72, 40, 4, M::RszUp},     {0x005, 0, 1, 320, 240, 480, 272, 7, M::RszUp},
    {0x004, 0, 1, 16, 8, 40, 16, 5, M::RszUp},      {0x004, 0, 1, 16, 8, 24, 16, 6, M::RszUp},
    {0x009, 0, 1, 16, 8, 40, 16, 5, M::Case1},      {0x005, 0, 1, 16, 8, 24, 16, 6, M::Case2},
    {0x103, 0, 1, 36, 20, 36, 20, 0, M::Plain422},  {0x103, 2, 1, 36, 20, 50, 30, 2, M::Rsz422},
    {0x105, 0, 1, 36, 20, 36, 20, 0, M::RszRot422}, {0x109, 1, 1, 36, 20, 20, 30, 1, M::RszRot422},
    {0x203, 3, 1, 36, 20, 50, 16, 1, M::RszRot444}, {0x204, 5, 1, 36, 20, 36, 20, 0, M::RszRot444},
    {0x205, 0, 1, 36, 20, 72, 40, 4, M::RszRot444}, {0x209, 2, 1, 36, 20, 20, 12, 3, M::RszRot444},
};

class Rgb8Frame : public testing::TestWithParam<Route> {};

TEST_P(Rgb8Frame, MatchesTheMemberItsCaseSelects) {
  const Route& rt = GetParam();
  const Fam fams[] = {Fam::Rgb565, Fam::Rgb565, Fam::Rgb565, Fam::Rgb565, Fam::Rgb888,
                      Fam::Argb,   Fam::Rgb565, Fam::Rgb565, Fam::Rgb565, Fam::Abgr};
  ImgPrcCreateParams p = {};
  p.size = sizeof p, p.format = rt.format, p.rotation = rt.rotation, p.resizeMode = rt.resizeMode;
  p.srcWidth = rt.sw, p.srcHeight = rt.sh, p.dstWidth = rt.dw, p.dstHeight = rt.dh;
  p.alpha = 0x1C0 + rt.sw;  // only the low byte counts
  p.colorMatrix = 1;
  void* h = nullptr;
  ASSERT_EQ(ORU_IMAGEPROC_Create(&h, 0, &p), IMGPRC_OK);
  ImgPrcContext& ctx = *static_cast<ImgPrcContext*>(h);
  EXPECT_EQ(ctx.resizeCase, rt.resizeCase);
  // The 4:2:2 RGB565 path ignores rotation. Pitches stay even: 32-bit cursors
  // halve the steps to even bytes.
  const KRun r = {rt.m,
                  fams[rt.format & 0xFF],
                  int32_t(ctx.workSrcWidth),
                  int32_t(ctx.workSrcHeight),
                  int32_t(ctx.workDstWidth),
                  int32_t(ctx.workDstHeight),
                  rt.format == 0x103 ? 0 : int(rt.rotation),
                  4,
                  p.alpha};
  const int32_t pitch = PitchOf(r);
  const Tables t(ctx);
  Picture pic = MakePicture({r.m, r.f, rt.sw, rt.sh, 0, 0, 0, 4, 0});
  Canvas cv(static_cast<size_t>(4 * pitch + 16) * (std::max(r.dw, r.dh) + 8) + 256);
  Render(r, cv, t, pic, pitch, MakeOffsets(int(rt.rotation), r.dw, r.dh, pitch, PixelBytes(r.f)));
  pic.Cut();
  std::vector<uint8_t> dst = cv.Target();
  uint8_t* dstPlanes[3] = {dst.data(), nullptr, nullptr};
  uint32_t dstStrides[3] = {static_cast<uint32_t>(pitch), 0, 0};
  ImgPrcFrameParams frame = {sizeof frame, 1, 0};
  EXPECT_EQ(ORU_IMAGEPROC_ProcessFrame(h, pic.raw(), pic.strides(), dstPlanes, dstStrides, &frame),
            IMGPRC_OK);
  cv.ExpectEqual(dst);
  ORU_IMAGEPROC_Destroy(h);
}

INSTANTIATE_TEST_SUITE_P(Routes, Rgb8Frame, testing::ValuesIn(kRoutes), [](const auto& i) {
  const Route& r = i.param;
  char name[64];
  snprintf(name, sizeof name, "x%03X_rot%u_case%u_%s", r.format, r.rotation, r.resizeCase,
           kMemberNames[int(r.m)]);
  return std::string(name);
});

// ---- Refusals --------------------------------------------------------------

TEST(Rgb8Kernels, MissingRecordsAreRefusedExceptWhereAllReturnZero) {
  Tables t(6, false);
  ImgPrcContext* c = &t.ctx;
  c->rotationRecord = nullptr;
  const uint8_t* np[3] = {nullptr, nullptr, nullptr};
  uint32_t ns[3] = {0, 0, 0};
  LineSet three(64, 3);
  uint8_t d[8];
  constexpr uint32_t kNo = 0xFFFFFFFFu;
  EXPECT_EQ(_ORUYCbCr420ToARGB32Rot(c, np, ns, 4, 4, 0), kNo);
  EXPECT_EQ(_ORUYCbCr420ToRGB888RszRot(c, np, ns, 4, 4, 8, 8), kNo);
  EXPECT_EQ(_ORUYCbCr420ToABGR32RszRot(c, np, ns, 4, 4, 8, 0, 0), 0u);
  EXPECT_EQ(_ORUYCbCr420ToARGB32RszUp(c, three.ptr, np, ns, 4, 4, d, 8, 8, 8, 0), kNo);
  EXPECT_EQ(_ORUYCbCr420ToRGB888RszUp(c, nullptr, np, ns, 4, 4, d, 8, 8, 8), kNo);
  EXPECT_EQ(_ORUYCbCr420ToABGR32Case1(c, three.ptr, np, ns, 4, d, 8, 8, 0), kNo);
  EXPECT_EQ(_ORUYCbCr420ToABGR32Case2(c, nullptr, np, ns, 4, 4, d, 8, 0, 0), 0u);
  EXPECT_EQ(_ORUYCbCr420ToRGB888(c, np, ns, 4, 0, d, 8), 0u);
  // The 4:2:2 and 4:4:4 members report 0 and write nothing.
  EXPECT_EQ(_ORUYCbCr444ToRGB888RszRot(c, np, ns, 4, 4, 8, 8), 0u);
  EXPECT_EQ(_ORUYCbCr422ToRGB565(c, np, ns, 4, 0, d, 8), 0u);
}

}  // namespace
