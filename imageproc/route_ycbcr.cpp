// YCbCr 4:2:0 input to the YCbCr outputs: planar 4:2:0 (0), YUY2 (6), UYVY (7)
// and NV12 (8). The packed outputs ignore rotation and size change.
#include "imageproc/route_kernel.h"
#include "imageproc/routes.h"
#include "kernels/yuv420_planar.h"

namespace {

// Planar output with the adjustment tables applied to every sample written.
int RouteAdjusted(ImgPrcContext* ctx, const ImgPrcFrameIO&) {
  if (ctx->rotation != 0) {
    if (ctx->resizeCase == 0) return kImgPrcNoKernel;  // _ORUYCbCr420RotAdjust: rotated shape
    return kImgPrcNoKernel;  // _ORUYCbCr420RszRotAdjust: rotated shape with destination sizes
  }
  if (ctx->resizeCase == 0) return kImgPrcNoKernel;  // _ORUYCbCrAdjust: plus destination planes and strides
  return kImgPrcNoKernel;  // _ORUYCbCr420RszAdjust: plus destination planes, strides and sizes
}

int RoutePlanar(ImgPrcContext* ctx, const ImgPrcFrameIO& io) {
  if (ctx->adjustActive) return RouteAdjusted(ctx, io);
  const uint32_t sw = ctx->workSrcWidth, sh = ctx->workSrcHeight;
  if (ctx->rotation != 0) {
    if (ctx->resizeCase == 0) return kImgPrcNoKernel;  // _ORUYCbCr420Rot: record-first
    return kImgPrcNoKernel;  // _ORUYCbCr420RszRot: record-first with destination sizes
  }
  if (ctx->resizeCase == 0)
    return ImgPrcKernelRan(_ORUYCbCr420Copy(io.src, io.srcStrides, sw, sh, io.dst, io.dstStrides));
  return kImgPrcNoKernel;  // _ORUYCbCr420Rsz: as the copy, then destination sizes
}

}  // namespace

int ImgPrcRoute_YCbCr420ToYCbCr(ImgPrcContext* ctx, const ImgPrcFrameIO& io) {
  switch (ImgPrcOutputCode(ctx)) {
    case IMGPRC_FMT_YCBCR420:
      return RoutePlanar(ctx, io);
    case IMGPRC_FMT_YUY2:
      return kImgPrcNoKernel;  // _ORUYCbCr420ToYUY2: destination plane 0 and stride 0 first
    case IMGPRC_FMT_UYVY:
      return kImgPrcNoKernel;  // _ORUYCbCr420ToUYVY: as YUY2
    case IMGPRC_FMT_NV12:
      return kImgPrcNoKernel;  // _ORUYCbCr420ToNV12: as the copy
    default:
      return 0;
  }
}
