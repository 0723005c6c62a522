// The walk of the same-size YCbCr 4:2:0 to RGB kernels over 2x2 blocks, kept
// apart from the colour arithmetic (a colour functor turns a block's samples
// into four finished pixels) and from where the pixels go (a block writer).
#pragma once

#include <stddef.h>
#include <stdint.h>

#include "kernels/yuv_color_step.h"

namespace scrim {

template <typename Px>
struct Block4 {
  Px p00, p10, p01, p11;  // top-left, top-right, bottom-left, bottom-right
};

// The colour step of one family applied to a block: the chroma pair's terms
// are formed once and serve all four luma samples. Step(luma entry, terms)
// returns a finished pixel.
template <class Step>
struct SharedChroma {
  ColorTables tab;
  Step step;
  using Pixel = decltype(step(ptrdiff_t{}, ChromaTerms{}));
  Block4<Pixel> operator()(uint8_t y00, uint8_t y10, uint8_t y01, uint8_t y11, uint8_t cb, uint8_t cr) const {
    const ChromaTerms t = ChromaTermsOf(tab, cb, cr);
    return {step(tab.Luma(y00), t), step(tab.Luma(y10), t), step(tab.Luma(y01), t), step(tab.Luma(y11), t)};
  }
};

// Row pairs while row < height, column pairs while column < width: an odd
// size is walked as the next even one. Both chroma planes use stride 1.
template <class Color, class Writer>
void Walk420(const uint8_t* const* src, const uint32_t* strides, int32_t width, int32_t height, Color color,
             Writer& out) {
  const ptrdiff_t ys = strides[0];
  const ptrdiff_t cs = strides[1];
  const uint8_t* y = src[0];
  const uint8_t* cb = src[1];
  const uint8_t* cr = src[2];
  for (int32_t k = 0; 2 * k < height; ++k) {
    out.RowPair(k);
    const uint8_t* y0 = y;
    const uint8_t* y1 = y + ys;
    for (int32_t m = 0; 2 * m < width; ++m) {
      const auto b = color(y0[2 * m], y0[2 * m + 1], y1[2 * m], y1[2 * m + 1], cb[m], cr[m]);
      out.Block(m, b.p00, b.p10, b.p01, b.p11);
    }
    y += 2 * ys;
    cb += cs;
    cr += cs;
  }
}

}  // namespace scrim
