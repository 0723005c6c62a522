#include "imageproc_extents.h"

#include <algorithm>

namespace scrimfuzz {

namespace {

bool Is(uint32_t code, std::initializer_list<uint32_t> codes) {
  return std::find(codes.begin(), codes.end(), code) != codes.end();
}

// Conversions whose kernels always write through the rotation record (their
// only member resizes and rotates).
bool AlwaysThroughRecord(uint32_t code) {
  return Is(code, {0x105, 0x109, 0x203, 0x204, 0x205, 0x209, 0x303, 0x403, 0x404});
}

// Conversions that convert at the source size whatever size was asked for.
bool IgnoresSize(const Conversion& c) {
  return c.out == 6 || c.out == 7 || c.out == 8 || c.out == 10 ||
         Is(c.code, {0x300, 0x500, 0x900, 0x305, 0x800});
}

bool IgnoresRotation(const Conversion& c) {
  return c.out == 6 || c.out == 7 || c.out == 8 || Is(c.code, {0x103, 0x305, 0x800});
}

Span Linear(uint64_t rows, uint64_t step, uint64_t last) {
  return {0, rows == 0 ? 0 : static_cast<int64_t>((rows - 1) * step + last)};
}

// The bytes a walk of w x h samples covers, sample (x, y) at
// start + x * sx + y * sy, each `store` bytes wide.
Span Walk(int64_t start, int64_t sx, int64_t sy, uint32_t w, uint32_t h, int64_t store) {
  if (w == 0 || h == 0) return {};
  int64_t lo = INT64_MAX, hi = INT64_MIN;
  for (int64_t x : {int64_t{0}, int64_t{w} - 1}) {
    for (int64_t y : {int64_t{0}, int64_t{h} - 1}) {
      const int64_t at = start + x * sx + y * sy;
      lo = std::min(lo, at);
      hi = std::max(hi, at + store);
    }
  }
  return {lo, hi};
}

// One pixel of a packed output, rotated through the record: the record's
// first cursor and its steps halved (per pixel rather than per 2x2 block).
// Kernels that walk one cursor round those halves down to an even number of
// bytes, so with an odd stride a negative step grows by one byte a pixel.
Span PackedRecordWalk(uint32_t rotation, int64_t p, int64_t S, uint32_t W, uint32_t H, uint32_t ww,
                      uint32_t wh, int64_t store, bool evenSteps) {
  int64_t pix00 = 0, hx = p, hy = S;
  switch (rotation) {
    case 1:
      pix00 = (int64_t{W} - 1) * S, hx = -S, hy = p;
      break;
    case 2:
      pix00 = (int64_t{H} - 1) * p, hx = S, hy = -p;
      break;
    case 3:  // against the right end of the last full row
      pix00 = int64_t{H} * S - p, hx = -p, hy = -S;
      break;
    case 4:
      pix00 = (int64_t{W} - 1) * p, hx = -p, hy = S;
      break;
    case 5:
      pix00 = (int64_t{H} - 1) * S, hx = p, hy = -S;
      break;
    default:
      break;
  }
  if (evenSteps) hx &= ~int64_t{1}, hy &= ~int64_t{1};
  return Walk(pix00, hx, hy, ww, wh, store);
}

// One plane of a planar output through the record (record made for W x H).
Span PlanarRecordWalk(uint32_t rotation, int64_t S, uint32_t W, uint32_t H, uint32_t ww, uint32_t wh) {
  int64_t start = 0, sx = 1, sy = S;
  switch (rotation) {
    case 1:
      start = (int64_t{W} - 1) * S, sx = -S, sy = 1;
      break;
    case 2:
      start = int64_t{H} - 1, sx = S, sy = -1;
      break;
    case 3:
      start = (int64_t{H} - 1) * S + (int64_t{W} - 1), sx = -1, sy = -S;
      break;
    case 4:
      start = int64_t{W} - 1, sx = -1, sy = S;
      break;
    case 5:
      start = (int64_t{H} - 1) * S, sx = 1, sy = -S;
      break;
    default:
      break;
  }
  return Walk(start, sx, sy, ww, wh, 1);
}

uint32_t PlaneRows(int32_t format, int plane, uint32_t height) {
  return (format == 0 || format == 8) && plane > 0 ? height / 2 : height;
}

}  // namespace

void Conversion::Classify() {
  in = static_cast<int32_t>(code) >> 8;
  out = static_cast<int32_t>(code & 0xFF);
  const bool odd = (sw | sh | dw | dh) & 1;
  wsw = odd ? sw & ~1u : sw, wsh = odd ? sh & ~1u : sh, wdw = odd ? dw & ~1u : dw, wdh = odd ? dh & ~1u : dh;
  if (wsw == wdw && wsh == wdh) {
    resizeCase = 0;
    return;
  }
  resizeCase = wsw < wdw && wsh < wdh ? 2 : wsw > wdw && wsh > wdh ? 3 : 1;
  const uint64_t a = wsw, b = wsh, x = wdw, y = wdh;
  if (a % 4 || b % 4 || x % 4 || y % 4 || rotation != 0 || resizeMode != 1) return;
  if (x == 2 * a && y == 2 * b)
    resizeCase = 4;
  else if (2 * x == 5 * a && y == 2 * b)
    resizeCase = 5;
  else if (a == 320 && b == 240 && x == 480 && y == 272)
    resizeCase = 7;
  else if (2 * x == 3 * a)
    resizeCase = 6;
}

int PlaneCount(int32_t format) { return format <= 2 ? 3 : format == 8 ? 2 : 1; }

uint32_t RowBytes(int32_t format, int plane, uint32_t width) {
  switch (format) {
    case 0:
    case 1:
      return plane > 0 ? width / 2 : width;
    case 3:
    case 6:
    case 7:
    case 10:
      return 2 * width;
    case 4:
      return 3 * width;
    case 5:
    case 9:
      return 4 * width;
    case 8:
      return plane > 0 ? width / 2 * 2 : width;
    default:
      return width;
  }
}

void SourceSpans(const Conversion& c, const uint32_t strides[3], Span out[3]) {
  for (int i = 0; i < 3; ++i) out[i] = {};
  if (c.AnyWorkSizeZero()) return;  // refused before anything is read
  const int n = PlaneCount(c.in);
  if (c.deintMode != 0 && c.in <= 2) {
    // The deinterlacer reads the caller's planes (the kernel then reads the
    // work area). Its line filters move whole source pitches; in 4:2:2,
    // discard, bob and blend read the chroma planes over twice their height.
    const uint32_t m = c.deintMode;
    const bool fast = m == 1 || m >= 8;
    if (!fast && m <= 5 && c.in == 2) return;
    for (int i = 0; i < n; ++i) {
      uint32_t rows = PlaneRows(c.in, i, c.sh);
      if (c.in == 1 && i > 0 && m >= 2 && m <= 4) rows = 2 * rows - 1;
      out[i] = Linear(rows, strides[i], fast ? RowBytes(c.in, i, c.sw) : strides[i]);
    }
    return;
  }
  const uint64_t S = strides[0];
  if (c.code == 0x305) {
    // Pixel pairs fetched as 64-bit words, a row (stride / 2 >> 1) words on.
    out[0] = Linear(c.wsh, ((S / 2) >> 1) * 8, 8 * std::max(1u, c.wsw >> 1));
    return;
  }
  if (Is(c.code, {0x300, 0x500, 0x900})) {
    // Pairs fetched 8 bytes apart; the second row of a pair (stride / 4) x 8
    // bytes after the first, pairs of rows 2 x stride apart. The 32-bit
    // sources keep the RGB565 spacing: a pair of their pixels fills the 8 bytes.
    if (c.wsh >= 2) out[0] = {0, static_cast<int64_t>((c.wsh / 2 - 1) * 2 * S + (S / 4) * 8 + 4 * c.wsw)};
    return;
  }
  for (int i = 0; i < n; ++i) out[i] = Linear(PlaneRows(c.in, i, c.sh), strides[i], RowBytes(c.in, i, c.sw));
  // The resizing 4:2:0 kernels blend each luma row with the one below it
  // without clamping: on the last row they read one row beyond (weight 0).
  // The enlarging ones convert whole row pairs, the pair below the last row
  // included: two luma rows and one chroma row beyond.
  const bool resizing420 =
      c.in == 0 && c.resizeCase != 0 && c.out != 6 && c.out != 7 && c.out != 8 && c.out != 10;
  if (resizing420) {
    const bool enlarging = c.resizeCase != 1 && c.resizeCase != 3;
    out[0] = Linear(PlaneRows(c.in, 0, c.sh) + (enlarging ? 2 : 1), strides[0], RowBytes(c.in, 0, c.sw));
    for (int i = 1; enlarging && i < 3; ++i)
      out[i] = Linear(PlaneRows(c.in, i, c.sh) + 1, strides[i], RowBytes(c.in, i, c.sw));
  }
  // The 4:2:2 and 4:4:4 resizing kernels sample like the 4:2:0 Rsz, every
  // plane with its unclamped row below.
  if ((c.code == 0x103 && c.resizeCase != 0) || Is(c.code, {0x105, 0x109, 0x203, 0x204, 0x205, 0x209})) {
    for (int i = 0; i < n; ++i)
      out[i] = Linear(PlaneRows(c.in, i, c.sh) + 1, strides[i], RowBytes(c.in, i, c.sw));
  }
  // The unscaled 4:2:0 and 4:2:2 to RGB kernels step both chroma planes by
  // the Cb stride.
  const bool unscaledRgb =
      (c.in == 0 &&
       (c.out == 10 || ((c.out == 3 || c.out == 4 || c.out == 5 || c.out == 9) && c.resizeCase == 0))) ||
      (c.code == 0x103 && c.resizeCase == 0);
  if (unscaledRgb) out[2] = Linear(PlaneRows(c.in, 2, c.sh), strides[1], RowBytes(c.in, 2, c.sw));
}

void DestinationShape(const Conversion& c, uint32_t& width, uint32_t& height) {
  const bool ignoresSize = IgnoresSize(c);
  uint32_t w = ignoresSize ? c.wsw : c.wdw, h = ignoresSize ? c.wsh : c.wdh;
  if (!IgnoresRotation(c) && (c.rotation == 1 || c.rotation == 2)) {
    // A quarter turn, through a record made for the destination size.
    const uint32_t turnedWidth = std::max(c.wdh, h), turnedHeight = std::max(c.wdw, w);
    w = turnedWidth, h = turnedHeight;
  }
  width = w, height = h;
}

void DestinationSpans(const Conversion& c, const uint32_t strides[3], Span out[3]) {
  for (int i = 0; i < 3; ++i) out[i] = {};
  if (c.AnyWorkSizeZero()) return;
  const int64_t S = strides[0];
  const bool rotated = c.rotation != 0 && !IgnoresRotation(c);
  const bool ignoresSize = IgnoresSize(c);
  const uint32_t w = ignoresSize ? c.wsw : c.wdw, h = ignoresSize ? c.wsh : c.wdh;
  const bool packed = c.out == 3 || c.out == 4 || c.out == 5 || c.out == 9 || c.out == 10;

  if (packed && (AlwaysThroughRecord(c.code) || (c.in == 0 && rotated))) {
    const int64_t p = c.out == 4 ? 3 : c.out == 5 || c.out == 9 ? 4 : 2;
    // 32-bit pixels are stored as sign-extended 64-bit words.
    const int64_t store = p == 4 ? 8 : p;
    const bool unscaled = c.in == 0 && c.resizeCase == 0;
    const bool oneCursor = (c.in == 0 && c.out == 3 && c.resizeCase == 2) || (c.in != 0 && c.code != 0x404);
    // RGB888 from 4:2:2 and 4:4:4 keeps its 3-byte steps: rounded down to
    // even they would walk before the destination in the mirrored turns.
    const bool evenSteps = oneCursor && !(c.in != 0 && c.out == 4);
    out[0] = PackedRecordWalk(c.rotation, p, S, c.wdw, c.wdh, unscaled ? c.wsw : c.wdw,
                              unscaled ? c.wsh : c.wdh, store, evenSteps);
    return;
  }
  if (c.out == 0 && rotated) {
    // Rot walks the source size, RszRot the destination size; the record is
    // always made for the destination size.
    const bool resized = c.in == 0 && c.resizeCase != 0;
    const uint32_t ww = resized ? c.wdw : c.wsw, wh = resized ? c.wdh : c.wsh;
    out[0] = PlanarRecordWalk(c.rotation, S, c.wdw, c.wdh, ww, wh);
    for (int i = 1; i < 3; ++i)
      out[i] = PlanarRecordWalk(c.rotation, strides[i], c.wdw >> 1, c.wdh >> 1, ww >> 1, wh >> 1);
    return;
  }
  switch (c.out) {
    case 3: {
      const bool rsz = c.code == 0x103 ? c.resizeCase != 0 : c.resizeCase == 1 || c.resizeCase == 3;
      if (c.resizeCase == 0) {
        out[0] = Linear(h, S, 2 * w);
      } else if (rsz) {
        // Rsz stores each pixel pair as a sign-extended 64-bit word, the next
        // pair 8 bytes on.
        out[0] = Linear(h, S, 4 * w);
      } else {
        // The enlarging kernels: pairs as 64-bit words 8 bytes apart, rows
        // (stride / 4) x 8 bytes apart; Case1 writes whole groups of four rows.
        const uint32_t rows = c.resizeCase == 5 ? ((h - 1) & ~3u) + 4 : h;
        out[0] = Linear(rows, (S >> 2) * 8, 4 * w);
      }
      return;
    }
    case 10:
      out[0] = Linear(h, S, 2 * w);
      return;
    case 4:
      out[0] = Linear(h, S, 3 * w);
      return;
    case 5:
    case 9:
      if (c.code == 0x305) {
        out[0] = Linear(h, (S / 4) * 8, 8 * w);  // one 64-bit word a pixel
      } else {
        // Row pairs (stride / 2) x 8 bytes apart, the second row one stride
        // below the first; pixel c at 8c or 8c - 4, each a 64-bit word.
        out[0] = {0, h < 2 ? 0 : static_cast<int64_t>((h / 2 - 1) * ((S >> 1) * 8) + S + 8 * w - 4)};
      }
      return;
    case 6:
    case 7:
      out[0] = Linear(h, S, 2 * w);
      return;
    case 8:
      out[0] = Linear(h, S, w);
      out[1] = Linear(h / 2, strides[1], w);
      return;
    default:  // 0: planar 4:2:0
      out[0] = Linear(h, S, w);
      for (int i = 1; i < 3; ++i) out[i] = Linear(h / 2, strides[i], w / 2);
      return;
  }
}

}  // namespace scrimfuzz
