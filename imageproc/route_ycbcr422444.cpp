// YCbCr 4:2:2 (0x1nn) and 4:4:4 (0x2nn) inputs to RGB outputs.
#include "imageproc/route_kernel.h"
#include "imageproc/routes.h"

int ImgPrcRoute_YCbCr422444ToRGB(ImgPrcContext* ctx, const ImgPrcFrameIO&) {
  switch (ctx->format) {
    case 0x103:
      // Rotation is ignored on this path: the picture comes out unrotated.
      if (ctx->resizeCase == 0) return kImgPrcNoKernel;  // _ORUYCbCr422ToRGB565: plain shape
      return kImgPrcNoKernel;                            // _ORUYCbCr422ToRGB565Rsz: resize shape
    case 0x105:
      return kImgPrcNoKernel;  // _ORUYCbCr422ToARGB32RszRot: rotated shape with sizes, alpha
    case 0x109:
      return kImgPrcNoKernel;  // _ORUYCbCr422ToABGR32RszRot: rotated shape with sizes, alpha
    case 0x203:
      return kImgPrcNoKernel;  // _ORUYCbCr444ToRGB565RszRot: rotated shape with sizes
    case 0x204:
      return kImgPrcNoKernel;  // _ORUYCbCr444ToRGB888RszRot: rotated shape with sizes
    case 0x205:
      return kImgPrcNoKernel;  // _ORUYCbCr444ToARGB32RszRot: rotated shape with sizes, alpha
    case 0x209:
      return kImgPrcNoKernel;  // _ORUYCbCr444ToABGR32RszRot: rotated shape with sizes, alpha
    default:
      return 0;
  }
}
