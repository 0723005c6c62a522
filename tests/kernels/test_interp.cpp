// Line interpolators on random lines. Expected values are worked field by
// field (sums of 6- and 5-bit fields divided by the weight total), so they also
// show that no carry leaves its field.
#include <gtest/gtest.h>

#include <random>
#include <vector>

#include "imageproc/interp.h"
#include "kernel_ref.h"
#include "kernels/yuv420_rgb16.h"

using namespace kref;

namespace {

Line RandomSpread(size_t n, uint32_t seed) {
  std::mt19937 rng(seed);
  Line v(n);
  for (auto& e : v) e = Spread(rng() & 63, rng() & 63, rng() & 31);
  return v;
}

// The k-th 16-bit pixel of 64-bit pair entries, whose upper halves are zero.
uint16_t Pixel(const std::vector<uint8_t>& out, size_t k) {
  uint16_t v;
  uint32_t hi;
  memcpy(&v, &out[(k / 2) * 8 + (k % 2) * 2], 2);
  memcpy(&hi, &out[(k / 2) * 8 + 4], 4);
  EXPECT_EQ(hi, 0u) << "entry " << k / 2;
  return v;
}

TEST(Convert, MatchesColourStepOnRandomLines) {
  for (bool wide : {false, true}) {
    const Tables t(11 + wide, wide);
    for (int32_t width : {1, 2, 7, 14, 33}) {
      const int32_t pairs = std::max(1, width / 2);
      std::mt19937 rng(width);
      std::vector<uint8_t> y[2] = {std::vector<uint8_t>(2 * pairs), std::vector<uint8_t>(2 * pairs)};
      std::vector<uint8_t> cb(pairs), cr(pairs);
      for (auto* v : {&y[0], &y[1], &cb, &cr})
        for (auto& s : *v) s = static_cast<uint8_t>(rng());
      Line o[2] = {Line(2 * pairs), Line(2 * pairs)}, b[2] = {Line(2 * pairs), Line(2 * pairs)};
      std::vector<uint16_t> p[2] = {std::vector<uint16_t>(2 * pairs), std::vector<uint16_t>(2 * pairs)};
      Convert(&t.ctx, y[0].data(), y[1].data(), cb.data(), cr.data(), o[0].data(), o[1].data(), width);
      ConvertBGR(&t.ctx, y[0].data(), y[1].data(), cb.data(), cr.data(), b[0].data(), b[1].data(), width);
      Convert_565(&t.ctx, y[0].data(), y[1].data(), cb.data(), cr.data(), p[0].data(), p[1].data(), width);
      for (int row = 0; row < 2; ++row)
        for (int32_t i = 0; i < 2 * pairs; ++i) {
          const uint8_t yv = y[row][i], u = cb[i / 2], v = cr[i / 2];
          EXPECT_EQ(o[row][i], RefSpread(t, yv, u, v)) << width << " " << i;
          EXPECT_EQ(b[row][i], RefSpread(t, yv, u, v, true)) << width << " " << i;
          EXPECT_EQ(p[row][i], Ref16(t, yv, u, v)) << width << " " << i;
        }
    }
    // The block form puts the left sample of each pair in the low byte.
    uint32_t out[4];
    _convert(&t.ctx, out, 0x2010, 0x4030, 77, 200);
    for (int i = 0; i < 4; ++i) EXPECT_EQ(out[i], RefSpread(t, uint8_t(0x10 * (i + 1)), 77, 200));
  }
}

TEST(VLerp, EveryWeightStaysInFields) {
  const Line a = RandomSpread(37, 1), b = RandomSpread(37, 2), full(4, kMask), zero(4, 0);
  Line out(37);
  for (uint32_t w = 0; w <= 32; ++w) {
    VLerp(a.data(), b.data(), out.data(), w, 37);
    EXPECT_EQ(out, Blend(a, b, w, 32)) << "w " << w;
    VLerp(full.data(), zero.data(), out.data(), w, 4);  // saturated fields stay inside the mask
    EXPECT_EQ(out[0] & ~kMask, 0u);
  }
  const Line c = RandomSpread(19, 3), d = RandomSpread(19, 4);  // the half, exact sizes
  Line half(19);
  VLerp_12(c.data(), d.data(), half.data(), 19);
  EXPECT_EQ(half, Blend(c, d, 1, 2));
}

// The 16-bit pixels and 32-bit pixels a stretch writes, against the blends of its phases.
void ExpectPhases(const std::vector<Terms>& phases, const std::vector<uint8_t>& out,
                  const std::vector<uint32_t>& out32, uint32_t alpha) {
  ASSERT_EQ(out.size(), phases.size() * 4);
  ASSERT_EQ(out32.size(), phases.size());
  for (size_t k = 0; k < phases.size(); ++k) {
    EXPECT_EQ(Pixel(out, k), Blend565(phases[k], 32)) << "pixel " << k;
    EXPECT_EQ(out32[k], Blend32(phases[k], alpha)) << "pixel " << k;
  }
}

TEST(HLerp, StepsBlendNeighboursWithFiveBitWeights) {
  for (uint32_t step : {0x0u, 0x5555u, 0x8000u, 0x9ABCu, 0x10000u, 0x1F00Fu}) {
    for (int32_t width : {1, 2, 9, 10, 24}) {
      SCOPED_TRACE(testing::Message() << "step " << step << " width " << width);
      const int32_t pixels = 2 * std::max(1, width / 2);
      const uint32_t lastPos = (pixels - 1) * step;
      const Line src = RandomSpread((lastPos >> 16) + 2, step + width);  // one entry past the last position
      const auto phases = LinearPhases(src, step, width);
      std::vector<uint8_t> out(pixels / 2 * 8), out24(pixels * 3);
      std::vector<uint32_t> out32(pixels);
      HLerp(src.data(), out.data(), step, width);
      HLerp32(src.data(), out32.data(), step, width, 0xA5);
      HLerp24(src.data(), out24.data(), step, width);
      ExpectPhases(phases, out, out32, 0xA5);
      // 24-bit: the 32-bit pixel's bytes without alpha. The rotated form
      // writes the 16-bit pixels pixelStep (-3 pixels) apart.
      std::vector<uint8_t> rot(static_cast<size_t>((pixels - 1) * 3 + 1) * 2, 0xEE);
      HLerpRot(src.data(), rot.data() + (pixels - 1) * 6, step, width, -3);
      for (int32_t k = 0; k < pixels; ++k) {
        EXPECT_EQ(out24[3 * k] | out24[3 * k + 1] << 8 | out24[3 * k + 2] << 16, Blend32(phases[k], 0));
        EXPECT_EQ(rot[(pixels - 1 - k) * 6] | rot[(pixels - 1 - k) * 6 + 1] << 8, Pixel(out, k));
      }
    }
  }
}

// The fixed 2.5x and 1.5x stretches: nothing past the last round of four is
// read, and the last pixel stands in for the one past the line.
TEST(HLerpFixed, PhaseWeightsOfBothRatios) {
  struct Ratio {
    void (*f16)(const uint64_t*, uint8_t*, int32_t);
    void (*f32)(const uint64_t*, uint32_t*, int32_t, uint32_t);
    std::vector<Terms> (*phases)(const Line&);
    int32_t perRound;
  };
  for (const Ratio& q : {Ratio{HLerp_25, HLerp32_25, Phases25, 10}, Ratio{HLerp_23, HLerp32_23, Phases23, 6}})
    for (int32_t width : {4, 8, 20, 6, 12, 2}) {
      SCOPED_TRACE(testing::Message() << q.perRound << " per round, width " << width);
      if (q.perRound == 10 && width < 4) continue;
      const int32_t rounds = std::max(1, width >> 2);
      const Line src = RandomSpread(4 * rounds, width + q.perRound);
      std::vector<uint8_t> out(q.perRound * rounds * 4);
      std::vector<uint32_t> out32(q.perRound * rounds);
      q.f16(src.data(), out.data(), width);
      q.f32(src.data(), out32.data(), width, 0x7F);
      ExpectPhases(q.phases(src), out, out32, 0x7F);
    }
}

}  // namespace
