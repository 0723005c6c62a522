// Router of YCbCr 4:2:0 input to RGB565 (output 3) and RGB555 (output 10):
// picks the kernel from rotation, resize case and resize method, and calls it
// with that kernel's argument shape. Kernel results are not passed on.
#include <stddef.h>

#include "imageproc/route_kernel.h"
#include "imageproc/routes.h"
#include "kernels/yuv420_rgb16.h"

namespace {

// Bytes each line buffer must hold for the kernel that a resize case picks;
// 0 when the kernel uses none.
size_t LineBytesNeeded(const ImgPrcContext* ctx) {
  const size_t w = ctx->workSrcWidth;
  auto atLeast = [](size_t v, size_t floor) { return v < floor ? floor : v; };
  if (ctx->rotation != 0) return ctx->resizeCase == 2 ? atLeast(w + 1, 4) * 8 : 0;
  switch (ctx->resizeCase) {
    case 2:
    case 4:
      if (ctx->resizeMode == IMGPRC_RESIZE_NEAREST) return atLeast(w, 2) * 2;
      if (ctx->resizeMode == IMGPRC_RESIZE_NEAR_LINEAR) return atLeast(w, 2) * 8;
      return atLeast(w + 1, 4) * 8;
    case 5:
      return atLeast(w, 4) * 8;
    case 6:
      return atLeast(w + 1, 4) * 8;
    case 7:
      return 320 * 4;
    default:
      return 0;
  }
}

// The set-up places the four line buffers one line size apart; a set too
// small for the chosen kernel would let one line run into the next (or past
// the block), so such a frame is refused instead.
bool LineBuffersFit(const ImgPrcContext* ctx) {
  const size_t need = LineBytesNeeded(ctx);
  if (need == 0 || ctx->lineBuffer[0] == nullptr || ctx->lineBuffer[1] == nullptr) return true;
  return static_cast<size_t>(ctx->lineBuffer[1] - ctx->lineBuffer[0]) >= need;
}

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
  if (!LineBuffersFit(ctx)) return kImgPrcNoKernel;
  if (ctx->rotation != 0) {
    RouteRotated(ctx, io, sw, sh, dw, dh);
  } else {
    RouteUpright(ctx, io, sw, sh, dw, dh);
  }
  return 0;
}
