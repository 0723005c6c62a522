// RGB inputs: the 24 RGB to YCbCr 4:2:0 members against one reference walk,
// plain and rotated frames, and RGB to RGB in every rotation.
#include <gtest/gtest.h>
#include <string.h>

#include <algorithm>

#include "imageproc/imgprc_alloc.h"
#include "imageproc/pipeline.h"
#include "imageproc_test_util.h"
#include "kernels/rgb_convert.h"
#include "support/pictures.h"

namespace {

using scrimtest::I420;
using scrimtest::Rng;

// Weights of R, G, B for Y, then Cb, then Cr: [full range][matrix][9].
// clang-format off
const int kWeights[2][4][9] = {
    {{65, 129, 25, -38, -74, 112, 112, -94, -18}, {46, 157, 15, -25, -86, 112, 112, -102, -10},
     {46, 154, 19, -26, -86, 112, 112, -100, -12}, {65, 129, 24, -37, -74, 112, 112, -94, -17}},
    {{76, 150, 29, -43, -84, 128, 128, -107, -20}, {54, 183, 18, -29, -98, 128, 128, -116, -11},
     {54, 179, 22, -29, -98, 128, 128, -113, -14}, {76, 151, 28, -43, -84, 128, 128, -107, -20}}};
// clang-format on

// Pixel x of a row as 8-bit R, G, B: RGB565 (kind 0) pairs 8 bytes apart,
// ARGB32 (1) and ABGR32 (2) packed.
void PixelAt(int kind, const uint8_t* row, int x, int rgb[3]) {
  uint32_t p = 0;
  memcpy(&p, row + (kind ? 4 * x : 8 * (x / 2) + 2 * (x % 2)), kind ? 4 : 2);
  const int r5 = (p >> 11) << 3, g6 = ((p >> 5) & 63) << 2, b5 = (p & 31) << 3;
  const int hi = (p >> 16) & 255, mid = (p >> 8) & 255, lo = p & 255;
  const int v[3][3] = {{r5, g6, b5}, {hi, mid, lo}, {lo, mid, hi}};
  std::copy(v[kind], v[kind] + 3, rgb);
}

// Member `index` of GetPFN_rgb2yuv's table on a w x h picture (even sizes).
void RefRgbToYuv(int index, const uint8_t* src, uint32_t pitch, int w, int h, I420& out) {
  const int kind = index / 8, full = index / 4 % 2;
  const auto& k = kWeights[full][index % 4];
  auto conv = [&](int row, const uint8_t* line, int x) {
    int rgb[3];
    PixelAt(kind, line, x, rgb);
    const int sum = k[3 * row] * rgb[0] + k[3 * row + 1] * rgb[1] + k[3 * row + 2] * rgb[2];
    if (full) return static_cast<uint8_t>(sum >> 8);
    if (kind == 0) return static_cast<uint8_t>((sum >> 8) + (row ? 128 : 16));
    return static_cast<uint8_t>(((sum + 128) >> 8) + (row ? -128 : 16));
  };
  for (int y = 0; y < h; y += 2) {
    const uint8_t* line[2] = {src + y * pitch, src + y * pitch + pitch / 4 * 8};
    for (int x = 0; x < w; ++x) {
      out.y.at(x, y) = conv(0, line[0], x);
      out.y.at(x, y + 1) = conv(0, line[1], x);
    }
    for (int x = 0; x < w; x += 2) {  // chroma from the bottom-left pixel
      out.cb.at(x / 2, y / 2) = conv(1, line[1], x);
      out.cr.at(x / 2, y / 2) = conv(2, line[1], x);
    }
  }
}

// Exactly the bytes the walk may read (RGB565 pairs as whole 64-bit words).
std::vector<uint8_t> RgbSource(uint32_t pitch, int w, int h, Rng& rng) {
  std::vector<uint8_t> v((h - 2) * pitch + pitch / 4 * 8 + 4 * w);
  rng.fill(v);
  return v;
}

I420 Noise(int w, int h, Rng& rng, bool turned = false) {
  I420 pic(turned ? h : w, turned ? w : h, 3);
  pic.randomize(rng);
  return pic;
}

TEST(RgbToYCbCr, EveryMemberAgainstReference) {
  Rng rng(7);
  const int sizes[][2] = {{10, 6}, {7, 3}, {6, 2}, {4, 1}, {26, 4}};  // odd: as the next even one
  for (int index = 0; index < 24; ++index) {
    for (const auto& s : sizes) {
      const int w = (s[0] + 1) & ~1, h = (s[1] + 1) & ~1, kind = index / 8;
      const uint32_t pitch = 4 * w + 6;  // not a multiple of 4: the bottom row lies (pitch / 4) x 8 bytes on
      std::vector<uint8_t> src = RgbSource(pitch, w, h, rng);
      I420 dst = Noise(w, h, rng), want = dst;
      RefRgbToYuv(index, src.data(), pitch, w, h, want);
      ImgPrcRgbToYuvKernel k = GetPFN_rgb2yuv(kind, index % 4, index / 4 % 2);
      EXPECT_EQ(k(src.data(), pitch, dst.planes, dst.strides, s[0], s[1]), 0u);
      EXPECT_TRUE(scrimtest::SamePlanes(dst, want)) << index << " " << s[0] << "x" << s[1];
    }
  }
}

// Through the frame call at the source work size (odd sizes rounded down):
// unrotated straight into the destination, whatever its size; rotated into
// three temporary planes per frame, then turned.
TEST(RgbToYCbCr, FramesPlainAndRotated) {
  Rng rng(13);
  const uint32_t formats[3] = {0x300, 0x500, 0x900};
  for (uint32_t rot = 0; rot < 4; ++rot) {
    const int w = 10, h = 6, kind = rot % 3;
    const uint32_t pitch = 44;
    const uint32_t matrix = rot, full = rot % 2;  // every matrix, both ranges: the kernel creation picks
    Instance inst({formats[kind], w + 1, h + 1, rot ? w + 1 : 40u, rot ? h + 1 : 8u, rot, 1, matrix, full});
    std::vector<uint8_t> src = RgbSource(pitch, w, h, rng);
    uint8_t* srcPlanes[3] = {src.data(), nullptr, nullptr};
    uint32_t srcStrides[3] = {pitch, 0, 0};
    I420 plain(w, h), dst = Noise(w, h, rng, rot == 1 || rot == 2), want = dst;
    RefRgbToYuv(kind * 8 + full * 4 + matrix, src.data(), pitch, w, h, plain);
    scrimtest::Turn(rot, plain, want);
    const long live = ImgPrcLiveBlockCount();
    const unsigned long allocations = ImgPrcAllocationCount();
    EXPECT_EQ(Frame(inst, srcPlanes, srcStrides, dst.planes, dst.strides), IMGPRC_OK);
    EXPECT_EQ(ImgPrcAllocationCount(), allocations + (rot ? 3 : 0));
    EXPECT_EQ(ImgPrcLiveBlockCount(), live);
    EXPECT_TRUE(scrimtest::SamePlanes(dst, want)) << "rotation " << rot;
    if (rot == 0) continue;
    // Any of the three allocations failing: out of memory, nothing written, nothing kept.
    I420 again = Noise(w, h, rng, rot == 1 || rot == 2), before = again;
    ImgPrcFailAllocation(rot);
    EXPECT_EQ(Frame(inst, srcPlanes, srcStrides, again.planes, again.strides), IMGPRC_E_OUTOFMEMORY);
    ImgPrcFailAllocation(0);
    EXPECT_EQ(ImgPrcLiveBlockCount(), live);
    EXPECT_TRUE(scrimtest::SamePlanes(again, before));
  }
}

// RGB565 and RGB888 (bytes B, G, R) resized bilinearly, 5-bit weights, row below and column
// right clamped; a tight destination, so every rotation lays it out as the planar ones do.
TEST(RgbToRgb, ResizedAndRotatedThroughTheFrameCall) {
  const int sizes[][4] = {{10, 6, 14, 8}, {12, 8, 6, 4}, {6, 4, 6, 4}};
  Rng rng(21);
  for (uint32_t format : {0x303u, 0x403u, 0x404u}) {
    for (const auto& s : sizes) {
      for (uint32_t rot = 0; rot < 6; ++rot) {
        const int sw = s[0], sh = s[1], dw = s[2], dh = s[3], in = format == 0x303 ? 2 : 3,
                  out = format == 0x404 ? 3 : 2;
        const bool turned = rot == 1 || rot == 2;
        uint32_t pitch = sw * in + 4, stride = (turned ? dh : dw) * out;
        std::vector<uint8_t> src(pitch * sh), dst(stride * (turned ? dw : dh)), want(dst.size());
        rng.fill(src);
        auto lane = [&](int x, int y, int l) {  // blue, green, red; RGB565 fields as they are
          const uint8_t* p = &src[y * pitch + x * in];
          const int v = p[0] | p[1] << 8, field[3] = {v & 31, (v >> 5) & 63, v >> 11};
          return in == 3 ? p[l] : field[l];
        };
        const uint32_t sx = Step(sw, dw), sy = Step(sh, dh);
        for (int j = 0; j < dh; ++j) {
          for (int i = 0; i < dw; ++i) {
            int v[3];  // each lane x 32
            for (int l = 0; l < 3; ++l)
              v[l] = Bilinear([&](int x, int y) { return lane(x, y, l); }, sw, sh, i * sx, j * sy, 5, true);
            int col, row;
            scrimtest::Rotated(rot, i, j, dw, dh, &col, &row);
            const int rgb565 = in == 2 ? (v[2] >> 5) << 11 | (v[1] >> 5) << 5 | v[0] >> 5
                                       : (v[2] >> 8) << 11 | (v[1] >> 7) << 5 | v[0] >> 8;
            for (int b = 0; b < out; ++b)
              want[row * stride + col * out + b] = out == 3 ? v[b] >> 5 : rgb565 >> (8 * b);
          }
        }
        Instance inst({format, uint32_t(sw), uint32_t(sh), uint32_t(dw), uint32_t(dh), rot});
        uint8_t *sp[3] = {src.data(), nullptr, nullptr}, *dp[3] = {dst.data(), nullptr, nullptr};
        uint32_t ss[3] = {pitch, 0, 0}, ds[3] = {stride, 0, 0};
        EXPECT_EQ(Frame(inst, sp, ss, dp, ds), IMGPRC_OK);
        EXPECT_EQ(dst, want) << std::hex << format << std::dec << " " << sw << "x" << sh << " to " << dw
                             << "x" << dh << " rotation " << rot;
      }
    }
  }
}

// Pixel pairs read from 64-bit words, every output pixel one 64-bit word with
// alpha << 24 sign-extended above it; strides in pixels.
TEST(RgbToRgb, Rgb565ToArgb32WideLayout) {
  Rng rng(4);
  struct {
    int w, h;
    uint32_t alpha;
  } cases[] = {{6, 4, 0xFF}, {6, 4, 0x7F}, {1, 0, 0x80}};
  for (const auto& c : cases) {
    const int pairs = std::max(c.w / 2, 1), rows = std::max(c.h, 1), stride = 8, dstStride = 12;
    std::vector<uint8_t> src((rows - 1) * (stride / 2) * 8 + 8 * pairs),
        dst((rows - 1) * dstStride * 8 + 16 * pairs + 16);  // 16 guard bytes
    rng.fill(src);
    std::vector<uint8_t> want = dst;
    for (int y = 0; y < rows; ++y) {
      for (int x = 0; x < 2 * pairs; ++x) {
        const uint8_t* p = &src[y * (stride / 2) * 8 + 8 * (x / 2) + 2 * (x % 2)];
        const int v = p[0] | p[1] << 8;
        const uint64_t argb = (c.alpha >= 0x80 ? 0xFFFFFFFF00000000u : 0) | uint64_t{c.alpha} << 24 |
                              uint64_t(v >> 11) << 19 | uint64_t((v >> 5) & 63) << 10 | uint64_t(v & 31) << 3;
        memcpy(&want[y * dstStride * 8 + 8 * x], &argb, 8);
      }
    }
    if (c.alpha == 0xFF) {  // through the frame call: byte strides halved and quartered
      Instance inst({0x305, uint32_t(c.w), uint32_t(c.h), 2, 2, 1});
      uint8_t *sp[3] = {src.data(), nullptr, nullptr}, *dp[3] = {dst.data(), nullptr, nullptr};
      uint32_t ss[3] = {2 * stride, 0, 0}, ds[3] = {4 * dstStride, 0, 0};
      EXPECT_EQ(Frame(inst, sp, ss, dp, ds), IMGPRC_OK);
    } else {
      EXPECT_EQ(_ORURGB565ToARGB32(src.data(), stride, dst.data(), dstStride, c.w, c.h, c.alpha), 0u);
    }
    EXPECT_EQ(dst, want) << c.w << "x" << c.h << " alpha " << c.alpha;
  }
}

}  // namespace
