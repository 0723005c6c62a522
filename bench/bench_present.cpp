// What the presenter adds around the conversion: a whole Present (lock, the
// image processor's frame call, post, and the routine trace lines that are
// formatted and dropped) into a YV12 host window, beside the frame call alone
// into the same window layout and libyuv's I420Copy of the same planes; and a
// whole Present into an RGB565 window beside libyuv's I420ToRGB565, at
// 1280x720. The window keeps no copies of posted pictures here.
#include <benchmark/benchmark.h>
#include <libyuv.h>
#include <stdarg.h>
#include <stdint.h>

#include <vector>

#include "host_window.h"
#include "imageproc/oru_imageproc.h"
#include "presenter/scrim_log.h"
#include "presenter/scrim_present_stream.h"

namespace {

constexpr int kWidth = 1280, kHeight = 720;

struct Source {
  std::vector<uint8_t> y, cb, cr;
  unsigned char* planes[3];
  unsigned long strides[3] = {kWidth, kWidth / 2, kWidth / 2};
  Source() : y(kWidth * kHeight), cb(kWidth * kHeight / 4), cr(kWidth * kHeight / 4) {
    for (size_t i = 0; i < y.size(); ++i) y[i] = static_cast<uint8_t>(i * 7);
    for (size_t i = 0; i < cb.size(); ++i)
      cb[i] = static_cast<uint8_t>(i * 3), cr[i] = static_cast<uint8_t>(i * 5);
    planes[0] = y.data();
    planes[1] = cb.data();
    planes[2] = cr.data();
  }
};

// Android's YV12 layout for a window of kWidth x kHeight with a 16-aligned stride.
struct Yv12Target {
  static constexpr uint32_t kStride = (kWidth + 15) / 16 * 16, kChroma = (kStride / 2 + 15) / 16 * 16;
  std::vector<uint8_t> bytes = std::vector<uint8_t>(kStride * kHeight + kChroma * kHeight);
  uint8_t* y() { return bytes.data(); }
  uint8_t* cr() { return y() + kStride * kHeight; }
  uint8_t* cb() { return cr() + kChroma * kHeight / 2; }
};

// A whole Present, with the window taking YV12 (yv12) or RGB565.
void PresentLoop(benchmark::State& state, bool yv12) {
  Source src;
  HostWindowConfig config{};
  config.width = kWidth;
  config.height = kHeight;
  config.keepPixels = 0;
  ANativeWindow* window = HostWindow_create(&config);
  VP_OPEN_STREAM_PARAMS params{};
  params.dwStreamKind = KV_STREAM_KIND_VIDEO;
  params.dwWidth = kWidth;
  params.dwHeight = kHeight;
  CScrimPresentStream* stream = new CScrimPresentStream(&params, window, nullptr);
  unsigned long fourcc = yv12 ? KV_FOURCC_YV12 : 0;
  stream->Set(IID_IKvVideoPresenterStream, KV_PROPID_VP_PREFER_OUTPUT_FORMAT, nullptr, 0, &fourcc, 8);
  stream->Open();
  uint8_t show = 1;
  stream->Set(IID_IKvVideoPresenterStream, KV_PROPID_VP_SHOW, nullptr, 0, &show, 1);
  VP_PRESENT_STREAM_PARAMS present{};
  for (auto _ : state) {
    if (stream->Present(src.planes, src.strides, &present) != KV_S_OK) state.SkipWithError("Present failed");
  }
  state.SetBytesProcessed(state.iterations() * kWidth * kHeight * 3 / 2);
  stream->Release();
  ANativeWindow_release(window);
}

void BM_Present_YV12(benchmark::State& state) { PresentLoop(state, true); }
BENCHMARK(BM_Present_YV12)->Unit(benchmark::kMicrosecond);

void BM_Present_RGB565(benchmark::State& state) { PresentLoop(state, false); }
BENCHMARK(BM_Present_RGB565)->Unit(benchmark::kMicrosecond);

// libyuv's conversion of the same planes to RGB565 (BT.601), rows as wide as the window's.
void BM_libyuv_I420ToRGB565(benchmark::State& state) {
  Source src;
  const int stride = (kWidth + 111) / 112 * 112 * 2;  // the host window's default row alignment
  std::vector<uint8_t> dst(static_cast<size_t>(stride) * kHeight);
  for (auto _ : state) {
    libyuv::I420ToRGB565(src.planes[0], kWidth, src.planes[1], kWidth / 2, src.planes[2], kWidth / 2,
                         dst.data(), stride, kWidth, kHeight);
    benchmark::ClobberMemory();
  }
  state.SetBytesProcessed(state.iterations() * kWidth * kHeight * 3 / 2);
}
BENCHMARK(BM_libyuv_I420ToRGB565)->Unit(benchmark::kMicrosecond);

void BM_FrameCall_YV12(benchmark::State& state) {
  Source src;
  Yv12Target dst;
  ImgPrcCreateParams c{};
  c.size = sizeof c;
  c.format = 0x000;
  c.resizeMode = 1;
  c.srcWidth = c.dstWidth = kWidth;
  c.srcHeight = c.dstHeight = kHeight;
  void* h = nullptr;
  ORU_IMAGEPROC_Create(&h, 0, &c);
  uint8_t* s[3] = {src.planes[0], src.planes[1], src.planes[2]};
  uint32_t ss[3] = {kWidth, kWidth / 2, kWidth / 2};
  uint8_t* d[3] = {dst.y(), dst.cb(), dst.cr()};
  uint32_t ds[3] = {Yv12Target::kStride, Yv12Target::kChroma, Yv12Target::kChroma};
  ImgPrcFrameParams f{sizeof f, 1, 0};
  for (auto _ : state) benchmark::DoNotOptimize(ORU_IMAGEPROC_ProcessFrame(h, s, ss, d, ds, &f));
  state.SetBytesProcessed(state.iterations() * kWidth * kHeight * 3 / 2);
  ORU_IMAGEPROC_Destroy(h);
}
BENCHMARK(BM_FrameCall_YV12)->Unit(benchmark::kMicrosecond);

void BM_libyuv_I420Copy_YV12(benchmark::State& state) {
  Source src;
  Yv12Target dst;
  for (auto _ : state) {
    libyuv::I420Copy(src.planes[0], kWidth, src.planes[1], kWidth / 2, src.planes[2], kWidth / 2, dst.y(),
                     Yv12Target::kStride, dst.cb(), Yv12Target::kChroma, dst.cr(), Yv12Target::kChroma,
                     kWidth, kHeight);
    benchmark::ClobberMemory();
  }
  state.SetBytesProcessed(state.iterations() * kWidth * kHeight * 3 / 2);
}
BENCHMARK(BM_libyuv_I420Copy_YV12)->Unit(benchmark::kMicrosecond);

void Trace(const char* format, ...) {
  va_list args;
  va_start(args, format);
  ScrimLogWrite(SCRIM_LOG_TRACE, format, args);
  va_end(args);
}

// One routine line: formatted, then dropped. Present writes about twenty.
void BM_DroppedTraceLine(benchmark::State& state) {
  int line = 0;
  for (auto _ : state)
    Trace("[%s %d] delayUs = %lld, func_delayUs = %lld", "Present", ++line, 40000LL, 1234LL);
}
BENCHMARK(BM_DroppedTraceLine);

}  // namespace
