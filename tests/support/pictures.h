// Pictures for tests: planes with padded strides, filled from a seeded
// generator so that failures reproduce.
#pragma once

#include <stddef.h>
#include <stdint.h>

#include <random>
#include <vector>

namespace scrimtest {

// A deterministic byte generator (std::mt19937 with a fixed seed).
class Rng {
 public:
  explicit Rng(uint32_t seed) : gen_(seed) {}
  uint8_t byte() { return static_cast<uint8_t>(gen_() & 0xFF); }
  uint32_t below(uint32_t n) { return n ? static_cast<uint32_t>(gen_() % n) : 0; }
  int32_t range(int32_t lo, int32_t hi) {
    return lo + static_cast<int32_t>(below(static_cast<uint32_t>(hi - lo + 1)));
  }
  void fill(std::vector<uint8_t>& v) {
    for (auto& b : v) b = byte();
  }

 private:
  std::mt19937 gen_;
};

// One 8-bit plane of width x height samples with `stride` bytes per row,
// allocated to exactly stride x rows bytes (rows may exceed height when a
// kernel is documented to read beyond it).
struct Plane {
  int width = 0, height = 0, stride = 0;
  std::vector<uint8_t> data;
  Plane() = default;
  Plane(int w, int h, int s, int rows = -1) : width(w), height(h), stride(s) {
    data.assign(static_cast<size_t>(s) * static_cast<size_t>(rows < 0 ? h : rows), 0);
  }
  uint8_t& at(int x, int y) { return data[static_cast<size_t>(y) * stride + x]; }
  uint8_t at(int x, int y) const { return data[static_cast<size_t>(y) * stride + x]; }
  uint8_t* row(int y) { return data.data() + static_cast<size_t>(y) * stride; }
};

// A planar YCbCr 4:2:0 picture: luma w x h, chroma (w+1)/2 x (h+1)/2.
struct I420 {
  Plane y, cb, cr;
  uint8_t* planes[3];
  uint32_t strides[3];
  // pad: extra bytes per row beyond the samples; extraRows: rows allocated past the picture.
  I420(int w, int h, int pad = 0, int extraRows = 0);
  void randomize(Rng& rng);
};

// Where sample (x, y) of a w x h picture lands, as (column, row), for rotation
// code `rotation`: 1 a quarter turn anticlockwise, 2 clockwise, 3 a half
// turn, 4 a left-right mirror, 5 a top-bottom flip. Quarter turns give w rows
// of h samples.
inline void Rotated(uint32_t rotation, int x, int y, int w, int h, int* col, int* row) {
  const int cols[6] = {x, y, h - 1 - y, w - 1 - x, w - 1 - x, x};
  const int rows[6] = {y, w - 1 - x, x, h - 1 - y, y, h - 1 - y};
  *col = cols[rotation];
  *row = rows[rotation];
}

// Every byte of the three planes, padding included.
inline bool SamePlanes(const I420& a, const I420& b) {
  return a.y.data == b.y.data && a.cb.data == b.cb.data && a.cr.data == b.cr.data;
}

// Picture `from` laid out in `to` as rotation code `rotation` turns it; the
// chroma planes are half the luma size.
inline void Turn(uint32_t rotation, const I420& from, I420& to) {
  const Plane* in[3] = {&from.y, &from.cb, &from.cr};
  Plane* out[3] = {&to.y, &to.cb, &to.cr};
  for (int i = 0; i < 3; ++i) {
    const int w = i ? from.y.width / 2 : from.y.width, h = i ? from.y.height / 2 : from.y.height;
    for (int y = 0; y < h; ++y) {
      for (int x = 0; x < w; ++x) {
        int col, row;
        Rotated(rotation, x, y, w, h, &col, &row);
        out[i]->at(col, row) = in[i]->at(x, y);
      }
    }
  }
}

}  // namespace scrimtest
