// Any-ratio YCbCr 4:2:0 to RGB565: a walk over 2x2 output blocks that samples
// bilinear luma and nearest chroma, and a writer that places each block (wide
// pairs in rows, or the rotation cursors).
#include "kernels/resize_step.h"
#include "kernels/rgb565_writers.h"
#include "kernels/yuv420_rgb16.h"
#include "kernels/yuv_color_step.h"

using namespace scrim;

namespace {

template <class Writer>
void WalkResized(const ImgPrcContext* ctx, const uint8_t* const* src, const uint32_t* strides,
                 int32_t srcWidth, int32_t srcHeight, int32_t dstWidth, int32_t dstHeight, Writer& out) {
  const uint32_t sx = static_cast<uint32_t>(ResizeStep(srcWidth, dstWidth));
  const uint32_t sy = static_cast<uint32_t>(ResizeStep(srcHeight, dstHeight));
  const int32_t last = srcWidth - 1;
  const ColorTables tab(ctx);
  for (int32_t n = 0; 2 * n < dstHeight; ++n) {
    const uint32_t y0 = static_cast<uint32_t>(2 * n) * sy;
    const LumaRowPair top(src[0], strides[0], y0);
    const LumaRowPair bottom(src[0], strides[0], y0 + sy);
    const ptrdiff_t crow = (top.yi + bottom.yi + 1) >> 2;
    const uint8_t* cb = src[1] + crow * static_cast<ptrdiff_t>(strides[1]);
    const uint8_t* cr = src[2] + crow * static_cast<ptrdiff_t>(strides[2]);
    out.RowPair(n);
    for (int32_t m = 0; 2 * m < dstWidth; ++m) {
      const uint32_t x0 = static_cast<uint32_t>(2 * m) * sx;
      const uint32_t x1 = x0 + sx;
      const int32_t ccol = static_cast<int32_t>((x0 >> 16) + (x1 >> 16) + 1) >> 2;
      const ChromaTerms t = ChromaTermsOf(tab, cb[ccol], cr[ccol]);
      out.Block(m, Rgb565(tab.Luma(top.At(x0, last)), t), Rgb565(tab.Luma(top.At(x1, last)), t),
                Rgb565(tab.Luma(bottom.At(x0, last)), t), Rgb565(tab.Luma(bottom.At(x1, last)), t));
    }
  }
}

}  // namespace

extern "C" SCRIM_API uint32_t _ORUYCbCr420ToRGB565Rsz(ImgPrcContext* ctx, const uint8_t* const* src,
                                                      const uint32_t* srcStrides, int32_t srcWidth,
                                                      int32_t srcHeight, uint8_t* dst, int32_t pitch,
                                                      int32_t dstWidth, int32_t dstHeight) {
  if (dstHeight < 1) return 0;
  WidePairBlockWriter out(dst, pitch);
  WalkResized(ctx, src, srcStrides, srcWidth, srcHeight, dstWidth, dstHeight, out);
  return 0;
}

extern "C" SCRIM_API uint32_t _ORUYCbCr420ToRGB565RszRot(ImgPrcContext* ctx, const uint8_t* const* src,
                                                         const uint32_t* srcStrides, int32_t srcWidth,
                                                         int32_t srcHeight, int32_t dstWidth,
                                                         int32_t dstHeight) {
  if (dstHeight < 1) return 0;
  if (ctx->rotationRecord == nullptr) return 0xFFFFFFFFu;
  CursorBlockWriter out(*ctx->rotationRecord);
  WalkResized(ctx, src, srcStrides, srcWidth, srcHeight, dstWidth, dstHeight, out);
  return 0;
}
