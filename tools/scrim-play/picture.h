// One 8-bit planar YCbCr 4:2:0 picture as the player hands it to a stream.
#pragma once

#include <stddef.h>
#include <stdint.h>

#include <vector>

struct Picture {
  int width = 0;
  int height = 0;
  std::vector<uint8_t> y, cb, cr;  // chroma planes are (width+1)/2 x (height+1)/2

  int chromaWidth() const { return (width + 1) / 2; }
  int chromaHeight() const { return (height + 1) / 2; }
  void resize(int w, int h) {
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
