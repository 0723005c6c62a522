// YCbCr outputs and RGB inputs at 1920x1080 through the image processor's
// frame call, each beside the libyuv function doing the same job: packing to
// NV12, YUY2 and UYVY, NV12 back to planar, a quarter turn of planar 4:2:0,
// bilinear planar resizing 1080p to 720p and back, ARGB32 and RGB565 to
// planar 4:2:0.
#include <benchmark/benchmark.h>
#include <libyuv.h>
#include <stdint.h>

#include <vector>

#include "bench/bench_frame.h"
#include "imageproc/oru_imageproc.h"

namespace {

// Up to three planes in one block, each `rows` rows of `stride` bytes.
struct Planes {
  std::vector<uint8_t> bytes;
  uint8_t* planes[3] = {nullptr, nullptr, nullptr};
  uint32_t strides[3] = {0, 0, 0};
  Planes(std::initializer_list<std::pair<uint32_t, uint32_t>> layout) {  // (stride, rows) per plane
    size_t total = 0;
    for (const auto& p : layout) total += static_cast<size_t>(p.first) * p.second;
    bytes.resize(total + 64);
    for (size_t i = 0; i < bytes.size(); ++i) bytes[i] = static_cast<uint8_t>(i * 7 + (i >> 11));
    size_t at = 0;
    int i = 0;
    for (const auto& p : layout) {
      planes[i] = bytes.data() + at;
      strides[i++] = p.first;
      at += static_cast<size_t>(p.first) * p.second;
    }
  }
};

Planes I420(uint32_t w, uint32_t h) { return Planes({{w, h}, {w / 2, h / 2}, {w / 2, h / 2}}); }

// Runs conversion `format` from src to dst through the frame call.
void Frame(benchmark::State& state, uint32_t format, uint32_t rotation, uint32_t sw, uint32_t sh, uint32_t dw,
           uint32_t dh, Planes& src, Planes& dst) {
  const ImgPrcCreateParams params = {sizeof params, format, rotation, 1, sw, sh, dw, dh, 0xFF, 0, 0, 0};
  TimeFrames(state, params, src.planes, src.strides, dst.planes, dst.strides);
}

constexpr uint32_t W = 1920, H = 1080, W7 = 1280, H7 = 720;

void BM_I420ToNV12_Scrim(benchmark::State& s) {
  Planes src = I420(W, H), dst({{W, H}, {W, H / 2}});
  Frame(s, 0x008, 0, W, H, W, H, src, dst);
}
void BM_I420ToNV12_Libyuv(benchmark::State& s) {
  Planes a = I420(W, H), b({{W, H}, {W, H / 2}});
  TimeCalls(s, [&] {
    libyuv::I420ToNV12(a.planes[0], W, a.planes[1], W / 2, a.planes[2], W / 2, b.planes[0], W, b.planes[1], W,
                       W, H);
  });
}
void BM_I420ToYUY2_Scrim(benchmark::State& s) {
  Planes src = I420(W, H), dst({{2 * W, H}});
  Frame(s, 0x006, 0, W, H, W, H, src, dst);
}
void BM_I420ToYUY2_Libyuv(benchmark::State& s) {
  Planes a = I420(W, H), b({{2 * W, H}});
  TimeCalls(s, [&] {
    libyuv::I420ToYUY2(a.planes[0], W, a.planes[1], W / 2, a.planes[2], W / 2, b.planes[0], 2 * W, W, H);
  });
}
void BM_I420ToUYVY_Scrim(benchmark::State& s) {
  Planes src = I420(W, H), dst({{2 * W, H}});
  Frame(s, 0x007, 0, W, H, W, H, src, dst);
}
void BM_I420ToUYVY_Libyuv(benchmark::State& s) {
  Planes a = I420(W, H), b({{2 * W, H}});
  TimeCalls(s, [&] {
    libyuv::I420ToUYVY(a.planes[0], W, a.planes[1], W / 2, a.planes[2], W / 2, b.planes[0], 2 * W, W, H);
  });
}
void BM_NV12ToI420_Scrim(benchmark::State& s) {
  Planes src({{W, H}, {W, H / 2}}), dst = I420(W, H);
  Frame(s, 0x800, 0, W, H, W, H, src, dst);
}
void BM_NV12ToI420_Libyuv(benchmark::State& s) {
  Planes a({{W, H}, {W, H / 2}}), b = I420(W, H);
  TimeCalls(s, [&] {
    libyuv::NV12ToI420(a.planes[0], W, a.planes[1], W, b.planes[0], W, b.planes[1], W / 2, b.planes[2], W / 2,
                       W, H);
  });
}
// Clockwise quarter turn: the destination holds 1920 rows of 1080 samples.
void BM_I420Rotate90_Scrim(benchmark::State& s) {
  Planes src = I420(W, H), dst = I420(H, W);
  Frame(s, 0x000, 2, W, H, W, H, src, dst);
}
void BM_I420Rotate90_Libyuv(benchmark::State& s) {
  Planes a = I420(W, H), b = I420(H, W);
  TimeCalls(s, [&] {
    libyuv::I420Rotate(a.planes[0], W, a.planes[1], W / 2, a.planes[2], W / 2, b.planes[0], H, b.planes[1],
                       H / 2, b.planes[2], H / 2, W, H, libyuv::kRotate90);
  });
}
// The resizing walk reads the row below its last position: one spare source row.
void Scale(benchmark::State& s, bool libyuvSide, uint32_t sw, uint32_t sh, uint32_t dw, uint32_t dh) {
  Planes a({{sw, sh + 1}, {sw / 2, sh / 2 + 1}, {sw / 2, sh / 2 + 1}}), b = I420(dw, dh);
  if (!libyuvSide) return Frame(s, 0x000, 0, sw, sh, dw, dh, a, b);
  TimeCalls(s, [&] {
    libyuv::I420Scale(a.planes[0], sw, a.planes[1], sw / 2, a.planes[2], sw / 2, sw, sh, b.planes[0], dw,
                      b.planes[1], dw / 2, b.planes[2], dw / 2, dw, dh, libyuv::kFilterBilinear);
  });
}
void BM_I420Scale1080To720_Scrim(benchmark::State& s) { Scale(s, false, W, H, W7, H7); }
void BM_I420Scale1080To720_Libyuv(benchmark::State& s) { Scale(s, true, W, H, W7, H7); }
void BM_I420Scale720To1080_Scrim(benchmark::State& s) { Scale(s, false, W7, H7, W, H); }
void BM_I420Scale720To1080_Libyuv(benchmark::State& s) { Scale(s, true, W7, H7, W, H); }
void BM_ARGBToI420_Scrim(benchmark::State& s) {
  Planes src({{4 * W, H + 1}}), dst = I420(W, H);
  Frame(s, 0x500, 0, W, H, W, H, src, dst);
}
void BM_ARGBToI420_Libyuv(benchmark::State& s) {
  Planes a({{4 * W, H}}), b = I420(W, H);
  TimeCalls(s, [&] {
    libyuv::ARGBToI420(a.planes[0], 4 * W, b.planes[0], W, b.planes[1], W / 2, b.planes[2], W / 2, W, H);
  });
}
// The RGB565 members read pixel pairs 8 bytes apart: a row spans 4 bytes a pixel.
void BM_RGB565ToI420_Scrim(benchmark::State& s) {
  Planes src({{2 * W, H + 2}}), dst = I420(W, H);
  Frame(s, 0x300, 0, W, H, W, H, src, dst);
}
void BM_RGB565ToI420_Libyuv(benchmark::State& s) {
  Planes a({{2 * W, H}}), b = I420(W, H);
  TimeCalls(s, [&] {
    libyuv::RGB565ToI420(a.planes[0], 2 * W, b.planes[0], W, b.planes[1], W / 2, b.planes[2], W / 2, W, H);
  });
}

}  // namespace

BENCHMARK(BM_I420ToNV12_Scrim);
BENCHMARK(BM_I420ToNV12_Libyuv);
BENCHMARK(BM_I420ToYUY2_Scrim);
BENCHMARK(BM_I420ToYUY2_Libyuv);
BENCHMARK(BM_I420ToUYVY_Scrim);
BENCHMARK(BM_I420ToUYVY_Libyuv);
BENCHMARK(BM_NV12ToI420_Scrim);
BENCHMARK(BM_NV12ToI420_Libyuv);
BENCHMARK(BM_I420Rotate90_Scrim);
BENCHMARK(BM_I420Rotate90_Libyuv);
BENCHMARK(BM_I420Scale1080To720_Scrim);
BENCHMARK(BM_I420Scale1080To720_Libyuv);
BENCHMARK(BM_I420Scale720To1080_Scrim);
BENCHMARK(BM_I420Scale720To1080_Libyuv);
BENCHMARK(BM_ARGBToI420_Scrim);
BENCHMARK(BM_ARGBToI420_Libyuv);
BENCHMARK(BM_RGB565ToI420_Scrim);
BENCHMARK(BM_RGB565ToI420_Libyuv);
