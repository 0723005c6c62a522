// Rotation and mirroring as addressing: start addresses and signed steps that
// walk the destination in the order the kernels read the source, so that a
// kernel never knows which orientation it produces.
#include "imageproc/rotation.h"

#include <stddef.h>

namespace {

// Where source sample (0, 0) of a w x h picture lands (byte offset from the
// destination start) and how far one source pixel and one source line move it,
// for pixels of p bytes and a destination stride of s bytes. For a quarter turn
// the destination holds w lines of h pixels.
struct Walk {
  int64_t start;
  int64_t pixelStep;
  int64_t lineStep;
};

Walk RotatedWalk(uint32_t rotation, int64_t w, int64_t h, int64_t s, int64_t p) {
  switch (rotation) {
    case 1:
      return {(w - 1) * s, -s, p};  // quarter turn anticlockwise
    case 2:
      return {(h - 1) * p, s, -p};  // quarter turn clockwise
    case 3:
      return {(h - 1) * s + (w - 1) * p, -p, -s};  // half turn
    case 4:
      return {(w - 1) * p, -p, s};  // left-right mirror
    case 5:
      return {(h - 1) * s, p, -s};  // top-bottom flip
    default:
      return {0, p, s};
  }
}

// Bytes per pixel of a packed output, 0 for formats with no packed layout. The
// YUY2, UYVY and NV12 kernels never read the record; 2 keeps it well formed.
int64_t PackedPixelSize(uint32_t output) {
  switch (output) {
    case 3:
    case 10:
      return 2;
    case 4:
      return 3;
    case 5:
    case 9:
      return 4;
    case 6:
    case 7:
    case 8:
      return 2;
    default:
      return 0;
  }
}

void SetPlanar(ImgPrcRotationRecord* rec, uint32_t rotation, uint8_t* const planes[3], int64_t w, int64_t h,
               const uint32_t strides[3]) {
  const Walk y = RotatedWalk(rotation, w, h, strides[0], 1);
  // Chroma planes are half size, halved by an arithmetic shift like the sizes.
  const Walk cb = RotatedWalk(rotation, w >> 1, h >> 1, strides[1], 1);
  const Walk cr = RotatedWalk(rotation, w >> 1, h >> 1, strides[2], 1);
  rec->stepX = static_cast<int32_t>(y.pixelStep);
  rec->stepY = static_cast<int32_t>(y.lineStep);
  rec->cbStepX = static_cast<int32_t>(cb.pixelStep);
  rec->cbStepY = static_cast<int32_t>(cb.lineStep);
  rec->crStepX = static_cast<int32_t>(cr.pixelStep);
  rec->crStepY = static_cast<int32_t>(cr.lineStep);
  rec->yStart = planes[0] + y.start;
  rec->cbStart = planes[1] + cb.start;
  rec->crStart = planes[2] + cr.start;
}

// The four pixels of the first 2x2 source block, and the steps from one block
// to the next (two pixels, two lines).
void SetPacked(ImgPrcRotationRecord* rec, uint32_t rotation, uint8_t* base, int64_t p, int64_t w, int64_t h,
               int64_t s) {
  Walk walk = RotatedWalk(rotation, w, h, s, p);
  // The packed half turn starts at the last pixel of the last stride-wide row,
  // not at pixel w - 1: with a stride wider than the picture, the turned
  // picture lies against the right end of each row. Callers rely on this.
  if (rotation == 3) walk.start = h * s - p;
  rec->stepX = static_cast<int32_t>(2 * walk.pixelStep);
  rec->stepY = static_cast<int32_t>(2 * walk.lineStep);
  rec->pix00 = base + walk.start;
  rec->pix10 = rec->pix00 + walk.pixelStep;
  rec->pix01 = rec->pix00 + walk.lineStep;
  rec->pix11 = rec->pix00 + walk.pixelStep + walk.lineStep;
}

}  // namespace

int _ORU_RotationInit(ImgPrcContext* ctx, uint8_t* const dstPlanes[3], uint32_t width, uint32_t height,
                      const uint32_t dstStrides[3]) {
  if (!ctx || !ctx->rotationRecord) return -1;
  const uint32_t output = ctx->format & 0xFF;
  const uint32_t rotation = ctx->rotation;
  if (rotation > 5) return -3;
  const int64_t w = static_cast<int32_t>(width), h = static_cast<int32_t>(height);
  if (output == 0) {
    SetPlanar(ctx->rotationRecord, rotation, dstPlanes, w, h, dstStrides);
    return 0;
  }
  const int64_t p = PackedPixelSize(output);
  if (p == 0) return -3;
  SetPacked(ctx->rotationRecord, rotation, dstPlanes[0], p, w, h, dstStrides[0]);
  return 0;
}
