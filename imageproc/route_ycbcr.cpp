// YCbCr 4:2:0 input to the YCbCr outputs: planar 4:2:0 (0), YUY2 (6), UYVY (7)
// and NV12 (8). The packed outputs ignore rotation and size change.
#include "imageproc/route_kernel.h"
#include "imageproc/routes.h"
#include "kernels/yuv420_planar.h"

namespace {

// Planar output with the adjustment tables applied to every sample written.
uint32_t RunAdjusted(ImgPrcContext* ctx, const ImgPrcFrameIO& io) {
  const uint32_t sw = ctx->workSrcWidth, sh = ctx->workSrcHeight;
  const int32_t dw = static_cast<int32_t>(ctx->workDstWidth), dh = static_cast<int32_t>(ctx->workDstHeight);
  const bool same = ctx->resizeCase == 0;
  if (ctx->rotation != 0) {
    if (same) return _ORUYCbCr420RotAdjust(ctx, io.src, io.srcStrides, sw, sh);
    return _ORUYCbCr420RszRotAdjust(ctx, io.src, io.srcStrides, static_cast<int32_t>(sw),
                                    static_cast<int32_t>(sh), dw, dh);
  }
  if (same) return _ORUYCbCrAdjust(ctx, io.src, io.srcStrides, sw, sh, io.dst, io.dstStrides);
  return _ORUYCbCr420RszAdjust(ctx, io.src, io.srcStrides, static_cast<int32_t>(sw), static_cast<int32_t>(sh),
                               io.dst, io.dstStrides, dw, dh);
}

uint32_t RunPlanar(ImgPrcContext* ctx, const ImgPrcFrameIO& io) {
  if (ctx->adjustActive) return RunAdjusted(ctx, io);
  const uint32_t sw = ctx->workSrcWidth, sh = ctx->workSrcHeight;
  const int32_t dw = static_cast<int32_t>(ctx->workDstWidth), dh = static_cast<int32_t>(ctx->workDstHeight);
  const bool same = ctx->resizeCase == 0;
  if (ctx->rotation != 0) {
    if (same) return _ORUYCbCr420Rot(ctx->rotationRecord, io.src, io.srcStrides, sw, sh);
    return _ORUYCbCr420RszRot(ctx->rotationRecord, io.src, io.srcStrides, static_cast<int32_t>(sw),
                              static_cast<int32_t>(sh), dw, dh);
  }
  if (same) return _ORUYCbCr420Copy(io.src, io.srcStrides, sw, sh, io.dst, io.dstStrides);
  return _ORUYCbCr420Rsz(io.src, io.srcStrides, static_cast<int32_t>(sw), static_cast<int32_t>(sh), io.dst,
                         io.dstStrides, dw, dh);
}

}  // namespace

int ImgPrcRoute_YCbCr420ToYCbCr(ImgPrcContext* ctx, const ImgPrcFrameIO& io) {
  const uint32_t sw = ctx->workSrcWidth, sh = ctx->workSrcHeight;
  switch (ImgPrcOutputCode(ctx)) {
    case IMGPRC_FMT_YCBCR420:
      return ImgPrcKernelRan(RunPlanar(ctx, io));
    case IMGPRC_FMT_YUY2:
      return ImgPrcKernelRan(_ORUYCbCr420ToYUY2(io.dst[0], io.dstStrides[0], io.src, io.srcStrides, sw, sh));
    case IMGPRC_FMT_UYVY:
      return ImgPrcKernelRan(_ORUYCbCr420ToUYVY(io.dst[0], io.dstStrides[0], io.src, io.srcStrides, sw, sh));
    case IMGPRC_FMT_NV12:
      return ImgPrcKernelRan(_ORUYCbCr420ToNV12(io.src, io.srcStrides, sw, sh, io.dst, io.dstStrides));
    default:
      return 0;
  }
}
