// Any-ratio YCbCr 4:2:0 to RGB565: a walk over 2x2 output blocks that samples
// bilinear luma and nearest chroma, and a writer that places each block (wide
// pairs in rows, or the rotation cursors).
#include "kernels/resize_walk.h"
#include "kernels/rgb565_writers.h"
#include "kernels/rgb_steps.h"
#include "kernels/yuv420_rgb16.h"
#include "kernels/yuv_color_step.h"

using namespace scrim;

extern "C" SCRIM_API uint32_t _ORUYCbCr420ToRGB565Rsz(ImgPrcContext* ctx, const uint8_t* const* src,
                                                      const uint32_t* srcStrides, int32_t srcWidth,
                                                      int32_t srcHeight, uint8_t* dst, int32_t pitch,
                                                      int32_t dstWidth, int32_t dstHeight) {
  if (dstHeight < 1) return 0;
  WidePairBlockWriter out(dst, pitch);
  WalkResized<ChromaRows::kShared420>(ColorTables(ctx), Rgb565Step{}, src, srcStrides, srcWidth, srcHeight,
                                      dstWidth, dstHeight, out);
  return 0;
}

extern "C" SCRIM_API uint32_t _ORUYCbCr420ToRGB565RszRot(ImgPrcContext* ctx, const uint8_t* const* src,
                                                         const uint32_t* srcStrides, int32_t srcWidth,
                                                         int32_t srcHeight, int32_t dstWidth,
                                                         int32_t dstHeight) {
  if (dstHeight < 1) return 0;
  if (ctx->rotationRecord == nullptr) return 0xFFFFFFFFu;
  CursorBlockWriter out(*ctx->rotationRecord);
  WalkResized<ChromaRows::kShared420>(ColorTables(ctx), Rgb565Step{}, src, srcStrides, srcWidth, srcHeight,
                                      dstWidth, dstHeight, out);
  return 0;
}
