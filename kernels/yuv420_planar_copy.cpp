// Planar 4:2:0 copy: the YV12 window path's kernel, so the tight cases are
// moved with as few block copies as possible.
#include <string.h>

#include "kernels/plane_walk.h"
#include "kernels/yuv420_planar.h"

namespace {

void CopyBytes(void* dst, const void* src, uint64_t n) {
  if (n != 0) memcpy(dst, src, n);
}

bool IsTight(const uint32_t srcStrides[3], uint32_t width, const uint32_t dstStrides[3]) {
  const uint32_t chroma = srcStrides[0] >> 1;
  return srcStrides[0] == width && srcStrides[1] == chroma && srcStrides[2] == chroma &&
         dstStrides[0] == srcStrides[0] && dstStrides[1] == srcStrides[1] && dstStrides[2] == srcStrides[2];
}

// Cb right after size bytes of Y, Cr right after quarter bytes of Cb.
bool IsContiguous(const uint8_t* const planes[3], uint64_t size, uint64_t quarter) {
  const uintptr_t y = reinterpret_cast<uintptr_t>(planes[0]);
  const uintptr_t cb = reinterpret_cast<uintptr_t>(planes[1]);
  const uintptr_t cr = reinterpret_cast<uintptr_t>(planes[2]);
  return cb == y + size && cr == cb + quarter;
}

}  // namespace

extern "C" uint32_t _ORUYCbCr420Copy(const uint8_t* const srcPlanes[3], const uint32_t srcStrides[3],
                                     uint32_t width, uint32_t height, uint8_t* const dstPlanes[3],
                                     const uint32_t dstStrides[3]) {
  if (IsTight(srcStrides, width, dstStrides)) {
    const uint64_t size = static_cast<uint64_t>(width) * height;
    const uint64_t quarter = size >> 2;
    if (IsContiguous(srcPlanes, size, quarter) && IsContiguous(dstPlanes, size, quarter)) {
      CopyBytes(dstPlanes[0], srcPlanes[0], size + 2 * quarter);
    } else {
      CopyBytes(dstPlanes[0], srcPlanes[0], size);
      CopyBytes(dstPlanes[1], srcPlanes[1], quarter);
      CopyBytes(dstPlanes[2], srcPlanes[2], quarter);
    }
    return 0;
  }
  CopyPlaneRows(srcPlanes[0], srcStrides[0], dstPlanes[0], dstStrides[0], width, height);
  if (height < 2) return 0;
  CopyPlaneRows(srcPlanes[1], srcStrides[1], dstPlanes[1], dstStrides[1], width / 2, height / 2);
  CopyPlaneRows(srcPlanes[2], srcStrides[2], dstPlanes[2], dstStrides[2], width / 2, height / 2);
  return 0;
}
