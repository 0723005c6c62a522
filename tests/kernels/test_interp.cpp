// Line interpolators on crafted and random lines. Expected values are worked
// field by field (sums of 6- and 5-bit fields divided by the weight total), so
// they also show that no carry leaves its field.
#include <gtest/gtest.h>

#include <cmath>
#include <random>
#include <vector>

#include "imageproc/interp.h"
#include "kernels/yuv420_rgb16.h"
#include "rgb16_kernel_ref.h"

using namespace rgb16test;

namespace {

std::vector<uint64_t> RandomSpread(size_t n, uint32_t seed) {
  std::mt19937 rng(seed);
  std::vector<uint64_t> v(n);
  for (auto& e : v) e = Spread(rng() & 63, rng() & 63, rng() & 31);
  return v;
}

uint16_t Pixel(const std::vector<uint8_t>& out, size_t k) {  // k-th pixel of 64-bit pair entries
  uint16_t v;
  memcpy(&v, &out[(k / 2) * 8 + (k % 2) * 2], 2);
  return v;
}

void ExpectHighHalvesZero(const std::vector<uint8_t>& out) {
  for (size_t e = 0; e + 8 <= out.size(); e += 8) {
    uint32_t hi;
    memcpy(&hi, &out[e + 4], 4);
    EXPECT_EQ(hi, 0u) << "entry " << e / 8;
  }
}

// Neutral BT.601 video-range luma entry and chroma terms, from the table
// formula: (i - 16) x 1.1644 x 128 + 0.5, truncated; chroma 128 gives 0 terms.
Tables NeutralAt128() {
  Tables t(1, false);
  const double gain = static_cast<double>(1.1644f);
  for (int i = 0; i < 256; ++i) {
    const double v = std::trunc((i - 16) * gain * 128 + 0.5);
    t.y[i] = static_cast<uint16_t>(std::min(std::max(v, 0.0), 65535.0));
  }
  t.cb[128] = 0;
  t.cr[128] = 0;
  return t;
}

TEST(Convert, NeutralWhiteIsFullScale) {
  const Tables t = NeutralAt128();
  ASSERT_EQ(t.y[235], 32640);
  const uint8_t y[2] = {235, 235}, c[1] = {128};
  std::vector<uint64_t> o0(2), o1(2);
  Convert(&t.ctx, y, y, c, c, o0.data(), o1.data(), 2);
  for (uint64_t e : {o0[0], o0[1], o1[0], o1[1]}) {
    EXPECT_EQ(RedOf(e), 63u);
    EXPECT_EQ(GreenOf(e), 63u);
    EXPECT_EQ(BlueOf(e), 31u);
    EXPECT_EQ(e & ~kMask, 0u);
  }
}

TEST(Convert, MatchesColourStepOnRandomLines) {
  for (bool wide : {false, true}) {
    const Tables t(11 + wide, wide);
    for (int32_t width : {1, 2, 7, 14, 33}) {
      const int32_t pairs = std::max(1, width / 2);
      std::mt19937 rng(width);
      std::vector<uint8_t> y0(2 * pairs), y1(2 * pairs), cb(pairs), cr(pairs);
      for (auto* v : {&y0, &y1, &cb, &cr})
        for (auto& s : *v) s = static_cast<uint8_t>(rng());
      std::vector<uint64_t> o0(2 * pairs), o1(2 * pairs), b0(2 * pairs), b1(2 * pairs);
      std::vector<uint16_t> p0(2 * pairs), p1(2 * pairs);
      Convert(&t.ctx, y0.data(), y1.data(), cb.data(), cr.data(), o0.data(), o1.data(), width);
      ConvertBGR(&t.ctx, y0.data(), y1.data(), cb.data(), cr.data(), b0.data(), b1.data(), width);
      Convert_565(&t.ctx, y0.data(), y1.data(), cb.data(), cr.data(), p0.data(), p1.data(), width);
      for (int32_t i = 0; i < 2 * pairs; ++i) {
        for (const auto& [y, o, b, p] :
             {std::tuple{y0[i], o0[i], b0[i], p0[i]}, {y1[i], o1[i], b1[i], p1[i]}}) {
          const uint64_t e = RefSpread(t, y, cb[i / 2], cr[i / 2]);
          EXPECT_EQ(o, e) << width << " " << i;
          // Red and blue exchanged: 5-bit blue in the red field, 6-bit red at 0.
          EXPECT_EQ(b, uint64_t{BlueOf(e)} << 21 | uint64_t{GreenOf(e)} << 10 | RedOf(e));
          EXPECT_EQ(p, Ref565(t, y, cb[i / 2], cr[i / 2]));
        }
      }
    }
  }
}

TEST(Convert, BlockFormPutsLeftSampleInLowByte) {
  const Tables t(5, false);
  uint32_t out[4];
  _convert(&t.ctx, out, 0x2010, 0x4030, 77, 200);
  EXPECT_EQ(out[0], RefSpread(t, 0x10, 77, 200));
  EXPECT_EQ(out[1], RefSpread(t, 0x20, 77, 200));
  EXPECT_EQ(out[2], RefSpread(t, 0x30, 77, 200));
  EXPECT_EQ(out[3], RefSpread(t, 0x40, 77, 200));
}

TEST(VLerp, EndWeightsCopyAndEveryWeightStaysInFields) {
  const auto a = RandomSpread(37, 1), b = RandomSpread(37, 2);
  std::vector<uint64_t> out(37);
  VLerp(a.data(), b.data(), out.data(), 0, 37);
  EXPECT_EQ(out, a);
  VLerp(a.data(), b.data(), out.data(), 32, 37);
  EXPECT_EQ(out, b);
  for (uint32_t w = 0; w <= 32; ++w) {
    VLerp(a.data(), b.data(), out.data(), w, 37);
    EXPECT_EQ(out, Blend(a, b, w, 32)) << "w " << w;
  }
  const auto c = RandomSpread(19, 3), d = RandomSpread(19, 4);  // the half, exact sizes
  std::vector<uint64_t> half(19);
  VLerp_12(c.data(), d.data(), half.data(), 19);
  EXPECT_EQ(half, Blend(c, d, 1, 2));
  // Saturated fields at every weight stay inside the mask.
  const std::vector<uint64_t> full(4, kMask), zero(4, 0);
  for (int32_t w = 0; w <= 32; ++w) {
    VLerp(full.data(), zero.data(), out.data(), w, 4);
    EXPECT_EQ(out[0] & ~kMask, 0u);
  }
}

// The 16-bit pixels (in 64-bit pair entries, upper halves zero) and 32-bit
// pixels a stretch writes, against the blends of its phases.
void ExpectPhases(const std::vector<Terms>& phases, const std::vector<uint8_t>& out,
                  const std::vector<uint32_t>& out32, uint32_t alpha) {
  ASSERT_EQ(out.size(), phases.size() * 4);
  ASSERT_EQ(out32.size(), phases.size());
  ExpectHighHalvesZero(out);
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
      for (int32_t k = 0; k < pixels; ++k) {  // 24-bit: the 32-bit pixel's bytes without alpha
        const uint32_t v = Blend32(phases[k], 0);
        EXPECT_EQ(out24[3 * k] | out24[3 * k + 1] << 8 | out24[3 * k + 2] << 16, v);
      }

      // The rotated form writes the same pixels pixelStep apart.
      const int32_t pixelStep = -3;
      std::vector<uint8_t> rot(static_cast<size_t>((pixels - 1) * 3 + 1) * 2, 0xEE);
      HLerpRot(src.data(), rot.data() + (pixels - 1) * 6, step, width, pixelStep);
      for (int32_t k = 0; k < pixels; ++k) {
        uint16_t v;
        memcpy(&v, &rot[(pixels - 1 - k) * 6], 2);
        EXPECT_EQ(v, Pixel(out, k));
      }
    }
  }
}

