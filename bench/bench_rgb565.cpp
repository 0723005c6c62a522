// YCbCr 4:2:0 to RGB565 kernels beside libyuv doing the same job: same-size
// 1080p (libyuv with and without its SIMD paths), 2x enlargement, a generic
// 1280x720 to 1080p enlargement and a quarter turn at 1080p.
#include <benchmark/benchmark.h>
#include <libyuv.h>

#include <cmath>
#include <random>
#include <vector>

#include "imageproc/imgprc_context.h"
#include "kernels/yuv420_rgb16.h"

namespace {

// Neutral BT.601 video-range tables, as the image processor builds them.
struct Tables {
  std::vector<uint16_t> y = std::vector<uint16_t>(256);
  std::vector<int64_t> cb = std::vector<int64_t>(256);
  std::vector<int64_t> cr = std::vector<int64_t>(256);
  Tables() {
    auto f = [](double v) { return static_cast<double>(static_cast<float>(v)); };
    auto term = [](double v) {
      return static_cast<int32_t>(std::min(std::max(std::trunc(v + 0.5), -32768.0), 32767.0));
    };
    for (int i = 0; i < 256; ++i) {
      y[i] = static_cast<uint16_t>(
          std::min(std::max(std::trunc((i - 16) * f(1.1644) * 128 + 0.5), 0.0), 65535.0));
      const int d = i - 128;
      cb[i] = Pack(term(d * f(2.0172) * 64), term(d * f(-0.3918) * 64));
      cr[i] = Pack(term(d * f(1.596) * 64), term(d * f(-0.813) * 64));
    }
  }
  static int64_t Pack(int32_t hi, int32_t lo) {
    return static_cast<int32_t>(static_cast<uint32_t>(hi) << 16 | (static_cast<uint32_t>(lo) & 0xFFFF));
  }
};

struct I420 {
  int w, h;
  std::vector<uint8_t> y, u, v;
  const uint8_t* planes[3];
  uint32_t strides[3];
  I420(int width, int height)
      : w(width), h(height), y(width * height), u(width * height / 4), v(width * height / 4) {
    std::mt19937 rng(1);
    for (auto* p : {&y, &u, &v})
      for (auto& s : *p) s = static_cast<uint8_t>(rng());
    planes[0] = y.data(), planes[1] = u.data(), planes[2] = v.data();
    strides[0] = width, strides[1] = strides[2] = width / 2;
  }
};

struct Context {
  Tables tables;
  ImgPrcContext ctx{};
  std::vector<uint64_t> lineStore;
  uint8_t* lines[4];
  explicit Context(int lineEntries) : lineStore(4 * static_cast<size_t>(lineEntries)) {
    ctx.rangeTableY = tables.y.data();
    ctx.rangeTableCb = tables.cb.data();
    ctx.rangeTableCr = tables.cr.data();
    for (int i = 0; i < 4; ++i)
      lines[i] = reinterpret_cast<uint8_t*>(&lineStore[i * static_cast<size_t>(lineEntries)]);
    for (int i = 0; i < 4; ++i) ctx.lineBuffer[i] = lines[i];
  }
};

void SetPixels(benchmark::State& state, int w, int h) {
  state.SetItemsProcessed(state.iterations() * static_cast<int64_t>(w) * h);
}

void BM_Rgb565_SameSize_1080p(benchmark::State& state) {
  I420 src(1920, 1080);
  Context c(0);
  std::vector<uint8_t> dst(1920 * 1080 * 2);
  for (auto _ : state) {
    _ORUYCbCr420ToRGB565(&c.ctx, src.planes, src.strides, 1920, 1080, dst.data(), 3840);
    benchmark::ClobberMemory();
  }
  SetPixels(state, 1920, 1080);
}
BENCHMARK(BM_Rgb565_SameSize_1080p);

void LibyuvSameSize(benchmark::State& state, bool simd) {
  I420 src(1920, 1080);
  std::vector<uint8_t> dst(1920 * 1080 * 2);
  if (!simd) libyuv::MaskCpuFlags(1);  // portable C paths only
  for (auto _ : state) {
    libyuv::I420ToRGB565(src.planes[0], 1920, src.planes[1], 960, src.planes[2], 960, dst.data(), 3840, 1920,
                         1080);
    benchmark::ClobberMemory();
  }
  if (!simd) libyuv::MaskCpuFlags(-1);
  SetPixels(state, 1920, 1080);
}
void BM_Libyuv_I420ToRGB565_1080p(benchmark::State& state) { LibyuvSameSize(state, true); }
void BM_Libyuv_I420ToRGB565_C_1080p(benchmark::State& state) { LibyuvSameSize(state, false); }
BENCHMARK(BM_Libyuv_I420ToRGB565_1080p);
BENCHMARK(BM_Libyuv_I420ToRGB565_C_1080p);

// Enlargement to 1080p through the line-buffer kernel. Rows of the enlarging
// kernels are (pitch / 4) * 8 bytes apart: the destination is twice the size.
void Enlarge(benchmark::State& state, int sw, int sh) {
  I420 src(sw, sh);
  Context c(sw + 4);
  std::vector<uint8_t> dst(1920 * 1080 * 4);
  for (auto _ : state) {
    _ORUYCbCr420ToRGB565RszUp(&c.ctx, c.lines, src.planes, src.strides, sw, sh, dst.data(), 3840, 1920, 1080);
    benchmark::ClobberMemory();
  }
  SetPixels(state, 1920, 1080);
}
void BM_Rgb565_Enlarge2x_960x540_to_1080p(benchmark::State& state) { Enlarge(state, 960, 540); }
void BM_Rgb565_Enlarge_720p_to_1080p(benchmark::State& state) { Enlarge(state, 1280, 720); }
BENCHMARK(BM_Rgb565_Enlarge2x_960x540_to_1080p);
BENCHMARK(BM_Rgb565_Enlarge_720p_to_1080p);

void LibyuvEnlarge(benchmark::State& state, int sw, int sh) {
  I420 src(sw, sh);
  I420 big(1920, 1080);
  std::vector<uint8_t> dst(1920 * 1080 * 2);
  for (auto _ : state) {
    libyuv::I420Scale(src.planes[0], sw, src.planes[1], sw / 2, src.planes[2], sw / 2, sw, sh, big.y.data(),
                      1920, big.u.data(), 960, big.v.data(), 960, 1920, 1080, libyuv::kFilterBilinear);
    libyuv::I420ToRGB565(big.y.data(), 1920, big.u.data(), 960, big.v.data(), 960, dst.data(), 3840, 1920,
                         1080);
    benchmark::ClobberMemory();
  }
  SetPixels(state, 1920, 1080);
}
void BM_Libyuv_ScaleBilinear_ToRGB565_960x540_to_1080p(benchmark::State& state) {
  LibyuvEnlarge(state, 960, 540);
}
void BM_Libyuv_ScaleBilinear_ToRGB565_720p_to_1080p(benchmark::State& state) {
  LibyuvEnlarge(state, 1280, 720);
}
BENCHMARK(BM_Libyuv_ScaleBilinear_ToRGB565_960x540_to_1080p);
BENCHMARK(BM_Libyuv_ScaleBilinear_ToRGB565_720p_to_1080p);

// A quarter turn anticlockwise: 1080 rows of 1920 become 1920 rows of 1080.
void BM_Rgb565_QuarterTurn_1080p(benchmark::State& state) {
  I420 src(1920, 1080);
  Context c(0);
  std::vector<uint8_t> dst(1920 * 1080 * 2);
  const int64_t s = 1080 * 2;
  ImgPrcRotationRecord rec{};
  rec.stepX = static_cast<int32_t>(-2 * s);
  rec.stepY = 4;
  rec.pix00 = dst.data() + 1919 * s;
  rec.pix10 = rec.pix00 - s;
  rec.pix01 = rec.pix00 + 2;
  rec.pix11 = rec.pix10 + 2;
  c.ctx.rotationRecord = &rec;
  for (auto _ : state) {
    _ORUYCbCr420ToRGB565Rot(&c.ctx, src.planes, src.strides, 1920, 1080);
    benchmark::ClobberMemory();
  }
  SetPixels(state, 1920, 1080);
}
BENCHMARK(BM_Rgb565_QuarterTurn_1080p);

void BM_Libyuv_I420Rotate90_ToRGB565_1080p(benchmark::State& state) {
  I420 src(1920, 1080);
  I420 turned(1080, 1920);
  std::vector<uint8_t> dst(1920 * 1080 * 2);
  for (auto _ : state) {
    libyuv::I420Rotate(src.planes[0], 1920, src.planes[1], 960, src.planes[2], 960, turned.y.data(), 1080,
                       turned.u.data(), 540, turned.v.data(), 540, 1920, 1080, libyuv::kRotate270);
    libyuv::I420ToRGB565(turned.y.data(), 1080, turned.u.data(), 540, turned.v.data(), 540, dst.data(), 2160,
                         1080, 1920);
    benchmark::ClobberMemory();
  }
  SetPixels(state, 1920, 1080);
}
BENCHMARK(BM_Libyuv_I420Rotate90_ToRGB565_1080p);

}  // namespace
