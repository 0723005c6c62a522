// What a frame call of the image processor may read and write, worked out
// here from the interface's rules rather than from the library: the work
// sizes and resize case of a conversion, and for each plane of the source and
// the destination the span of bytes around the plane pointer that the chosen
// kernel is allowed to touch, the documented overruns included (64-bit stores
// of pixel pairs, doubled row spacing of the enlarging kernels, the half turn
// against the right end of a row, pitch-wide deinterlacing lines).
#pragma once

#include <stdint.h>

namespace scrimfuzz {

struct Conversion {
  uint32_t code = 0;
  int32_t in = 0, out = 0;  // format codes
  uint32_t rotation = 0, resizeMode = 0;
  uint32_t sw = 0, sh = 0, dw = 0, dh = 0;      // as the caller gave them
  uint32_t wsw = 0, wsh = 0, wdw = 0, wdh = 0;  // rounded down to even
  uint32_t resizeCase = 0;
  bool adjust = false;     // a colour adjustment is in force
  uint32_t deintMode = 0;  // deinterlace mode in force (0: none)

  // Fills the work sizes and the resize case from the caller's fields.
  void Classify();
  bool AnyWorkSizeZero() const { return wsw == 0 || wsh == 0 || wdw == 0 || wdh == 0; }
};

// Bytes [lo, hi) relative to a plane pointer.
struct Span {
  int64_t lo = 0, hi = 0;
};

// Planes a picture of a format brings to a frame call.
int PlaneCount(int32_t format);
// Bytes of one line of plane `plane` of a `width`-pixel picture (the stride a
// caller would at least use).
uint32_t RowBytes(int32_t format, int plane, uint32_t width);

// The source planes the frame may read, for these strides.
void SourceSpans(const Conversion& c, const uint32_t strides[3], Span out[3]);
// The destination planes the frame may write, for these strides.
void DestinationSpans(const Conversion& c, const uint32_t strides[3], Span out[3]);
// Width and height of the destination picture as laid out in memory.
void DestinationShape(const Conversion& c, uint32_t& width, uint32_t& height);

}  // namespace scrimfuzz
