// Pictures for the deinterlacer tests: planes held in vectors of exactly the
// bytes a filter may touch (so AddressSanitizer reports any byte more), filled
// with seeded random values, and the plain per-pixel formulas the references
// are built from.
#pragma once

#include <stdint.h>

#include <algorithm>
#include <cmath>
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

}  // namespace deint_test
