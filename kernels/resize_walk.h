// The sampling walks of the any-ratio YCbCr to RGB kernels, kept apart from
// the colour step (Step(luma entry, terms) -> pixel) and from where pixels go.
#pragma once

#include <stddef.h>
#include <stdint.h>

#include "kernels/resize_step.h"
#include "kernels/yuv_color_step.h"

namespace scrim {

// Chroma rows of the block walk: 4:2:0 takes one chroma pair per 2x2 output
// block, at the block centre; 4:2:2 keeps the column rule and takes each
// output row's chroma from its own luma row.
enum class ChromaRows { kShared420, kPerRow422 };

// 2x2 output blocks: bilinear luma, nearest chroma at the block centre
// ((xi0 + xi1 + 1) >> 2 across). Writer as in rgb565_writers.h.
template <ChromaRows kRows, class Step, class Writer>
void WalkResized(const ColorTables& tab, Step step, const uint8_t* const* src, const uint32_t* strides,
                 int32_t srcWidth, int32_t srcHeight, int32_t dstWidth, int32_t dstHeight, Writer& out) {
  const uint32_t sx = static_cast<uint32_t>(ResizeStep(srcWidth, dstWidth));
  const uint32_t sy = static_cast<uint32_t>(ResizeStep(srcHeight, dstHeight));
  const int32_t last = srcWidth - 1;
  for (int32_t n = 0; 2 * n < dstHeight; ++n) {
    const uint32_t y0 = static_cast<uint32_t>(2 * n) * sy;
    const PlaneRowPair top(src[0], strides[0], y0);
    const PlaneRowPair bottom(src[0], strides[0], y0 + sy);
    const ptrdiff_t c0 = kRows == ChromaRows::kShared420 ? (top.yi + bottom.yi + 1) >> 2 : top.yi;
    const ptrdiff_t c1 = kRows == ChromaRows::kShared420 ? c0 : bottom.yi;
    const uint8_t* cb0 = src[1] + c0 * static_cast<ptrdiff_t>(strides[1]);
    const uint8_t* cr0 = src[2] + c0 * static_cast<ptrdiff_t>(strides[2]);
    const uint8_t* cb1 = src[1] + c1 * static_cast<ptrdiff_t>(strides[1]);
    const uint8_t* cr1 = src[2] + c1 * static_cast<ptrdiff_t>(strides[2]);
    out.RowPair(n);
    for (int32_t m = 0; 2 * m < dstWidth; ++m) {
      const uint32_t x0 = static_cast<uint32_t>(2 * m) * sx;
      const uint32_t x1 = x0 + sx;
      const int32_t ccol = static_cast<int32_t>((x0 >> 16) + (x1 >> 16) + 1) >> 2;
      const ChromaTerms t0 = ChromaTermsOf(tab, cb0[ccol], cr0[ccol]);
      const ChromaTerms t1 = kRows == ChromaRows::kShared420 ? t0 : ChromaTermsOf(tab, cb1[ccol], cr1[ccol]);
      out.Block(m, step(tab.Luma(top.At(x0, last)), t0), step(tab.Luma(top.At(x1, last)), t0),
                step(tab.Luma(bottom.At(x0, last)), t1), step(tab.Luma(bottom.At(x1, last)), t1));
    }
  }
}

// One pixel at a time through the first cursor of the rotation record, half
// its block steps apart, used rounded down to an even number of bytes. A
// 3-byte pixel has no even-byte grid: its steps (3 bytes, or a stride) are
// used as they are, since rounding them would walk a mirrored or turned
// picture off the start of the destination.
template <class Px>
class CursorPixelWriter {
 public:
  explicit CursorPixelWriter(const ImgPrcRotationRecord& rec)
      : first_(rec.pix00), col_(Half(rec.stepX)), row_(Half(rec.stepY)) {}
  void Row(int32_t j) { at_ = first_ + j * row_; }
  void Put(int32_t i, typename Px::Pixel v) { Px::Put(at_ + i * col_, v); }

 private:
  static ptrdiff_t Half(int32_t blockStep) {
    return Px::kPixelBytes % 2 == 0 ? static_cast<ptrdiff_t>(blockStep >> 2) * 2 : blockStep >> 1;
  }
  uint8_t* first_;
  ptrdiff_t col_;
  ptrdiff_t row_;
  uint8_t* at_ = nullptr;
};

// Every output pixel interpolates Y, Cb and Cr bilinearly from their own
// planes. With half-width chroma (4:2:2) the chroma position across is halved
// and its last column is srcWidth / 2 - 1; rows are the luma rows.
template <bool kHalfWidthChroma, class Step, class Writer>
void WalkResizedPixels(const ColorTables& tab, Step step, const uint8_t* const* src, const uint32_t* strides,
                       int32_t srcWidth, int32_t srcHeight, int32_t dstWidth, int32_t dstHeight,
                       Writer& out) {
  const uint32_t sx = static_cast<uint32_t>(ResizeStep(srcWidth, dstWidth));
  const uint32_t sy = static_cast<uint32_t>(ResizeStep(srcHeight, dstHeight));
  const int32_t last = srcWidth - 1;
  const int32_t lastC = kHalfWidthChroma ? (srcWidth >> 1) - 1 : last;
  for (int32_t j = 0; j < dstHeight; ++j) {
    const uint32_t y = static_cast<uint32_t>(j) * sy;
    const PlaneRowPair luma(src[0], strides[0], y);
    const PlaneRowPair cb(src[1], strides[1], y);
    const PlaneRowPair cr(src[2], strides[2], y);
    out.Row(j);
    for (int32_t i = 0; i < dstWidth; ++i) {
      const uint32_t x = static_cast<uint32_t>(i) * sx;
      const uint32_t xc = kHalfWidthChroma ? x >> 1 : x;
      const ChromaTerms t = ChromaTermsOf(tab, cb.At(xc, lastC), cr.At(xc, lastC));
      out.Put(i, step(tab.Luma(luma.At(x, last)), t));
    }
  }
}

}  // namespace scrim
