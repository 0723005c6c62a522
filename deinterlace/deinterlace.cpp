// The deinterlacer's entry points: ORU_DeInterlace, which the image processor
// calls before converting each frame while a deinterlace mode is set, and
// DeInterlace, which picks the filter of a mode.
#include "deinterlace/deinterlace.h"

#include "deinterlace/deint_filters.h"

unsigned deint_plane_height(unsigned plane, unsigned height, unsigned layout) {
  return plane > 0 && layout == DEINT_LAYOUT_420 ? height / 2 : height;
}

int DeInterlace(DeintPicture* dst, DeintPicture* src, unsigned width, unsigned height, unsigned field,
                unsigned layout, unsigned mode, DeintLineWidth lineWidth) {
  if (dst == nullptr || src == nullptr) return -1;
  // What a filter returns is not passed on: a picture it refuses stays as it was.
  switch (mode) {
    case 0:
      return 0;
    case 2:
      picture_deinterlace_discard(dst, src, layout, height, field, lineWidth);
      break;
    case 3:
      picture_deinterlace_bob(dst, src, layout, height, field, lineWidth);
      break;
    case 4:
      picture_deinterlace_blend(dst, src, layout, height, lineWidth);
      break;
    case 5:
      picture_deinterlace_mean(dst, src, layout, height, lineWidth);
      break;
    case 6:
      picture_deinterlace_linear(dst, src, layout, height, field, lineWidth);
      break;
    case 7:
      picture_deinterlace_x(dst, src, layout, width, height);
      break;
    default:  // 1, and every mode above 7
      picture_deinterlace_fast(dst, src, layout, width, height);
      break;
  }
  return 0;
}

extern "C" SCRIM_API int ORU_DeInterlace(ImgPrcContext* ctx, uint8_t* srcPlanes[3], uint32_t srcPitches[3],
                                         uint8_t* dstPlanes[3], uint32_t dstPitches[3]) {
  if (ctx == nullptr || srcPlanes == nullptr || srcPitches == nullptr || dstPlanes == nullptr ||
      dstPitches == nullptr)
    return -1;
  // The input format code, bits 8-15 of the conversion code read as signed:
  // anything but planar 4:2:0, 4:2:2 or 4:4:4 has no chroma layout here.
  const int layout = static_cast<int32_t>(ctx->format) >> 8;
  if (layout < 0 || layout > int(DEINT_LAYOUT_444)) return -1;
  DeintPicture src{
      3, {srcPlanes[0], srcPlanes[1], srcPlanes[2]}, {srcPitches[0], srcPitches[1], srcPitches[2]}};
  DeintPicture dst{
      3, {dstPlanes[0], dstPlanes[1], dstPlanes[2]}, {dstPitches[0], dstPitches[1], dstPitches[2]}};
  // The destination is the image processor's work area, whose lines are the
  // picture width rounded up to 16: a wider source pitch must not carry its
  // copies past the area's end.
  return DeInterlace(&dst, &src, ctx->srcWidth, ctx->srcHeight, 0, static_cast<unsigned>(layout),
                     ctx->deinterlaceMode, DEINT_LINE_FITS_DESTINATION);
}
