// Planar YCbCr 4:2:2 and 4:4:4 to RGB: the 4:2:0 colour steps and stores
// with the chroma addressing of these layouts.
#include "kernels/yuv422444_rgb.h"
#include "kernels/resize_walk.h"
#include "kernels/rgb32_writers.h"
#include "kernels/rgb565_writers.h"
#include "kernels/rgb_steps.h"

using namespace scrim;

namespace {

template <bool kHalfWidthChroma, class Px, class Step>
uint32_t RszRot(const ImgPrcContext* ctx, const uint8_t* const* src, const uint32_t* strides, int32_t sw,
                int32_t sh, int32_t dw, int32_t dh, Step step) {
  // These members report 0 whatever happens; without a record nothing is written.
  if (dh < 1 || ctx->rotationRecord == nullptr) return 0;
  CursorPixelWriter<Px> out(*ctx->rotationRecord);
  WalkResizedPixels<kHalfWidthChroma>(ColorTables(ctx), step, src, strides, sw, sh, dw, dh, out);
  return 0;
}

}  // namespace

extern "C" SCRIM_API uint32_t _ORUYCbCr422ToRGB565(ImgPrcContext* ctx, const uint8_t* const* src,
                                                   const uint32_t* srcStrides, int32_t width, int32_t height,
                                                   uint8_t* dst, int32_t pitch) {
  if (height < 1) return 0;
  const ColorTables tab(ctx);
  const Rgb565Step step;
  const uint8_t* y = src[0];
  const uint8_t* cb = src[1];
  const uint8_t* cr = src[2];
  for (int32_t r = 0; r < height; ++r) {
    for (int32_t m = 0; 2 * m < width; ++m) {
      const ChromaTerms t = ChromaTermsOf(tab, cb[m], cr[m]);
      Store565::Put(dst + 4 * m, step(tab.Luma(y[2 * m]), t));
      Store565::Put(dst + 4 * m + 2, step(tab.Luma(y[2 * m + 1]), t));
    }
    y += srcStrides[0];
    cb += srcStrides[1];
    cr += srcStrides[1];
    dst += EvenBytes(pitch);
  }
  return 0;
}

extern "C" SCRIM_API uint32_t _ORUYCbCr422ToRGB565Rsz(ImgPrcContext* ctx, const uint8_t* const* src,
                                                      const uint32_t* srcStrides, int32_t srcWidth,
                                                      int32_t srcHeight, uint8_t* dst, int32_t pitch,
                                                      int32_t dstWidth, int32_t dstHeight) {
  if (dstHeight < 1) return 0;
  WidePairBlockWriter out(dst, pitch);
  WalkResized<ChromaRows::kPerRow422>(ColorTables(ctx), Rgb565Step{}, src, srcStrides, srcWidth, srcHeight,
                                      dstWidth, dstHeight, out);
  return 0;
}

extern "C" SCRIM_API uint32_t _ORUYCbCr422ToARGB32RszRot(ImgPrcContext* ctx, const uint8_t* const* src,
                                                         const uint32_t* srcStrides, int32_t srcWidth,
                                                         int32_t srcHeight, int32_t dstWidth,
                                                         int32_t dstHeight, uint32_t alpha) {
  return RszRot<true, Store32Wide>(ctx, src, srcStrides, srcWidth, srcHeight, dstWidth, dstHeight,
                                   ArgbStep{AlphaBits(alpha)});
}

extern "C" SCRIM_API uint32_t _ORUYCbCr422ToABGR32RszRot(ImgPrcContext* ctx, const uint8_t* const* src,
                                                         const uint32_t* srcStrides, int32_t srcWidth,
                                                         int32_t srcHeight, int32_t dstWidth,
                                                         int32_t dstHeight, uint32_t alpha) {
  return RszRot<true, Store32Wide>(ctx, src, srcStrides, srcWidth, srcHeight, dstWidth, dstHeight,
                                   AbgrStep{AlphaBits(alpha)});
}

extern "C" SCRIM_API uint32_t _ORUYCbCr444ToRGB565RszRot(ImgPrcContext* ctx, const uint8_t* const* src,
                                                         const uint32_t* srcStrides, int32_t srcWidth,
                                                         int32_t srcHeight, int32_t dstWidth,
                                                         int32_t dstHeight) {
  return RszRot<false, Store565>(ctx, src, srcStrides, srcWidth, srcHeight, dstWidth, dstHeight,
                                 Rgb565Step{});
}

extern "C" SCRIM_API uint32_t _ORUYCbCr444ToRGB888RszRot(ImgPrcContext* ctx, const uint8_t* const* src,
                                                         const uint32_t* srcStrides, int32_t srcWidth,
                                                         int32_t srcHeight, int32_t dstWidth,
                                                         int32_t dstHeight) {
  return RszRot<false, Store888>(ctx, src, srcStrides, srcWidth, srcHeight, dstWidth, dstHeight, ArgbStep{0});
}

extern "C" SCRIM_API uint32_t _ORUYCbCr444ToARGB32RszRot(ImgPrcContext* ctx, const uint8_t* const* src,
                                                         const uint32_t* srcStrides, int32_t srcWidth,
                                                         int32_t srcHeight, int32_t dstWidth,
                                                         int32_t dstHeight, uint32_t alpha) {
  return RszRot<false, Store32Wide>(ctx, src, srcStrides, srcWidth, srcHeight, dstWidth, dstHeight,
                                    ArgbStep{AlphaBits(alpha)});
}

extern "C" SCRIM_API uint32_t _ORUYCbCr444ToABGR32RszRot(ImgPrcContext* ctx, const uint8_t* const* src,
                                                         const uint32_t* srcStrides, int32_t srcWidth,
                                                         int32_t srcHeight, int32_t dstWidth,
                                                         int32_t dstHeight, uint32_t alpha) {
  return RszRot<false, Store32Wide>(ctx, src, srcStrides, srcWidth, srcHeight, dstWidth, dstHeight,
                                    AbgrStep{AlphaBits(alpha)});
}
