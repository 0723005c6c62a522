// Pictures for the deinterlacer tests: planes held in vectors of exactly the
// bytes a filter may touch (so AddressSanitizer reports any byte more), filled
// with seeded random values, and the plain per-pixel formulas the references
// are built from.
#pragma once

#include <gtest/gtest.h>
#include <stdint.h>

#include <algorithm>
#include <cmath>
#include <cstring>
#include <functional>
#include <random>
#include <vector>

#include "deinterlace/deint_filters.h"

namespace deint_test {

struct Plane {
  uint32_t pitch = 0;
  std::vector<uint8_t> bytes;

  uint8_t* row(unsigned y) { return bytes.data() + size_t(y) * pitch; }
  const uint8_t* row(unsigned y) const { return bytes.data() + size_t(y) * pitch; }
  uint8_t at(unsigned y, size_t x) const { return bytes[size_t(y) * pitch + x]; }
};

// `rows` lines at `pitch`, the last one only `lastRowBytes` long.
inline Plane random_plane(unsigned rows, uint32_t pitch, size_t lastRowBytes, std::mt19937& rng) {
  Plane p;
  p.pitch = pitch;
  p.bytes.resize(rows == 0 ? 0 : size_t(rows - 1) * pitch + lastRowBytes);
  for (auto& b : p.bytes) b = static_cast<uint8_t>(rng());
  return p;
}

struct Picture {
  Plane planes[3];

  DeintPicture record() {
    DeintPicture r{3, {}, {}};
    for (int i = 0; i < 3; ++i) {
      r.planes[i] = planes[i].bytes.empty() ? nullptr : planes[i].bytes.data();
      r.pitches[i] = planes[i].pitch;
    }
    return r;
  }
};

// Every plane, byte for byte, padding included.
inline void expect_same(const Picture& got, const Picture& want) {
  for (int i = 0; i < 3; ++i) EXPECT_EQ(got.planes[i].bytes, want.planes[i].bytes) << "plane " << i;
}

// Plane sizes of a picture by chroma layout (0 4:2:0, 1 4:2:2, 2 4:4:4).
inline unsigned plane_width(unsigned plane, unsigned width, unsigned layout) {
  return plane > 0 && layout != 2 ? width / 2 : width;
}
inline unsigned plane_height(unsigned plane, unsigned height, unsigned layout) {
  return plane > 0 && layout == 0 ? height / 2 : height;
}

// The formulas, written out plainly.
inline uint8_t clamp255(int v) { return static_cast<uint8_t>(std::min(255, std::max(0, v))); }
inline uint8_t avg_down(int a, int b) { return static_cast<uint8_t>((a + b) / 2); }
inline uint8_t five_tap(int p0, int p1, int p2, int p3, int p4) {
  // Rounded towards minus infinity, as an arithmetic shift does.
  return clamp255(static_cast<int>(std::floor((-p0 + 4 * p1 + 2 * p2 + 4 * p3 - p4 + 4) / 8.0)));
}

// A picture of `layout` whose planes are pitch = plane width + pad, random.
inline Picture random_picture(unsigned width, unsigned height, unsigned layout, unsigned pad,
                              std::mt19937& rng) {
  Picture p;
  for (unsigned i = 0; i < 3; ++i) {
    const unsigned w = plane_width(i, width, layout) + pad;
    p.planes[i] = random_plane(plane_height(i, height, layout), w, w, rng);
  }
  return p;
}

// Constant-per-line pictures for the worked examples; pitch = width.
inline Picture lines_picture(unsigned width, unsigned height, unsigned layout,
                             const std::function<uint8_t(unsigned)>& v) {
  Picture p;
  for (unsigned i = 0; i < 3; ++i) {
    unsigned w = plane_width(i, width, layout), h = plane_height(i, height, layout);
    p.planes[i].pitch = w;
    p.planes[i].bytes.resize(size_t(w) * h);
    for (unsigned y = 0; y < h; ++y) memset(p.planes[i].row(y), v(y), w);
  }
  return p;
}

// The fast filter: line 2k is kept; line 2k+1 is filtered from lines 2k-1 ..
// 2k+3, with lines above the plane reading as line 0 and lines below it as
// the last line.
inline void fast_reference(Plane& out, const Plane& in, unsigned w, unsigned h) {
  auto at = [&](int y, unsigned x) { return in.at(unsigned(std::min(std::max(y, 0), int(h) - 1)), x); };
  for (int y = 0; y < int(h); ++y)
    for (unsigned x = 0; x < w; ++x)
      out.row(y)[x] =
          y % 2 == 0 ? at(y, x) : five_tap(at(y - 2, x), at(y - 1, x), at(y, x), at(y + 1, x), at(y + 2, x));
}

}  // namespace deint_test
