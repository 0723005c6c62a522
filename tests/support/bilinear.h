// The resizing kernels' bilinear rule, shared by every resize reference.
#pragma once

#include <stdint.h>

#include <algorithm>

// Sample at 16.16 position (x, y) of a w x h grid read by at(column, row):
// 5-bit weights, down first (each sum >> downShift), then across, unshifted;
// the column right is clamped, the row below only if clampRow.
template <class At>
int Bilinear(At at, int w, int h, uint32_t x, uint32_t y, int downShift, bool clampRow) {
  const int c = x >> 16, cn = std::min(c + 1, w - 1), fx = (x >> 11) & 31;
  const int r = y >> 16, rb = clampRow ? std::min(r + 1, h - 1) : r + 1, fy = (y >> 11) & 31;
  auto down = [&](int col) { return (at(col, r) * (32 - fy) + at(col, rb) * fy) >> downShift; };
  return down(c) * (32 - fx) + down(cn) * fx;
}

// The 16.16 step from s samples to d: ((s - 1) << 16) / (d - 1), 0 for one sample.
inline uint32_t Step(int32_t s, int32_t d) {
  return d == 1 ? 0 : static_cast<uint32_t>((int64_t{s - 1} << 16) / (d - 1));
}
