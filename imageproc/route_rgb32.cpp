// YCbCr 4:2:0 input to RGB888 (4), ARGB32 (5) and ABGR32 (9). ARGB32 and
// ABGR32 share their routes; their kernels differ only in byte order.
#include "imageproc/route_kernel.h"
#include "imageproc/routes.h"

namespace {

// Each line names the kernel for ARGB32; the ABGR32 one has ABGR32 in its name.
int Route32Bit(ImgPrcContext* ctx, const ImgPrcFrameIO&) {
  if (ctx->rotation != 0) {
    if (ctx->resizeCase == 0) return kImgPrcNoKernel;  // _ORUYCbCr420ToARGB32Rot: rotated shape, alpha
    return kImgPrcNoKernel;  // _ORUYCbCr420ToARGB32RszRot: rotated shape with sizes, alpha
  }
  switch (ctx->resizeCase) {
    case 0:
      return kImgPrcNoKernel;  // _ORUYCbCr420ToARGB32: plain shape, alpha
    case 2:
    case 4:
    case 7:
      return kImgPrcNoKernel;  // _ORUYCbCr420ToARGB32RszUp: enlarge shape, alpha
    case 5:
      return kImgPrcNoKernel;  // _ORUYCbCr420ToARGB32Case1
    case 6:
      return kImgPrcNoKernel;  // _ORUYCbCr420ToARGB32Case2
    default:
      return kImgPrcNoKernel;  // _ORUYCbCr420ToARGB32Rsz: resize shape, alpha
  }
}

int Route24Bit(ImgPrcContext* ctx, const ImgPrcFrameIO&) {
  if (ctx->rotation != 0) {
    if (ctx->resizeCase == 0) return kImgPrcNoKernel;  // _ORUYCbCr420ToRGB888Rot: rotated shape
    return kImgPrcNoKernel;                            // _ORUYCbCr420ToRGB888RszRot: rotated shape with sizes
  }
  switch (ctx->resizeCase) {
    case 0:
      return kImgPrcNoKernel;  // _ORUYCbCr420ToRGB888: plain shape
    case 1:
    case 3:
      return kImgPrcNoKernel;  // _ORUYCbCr420ToRGB888Rsz: resize shape
    default:
      return kImgPrcNoKernel;  // _ORUYCbCr420ToRGB888RszUp: enlarge shape (cases 2, 4, 5, 6, 7)
  }
}

}  // namespace

int ImgPrcRoute_YCbCr420ToRGB32(ImgPrcContext* ctx, const ImgPrcFrameIO& io) {
  switch (ImgPrcOutputCode(ctx)) {
    case IMGPRC_FMT_RGB888:
      return Route24Bit(ctx, io);
    case IMGPRC_FMT_ARGB32:
    case IMGPRC_FMT_ABGR32:
      return Route32Bit(ctx, io);
    default:
      return 0;
  }
}
