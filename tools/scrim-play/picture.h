// One 8-bit planar YCbCr 4:2:0 picture as the player hands it to a stream.
#pragma once

#include <stddef.h>
#include <stdint.h>

#include <vector>

struct Picture {
  int width = 0;
  int height = 0;
  std::vector<uint8_t> y, cb, cr;  // chroma planes are (width+1)/2 x (height+1)/2
  // Planes that live elsewhere (a decoder's own picture, presented without a
  // copy): when plane[0] is set they stand in for y, cb and cr. resize() drops them.
  uint8_t* plane[3] = {nullptr, nullptr, nullptr};
  int stride[3] = {0, 0, 0};
  // Presentation time on the stream's clock; -1: the source has none, and the
  // picture is due one picture period after the one before.
  int64_t ptsUs = -1;

  int chromaWidth() const { return (width + 1) / 2; }
  int chromaHeight() const { return (height + 1) / 2; }
  uint8_t* planeData(int i) {
    if (plane[0] != nullptr) return plane[i];
    return i == 0 ? y.data() : i == 1 ? cb.data() : cr.data();
  }
  int planeStride(int i) const {
    if (plane[0] != nullptr) return stride[i];
    return i == 0 ? width : chromaWidth();
  }
  void resize(int w, int h) {
    plane[0] = plane[1] = plane[2] = nullptr;
    ptsUs = -1;
    width = w;
    height = h;
    y.assign(static_cast<size_t>(w) * h, 16);
    cb.assign(static_cast<size_t>(chromaWidth()) * chromaHeight(), 128);
    cr.assign(cb.size(), 128);
  }
};

// Frame rate as a fraction.
struct FrameRate {
  int num = 25;
  int den = 1;
  double fps() const { return static_cast<double>(num) / den; }
  int64_t frameUs() const { return static_cast<int64_t>(1000000.0 * den / num + 0.5); }
};