TEST(HLerp, ThirtyTwoBitUnblendedIsFieldTimesFourOrEight) {
  const std::vector<uint64_t> src = {Spread(63, 63, 31), Spread(1, 2, 3), 0};
  std::vector<uint32_t> out(2);
  HLerp32(src.data(), out.data(), 0x10000, 2, 0);
  EXPECT_EQ(out[0], 0x00FCFCF8u);
  EXPECT_EQ(out[1], 0x00040818u);
}

TEST(HLerpNearest, IsAnExactBresenhamStretch) {
  for (auto [srcW, n] : {std::pair{5, 12}, {7, 8}, {3, 30}, {16, 16}, {9, 2}, {10, 4}}) {
    std::vector<uint16_t> src(srcW);
    for (int i = 0; i < srcW; ++i) src[i] = static_cast<uint16_t>(0x1000 * i + 0x0F0F + i);
    std::vector<uint8_t> out(n / 2 * 8);
    HLerp_Nearest(src.data(), out.data(), n, srcW / n, srcW % n);
    ExpectHighHalvesZero(out);
    for (int k = 0; k < n; ++k)
      EXPECT_EQ(Pixel(out, k), src[k * srcW / n]) << srcW << "->" << n << " at " << k;
  }
}

TEST(HLerp25, FixedPhaseWeightsAndLastPixelTwice) {
  for (int32_t width : {4, 8, 20, 6}) {
    SCOPED_TRACE(width);
    const int32_t rounds = width >> 2;
    const Line src = RandomSpread(4 * rounds, width);  // nothing past the last round is read
    std::vector<uint8_t> out(5 * rounds * 8);
    std::vector<uint32_t> out32(10 * rounds);
    HLerp_25(src.data(), out.data(), width);
    HLerp32_25(src.data(), out32.data(), width, 0x7F);
    ExpectPhases(Phases25(src), out, out32, 0x7F);
    EXPECT_EQ(Pixel(out, 10 * rounds - 1), Pixel(out, 10 * rounds - 2));
  }
}

