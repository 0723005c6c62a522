// One program for scripts/arm64-count: converts a 320x240 YCbCr 4:2:0
// picture to RGB565 N times, through the library's frame call or libyuv's
// I420ToRGB565, so that two runs with different N cost one conversion in
// executed instructions.
#include <libyuv.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>

#include <vector>

#include "imageproc/oru_imageproc.h"

int main(int argc, char** argv) {
  if (argc != 3 || (strcmp(argv[1], "scrim") != 0 && strcmp(argv[1], "libyuv") != 0)) {
    fprintf(stderr, "usage: %s scrim|libyuv REPEATS\n", argv[0]);
    return 2;
  }
  const int w = 320, h = 240, repeats = atoi(argv[2]);
  std::vector<uint8_t> y(w * h), u(w * h / 4), v(w * h / 4), dst(w * h * 2);
  uint32_t seed = 1;
  for (auto* p : {&y, &u, &v})
    for (auto& s : *p) s = uint8_t((seed = seed * 1103515245 + 12345) >> 16);
  uint8_t* planes[3] = {y.data(), u.data(), v.data()};
  uint32_t strides[3] = {uint32_t(w), uint32_t(w / 2), uint32_t(w / 2)};
  if (strcmp(argv[1], "libyuv") == 0) {
    for (int i = 0; i < repeats; ++i)
      libyuv::I420ToRGB565(y.data(), w, u.data(), w / 2, v.data(), w / 2, dst.data(), w * 2, w, h);
    return 0;
  }
  ImgPrcCreateParams p = {};
  p.size = sizeof p;
  p.format = 0x003;
  p.resizeMode = IMGPRC_RESIZE_BILINEAR_FAST;
  p.srcWidth = p.dstWidth = w, p.srcHeight = p.dstHeight = h;
  void* handle = nullptr;
  if (ORU_IMAGEPROC_Create(&handle, 0, &p) != IMGPRC_OK) {
    fprintf(stderr, "%s: image processor not created\n", argv[0]);
    return 1;
  }
  uint8_t* out[3] = {dst.data(), nullptr, nullptr};
  uint32_t outStrides[3] = {uint32_t(w * 2), 0, 0};
  ImgPrcFrameParams f = {sizeof f, 1, 0};
  for (int i = 0; i < repeats; ++i)
    if (ORU_IMAGEPROC_ProcessFrame(handle, planes, strides, out, outStrides, &f) != IMGPRC_OK) return 1;
  ORU_IMAGEPROC_Destroy(handle);
  return 0;
}
