// RGB to RGB: bilinear resizing through the rotation record (one walk; the
// source sampling and the output store are per member), and the RGB565 to
// ARGB32 widening.
#include <stddef.h>
#include <string.h>

#include "kernels/resize_step.h"
#include "kernels/rgb_convert.h"
#include "kernels/yuv_color_step.h"

using namespace scrim;

namespace {

// Where the 5-bit weights put a sample: column c and its clamped right
// neighbour n in the rows `top` and `bottom` (the row below, clamped).
struct Tap {
  const uint8_t* top;
  const uint8_t* bottom;
  ptrdiff_t c, n;
  uint32_t fx, fy;
};

// RGB565 source: blue bits 0-4, green 10-15, red 21-25, blended down with a
// shift and a mask, then across without one (the value times 32).
struct Rgb565Spread {
  static uint32_t Spread(const uint8_t* p) {
    uint16_t v;
    memcpy(&v, p, 2);
    return (v & 0xF800u) << 10 | (v & 0x7E0u) << 5 | (v & 31u);
  }
  static uint32_t Down(const Tap& t, ptrdiff_t x) {
    const uint32_t a = Spread(t.top + 2 * x), b = Spread(t.bottom + 2 * x);
    return ((a * (32 - t.fy) + b * t.fy) >> 5) & 0x3E0FC1Fu;
  }
  static uint32_t Sample(const Tap& t) { return Down(t, t.c) * (32 - t.fx) + Down(t, t.n) * t.fx; }
};
struct Rgb565FromSpread {
  static constexpr bool kRgb565 = true;
  static void Put(uint8_t* o, uint32_t v) {
    Store16(o, static_cast<uint16_t>(((v >> 5) & 31) | (v >> 26) << 11 | ((v >> 15) & 63) << 5));
  }
};

// RGB888 source (bytes blue, green, red): each lane blended down with a
// shift, then across without one (the value times 32).
struct Lanes {
  uint32_t v[3];  // blue, green, red
};
struct Rgb888Lanes {
  static uint32_t Down(const Tap& t, ptrdiff_t x, int lane) {
    return (t.top[3 * x + lane] * (32 - t.fy) + t.bottom[3 * x + lane] * t.fy) >> 5;
  }
  static Lanes Sample(const Tap& t) {
    Lanes l;
    for (int i = 0; i < 3; ++i) l.v[i] = Down(t, t.c, i) * (32 - t.fx) + Down(t, t.n, i) * t.fx;
    return l;
  }
};
struct Rgb565FromLanes {
  static constexpr bool kRgb565 = true;
  static void Put(uint8_t* o, const Lanes& l) {
    Store16(o, static_cast<uint16_t>((l.v[2] >> 8) << 11 | (l.v[1] >> 7) << 5 | (l.v[0] >> 8)));
  }
};
struct Rgb888FromLanes {
  static constexpr bool kRgb565 = false;
  static void Put(uint8_t* o, const Lanes& l) {
    for (int i = 0; i < 3; ++i) o[i] = static_cast<uint8_t>(l.v[i] >> 5);
  }
};

// stepX and stepY of the record span two pixels and two rows; one pixel is
// half of that, rounded down to whole pixels for RGB565 output.
ptrdiff_t OnePixel(int32_t twoPixels, bool rgb565) {
  return rgb565 ? static_cast<ptrdiff_t>(twoPixels >> 2) * 2 : static_cast<ptrdiff_t>(twoPixels >> 1);
}

template <class Source, class Out>
uint32_t ResizeRotated(const ImgPrcRotationRecord* rec, const uint8_t* src, ptrdiff_t rowBytes,
                       int32_t srcWidth, int32_t srcHeight, int32_t dstWidth, int32_t dstHeight) {
  if (dstHeight < 1) return 0;
  if (!rec) return 0xFFFFFFFFu;
  const uint32_t sx = static_cast<uint32_t>(ResizeStep(srcWidth, dstWidth));
  const uint32_t sy = static_cast<uint32_t>(ResizeStep(srcHeight, dstHeight));
  const ptrdiff_t col = OnePixel(rec->stepX, Out::kRgb565), row = OnePixel(rec->stepY, Out::kRgb565);
  uint8_t* rowStart = rec->pix00;
  uint32_t py = 0;
  for (int32_t j = 0; j < dstHeight; ++j, py += sy, rowStart += row) {
    Tap t;
    const ptrdiff_t r = py >> 16;
    t.top = src + r * rowBytes;
    t.bottom = r + 1 < srcHeight ? t.top + rowBytes : t.top;
    t.fy = (py >> 11) & 31;
    uint8_t* o = rowStart;
    uint32_t px = 0;
    for (int32_t i = 0; i < dstWidth; ++i, px += sx, o += col) {
      t.c = px >> 16;
      t.n = t.c + 1 < srcWidth ? t.c + 1 : srcWidth - 1;
      t.fx = (px >> 11) & 31;
      Out::Put(o, Source::Sample(t));
    }
  }
  return 0;
}

}  // namespace

