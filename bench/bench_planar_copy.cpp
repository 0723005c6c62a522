// Planar 4:2:0 copy through the image processor's frame call (conversion 0x000,
// same size), the YV12 window path, beside memcpy of the same bytes and
// libyuv's I420Copy, at 1920x1080: once tightly packed in one block, once with
// padded strides.
#include <benchmark/benchmark.h>
#include <libyuv.h>
#include <stdint.h>
#include <string.h>

#include <vector>

#include "bench/bench_frame.h"
#include "imageproc/oru_imageproc.h"

namespace {

constexpr uint32_t kWidth = 1920, kHeight = 1080;
constexpr uint32_t kPaddedLuma = 2048, kPaddedChroma = 1024;

// One picture in a single block: Y, Cb, Cr planes at the given strides, back to
// back (so the tight layout is contiguous).
struct Picture {
  std::vector<uint8_t> bytes;
  uint8_t* planes[3];
  uint32_t strides[3];

  Picture(uint32_t lumaStride, uint32_t chromaStride) {
    const size_t lumaSize = static_cast<size_t>(lumaStride) * kHeight;
    const size_t chromaSize = static_cast<size_t>(chromaStride) * (kHeight / 2);
    bytes.resize(lumaSize + 2 * chromaSize);
    for (size_t i = 0; i < bytes.size(); ++i) bytes[i] = static_cast<uint8_t>(i * 7 + (i >> 11));
    planes[0] = bytes.data();
    planes[1] = planes[0] + lumaSize;
    planes[2] = planes[1] + chromaSize;
    strides[0] = lumaStride;
    strides[1] = strides[2] = chromaStride;
  }
};

constexpr size_t kPictureBytes = kWidth * kHeight * 3 / 2;

void SetCounters(benchmark::State& state) {
  state.SetBytesProcessed(static_cast<int64_t>(state.iterations()) * kPictureBytes);
}

void ProcessFrame(benchmark::State& state, uint32_t lumaStride, uint32_t chromaStride) {
  Picture src(lumaStride, chromaStride), dst(lumaStride, chromaStride);
  const ImgPrcCreateParams params = {sizeof params, 0x000,   0, 1, kWidth, kHeight,
                                     kWidth,        kHeight, 0, 0, 0,      0};
  TimeFrames(state, params, src.planes, src.strides, dst.planes, dst.strides);
  SetCounters(state);
}

void I420Copy(benchmark::State& state, uint32_t lumaStride, uint32_t chromaStride) {
  Picture src(lumaStride, chromaStride), dst(lumaStride, chromaStride);
  for (auto _ : state) {
    libyuv::I420Copy(src.planes[0], src.strides[0], src.planes[1], src.strides[1], src.planes[2],
                     src.strides[2], dst.planes[0], dst.strides[0], dst.planes[1], dst.strides[1],
                     dst.planes[2], dst.strides[2], kWidth, kHeight);
    benchmark::ClobberMemory();
  }
  SetCounters(state);
}

void BM_PlanarCopy_Tight_ProcessFrame(benchmark::State& state) { ProcessFrame(state, kWidth, kWidth / 2); }
void BM_PlanarCopy_Tight_Memcpy(benchmark::State& state) {
  Picture src(kWidth, kWidth / 2), dst(kWidth, kWidth / 2);
  for (auto _ : state) {
    memcpy(dst.planes[0], src.planes[0], kPictureBytes);
    benchmark::ClobberMemory();
  }
  SetCounters(state);
}
void BM_PlanarCopy_Tight_I420Copy(benchmark::State& state) { I420Copy(state, kWidth, kWidth / 2); }

void BM_PlanarCopy_Padded_ProcessFrame(benchmark::State& state) {
  ProcessFrame(state, kPaddedLuma, kPaddedChroma);
}
// The same visible bytes, row by row.
void BM_PlanarCopy_Padded_Memcpy(benchmark::State& state) {
  Picture src(kPaddedLuma, kPaddedChroma), dst(kPaddedLuma, kPaddedChroma);
  for (auto _ : state) {
    for (uint32_t y = 0; y < kHeight; ++y) {
      memcpy(dst.planes[0] + y * kPaddedLuma, src.planes[0] + y * kPaddedLuma, kWidth);
    }
    for (int p = 1; p < 3; ++p) {
      for (uint32_t y = 0; y < kHeight / 2; ++y) {
        memcpy(dst.planes[p] + y * kPaddedChroma, src.planes[p] + y * kPaddedChroma, kWidth / 2);
      }
    }
    benchmark::ClobberMemory();
  }
  SetCounters(state);
}
void BM_PlanarCopy_Padded_I420Copy(benchmark::State& state) { I420Copy(state, kPaddedLuma, kPaddedChroma); }

}  // namespace

BENCHMARK(BM_PlanarCopy_Tight_ProcessFrame);
BENCHMARK(BM_PlanarCopy_Tight_Memcpy);
BENCHMARK(BM_PlanarCopy_Tight_I420Copy);
BENCHMARK(BM_PlanarCopy_Padded_ProcessFrame);
BENCHMARK(BM_PlanarCopy_Padded_Memcpy);
BENCHMARK(BM_PlanarCopy_Padded_I420Copy);
