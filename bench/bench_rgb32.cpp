// 1080p frames to ARGB32 from 4:2:0, and to RGB565 from 4:2:2 and 4:4:4,
// through the frame call, beside libyuv doing the same job.
//
// Bytes: ARGB32 rows of the frame call hold each pixel in a 64-bit word (8
// bytes a pixel, 12 of every 16 written) and row pairs lie (pitch / 2) x 8
// bytes apart, so a 1080p frame needs a 15360-byte pitch and spans 33 MB where
// libyuv's packed ARGB spans 8.3 MB; it writes 12.4 MB to libyuv's 8.3 MB.
// The RGB565 outputs have libyuv's packed layout.
#include <benchmark/benchmark.h>
#include <libyuv.h>

#include <random>
#include <vector>

#include "bench/bench_frame.h"
#include "imageproc/oru_imageproc.h"

namespace {

constexpr int kW = 1920, kH = 1080;

// A planar source with chroma 1/cx across and 1/cy down, one spare row per
// plane (the any-ratio kernels read the row after the last).
struct Planar {
  std::vector<uint8_t> y, u, v;
  uint8_t* planes[3];
  uint32_t strides[3];
  Planar(int cx, int cy) : y(kW * (kH + 1)), u(kW / cx * (kH / cy + 1)), v(u.size()) {
    std::mt19937 rng(1);
    for (auto* p : {&y, &u, &v})
      for (auto& s : *p) s = static_cast<uint8_t>(rng());
    planes[0] = y.data(), planes[1] = u.data(), planes[2] = v.data();
    strides[0] = kW, strides[1] = strides[2] = kW / cx;
  }
};

// Same-size frames of one conversion code into a destination of dstBytes.
void ThroughFrameCall(benchmark::State& state, uint32_t format, int cx, int cy, size_t dstBytes,
                      uint32_t pitch) {
  Planar src(cx, cy);
  ImgPrcCreateParams p = {};
  p.size = sizeof p, p.format = format, p.resizeMode = IMGPRC_RESIZE_BILINEAR_FAST, p.alpha = 0xFF;
  p.srcWidth = p.dstWidth = kW, p.srcHeight = p.dstHeight = kH;
  std::vector<uint8_t> dst(dstBytes);
  uint8_t* planes[3] = {dst.data(), nullptr, nullptr};
  uint32_t strides[3] = {pitch, 0, 0};
  TimeFrames(state, p, src.planes, src.strides, planes, strides);
  state.SetItemsProcessed(state.iterations() * int64_t{kW} * kH);
}

void BM_Argb32_I420_SameSize_1080p(benchmark::State& state) {
  ThroughFrameCall(state, 0x005, 2, 2, size_t{kH / 2} * (kW * 8 / 2 * 8), kW * 8);
}
BENCHMARK(BM_Argb32_I420_SameSize_1080p);

void BM_Libyuv_I420ToARGB_1080p(benchmark::State& state) {
  Planar src(2, 2);
  std::vector<uint8_t> dst(size_t{kW} * kH * 4);
  TimeCalls(state, [&] {
    libyuv::I420ToARGB(src.planes[0], kW, src.planes[1], kW / 2, src.planes[2], kW / 2, dst.data(), kW * 4,
                       kW, kH);
  });
  state.SetItemsProcessed(state.iterations() * int64_t{kW} * kH);
}
BENCHMARK(BM_Libyuv_I420ToARGB_1080p);

void BM_Rgb565_I422_SameSize_1080p(benchmark::State& state) {
  ThroughFrameCall(state, 0x103, 2, 1, size_t{kW} * kH * 2, kW * 2);
}
BENCHMARK(BM_Rgb565_I422_SameSize_1080p);

void BM_Libyuv_I422ToRGB565_1080p(benchmark::State& state) {
  Planar src(2, 1);
  std::vector<uint8_t> dst(size_t{kW} * kH * 2);
  TimeCalls(state, [&] {
    libyuv::I422ToRGB565(src.planes[0], kW, src.planes[1], kW / 2, src.planes[2], kW / 2, dst.data(), kW * 2,
                         kW, kH);
  });
  state.SetItemsProcessed(state.iterations() * int64_t{kW} * kH);
}
BENCHMARK(BM_Libyuv_I422ToRGB565_1080p);

// 4:4:4 always takes the any-ratio kernel (bilinear Y, Cb and Cr per pixel).
void BM_Rgb565_I444_SameSize_1080p(benchmark::State& state) {
  ThroughFrameCall(state, 0x203, 1, 1, size_t{kW} * kH * 2, kW * 2);
}
BENCHMARK(BM_Rgb565_I444_SameSize_1080p);

void BM_Libyuv_I444ToARGB_ARGBToRGB565_1080p(benchmark::State& state) {
  Planar src(1, 1);
  std::vector<uint8_t> argb(size_t{kW} * kH * 4), dst(size_t{kW} * kH * 2);
  TimeCalls(state, [&] {
    libyuv::I444ToARGB(src.planes[0], kW, src.planes[1], kW, src.planes[2], kW, argb.data(), kW * 4, kW, kH);
    libyuv::ARGBToRGB565(argb.data(), kW * 4, dst.data(), kW * 2, kW, kH);
  });
  state.SetItemsProcessed(state.iterations() * int64_t{kW} * kH);
}
BENCHMARK(BM_Libyuv_I444ToARGB_ARGBToRGB565_1080p);

}  // namespace