extern "C" uint32_t _ORURGB565RszRot(const ImgPrcRotationRecord* rec, const uint8_t* src, int32_t stride,
                                     int32_t srcWidth, int32_t srcHeight, int32_t dstWidth,
                                     int32_t dstHeight) {
  return ResizeRotated<Rgb565Spread, Rgb565FromSpread>(rec, src, static_cast<ptrdiff_t>(stride) * 2, srcWidth,
                                                       srcHeight, dstWidth, dstHeight);
}

extern "C" uint32_t _ORURGB888ToRGB565RszRot(const ImgPrcRotationRecord* rec, const uint8_t* src,
                                             int32_t stride, int32_t srcWidth, int32_t srcHeight,
                                             int32_t dstWidth, int32_t dstHeight) {
  return ResizeRotated<Rgb888Lanes, Rgb565FromLanes>(rec, src, stride, srcWidth, srcHeight, dstWidth,
                                                     dstHeight);
}

extern "C" uint32_t _ORURGB888RszRot(const ImgPrcRotationRecord* rec, const uint8_t* src, int32_t stride,
                                     int32_t srcWidth, int32_t srcHeight, int32_t dstWidth,
                                     int32_t dstHeight) {
  return ResizeRotated<Rgb888Lanes, Rgb888FromLanes>(rec, src, stride, srcWidth, srcHeight, dstWidth,
                                                     dstHeight);
}

extern "C" uint32_t _ORURGB565ToARGB32(const uint8_t* src, int32_t stride, uint8_t* dst, int32_t dstStride,
                                       int32_t width, int32_t height, uint32_t alpha) {
  const uint64_t a = static_cast<uint64_t>(static_cast<int64_t>(static_cast<int32_t>(alpha << 24)));
  auto widen = [a](uint32_t p) { return a | (p & 0xF800u) << 8 | ((p >> 5) & 63u) << 10 | (p & 31u) << 3; };
  const int32_t pairs = width >> 1 > 0 ? width >> 1 : 1;
  const ptrdiff_t srcRow = static_cast<ptrdiff_t>(stride >> 1) * 8,
                  dstRow = static_cast<ptrdiff_t>(dstStride) * 8;
  int32_t y = 0;
  do {
    for (int32_t m = 0; m < pairs; ++m) {
      uint32_t pair;
      memcpy(&pair, src + 8 * static_cast<ptrdiff_t>(m), 4);
      Store64(dst + 16 * static_cast<ptrdiff_t>(m), widen(pair & 0xFFFF));
      Store64(dst + 16 * static_cast<ptrdiff_t>(m) + 8, widen(pair >> 16));
    }
    src += srcRow;
    dst += dstRow;
  } while (++y < height);
  return 0;
}
