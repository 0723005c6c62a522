// ARGB32, ABGR32 and RGB888 from 4:2:0, and 4:2:2 / 4:4:4 to RGB, against the
// shared references with each family's colour step, packing and store: random
// tables (wide ones clamp most channels at 0 and 255), padded strides, every
// rotation, alpha 0, 0x7F, 0x80 and 0xFF, sources cut to the bytes the
// reference reads and destinations exactly as large as what it writes.
#include <gtest/gtest.h>

#include <string>

#include "imageproc/color_affine.h"
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
  const uint32_t a = Is32(f) ? (alpha & 0xFF) << 24 : 0;
  return [f, &t, a](uint8_t y, uint8_t cb, uint8_t cr) -> uint32_t {
    const uint32_t v = RefRgb8(t, y, cb, cr);
    if (f == Fam::Rgb565) return Ref565(t, y, cb, cr);
    return a | (f == Fam::Abgr ? (v & 0xFF) << 16 | (v & 0xFF00) | v >> 16 : v);
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

// Least row bytes of a run's layout, plus its pad.
int32_t PitchOf(const KRun& r) {
  const bool same = r.m == M::Plain || r.m == M::Rot || r.m == M::Plain422;
  const int32_t w = QuarterTurn(r.rot) ? r.dh : same ? r.sw : r.dw;
  const int64_t bytes = BlockRows(r.m) && Is32(r.f) ? 8 : r.m == M::Rsz422 ? 4 : PixelBytes(r.f);
  return static_cast<int32_t>(bytes * (w + (w & 1))) + r.pad;
}

Picture MakePicture(const KRun& r, int32_t sw, int32_t sh) {
  const int cols = r.m == M::RszRot444 ? 1 : 2, rows = r.m >= M::Plain422 ? 1 : 2;
  return Picture(sw, sh, r.pad / 2 + 1, static_cast<uint32_t>(sw * 31 + r.dh + r.rot), sh + 8, cols, rows);
}

// ---- Through the frame call: the resize case picks the member ---------------

struct Route {
  uint32_t format, rotation, resizeMode;
  int32_t sw, sh, dw, dh;
  uint32_t resizeCase;
  M m;
};

// Every member of every family, rotating members in every orientation. Odd
// sizes are rounded down to even by set-up; the kernels' odd-size walk is
// tested apart below.
std::vector<Route> AllRoutes() {
  std::vector<Route> v;
  for (uint32_t out : {4u, 5u, 9u}) {
    const bool b32 = out != 4;
    for (uint32_t rot = 1; rot <= 5; ++rot) {
      v.push_back({out, rot, 1, 36, 20, 36, 20, 0, M::Rot});
      v.push_back({out, rot, rot & 1, 36, 20, rot < 3 ? 50 : 20, 12, rot < 3 ? 1u : 3u, M::RszRot});
    }
    v.push_back({out, 0, 1, 37, 21, 37, 21, 0, M::Plain});
    v.push_back({out, 0, 1, 36, 20, 50, 16, 1, M::Rsz});
    v.push_back({out, 0, 1, 36, 20, 20, 12, 3, M::Rsz});
    v.push_back({out, 0, 0, 36, 20, 80, 44, 2, M::RszUp});
    v.push_back({out, 0, 1, 36, 20, 72, 40, 4, M::RszUp});
    v.push_back({out, 0, 1, 16, 8, 40, 16, 5, b32 ? M::Case1 : M::RszUp});
    v.push_back({out, 0, 1, 16, 8, 24, 16, 6, b32 ? M::Case2 : M::RszUp});
  }
  v.push_back({0x005, 0, 1, 320, 240, 480, 272, 7, M::RszUp});
  v.push_back({0x103, 0, 1, 36, 20, 36, 20, 0, M::Plain422});
  v.push_back({0x103, 2, 1, 36, 20, 50, 30, 2, M::Rsz422});  // rotation ignored
  v.push_back({0x103, 0, 1, 36, 20, 20, 30, 1, M::Rsz422});
  for (uint32_t code : {0x105u, 0x109u, 0x203u, 0x204u, 0x205u, 0x209u})
    for (uint32_t rot = 0; rot <= 5; ++rot)
      v.push_back({code, rot, 1, 36, 20, rot & 1 ? 36 : 50, rot & 1 ? 20 : 16, rot & 1 ? 0u : 1u,
                   code < 0x200 ? M::RszRot422 : M::RszRot444});
  return v;
}

class Rgb8Frame : public testing::TestWithParam<Route> {};

TEST_P(Rgb8Frame, MatchesTheMemberItsCaseSelects) {
  const Route& rt = GetParam();
  const uint32_t out = rt.format & 0xFF;
  const Fam fam = out == 4 ? Fam::Rgb888 : out == 5 ? Fam::Argb : out == 9 ? Fam::Abgr : Fam::Rgb565;
  const uint32_t alphas[] = {0x100, 0x7F, 0x280, 0xFF};  // only the low byte counts
  ImgPrcCreateParams p = {};
  p.size = sizeof p, p.format = rt.format, p.rotation = rt.rotation, p.resizeMode = rt.resizeMode;
  p.srcWidth = rt.sw, p.srcHeight = rt.sh, p.dstWidth = rt.dw, p.dstHeight = rt.dh;
  p.alpha = alphas[(rt.sw + rt.dw + rt.rotation + rt.format) % 4];
  void* h = nullptr;
  ASSERT_EQ(ORU_IMAGEPROC_Create(&h, 0, &p), IMGPRC_OK);
  ImgPrcContext& ctx = *static_cast<ImgPrcContext*>(h);
  EXPECT_EQ(ctx.resizeCase, rt.resizeCase);
  // The 4:2:2 RGB565 path ignores rotation. Pitches stay even: 32-bit cursors
  // halve the steps to even bytes.
  const KRun r = {rt.m,
                  fam,
                  int32_t(ctx.workSrcWidth),
                  int32_t(ctx.workSrcHeight),
                  int32_t(ctx.workDstWidth),
                  int32_t(ctx.workDstHeight),
                  rt.format == 0x103 ? 0 : int(rt.rotation),
                  4,
                  p.alpha};
  const int32_t pitch = PitchOf(r);
  for (bool wide : {false, true}) {  // random tables in place of the instance's own
    SCOPED_TRACE(wide ? "wide tables" : "narrow tables");
    const Tables t(static_cast<uint32_t>(rt.sw * 7 + rt.dw * 3 + rt.rotation + wide), wide);
    memcpy(ctx.rangeTableY, t.y.data(), 512);
    memcpy(ctx.rangeTableCb, t.cb.data(), 2048);
    memcpy(ctx.rangeTableCr, t.cr.data(), 2048);
    // Refitted as a rebuild would: the vector rows follow the integer forms.
    ImgPrcFitAffineTables(ctx.rangeTableY, ctx.rangeTableCb, ctx.rangeTableCr, &ctx.affine);
    Picture pic = MakePicture(r, rt.sw, rt.sh);
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
  }
  ORU_IMAGEPROC_Destroy(h);
}

INSTANTIATE_TEST_SUITE_P(Routes, Rgb8Frame, testing::ValuesIn(AllRoutes()), [](const auto& i) {
  const Route& r = i.param;
  char name[80];
  snprintf(name, sizeof name, "x%03X_%dx%d_to_%dx%d_rot%u_case%u_%s", r.format, r.sw, r.sh, r.dw, r.dh,
           r.rotation, r.resizeCase, kMemberNames[int(r.m)]);
  return std::string(name);
});

// ---- Called directly ---------------------------------------------------------

TEST(Rgb8Kernels, OddSizesAreWalkedAsTheNextEvenOne) {
  const KRun runs[] = {{M::Plain, Fam::Argb, 5, 3, 5, 3, 0, 5, 0x80},
                       {M::Plain, Fam::Rgb888, 1, 1, 1, 1, 0, 3, 0},
                       {M::Plain422, Fam::Rgb565, 5, 3, 5, 3, 0, 3, 0}};  // odd pitch, used rounded down
  for (const KRun& r : runs) {
    Tables t(static_cast<uint32_t>(r.sw), true);
    const int32_t pitch = PitchOf(r);
    Picture pic = MakePicture(r, r.sw, r.sh);
    Canvas cv(1024);
    Render(r, cv, t, pic, pitch, {});
    pic.Cut();
    auto dst = cv.Target();
    const auto* s = pic.planes();
    uint32_t* st = pic.strides();
    EXPECT_EQ(r.m == M::Plain422 ? _ORUYCbCr422ToRGB565(&t.ctx, s, st, r.sw, r.sh, dst.data(), pitch)
              : r.f == Fam::Argb ? _ORUYCbCr420ToARGB32(&t.ctx, s, st, r.sw, r.sh, dst.data(), pitch, r.alpha)
                                 : _ORUYCbCr420ToRGB888(&t.ctx, s, st, r.sw, r.sh, dst.data(), pitch),
              0u);
    cv.ExpectEqual(dst);
  }
}

TEST(Rgb8Kernels, MissingRecordsAreRefusedExceptWhereAllReturnZero) {
  Tables t(6, false);
  ImgPrcContext* c = &t.ctx;
  c->rotationRecord = nullptr;
  const uint8_t* np[3] = {nullptr, nullptr, nullptr};
  uint32_t ns[3] = {0, 0, 0};
  LineSet three(64, 3);
  uint8_t d[8];
  EXPECT_EQ(_ORUYCbCr420ToARGB32Rot(c, np, ns, 4, 4, 0), 0xFFFFFFFFu);
  EXPECT_EQ(_ORUYCbCr420ToRGB888RszRot(c, np, ns, 4, 4, 8, 8), 0xFFFFFFFFu);
  EXPECT_EQ(_ORUYCbCr420ToARGB32RszUp(c, three.ptr, np, ns, 4, 4, d, 8, 8, 8, 0), 0xFFFFFFFFu);
  EXPECT_EQ(_ORUYCbCr420ToABGR32Case1(c, three.ptr, np, ns, 4, d, 8, 8, 0), 0xFFFFFFFFu);
  EXPECT_EQ(_ORUYCbCr420ToABGR32Case2(c, nullptr, np, ns, 4, 4, d, 8, 0, 0), 0u);  // no rows
  EXPECT_EQ(_ORUYCbCr444ToRGB888RszRot(c, np, ns, 4, 4, 8, 8), 0u);  // these members always report 0
}

}  // namespace
