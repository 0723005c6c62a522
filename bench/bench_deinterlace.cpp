// The deinterlacer on a 1920x1080 4:2:0 picture, as the image processor runs
// it: caller's planes in, the work area's 16-aligned planes out. Beside it,
// from the same run, the library's own I420 to RGB565 frame call on the same
// picture (the work that follows deinterlacing on the presenting thread),
// libyuv's conversion of it, libyuv's plain
// I420 copy (the memory traffic floor) and its plane interpolation at one half
// (a two-line blend per line, rounded, the closest job it has to mode 4).
// Last, whole frame calls of the image processor (a same-size planar copy)
// with and without a mode, for the share deinterlacing takes of a frame.
#include <benchmark/benchmark.h>
#include <libyuv.h>

#include <random>
#include <vector>

#include "deinterlace/deinterlace.h"
#include "imageproc/cpu_features.h"
#include "imageproc/oru_imageproc.h"

namespace {

constexpr int kWidth = 1920;
constexpr int kHeight = 1080;
constexpr int kChromaWidth = kWidth / 2;
constexpr int kChromaHeight = kHeight / 2;
constexpr int kWorkStride = (kWidth + 15) & ~15;

// Two fields of a moving picture woven line by line: diagonal stripes and a
// soft gradient, the odd field moved 6 pixels to the right; a quarter of the
// picture (the left part) stands still, so both kinds of 8x8 block occur.
struct Frame {
  std::vector<uint8_t> y, u, v;
  Frame() : y(size_t(kWidth) * kHeight), u(size_t(kChromaWidth) * kChromaHeight), v(u.size()) {
    std::mt19937 rng(1);
    auto fill = [&](std::vector<uint8_t>& p, int w, int h) {
      for (int row = 0; row < h; ++row)
        for (int x = 0; x < w; ++x) {
          int moved = x >= w / 4 && (row & 1) ? x + 6 : x;
          int stripe = ((moved + row) / 12) & 1 ? 60 : 0;
          p[size_t(row) * w + x] = uint8_t(40 + stripe + (moved * 120) / w + int(rng() % 9));
        }
    };
    fill(y, kWidth, kHeight);
    fill(u, kChromaWidth, kChromaHeight);
    fill(v, kChromaWidth, kChromaHeight);
  }
};

const Frame& frame() {
  static const Frame f;
  return f;
}

void DeInterlaceFrames(benchmark::State& state, unsigned mode) {
  const Frame& f = frame();
  // The work area of the image processor: four planes of stride x height.
  std::vector<uint8_t> work(size_t(kWorkStride) * kHeight * 4);
  ImgPrcContext ctx{};
  ctx.format = 0x003;  // 4:2:0 in, RGB565 out
  ctx.srcWidth = kWidth;
  ctx.srcHeight = kHeight;
  ctx.deinterlaceMode = mode;
  uint8_t* src[3] = {const_cast<uint8_t*>(f.y.data()), const_cast<uint8_t*>(f.u.data()),
                     const_cast<uint8_t*>(f.v.data())};
  uint32_t srcStrides[3] = {kWidth, kChromaWidth, kChromaWidth};
  const size_t plane = size_t(kWorkStride) * kHeight;
  uint8_t* dst[3] = {work.data(), work.data() + plane, work.data() + 2 * plane};
  uint32_t dstStrides[3] = {kWorkStride, kWorkStride, kWorkStride};
  for (auto _ : state) {
    ORU_DeInterlace(&ctx, src, srcStrides, dst, dstStrides);
    benchmark::DoNotOptimize(work.data());
    benchmark::ClobberMemory();
  }
}
void BM_DeInterlace(benchmark::State& state) { DeInterlaceFrames(state, unsigned(state.range(0))); }
BENCHMARK(BM_DeInterlace)->ArgName("mode")->DenseRange(1, 7)->Unit(benchmark::kMillisecond);

// Mode 7 with the row functions capped at each instruction-set level in turn
// (0 scalar, 1 SSE4.1, 2 AVX2, 3 NEON), to be read against the libyuv
// conversion below; a level this CPU or build lacks is skipped.
void BM_DeInterlaceMode7_Cap(benchmark::State& state) {
  const CpuLevel level = CpuLevel(state.range(0));
  if (cpu_set_cap(level) != level) {
    state.SkipWithError("no such instruction set here");
    cpu_set_cap(CPU_NEON);
    return;
  }
  state.SetLabel(cpu_level_name(level));
  DeInterlaceFrames(state, 7);
  cpu_set_cap(CPU_NEON);
}
BENCHMARK(BM_DeInterlaceMode7_Cap)->ArgName("cap")->DenseRange(0, 3)->Unit(benchmark::kMillisecond);

// A whole frame call of the image processor, I420 to I420 at the same size
// (a planar copy), with deinterlace mode 0 (none), 1, 4 or 7 in force.
void BM_ImageProcFrame_I420Copy(benchmark::State& state) {
  const Frame& f = frame();
  ImgPrcCreateParams params{};
  params.size = sizeof params;
  params.format = 0x000;
  params.srcWidth = params.dstWidth = kWidth;
  params.srcHeight = params.dstHeight = kHeight;
  void* handle = nullptr;
  if (ORU_IMAGEPROC_Create(&handle, 0, &params) != IMGPRC_OK) {
    state.SkipWithError("image processor creation failed");
    return;
  }
  std::vector<uint8_t> y(f.y.size()), u(f.u.size()), v(f.v.size());
  uint8_t* src[3] = {const_cast<uint8_t*>(f.y.data()), const_cast<uint8_t*>(f.u.data()),
                     const_cast<uint8_t*>(f.v.data())};
  uint32_t strides[3] = {kWidth, kChromaWidth, kChromaWidth};
  uint8_t* dst[3] = {y.data(), u.data(), v.data()};
  ImgPrcFrameParams frameParams{sizeof frameParams, 0, uint32_t(state.range(0))};
  for (auto _ : state) {
    ORU_IMAGEPROC_ProcessFrame(handle, src, strides, dst, strides, &frameParams);
    benchmark::DoNotOptimize(y.data());
  }
  ORU_IMAGEPROC_Destroy(handle);
}
BENCHMARK(BM_ImageProcFrame_I420Copy)
    ->ArgName("mode")
    ->Arg(0)
    ->Arg(1)
    ->Arg(4)
    ->Arg(7)
    ->Unit(benchmark::kMillisecond);

void BM_Libyuv_I420ToRGB565_1080p(benchmark::State& state) {
  const Frame& f = frame();
  std::vector<uint8_t> out(size_t(kWidth) * 2 * kHeight);
  for (auto _ : state) {
    libyuv::I420ToRGB565(f.y.data(), kWidth, f.u.data(), kChromaWidth, f.v.data(), kChromaWidth, out.data(),
                         kWidth * 2, kWidth, kHeight);
    benchmark::DoNotOptimize(out.data());
  }
}
BENCHMARK(BM_Libyuv_I420ToRGB565_1080p)
    ->Unit(benchmark::kMillisecond)
    ->Name("Deinterlace_Libyuv_I420ToRGB565_1080p");

// The conversion that follows deinterlacing in the presenter: a same-size
// 4:2:0 to RGB565 frame call, no mode.
void BM_Deinterlace_Baseline_ImageProcRGB565(benchmark::State& state) {
  const Frame& f = frame();
  ImgPrcCreateParams p = {};
  p.size = sizeof p;
  p.format = 0x003;
  p.resizeMode = IMGPRC_RESIZE_BILINEAR_FAST;
  p.srcWidth = p.dstWidth = kWidth;
  p.srcHeight = p.dstHeight = kHeight;
  void* handle = nullptr;
  if (ORU_IMAGEPROC_Create(&handle, 0, &p) != IMGPRC_OK) {
    state.SkipWithError("create failed");
    return;
  }
  std::vector<uint8_t> out(size_t(kWidth) * 2 * kHeight);
  uint8_t* src[3] = {const_cast<uint8_t*>(f.y.data()), const_cast<uint8_t*>(f.u.data()),
                     const_cast<uint8_t*>(f.v.data())};
  uint32_t srcStrides[3] = {kWidth, kChromaWidth, kChromaWidth};
  uint8_t* dst[3] = {out.data(), nullptr, nullptr};
  uint32_t dstStrides[3] = {kWidth * 2, 0, 0};
  ImgPrcFrameParams frameParams = {sizeof frameParams, 0, 0};
  for (auto _ : state) {
    ORU_IMAGEPROC_ProcessFrame(handle, src, srcStrides, dst, dstStrides, &frameParams);
    benchmark::DoNotOptimize(out.data());
  }
  ORU_IMAGEPROC_Destroy(handle);
}
BENCHMARK(BM_Deinterlace_Baseline_ImageProcRGB565)->Unit(benchmark::kMillisecond);

void BM_Libyuv_I420Copy_1080p(benchmark::State& state) {
  const Frame& f = frame();
  std::vector<uint8_t> y(f.y.size()), u(f.u.size()), v(f.v.size());
  for (auto _ : state) {
    libyuv::I420Copy(f.y.data(), kWidth, f.u.data(), kChromaWidth, f.v.data(), kChromaWidth, y.data(), kWidth,
                     u.data(), kChromaWidth, v.data(), kChromaWidth, kWidth, kHeight);
    benchmark::DoNotOptimize(y.data());
  }
}
BENCHMARK(BM_Libyuv_I420Copy_1080p)->Unit(benchmark::kMillisecond);

// Each output line the rounded mean of two neighbouring input lines, over the
// three planes, as mode 4 does (mode 4 truncates).
void BM_Libyuv_InterpolatePlaneHalf_1080p(benchmark::State& state) {
  const Frame& f = frame();
  std::vector<uint8_t> y(f.y.size()), u(f.u.size()), v(f.v.size());
  for (auto _ : state) {
    libyuv::InterpolatePlane(f.y.data(), kWidth, f.y.data() + kWidth, kWidth, y.data(), kWidth, kWidth,
                             kHeight - 1, 128);
    libyuv::InterpolatePlane(f.u.data(), kChromaWidth, f.u.data() + kChromaWidth, kChromaWidth, u.data(),
                             kChromaWidth, kChromaWidth, kChromaHeight - 1, 128);
    libyuv::InterpolatePlane(f.v.data(), kChromaWidth, f.v.data() + kChromaWidth, kChromaWidth, v.data(),
                             kChromaWidth, kChromaWidth, kChromaHeight - 1, 128);
    benchmark::DoNotOptimize(y.data());
  }
}
BENCHMARK(BM_Libyuv_InterpolatePlaneHalf_1080p)->Unit(benchmark::kMillisecond);

}  // namespace
