// Deinterlacing through the image processor: a frame call with a mode set
// deinterlaces the caller's picture into the instance's work area and
// converts from there; the mode stays in force for later frames that pass 0.
// Conversion 0x000 at the same size is a plain planar copy, so what comes out
// is the deinterlaced picture itself.
#include <gtest/gtest.h>

#include <string.h>

#include "deint_test_pictures.h"
#include "imageproc/oru_imageproc.h"

using namespace deint_test;

namespace {

constexpr unsigned kW = 32, kH = 16;

struct Instance {
  void* handle = nullptr;
  explicit Instance(unsigned w = kW, unsigned h = kH) {
    ImgPrcCreateParams p{};
    p.size = sizeof p;
    p.format = 0x000;
    p.srcWidth = p.dstWidth = w;
    p.srcHeight = p.dstHeight = h;
    EXPECT_EQ(ORU_IMAGEPROC_Create(&handle, 0, &p), IMGPRC_OK);
  }
  ~Instance() { ORU_IMAGEPROC_Destroy(handle); }
};

// A 4:2:0 source with strides wider than the picture (the work area's stride
// is the width rounded up to 16) and a destination of exact size.
Picture source(uint32_t seed) {
  std::mt19937 rng(seed);
  Picture p;
  p.planes[0] = random_plane(kH, kW + 8, kW + 8, rng);
  p.planes[1] = random_plane(kH / 2, kW / 2 + 4, kW / 2 + 4, rng);
  p.planes[2] = random_plane(kH / 2, kW / 2 + 4, kW / 2 + 4, rng);
  return p;
}

Picture destination(unsigned width = kW, unsigned height = kH) {
  Picture p;
  for (int i = 0; i < 3; ++i) {
    unsigned w = i ? width / 2 : width, h = i ? height / 2 : height;
    p.planes[i].pitch = w;
    p.planes[i].bytes.assign(size_t(w) * h, 0xEE);
  }
  return p;
}

uint32_t frame(Instance& inst, Picture& src, Picture& dst, uint32_t mode) {
  DeintPicture s = src.record(), d = dst.record();
  ImgPrcFrameParams f{sizeof f, 0, mode};
  return ORU_IMAGEPROC_ProcessFrame(inst.handle, s.planes, s.pitches, d.planes, d.pitches, &f);
}

using Rule = std::pair<unsigned, unsigned> (*)(unsigned);

// Expected picture: each destination pixel from two source lines of its plane.
void expect_lines(const Picture& src, const Picture& dst, Rule rule, const char* what) {
  for (int i = 0; i < 3; ++i) {
    unsigned w = i ? kW / 2 : kW, h = i ? kH / 2 : kH;
    for (unsigned y = 0; y < h; ++y) {
      auto [a, b] = rule(y);
      for (unsigned x = 0; x < w; ++x)
        ASSERT_EQ(dst.planes[i].at(y, x), avg_down(src.planes[i].at(a, x), src.planes[i].at(b, x)))
            << what << ": plane " << i << " line " << y << " x " << x;
    }
  }
}

std::pair<unsigned, unsigned> discard(unsigned y) { return {y & ~1u, y & ~1u}; }
std::pair<unsigned, unsigned> blend(unsigned y) { return {y ? y - 1 : 0, y}; }
std::pair<unsigned, unsigned> copy(unsigned y) { return {y, y}; }

TEST(DeinterlaceThroughImageProcessor, ModeOnceSetStaysForFramesPassing0) {
  const struct {
    uint32_t mode;
    Rule rule;
    const char* what;
  } frames[] = {{2, discard, "frame 1, mode 2 (discard, field 0)"},
                {0, discard, "frame 2, mode 0 after 2"},
                {4, blend, "frame 3, mode 4 (blend)"},
                {0, blend, "frame 4, mode 0 after 4"}};
  Instance inst;
  uint32_t seed = 1;
  for (const auto& f : frames) {
    Picture src = source(seed++), dst = destination();
    ASSERT_EQ(frame(inst, src, dst, f.mode), IMGPRC_OK);
    expect_lines(src, dst, f.rule, f.what);
  }
}

TEST(DeinterlaceThroughImageProcessor, WithoutAModeThePictureIsCopied) {
  Instance inst;
  Picture src = source(5), dst = destination();
  ASSERT_EQ(frame(inst, src, dst, 0), IMGPRC_OK);
  expect_lines(src, dst, copy, "no mode");
}

TEST(DeinterlaceThroughImageProcessor, FastFilterOnAnInterlacedPicture) {
  // Two fields of a vertical edge, the odd field moved 4 columns: mode 1 keeps
  // the even lines and filters the odd ones from their column.
  Instance inst;
  Picture src = source(6), want = destination();
  for (int i = 0; i < 3; ++i) {
    Plane& p = src.planes[i];
    unsigned w = i ? kW / 2 : kW, h = i ? kH / 2 : kH;
    for (unsigned y = 0; y < h; ++y)
      for (unsigned x = 0; x < w; ++x) p.row(y)[x] = x >= w / 2 + (y % 2 ? 4 : 0) ? 220 : 30;
    fast_reference(want.planes[i], p, w, h);
  }
  Picture dst = destination();
  ASSERT_EQ(frame(inst, src, dst, 1), IMGPRC_OK);
  expect_same(dst, want);
  // Where the fields disagree (columns w/2 .. w/2+3) the odd lines lean to
  // the even field: -30 + 4·220 + 2·30 + 4·220 - 30 + 4 = 1764 >> 3 = 220.
  EXPECT_EQ(dst.planes[0].at(5, kW / 2 + 1), 220);
}

TEST(DeinterlaceThroughImageProcessor, PictureCutOutOfAWiderFrameComesOutAsWithATightPitch) {
  // A 16 x 16 picture inside a 1920-wide frame: the work area's lines are 16
  // bytes, so the line-doubling and merging modes must not copy whole source
  // pitches into it (AddressSanitizer sees any byte past the area).
  for (uint32_t mode = 2; mode <= 6; ++mode) {
    SCOPED_TRACE(testing::Message() << "mode " << mode);
    std::mt19937 rng(mode);
    Picture wide, tight;
    for (int i = 0; i < 3; ++i) {
      const unsigned w = i ? 8 : 16, pitch = i ? 960 : 1920;
      wide.planes[i] = random_plane(w, pitch, pitch, rng);
      tight.planes[i].pitch = w;
      for (unsigned y = 0; y < w; ++y)  // planes are w lines high too (16 x 16, 4:2:0)
        tight.planes[i].bytes.insert(tight.planes[i].bytes.end(), wide.planes[i].row(y),
                                     wide.planes[i].row(y) + w);
    }
    Instance a(16, 16), b(16, 16);
    Picture fromWide = destination(16, 16), fromTight = destination(16, 16);
    ASSERT_EQ(frame(a, wide, fromWide, mode), IMGPRC_OK);
    ASSERT_EQ(frame(b, tight, fromTight, mode), IMGPRC_OK);
    expect_same(fromWide, fromTight);
  }
}

}  // namespace
