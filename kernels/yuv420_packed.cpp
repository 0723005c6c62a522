// Planar 4:2:0 to the interleaved layouts YUY2, UYVY and NV12, and NV12 back
// to planar. The row walk is shared; a row is packed 16 pixels at a time with
// byte interleaves (one or two instructions each on SSE2 and NEON) and pair by
// pair for the rest.
#include "kernels/byte_vectors.h"
#include "kernels/plane_walk.h"
#include "kernels/yuv420_planar.h"

using namespace scrim;

namespace {

Bytes16 Load16(const uint8_t* p) { return LoadVector<Bytes16>(p); }
void Store16(uint8_t* p, Bytes16 v) { StoreVector(p, v); }

// Byte order of one 4-byte pixel pair.
struct Yuy2 {
  static void Pair(uint8_t* o, uint8_t y0, uint8_t y1, uint8_t cb, uint8_t cr) {
    o[0] = y0, o[1] = cb, o[2] = y1, o[3] = cr;
  }
  static void Sixteen(uint8_t* o, Bytes16 y, Bytes16 c) {
    Store16(o, ZipLow(y, c));
    Store16(o + 16, ZipHigh(y, c));
  }
};
struct Uyvy {
  static void Pair(uint8_t* o, uint8_t y0, uint8_t y1, uint8_t cb, uint8_t cr) {
    o[0] = cb, o[1] = y0, o[2] = cr, o[3] = y1;
  }
  static void Sixteen(uint8_t* o, Bytes16 y, Bytes16 c) {
    Store16(o, ZipLow(c, y));
    Store16(o + 16, ZipHigh(c, y));
  }
};

// `pairs` pixel pairs of one row: 16 pairs, then 8, then one at a time.
template <class Order>
void PackRow(const uint8_t* y, const uint8_t* cb, const uint8_t* cr, uint8_t* out, uint32_t pairs) {
  uint32_t i = 0;
  for (; i + 16 <= pairs; i += 16) {
    const Bytes16 b = Load16(cb + i), r = Load16(cr + i);
    Order::Sixteen(out + 4 * i, Load16(y + 2 * i), ZipLow(b, r));
    Order::Sixteen(out + 4 * i + 32, Load16(y + 2 * i + 16), ZipHigh(b, r));
  }
  if (i + 8 <= pairs) {
    Order::Sixteen(out + 4 * i, Load16(y + 2 * i), ZipLow(LoadLow8(cb + i), LoadLow8(cr + i)));
    i += 8;
  }
  for (; i < pairs; ++i) Order::Pair(out + 4 * i, y[2 * i], y[2 * i + 1], cb[i], cr[i]);
}

void InterleaveRow(const uint8_t* cb, const uint8_t* cr, uint8_t* out, uint32_t pairs) {
  uint32_t i = 0;
  for (; i + 16 <= pairs; i += 16) {
    const Bytes16 b = Load16(cb + i), r = Load16(cr + i);
    Store16(out + 2 * i, ZipLow(b, r));
    Store16(out + 2 * i + 16, ZipHigh(b, r));
  }
  for (; i < pairs; ++i) out[2 * i] = cb[i], out[2 * i + 1] = cr[i];
}

void SplitRow(const uint8_t* in, uint8_t* cb, uint8_t* cr, uint32_t pairs) {
  uint32_t i = 0;
  for (; i + 16 <= pairs; i += 16) {
    const Bytes16 a = Load16(in + 2 * i), b = Load16(in + 2 * i + 16);
    Store16(cb + i, Evens(a, b));
    Store16(cr + i, Odds(a, b));
  }
  for (; i < pairs; ++i) cb[i] = in[2 * i], cr[i] = in[2 * i + 1];
}

}  // namespace

extern "C" uint32_t _ORUYCbCr420ToYUY2(uint8_t* dst, uint32_t pitch, const uint8_t* const srcPlanes[3],
                                       const uint32_t srcStrides[3], uint32_t width, uint32_t height) {
  const uint32_t pairs = (width / 8) * 4;
  const uint8_t* y = srcPlanes[0];
  const uint8_t* cb = srcPlanes[1];
  const uint8_t* cr = srcPlanes[2];
  for (uint32_t r = 0; r < height / 2; ++r) {
    PackRow<Yuy2>(y, cb, cr, dst, pairs);
    PackRow<Yuy2>(y + srcStrides[0], cb, cr, dst + pitch, pairs);
    y += 2 * static_cast<size_t>(srcStrides[0]);
    cb += srcStrides[1];
    cr += srcStrides[2];
    dst += 2 * static_cast<size_t>(pitch);
  }
  return 0;
}

extern "C" uint32_t _ORUYCbCr420ToUYVY(uint8_t* dst, uint32_t pitch, const uint8_t* const srcPlanes[3],
                                       const uint32_t srcStrides[3], uint32_t width, uint32_t height) {
  for (uint32_t r = 0; r < height; ++r) {
    const uint8_t* y = srcPlanes[0] + static_cast<size_t>(r) * srcStrides[0];
    const uint8_t* cb = srcPlanes[1] + static_cast<size_t>(r / 2) * srcStrides[1];
    const uint8_t* cr = srcPlanes[2] + static_cast<size_t>(r / 2) * srcStrides[2];
    uint8_t* out = dst + static_cast<size_t>(r) * pitch;
    // Pair by pair up to an 8-byte aligned luma address (never, from an odd
    // one), then whole groups of 8 pixels.
    uint32_t head = 0;
    const uint32_t pairs = width / 2;
    while (head < pairs && (reinterpret_cast<uintptr_t>(y + 2 * head) & 7) != 0) ++head;
    PackRow<Uyvy>(y, cb, cr, out, head);
    const uint32_t rest = ((width - 2 * head) / 8) * 4;
    PackRow<Uyvy>(y + 2 * head, cb + head, cr + head, out + 4 * head, rest);
  }
  return 0;
}

extern "C" uint32_t _ORUYCbCr420ToNV12(const uint8_t* const srcPlanes[3], const uint32_t srcStrides[3],
                                       uint32_t width, uint32_t height, uint8_t* const dstPlanes[3],
                                       const uint32_t dstStrides[3]) {
  CopyPlaneRows(srcPlanes[0], srcStrides[0], dstPlanes[0], dstStrides[0], width, height);
  const uint8_t* cr = srcPlanes[2];
  WalkPlaneRows(srcPlanes[1], srcStrides[1], dstPlanes[1], dstStrides[1], height / 2,
                [&](const uint8_t* cb, uint8_t* out) {
                  InterleaveRow(cb, cr, out, width / 2);
                  cr += srcStrides[2];
                });
  return 0;
}

extern "C" uint32_t _ORUNV12ToYCbCr420(const uint8_t* const srcPlanes[3], const uint32_t srcStrides[3],
                                       uint32_t width, uint32_t height, uint8_t* const dstPlanes[3],
                                       const uint32_t dstStrides[3]) {
  CopyPlaneRows(srcPlanes[0], srcStrides[0], dstPlanes[0], dstStrides[0], width, height);
  uint8_t* cr = dstPlanes[2];
  WalkPlaneRows(srcPlanes[1], srcStrides[1], dstPlanes[1], dstStrides[1], height / 2,
                [&](const uint8_t* in, uint8_t* cb) {
                  SplitRow(in, cb, cr, width / 2);
                  cr += dstStrides[2];
                });
  return 0;
}
