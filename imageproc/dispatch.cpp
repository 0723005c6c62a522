// Per-frame dispatch: deinterlace into the work area when a mode is set, set up
// the destination addressing, and hand the frame to the router of its family.
#include "deinterlace/deinterlace.h"
#include "imageproc/pipeline.h"
#include "imageproc/rotation.h"
#include "imageproc/route_kernel.h"
#include "imageproc/routes.h"

namespace {

int Route(ImgPrcContext* ctx, const ImgPrcFrameIO& io) {
  switch (ImgPrcInputCode(ctx)) {
    case IMGPRC_FMT_YCBCR420:
      switch (ImgPrcOutputCode(ctx)) {
        case IMGPRC_FMT_RGB565:
        case IMGPRC_FMT_RGB555:
          return ImgPrcRoute_YCbCr420ToRGB16(ctx, io);
        case IMGPRC_FMT_RGB888:
        case IMGPRC_FMT_ARGB32:
        case IMGPRC_FMT_ABGR32:
          return ImgPrcRoute_YCbCr420ToRGB32(ctx, io);
        default:
          return ImgPrcRoute_YCbCr420ToYCbCr(ctx, io);
      }
    case IMGPRC_FMT_YCBCR422:
    case IMGPRC_FMT_YCBCR444:
      return ImgPrcRoute_YCbCr422444ToRGB(ctx, io);
    default:
      return ImgPrcRoute_OtherInputs(ctx, io);
  }
}

}  // namespace

int _ImgPrcOneFrame_depend(ImgPrcContext* ctx, uint8_t** srcPlanes, uint32_t* srcStrides, uint8_t** dstPlanes,
                           uint32_t* dstStrides) {
  // A picture one pixel wide or high is processed as zero pixels: there is no
  // line to convert and no position to resize from (the 16.16 step of a size
  // 0 source is negative). Every route answers "not implemented" for it before
  // anything is read or written.
  if (ctx->workSrcWidth == 0 || ctx->workSrcHeight == 0 || ctx->workDstWidth == 0 || ctx->workDstHeight == 0)
    return kImgPrcNoKernel;
  uint8_t* workPlanes[3] = {ctx->deintPlanes[0], ctx->deintPlanes[1], ctx->deintPlanes[2]};
  uint32_t workStrides[3] = {ctx->deintStride, ctx->deintStride, ctx->deintStride};
  ImgPrcFrameIO io = {srcPlanes, srcStrides, dstPlanes, dstStrides};
  if (ctx->deinterlaceMode != 0) {
    int r = ORU_DeInterlace(ctx, srcPlanes, srcStrides, workPlanes, workStrides);
    if (r != 0) return r;
    io.src = workPlanes;
    io.srcStrides = workStrides;
  }
  int r = _ORU_RotationInit(ctx, dstPlanes, ctx->workDstWidth, ctx->workDstHeight, dstStrides);
  if (r != 0) return r;
  return Route(ctx, io);
}
