// YCbCr 4:2:2 (0x1nn) and 4:4:4 (0x2nn) inputs to RGB outputs.
#include "imageproc/route_kernel.h"
#include "imageproc/routes.h"
#include "kernels/yuv422444_rgb.h"

int ImgPrcRoute_YCbCr422444ToRGB(ImgPrcContext* ctx, const ImgPrcFrameIO& io) {
  const int32_t sw = static_cast<int32_t>(ctx->workSrcWidth);
  const int32_t sh = static_cast<int32_t>(ctx->workSrcHeight);
  const int32_t dw = static_cast<int32_t>(ctx->workDstWidth);
  const int32_t dh = static_cast<int32_t>(ctx->workDstHeight);
  const uint32_t a = ctx->alpha;
  auto* const src = io.src;
  auto* const st = io.srcStrides;
  switch (ctx->format) {
    case 0x103: {
      // Rotation is ignored on this path: the picture comes out unrotated.
      uint8_t* const dst = io.dst[0];
      const int32_t pitch = static_cast<int32_t>(io.dstStrides[0]);
      if (ctx->resizeCase == 0)
        return ImgPrcKernelRan(_ORUYCbCr422ToRGB565(ctx, src, st, sw, sh, dst, pitch));
      return ImgPrcKernelRan(_ORUYCbCr422ToRGB565Rsz(ctx, src, st, sw, sh, dst, pitch, dw, dh));
    }
    case 0x105:
      return ImgPrcKernelRan(_ORUYCbCr422ToARGB32RszRot(ctx, src, st, sw, sh, dw, dh, a));
    case 0x109:
      return ImgPrcKernelRan(_ORUYCbCr422ToABGR32RszRot(ctx, src, st, sw, sh, dw, dh, a));
    case 0x203:
      return ImgPrcKernelRan(_ORUYCbCr444ToRGB565RszRot(ctx, src, st, sw, sh, dw, dh));
    case 0x204:
      return ImgPrcKernelRan(_ORUYCbCr444ToRGB888RszRot(ctx, src, st, sw, sh, dw, dh));
    case 0x205:
      return ImgPrcKernelRan(_ORUYCbCr444ToARGB32RszRot(ctx, src, st, sw, sh, dw, dh, a));
    case 0x209:
      return ImgPrcKernelRan(_ORUYCbCr444ToABGR32RszRot(ctx, src, st, sw, sh, dw, dh, a));
    default:
      return 0;
  }
}
