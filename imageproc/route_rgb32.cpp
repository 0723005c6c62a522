// YCbCr 4:2:0 input to RGB888 (4), ARGB32 (5) and ABGR32 (9). ARGB32 and
// ABGR32 share their routes; their kernels differ only in byte order.
#include "imageproc/route_kernel.h"
#include "imageproc/routes.h"
#include "kernels/yuv420_rgb32.h"

namespace {

// The members of one 32-bit family, in the argument shapes of the dispatch.
struct Family32 {
  decltype(&_ORUYCbCr420ToARGB32) plain;
  decltype(&_ORUYCbCr420ToARGB32Rot) rot;
  decltype(&_ORUYCbCr420ToARGB32Rsz) rsz;
  decltype(&_ORUYCbCr420ToARGB32RszRot) rszRot;
  decltype(&_ORUYCbCr420ToARGB32RszUp) rszUp;
  decltype(&_ORUYCbCr420ToARGB32Case1) case1;
  decltype(&_ORUYCbCr420ToARGB32Case2) case2;
};
constexpr Family32 kArgb32 = {_ORUYCbCr420ToARGB32,      _ORUYCbCr420ToARGB32Rot,
                              _ORUYCbCr420ToARGB32Rsz,   _ORUYCbCr420ToARGB32RszRot,
                              _ORUYCbCr420ToARGB32RszUp, _ORUYCbCr420ToARGB32Case1,
                              _ORUYCbCr420ToARGB32Case2};
constexpr Family32 kAbgr32 = {_ORUYCbCr420ToABGR32,      _ORUYCbCr420ToABGR32Rot,
                              _ORUYCbCr420ToABGR32Rsz,   _ORUYCbCr420ToABGR32RszRot,
                              _ORUYCbCr420ToABGR32RszUp, _ORUYCbCr420ToABGR32Case1,
                              _ORUYCbCr420ToABGR32Case2};

struct Sizes {
  int32_t sw, sh, dw, dh;
};

Sizes WorkSizes(const ImgPrcContext* ctx) {
  return {static_cast<int32_t>(ctx->workSrcWidth), static_cast<int32_t>(ctx->workSrcHeight),
          static_cast<int32_t>(ctx->workDstWidth), static_cast<int32_t>(ctx->workDstHeight)};
}

int Route32Bit(ImgPrcContext* ctx, const ImgPrcFrameIO& io, const Family32& f) {
  const Sizes s = WorkSizes(ctx);
  const uint32_t a = ctx->alpha;
  uint8_t* const dst = io.dst[0];
  const int32_t pitch = static_cast<int32_t>(io.dstStrides[0]);
  uint8_t* const* lines = ctx->lineBuffer;
  if (ctx->rotation != 0) {
    if (ctx->resizeCase == 0) return ImgPrcKernelRan(f.rot(ctx, io.src, io.srcStrides, s.sw, s.sh, a));
    return ImgPrcKernelRan(f.rszRot(ctx, io.src, io.srcStrides, s.sw, s.sh, s.dw, s.dh, a));
  }
  switch (ctx->resizeCase) {
    case 0:
      return ImgPrcKernelRan(f.plain(ctx, io.src, io.srcStrides, s.sw, s.sh, dst, pitch, a));
    case 2:
    case 4:
    case 7:
      return ImgPrcKernelRan(
          f.rszUp(ctx, lines, io.src, io.srcStrides, s.sw, s.sh, dst, pitch, s.dw, s.dh, a));
    case 5:
      return ImgPrcKernelRan(f.case1(ctx, lines, io.src, io.srcStrides, s.sw, dst, pitch, s.dh, a));
    case 6:
      return ImgPrcKernelRan(f.case2(ctx, lines, io.src, io.srcStrides, s.sw, s.sh, dst, pitch, s.dh, a));
    default:  // 1, 3
      return ImgPrcKernelRan(f.rsz(ctx, io.src, io.srcStrides, s.sw, s.sh, dst, pitch, s.dw, s.dh, a));
  }
}

int Route24Bit(ImgPrcContext* ctx, const ImgPrcFrameIO& io) {
  const Sizes s = WorkSizes(ctx);
  uint8_t* const dst = io.dst[0];
  const int32_t pitch = static_cast<int32_t>(io.dstStrides[0]);
  if (ctx->rotation != 0) {
    if (ctx->resizeCase == 0)
      return ImgPrcKernelRan(_ORUYCbCr420ToRGB888Rot(ctx, io.src, io.srcStrides, s.sw, s.sh));
    return ImgPrcKernelRan(_ORUYCbCr420ToRGB888RszRot(ctx, io.src, io.srcStrides, s.sw, s.sh, s.dw, s.dh));
  }
  switch (ctx->resizeCase) {
    case 0:
      return ImgPrcKernelRan(_ORUYCbCr420ToRGB888(ctx, io.src, io.srcStrides, s.sw, s.sh, dst, pitch));
    case 1:
    case 3:
      return ImgPrcKernelRan(
          _ORUYCbCr420ToRGB888Rsz(ctx, io.src, io.srcStrides, s.sw, s.sh, dst, pitch, s.dw, s.dh));
    default:  // 2, 4, 5, 6, 7
      return ImgPrcKernelRan(_ORUYCbCr420ToRGB888RszUp(ctx, ctx->lineBuffer, io.src, io.srcStrides, s.sw,
                                                       s.sh, dst, pitch, s.dw, s.dh));
  }
}

}  // namespace

int ImgPrcRoute_YCbCr420ToRGB32(ImgPrcContext* ctx, const ImgPrcFrameIO& io) {
  switch (ImgPrcOutputCode(ctx)) {
    case IMGPRC_FMT_RGB888:
      return Route24Bit(ctx, io);
    case IMGPRC_FMT_ARGB32:
      return Route32Bit(ctx, io, kArgb32);
    case IMGPRC_FMT_ABGR32:
      return Route32Bit(ctx, io, kAbgr32);
    default:
      return 0;
  }
}
