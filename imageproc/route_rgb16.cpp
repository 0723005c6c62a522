// Router of YCbCr 4:2:0 input to RGB565 (output 3) and RGB555 (output 10):
// picks the kernel from rotation, resize case and resize method, and calls it
// with that kernel's argument shape. Kernel results are not passed on.
#include <stddef.h>

#include "imageproc/route_kernel.h"
#include "imageproc/routes.h"
#include "kernels/yuv420_rgb16.h"

namespace {

void RouteRotated(ImgPrcContext* ctx, const ImgPrcFrameIO& io, int32_t sw, int32_t sh, int32_t dw,
                  int32_t dh) {
  switch (ctx->resizeCase) {
    case 0:
      _ORUYCbCr420ToRGB565Rot(ctx, io.src, io.srcStrides, sw, sh);
      return;
    case 2: {
      // One cursor, stepped per output pixel and per output row: half of the
      // record's steps, which span a 2x2 block.
      const ImgPrcRotationRecord* rec = ctx->rotationRecord;
      uint8_t* first = rec != nullptr ? rec->pix00 : nullptr;
      const int32_t rowStep = rec != nullptr ? rec->stepY / 2 : 0;
      const int32_t colStep = rec != nullptr ? rec->stepX / 2 : 0;
      _ORUYCbCr420ToRGB565RszUpRot(ctx, ctx->lineBuffer, io.src, io.srcStrides, sw, sh, first, rowStep,
                                   colStep, dw, dh);
      return;
    }
    default:
      _ORUYCbCr420ToRGB565RszRot(ctx, io.src, io.srcStrides, sw, sh, dw, dh);
      return;
  }
}

void RouteUpright(ImgPrcContext* ctx, const ImgPrcFrameIO& io, int32_t sw, int32_t sh, int32_t dw,
                  int32_t dh) {
  uint8_t* const dst = io.dst[0];
  const int32_t pitch = static_cast<int32_t>(io.dstStrides[0]);
  uint8_t* const* lines = ctx->lineBuffer;
  switch (ctx->resizeCase) {
    case 0:
      _ORUYCbCr420ToRGB565(ctx, io.src, io.srcStrides, sw, sh, dst, pitch);
      return;
    case 2:
    case 4:
      if (ctx->resizeMode == IMGPRC_RESIZE_NEAREST) {
        _ORUYCbCr420ToRGB565RszUp_Nearest(ctx, lines, io.src, io.srcStrides, sw, sh, dst, pitch, dw, dh);
      } else if (ctx->resizeMode == IMGPRC_RESIZE_NEAR_LINEAR) {
        _ORUYCbCr420ToRGB565RszUp_NearLinear(ctx, lines, io.src, io.srcStrides, sw, sh, dst, pitch, dw, dh);
      } else {
        _ORUYCbCr420ToRGB565RszUp(ctx, lines, io.src, io.srcStrides, sw, sh, dst, pitch, dw, dh);
      }
      return;
    case 5:
      _ORUYCbCr420ToRGB565Case1(ctx, lines, io.src, io.srcStrides, sw, dst, pitch, dh);
      return;
    case 6:
      _ORUYCbCr420ToRGB565Case2(ctx, lines, io.src, io.srcStrides, sw, sh, dst, pitch, dh);
      return;
    case 7:
      _ORUYCbCr420ToRGB565Case3(ctx, lines[0], lines[1], io.src, io.srcStrides, dst, pitch);
      return;
    default:  // 1, 3 and anything else
      _ORUYCbCr420ToRGB565Rsz(ctx, io.src, io.srcStrides, sw, sh, dst, pitch, dw, dh);
      return;
  }
}

}  // namespace

int ImgPrcRoute_YCbCr420ToRGB16(ImgPrcContext* ctx, const ImgPrcFrameIO& io) {
  const int32_t sw = static_cast<int32_t>(ctx->workSrcWidth);
  const int32_t sh = static_cast<int32_t>(ctx->workSrcHeight);
  const int32_t dw = static_cast<int32_t>(ctx->workDstWidth);
  const int32_t dh = static_cast<int32_t>(ctx->workDstHeight);
  const uint32_t out = ImgPrcOutputCode(ctx);
  if (out == IMGPRC_FMT_RGB555) {
    // Scaling and rotation settings do not apply to RGB555.
    _ORUYCbCr420ToRGB555(ctx, io.src, io.srcStrides, sw, sh, io.dst[0],
                         static_cast<int32_t>(io.dstStrides[0]), ctx->colorKey);
    return 0;
  }
  if (out != IMGPRC_FMT_RGB565) return kImgPrcNoKernel;
  // No kernel can run safely on line buffers that are too small for it.
  if (ctx->rotation != 0) {
    RouteRotated(ctx, io, sw, sh, dw, dh);
  } else {
    RouteUpright(ctx, io, sw, sh, dw, dh);
  }
  return 0;
}
