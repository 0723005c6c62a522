// RGB565 (0x3nn), RGB888 (0x4nn), ARGB32 (0x5nn), NV12 (0x8nn) and ABGR32
// (0x9nn) inputs.
#include "imageproc/route_kernel.h"
#include "imageproc/routes.h"

namespace {

// RGB to YCbCr 4:2:0 through the kernel set-up chose for the matrix and range.
// No resizing on this path: a size change is ignored.
int RouteRgbToYuv(ImgPrcContext* ctx, const ImgPrcFrameIO& io) {
  if (!ctx->rgbToYuvKernel) return kImgPrcNoKernel;
  // Rotated: convert into three temporary planes, then _ORUYCbCr420Rot from them.
  if (ctx->rotation != 0) return kImgPrcNoKernel;
  return ImgPrcKernelRan(ctx->rgbToYuvKernel(io.src[0], io.srcStrides[0], io.dst, io.dstStrides,
                                             ctx->workSrcWidth, ctx->workSrcHeight));
}

}  // namespace

int ImgPrcRoute_OtherInputs(ImgPrcContext* ctx, const ImgPrcFrameIO& io) {
  switch (ctx->format) {
    case 0x300:
    case 0x500:
    case 0x900:
      return RouteRgbToYuv(ctx, io);
    case 0x303:
      return kImgPrcNoKernel;  // _ORURGB565RszRot: record-first, stride = source stride 0 / 2
    case 0x305:
      return kImgPrcNoKernel;  // _ORURGB565ToARGB32: rotation and size change ignored
    case 0x403:
      return kImgPrcNoKernel;  // _ORURGB888ToRGB565RszRot: record-first, stride in bytes
    case 0x404:
      return kImgPrcNoKernel;  // _ORURGB888RszRot: record-first, stride in bytes
    case 0x800:
      return kImgPrcNoKernel;  // _ORUNV12ToYCbCr420: as the planar copy
    default:
      return 0;
  }
}
