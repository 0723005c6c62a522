#include "conversion_probe.h"

#include <dlfcn.h>
#include <time.h>

#include "android/soft_renderer.h"

namespace {

double NowMs() {
  struct timespec ts;
  clock_gettime(CLOCK_MONOTONIC, &ts);
  return ts.tv_sec * 1000.0 + ts.tv_nsec / 1e6;
}

// The renderer's own converter set-up, asked of the library on a record of
// our own, so that the probe converts with exactly the stream's settings.
using CreateConverterFn = void (*)(ANDROID_SOFTRENDER*);

}  // namespace

ConversionProbe::ConversionProbe(const ScrimLibrary& lib, int width, int height, uint32_t colourFormat,
                                 bool yv12, uint32_t deinterlace)
    : lib_(lib), yv12_(yv12), deinterlace_(deinterlace), width_(width), height_(height) {
  ANDROID_SOFTRENDER record{};
  record.size = sizeof record;
  record.InWidth = static_cast<uint32_t>(width);
  record.InHeight = static_cast<uint32_t>(height);
  record.InputFormat = colourFormat;
  record.OutputMode = yv12 ? SOFTRENDER_OUTPUT_YV12 : SOFTRENDER_OUTPUT_RGB565;
  auto createConverter = reinterpret_cast<CreateConverterFn>(dlsym(lib_.handle, "CreateConverter"));
  if (createConverter == nullptr) return;
  createConverter(&record);
  handle_ = record.Converter;
  const size_t chroma = static_cast<size_t>((width + 1) / 2) * ((height + 1) / 2);
  out_.assign(static_cast<size_t>(width) * height * 2 + 2 * chroma, 0);
}

ConversionProbe::~ConversionProbe() {
  if (handle_ != nullptr) lib_.imgDestroy(handle_);
}

double ConversionProbe::measure(Picture& p) {
  if (handle_ == nullptr) return -1;
  uint8_t* src[3] = {p.planeData(0), p.planeData(1), p.planeData(2)};
  uint32_t srcStrides[3] = {uint32_t(p.planeStride(0)), uint32_t(p.planeStride(1)),
                            uint32_t(p.planeStride(2))};
  uint8_t* dst[3];
  uint32_t dstStrides[3];
  if (yv12_) {
    const uint32_t cw = static_cast<uint32_t>((width_ + 1) / 2),
                   ch = static_cast<uint32_t>((height_ + 1) / 2);
    dst[0] = out_.data();
    dst[1] = out_.data() + static_cast<size_t>(width_) * height_;
    dst[2] = dst[1] + static_cast<size_t>(cw) * ch;
    dstStrides[0] = static_cast<uint32_t>(width_);
    dstStrides[1] = dstStrides[2] = cw;
  } else {
    dst[0] = out_.data();
    dst[1] = dst[2] = nullptr;
    dstStrides[0] = static_cast<uint32_t>(width_) * 2;
    dstStrides[1] = dstStrides[2] = 0;
  }
  ImgPrcFrameParams f{sizeof f, 1, deinterlace_};
  const double start = NowMs();
  uint32_t r = lib_.imgProcess(handle_, src, srcStrides, dst, dstStrides, &f);
  const double ms = NowMs() - start;
  return r == 0 || r == 1 ? ms : -1;
}
