// The timed loops shared by the benchmarks: any call (the libyuv side), and
// the image processor's frame call (one instance made from `params`, each
// iteration one frame from `src` to `dst`).
#pragma once

#include <benchmark/benchmark.h>
#include <stdint.h>

#include "imageproc/oru_imageproc.h"

// Times `call`, with the memory it wrote treated as read after each round.
template <class F>
inline void TimeCalls(benchmark::State& state, F call) {
  for (auto _ : state) {
    call();
    benchmark::ClobberMemory();
  }
}

// A refused creation or frame ends the benchmark with an error rather than
// timing a call that did nothing.
inline void TimeFrames(benchmark::State& state, const ImgPrcCreateParams& params, uint8_t** src,
                       uint32_t* srcStrides, uint8_t** dst, uint32_t* dstStrides, uint32_t deinterlace = 0) {
  ImgPrcCreateParams p = params;
  void* handle = nullptr;
  if (ORU_IMAGEPROC_Create(&handle, 0, &p) != IMGPRC_OK) {
    state.SkipWithError("image processor creation failed");
    return;
  }
  ImgPrcFrameParams frame = {sizeof frame, 0, deinterlace};
  for (auto _ : state) {
    if (ORU_IMAGEPROC_ProcessFrame(handle, src, srcStrides, dst, dstStrides, &frame) != IMGPRC_OK) {
      state.SkipWithError("frame call failed");
      break;
    }
    benchmark::ClobberMemory();
  }
  ORU_IMAGEPROC_Destroy(handle);
}
