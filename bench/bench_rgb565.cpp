// YCbCr 4:2:0 to RGB565 kernels beside libyuv doing the same job: same-size
// 1080p (libyuv with and without its SIMD paths), 2x enlargement, a generic
// 1280x720 to 1080p enlargement and a quarter turn at 1080p.
#include <benchmark/benchmark.h>
#include <libyuv.h>

#include <random>
#include <vector>

#include "imageproc/oru_imageproc.h"

namespace {

struct I420 {
  int w, h;
  std::vector<uint8_t> y, u, v;
  uint8_t* planes[3];
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

// An image processor for 4:2:0 to RGB565 (BT.601 video range), and one frame
// call into an RGB565 destination with the given pitch.
class Converter {
 public:
  Converter(int sw, int sh, int dw, int dh, uint32_t rotation) {
    ImgPrcCreateParams p = {};
    p.size = sizeof p;
    p.format = 0x003;
    p.rotation = rotation;
    p.resizeMode = IMGPRC_RESIZE_BILINEAR_FAST;
    p.srcWidth = sw, p.srcHeight = sh, p.dstWidth = dw, p.dstHeight = dh;
    ok_ = ORU_IMAGEPROC_Create(&handle_, 0, &p) == IMGPRC_OK;
  }
  ~Converter() {
    if (handle_ != nullptr) ORU_IMAGEPROC_Destroy(handle_);
  }
  bool Frame(I420& src, uint8_t* dst, uint32_t pitch) {
    uint8_t* planes[3] = {dst, nullptr, nullptr};
    uint32_t strides[3] = {pitch, 0, 0};
    ImgPrcFrameParams f = {sizeof f, 1, 0};
    return ok_ &&
           ORU_IMAGEPROC_ProcessFrame(handle_, src.planes, src.strides, planes, strides, &f) == IMGPRC_OK;
  }

 private:
  void* handle_ = nullptr;
  bool ok_ = false;
};

void SetPixels(benchmark::State& state, int w, int h) {
  state.SetItemsProcessed(state.iterations() * static_cast<int64_t>(w) * h);
}

void ThroughFrameCall(benchmark::State& state, int sw, int sh, uint32_t rotation, size_t dstBytes,
                      uint32_t pitch, int dw = 1920, int dh = 1080) {
  I420 src(sw, sh);
  Converter c(sw, sh, dw, dh, rotation);
  std::vector<uint8_t> dst(dstBytes);
  for (auto _ : state) {
    if (!c.Frame(src, dst.data(), pitch)) {
      state.SkipWithError("frame call failed");
      break;
    }
    benchmark::ClobberMemory();
  }
  SetPixels(state, dw, dh);
}

void BM_Rgb565_SameSize_1080p(benchmark::State& state) {
  ThroughFrameCall(state, 1920, 1080, 0, 1920 * 1080 * 2, 3840);
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

// Enlargements to 1080p through the frame call. Rows of the enlarging kernels
// are (pitch / 4) * 8 bytes apart: the destination is twice the size.
void BM_Rgb565_Enlarge2x_960x540_to_1080p(benchmark::State& state) {
  ThroughFrameCall(state, 960, 540, 0, 1920 * 1080 * 4, 3840);
}
void BM_Rgb565_Enlarge_720p_to_1080p(benchmark::State& state) {
  ThroughFrameCall(state, 1280, 720, 0, 1920 * 1080 * 4, 3840);
}
BENCHMARK(BM_Rgb565_Enlarge2x_960x540_to_1080p);
BENCHMARK(BM_Rgb565_Enlarge_720p_to_1080p);

// libyuv's bilinear scale of the planes, then its conversion (dw x dh).
void LibyuvScaleConvert(benchmark::State& state, int sw, int sh, int dw = 1920, int dh = 1080) {
  I420 src(sw, sh);
  I420 scaled(dw, dh);
  std::vector<uint8_t> dst(size_t(dw) * dh * 2);
  for (auto _ : state) {
    libyuv::I420Scale(src.planes[0], sw, src.planes[1], sw / 2, src.planes[2], sw / 2, sw, sh,
                      scaled.y.data(), dw, scaled.u.data(), dw / 2, scaled.v.data(), dw / 2, dw, dh,
                      libyuv::kFilterBilinear);
    libyuv::I420ToRGB565(scaled.y.data(), dw, scaled.u.data(), dw / 2, scaled.v.data(), dw / 2, dst.data(),
                         2 * dw, dw, dh);
    benchmark::ClobberMemory();
  }
  SetPixels(state, dw, dh);
}
void BM_Libyuv_ScaleBilinear_ToRGB565_960x540_to_1080p(benchmark::State& state) {
  LibyuvScaleConvert(state, 960, 540);
}
void BM_Libyuv_ScaleBilinear_ToRGB565_720p_to_1080p(benchmark::State& state) {
  LibyuvScaleConvert(state, 1280, 720);
}
BENCHMARK(BM_Libyuv_ScaleBilinear_ToRGB565_960x540_to_1080p);
BENCHMARK(BM_Libyuv_ScaleBilinear_ToRGB565_720p_to_1080p);

// A shrink, 1080p to 1280x720, through the frame call (the any-ratio member:
// rows of 64-bit pixel pairs, pitch / 4 * 8 bytes apart), beside libyuv's
// bilinear scale then convert.
void BM_Rgb565_Shrink_1080p_to_720p(benchmark::State& state) {
  ThroughFrameCall(state, 1920, 1080, 0, 1280 * 720 * 4, 2560, 1280, 720);
}
BENCHMARK(BM_Rgb565_Shrink_1080p_to_720p);

void BM_Libyuv_ScaleBilinear_ToRGB565_1080p_to_720p(benchmark::State& state) {
  LibyuvScaleConvert(state, 1920, 1080, 1280, 720);
}
BENCHMARK(BM_Libyuv_ScaleBilinear_ToRGB565_1080p_to_720p);

// A quarter turn anticlockwise: 1080 rows of 1920 become 1920 rows of 1080.
void BM_Rgb565_QuarterTurn_1080p(benchmark::State& state) {
  ThroughFrameCall(state, 1920, 1080, 1, 1920 * 1080 * 2, 2160);
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
