// RGB565 (0x3nn), RGB888 (0x4nn), ARGB32 (0x5nn), NV12 (0x8nn) and ABGR32
// (0x9nn) inputs.
#include "imageproc/imgprc_alloc.h"
#include "imageproc/route_kernel.h"
#include "imageproc/routes.h"
#include "kernels/rgb_convert.h"
#include "kernels/yuv420_planar.h"

namespace {

// RGB to YCbCr 4:2:0 through the kernel set-up chose for the matrix and range.
// No resizing on this path: a size change is ignored. A rotated frame is
// converted into three temporary planes, taken for this frame only, and
// rotated from there.
int RouteRgbToYuv(ImgPrcContext* ctx, const ImgPrcFrameIO& io) {
  if (!ctx->rgbToYuvKernel) return kImgPrcNoKernel;
  const uint32_t w = ctx->workSrcWidth, h = ctx->workSrcHeight;
  if (ctx->rotation == 0) {
    return ImgPrcKernelRan(ctx->rgbToYuvKernel(io.src[0], io.srcStrides[0], io.dst, io.dstStrides, w, h));
  }
  const size_t size = static_cast<size_t>(w) * h;
  uint8_t* planes[3] = {static_cast<uint8_t*>(ImgPrcMalloc(size)),
                        static_cast<uint8_t*>(ImgPrcMalloc(size / 4)),
                        static_cast<uint8_t*>(ImgPrcMalloc(size / 4))};
  uint32_t strides[3] = {w, w / 2, w / 2};
  int r = -2;
  if (planes[0] && planes[1] && planes[2]) {
    ctx->rgbToYuvKernel(io.src[0], io.srcStrides[0], planes, strides, w, h);
    r = ImgPrcKernelRan(_ORUYCbCr420Rot(ctx->rotationRecord, planes, strides, w, h));
  }
  for (uint8_t* p : planes) ImgPrcFree(p);
  return r;
}

}  // namespace

int ImgPrcRoute_OtherInputs(ImgPrcContext* ctx, const ImgPrcFrameIO& io) {
  const int32_t sw = static_cast<int32_t>(ctx->workSrcWidth), sh = static_cast<int32_t>(ctx->workSrcHeight);
  const int32_t dw = static_cast<int32_t>(ctx->workDstWidth), dh = static_cast<int32_t>(ctx->workDstHeight);
  const uint8_t* src = io.src[0];
  const int32_t stride = static_cast<int32_t>(io.srcStrides[0]);
  switch (ctx->format) {
    case 0x300:
    case 0x500:
    case 0x900:
      return RouteRgbToYuv(ctx, io);
    case 0x303:  // source stride in pixels
      return ImgPrcKernelRan(_ORURGB565RszRot(ctx->rotationRecord, src, stride / 2, sw, sh, dw, dh));
    case 0x305:  // strides in pixels; rotation and size change ignored
      return ImgPrcKernelRan(_ORURGB565ToARGB32(
          src, stride / 2, io.dst[0], static_cast<int32_t>(io.dstStrides[0] / 4), sw, sh, ctx->alpha));
    case 0x403:
      return ImgPrcKernelRan(_ORURGB888ToRGB565RszRot(ctx->rotationRecord, src, stride, sw, sh, dw, dh));
    case 0x404:
      return ImgPrcKernelRan(_ORURGB888RszRot(ctx->rotationRecord, src, stride, sw, sh, dw, dh));
    case 0x800:
      return ImgPrcKernelRan(_ORUNV12ToYCbCr420(io.src, io.srcStrides, ctx->workSrcWidth, ctx->workSrcHeight,
                                                io.dst, io.dstStrides));
    default:
      return 0;
  }
}