TEST(HLerp25, PhaseWeightsOnACraftedEdge) {
  // Red only: a = 0, b = 63, c = 0 gives red sums 0, 189/8, 1575/32, 819/16, 1197/32.
  const std::vector<uint64_t> src = {0, Spread(63, 0, 0), 0, 0};
  std::vector<uint8_t> out(5 * 8);
  HLerp_25(src.data(), out.data(), 4);
  const uint16_t red[5] = {0, 189 / 16, 1575 / 64, 819 / 32, 1197 / 64};
  for (int k = 0; k < 5; ++k) EXPECT_EQ(Pixel(out, k), red[k] << 11) << k;
}

TEST(HLerp23, ThirdsRoundedToThirtySeconds) {
  for (int32_t width : {4, 8, 12, 2}) {
    SCOPED_TRACE(width);
    const int32_t rounds = std::max(1, width >> 2);
    const Line src = RandomSpread(4 * rounds, 40 + width);
    std::vector<uint8_t> out(3 * rounds * 8);
    std::vector<uint32_t> out32(6 * rounds);
    HLerp_23(src.data(), out.data(), width);
    HLerp32_23(src.data(), out32.data(), width, 0);
    ExpectPhases(Phases23(src), out, out32, 0);
  }
}

TEST(DoubleLine, AveragesLeftNeighbourInPlace) {
  for (int32_t count : {1, 2, 11}) {
    const auto a = RandomSpread(count, 60 + count), b = RandomSpread(count, 70 + count);
    std::vector<uint64_t> la = a, lb = b;  // converted in place
    DoubleLine(reinterpret_cast<uint16_t*>(la.data()), reinterpret_cast<uint16_t*>(lb.data()), la.data(),
               lb.data(), count);
    for (const auto* pair : {&a, &b}) {
      const auto& in = *pair;
      const auto& line = pair == &a ? la : lb;
      std::vector<uint8_t> bytes(line.size() * 8);
      memcpy(bytes.data(), line.data(), bytes.size());
      for (int32_t i = 0; i < count; ++i) {
        const uint64_t prev = in[i > 0 ? i - 1 : 0], e = in[i];
        uint16_t even, odd;
        memcpy(&even, &bytes[4 * i], 2);
        memcpy(&odd, &bytes[4 * i + 2], 2);
        EXPECT_EQ(even, Blend565({{1, prev}, {1, e}}, 2)) << count << " " << i;
        EXPECT_EQ(odd, Blend565({{1, e}}, 1));
      }
    }
  }
}

}  // namespace
