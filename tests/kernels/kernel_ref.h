// References for the YCbCr to RGB kernels, written from the rules pixel by pixel: one colour step per packing
// and one walk per shape. Sources record the furthest byte read and destinations the bytes written, so a
// kernel runs on exactly those (AddressSanitizer sees any stray access).
#pragma once

#include <gtest/gtest.h>
#include <stddef.h>
#include <stdint.h>
#include <string.h>

#include <algorithm>
#include <functional>
#include <random>
#include <vector>

#include "imageproc/color_tables.h"
#include "imageproc/cpu_features.h"
#include "imageproc/imgprc_context.h"
#include "support/bilinear.h"

namespace kref {

constexpr uint64_t kMask = 0x7E0FC1F;  // the fields of a spread pixel
// Range tables filled at random: wide ones push most results into the clamps, narrow ones keep most results
// inside the range.
struct Tables {
  std::vector<uint16_t> y = std::vector<uint16_t>(256);
  std::vector<int64_t> cb = std::vector<int64_t>(256), cr = std::vector<int64_t>(256);
  ImgPrcContext ctx{};
  Tables(uint32_t seed, bool wide) {
    std::mt19937 rng(seed);
    const int32_t hiMax = wide ? 32767 : 6000;
    std::uniform_int_distribution<int32_t> yd(0, wide ? 65535 : 40000), hd(-hiMax, hiMax), ld(-32768, 32767);
    for (int i = 0; i < 256; ++i) {
      y[i] = static_cast<uint16_t>(yd(rng));
      cb[i] = Pack(hd(rng), wide ? ld(rng) : hd(rng) / 2);
      cr[i] = Pack(hd(rng), wide ? ld(rng) : hd(rng) / 2);
    }
    Attach();
  }
  // Built as an instance builds them (with the vector rows of the level in force).
  Tables(uint32_t matrix, uint32_t range, int brightness, int contrast, int saturation) {
    Attach();
    UpdateColorMatrix(&ctx, matrix, range);
    ImgPrcBuildRangeTables(&ctx, brightness, contrast, saturation);
  }
  Tables(const Tables&) = delete;  // ctx points into the vectors
  static int64_t Pack(int32_t hi, int32_t lo) {
    return static_cast<int32_t>(static_cast<uint32_t>(hi) << 16 | (static_cast<uint32_t>(lo) & 0xFFFF));
  }
  void Attach() { ctx.rangeTableY = y.data(), ctx.rangeTableCb = cb.data(), ctx.rangeTableCr = cr.data(); }
};
inline int32_t Clamp(int32_t v, int32_t hi) { return std::min(std::max(v, 0), hi); }

// Channel sums of a pixel: its luma entry plus each colour term. Red and blue: the high half doubled plus the
// sign of the low half. Green: the two low halves summed on 16 bits (the carry is dropped), doubled.
struct Sums {
  int32_t r, g, b;
};
inline Sums SumsOf(const Tables& t, uint8_t y, uint8_t cb, uint8_t cr) {
  const int32_t l = t.y[y], eb = int32_t(uint32_t(t.cb[cb])), er = int32_t(uint32_t(t.cr[cr]));
  return {l + (er >> 15), l + int16_t(uint16_t(uint32_t(eb) + uint32_t(er))) * 2, l + (eb >> 15)};
}

// RGB565, or RGB555: 5-bit green (>> 10, not >> 9), the opaque bit, and the keyed colour written as 0.
inline uint16_t Ref16(const Tables& t, uint8_t y, uint8_t cb, uint8_t cr, bool rgb555 = false,
                      uint32_t key = 0) {
  if (rgb555 && (static_cast<uint32_t>(y) << 16 | static_cast<uint32_t>(cb) << 8 | cr) == key) return 0;
  const Sums s = SumsOf(t, y, cb, cr);
  const int32_t r = Clamp(s.r >> 10, 31), b = Clamp(s.b >> 10, 31);
  return static_cast<uint16_t>(rgb555 ? r << 11 | Clamp(s.g >> 10, 31) << 6 | b << 1 | 1
                                      : r << 11 | Clamp(s.g >> 9, 63) << 5 | b);
}
inline uint64_t Spread(uint32_t r, uint32_t g, uint32_t b) {
  return uint64_t{r} << 21 | uint64_t{g} << 10 | b;
}
// Spread pixel: 6-bit red at bit 21, 6-bit green at 10, 5-bit blue at 0; with `bgr` 5-bit blue at 21 and
// 6-bit red at 0.
inline uint64_t RefSpread(const Tables& t, uint8_t y, uint8_t cb, uint8_t cr, bool bgr = false) {
  const Sums s = SumsOf(t, y, cb, cr);
  const uint32_t r = Clamp(s.r >> 9, 63), g = Clamp(s.g >> 9, 63), b = Clamp(s.b >> 10, 31);
  return bgr ? Spread(b, g, r) : Spread(r, g, b);
}
// 8-bit channels: each sum >> 7 clamped to 0..255, as R << 16 | G << 8 | B.
inline uint32_t RefRgb8(const Tables& t, uint8_t y, uint8_t cb, uint8_t cr) {
  const Sums s = SumsOf(t, y, cb, cr);
  return uint32_t(Clamp(s.r >> 7, 255)) << 16 | Clamp(s.g >> 7, 255) << 8 | Clamp(s.b >> 7, 255);
}
inline uint32_t RedOf(uint64_t s) { return (s >> 21) & 63; }
inline uint32_t GreenOf(uint64_t s) { return (s >> 10) & 63; }
inline uint32_t BlueOf(uint64_t s) { return s & 31; }

// A weighted sum of spread pixels (weights over `total`), field by field.
using Terms = std::vector<std::pair<uint32_t, uint64_t>>;
inline Sums FieldSums(const Terms& terms) {
  Sums s{0, 0, 0};
  for (const auto& [w, p] : terms) s.r += w * RedOf(p), s.g += w * GreenOf(p), s.b += w * BlueOf(p);
  return s;
}
// RGB565 of a blend: the field sums / total; red keeps its top 5 bits.
inline uint16_t Blend565(const Terms& terms, uint32_t total) {
  const Sums s = FieldSums(terms);
  return static_cast<uint16_t>((s.r / total >> 1) << 11 | (s.g / total) << 5 | (s.b / total));
}
// 32-bit ARGB of a blend over 32: red and green sums / 8, blue / 4.
inline uint32_t Blend32(const Terms& terms, uint32_t alpha) {
  const Sums s = FieldSums(terms);
  return alpha << 24 | uint32_t(s.r >> 3) << 16 | uint32_t(s.g >> 3) << 8 | uint32_t(s.b >> 2);
}
// The same packing on the whole weighted word, for lines with red and blue exchanged.
inline uint32_t Blend32Words(const Terms& terms, uint32_t alpha) {
  uint64_t v = 0;
  for (const auto& [w, s] : terms) v += w * s;
  return alpha << 24 | uint32_t(((v >> 8) & 0xFF0000) | ((v >> 5) & 0xFF00) | ((v >> 2) & 0xFF));
}

// A 4:2:0 source (4:2:2 with chromaRows 1, 4:4:4 with chromaCols 1 too), planes allocated generously and
// filled at random.
class Picture {
 public:
  Picture(int32_t width, int32_t height, int32_t pad, uint32_t seed, int32_t extraRows = 4,
          int chromaCols = 2, int chromaRows = 2) {
    const int32_t cw = (width + chromaCols - 1) / chromaCols, ch = (height + chromaRows - 1) / chromaRows;
    const int32_t widths[3] = {width + pad, cw + pad + 3, cw + pad + 7}, rows[3] = {height, ch, ch};
    std::mt19937 rng(seed);
    for (int p = 0; p < 3; ++p) {
      strides_[p] = static_cast<uint32_t>(widths[p]);
      full_[p].resize(static_cast<size_t>(rows[p] + extraRows) * strides_[p] + 64);
      for (auto& v : full_[p]) v = static_cast<uint8_t>(rng());
    }
  }
  uint8_t Y(int64_t x, int64_t y) const { return Read(0, y * strides_[0] + x); }
  uint8_t C(int plane, int64_t x, int64_t y, uint32_t stride) const { return Read(plane, y * stride + x); }
  uint8_t Cb(int64_t x, int64_t y) const { return C(1, x, y, strides_[1]); }
  uint8_t Cr(int64_t x, int64_t y) const { return C(2, x, y, strides_[2]); }
  uint32_t stride(int plane) const { return strides_[plane]; }
  void Cut() {
    for (int p = 0; p < 3; ++p) {
      cut_[p].assign(full_[p].begin(), full_[p].begin() + (reach_[p] + 1));
      raw_[p] = cut_[p].data();
    }
  }
  uint8_t** raw() { return raw_; }
  uint32_t* strides() { return strides_; }
  uint8_t Read(int p, int64_t off) const {
    reach_[p] = std::max(reach_[p], off);
    return full_[p].at(static_cast<size_t>(off));
  }
  uint32_t strides_[3];
  std::vector<uint8_t> full_[3], cut_[3];
  uint8_t* raw_[3] = {nullptr, nullptr, nullptr};
  mutable int64_t reach_[3] = {0, 0, 0};
};

// A destination: the reference writes the expected bytes into a generous buffer holding a pattern; Target()
// is the bytes up to the last one written (at least one, so the kernel gets a real pointer), with the same
// pattern.
class Canvas {
 public:
  explicit Canvas(size_t generous) : expected_(generous) {
    std::mt19937 rng(99);
    for (auto& v : expected_) v = static_cast<uint8_t>(rng());
    pattern_ = expected_;
  }
  void Put(int64_t off, const void* v, size_t n) {
    ASSERT_GE(off, 0);
    ASSERT_LE(static_cast<size_t>(off) + n, expected_.size());
    memcpy(&expected_[static_cast<size_t>(off)], v, n);
    high_ = std::max(high_, off + static_cast<int64_t>(n) - 1);
  }
  void Put16(int64_t off, uint16_t v) { Put(off, &v, 2); }
  void Put64(int64_t off, uint64_t v) { Put(off, &v, 8); }
  std::vector<uint8_t> Target() const { return {pattern_.begin(), pattern_.begin() + size()}; }
  // The kernel's buffer equals the expected bytes, written and untouched alike.
  void ExpectEqual(const std::vector<uint8_t>& got) const {
    ASSERT_EQ(got.size(), size());
    size_t bad = 0;
    for (size_t i = 0; i < got.size(); ++i)
      if (got[i] != expected_[i] && bad++ < 8)
        ADD_FAILURE() << "byte " << i << ": got " << int(got[i]) << ", expected " << int(expected_[i]);
    EXPECT_EQ(bad, 0u);
  }
  size_t size() const { return static_cast<size_t>(std::max<int64_t>(high_ + 1, 1)); }
  std::vector<uint8_t> expected_, pattern_;
  int64_t high_ = -1;
};

// Line buffers of exactly the given size each, holding garbage.
struct LineSet {
  std::vector<std::vector<uint8_t>> store;
  uint8_t* ptr[4] = {nullptr, nullptr, nullptr, nullptr};
  explicit LineSet(size_t bytes, int count = 4) {
    std::mt19937 rng(7);
    for (int i = 0; i < count; ++i) {
      store.emplace_back(bytes);
      for (auto& v : store.back()) v = static_cast<uint8_t>(rng());
      ptr[i] = store.back().data();
    }
  }
};

// The rotation record of a packed destination as offsets from its start: p bytes a pixel, W x H picture
// (source orientation), stride S. Rotation 1 is a quarter turn anticlockwise, 2 clockwise, 3 a half turn, 4 a
// left-right mirror, 5 a top-bottom flip.
struct RecordOffsets {
  int32_t stepX, stepY;
  int64_t pix[4];  // pix00, pix10, pix01, pix11
};
inline RecordOffsets MakeOffsets(int rotation, int64_t w, int64_t h, int64_t s, int64_t p = 2) {
  const int64_t dx[6] = {p, -s, s, -p, -p, p}, dy[6] = {s, p, -p, -s, s, -s};
  const int64_t o[6] = {0, (w - 1) * s, (h - 1) * p, h * s - p, (w - 1) * p, (h - 1) * s};
  const int64_t x = dx[rotation], y = dy[rotation], o00 = o[rotation];
  return {int32_t(2 * x), int32_t(2 * y), {o00, o00 + x, o00 + y, o00 + x + y}};
}
inline std::vector<CpuLevel> Levels() {
  std::vector<CpuLevel> levels;
  for (unsigned l = CPU_SCALAR; l <= CPU_NEON; ++l)
    if (cpu_set_cap(CpuLevel(l)) == CpuLevel(l)) levels.push_back(CpuLevel(l));
  cpu_set_cap(CPU_NEON);
  return levels;
}

using PixelFn = std::function<uint32_t(uint8_t y, uint8_t cb, uint8_t cr)>;
using PutFn = std::function<void(Canvas&, int64_t at, uint32_t v)>;
// Rows of the enlarging RGB565 kernels are (pitch / 4) * 8 bytes apart.
inline int64_t WideRow(int32_t pitch) { return int64_t{pitch >> 2} * 8; }
// 2x2 blocks while row < h and column < w through the four cursors, steps used rounded down to even bytes;
// both chroma planes addressed with stride 1.
inline void RenderBlocks(Canvas& cv, Picture& pic, int32_t w, int32_t h, const RecordOffsets& ro,
                         const PixelFn& px, const PutFn& put) {
  const int64_t col = (ro.stepX >> 1) * 2, row = (ro.stepY >> 1) * 2;
  for (int32_t r = 0; r < h; r += 2)
    for (int32_t c = 0; c < w; c += 2) {
      const uint8_t cb = pic.C(1, c / 2, r / 2, pic.stride(1)), cr = pic.C(2, c / 2, r / 2, pic.stride(1));
      for (int i = 0; i < 4; ++i)
        put(cv, ro.pix[i] + (c >> 1) * col + (r >> 1) * row, px(pic.Y(c + i % 2, r + i / 2), cb, cr));
    }
}

// Sample of a plane at 16.16 position (x, y); the next column is clamped to `last`, the next row is not.
inline uint8_t Bilinear(Picture& pic, int plane, int32_t last, uint32_t x, uint32_t y) {
  auto at = [&](int c, int r) { return int{pic.C(plane, c, r, pic.stride(plane))}; };
  return static_cast<uint8_t>(::Bilinear(at, last + 1, 0, x, y, 4, false) >> 6);
}

// Output block (m, n) of an any-ratio resize, pixels (0,0), (1,0), (0,1), (1,1): bilinear luma, chroma
// nearest to the block centre (with `rowChroma`, 4:2:2: each row's chroma from its own luma row).
template <class Put>
void ForEachResizedBlock(Picture& pic, int32_t sw, int32_t sh, int32_t dw, int32_t dh, const PixelFn& px,
                         Put put, bool rowChroma = false) {
  const uint32_t sx = Step(sw, dw), sy = Step(sh, dh);
  for (int32_t n = 0; 2 * n < dh; ++n)
    for (int32_t m = 0; 2 * m < dw; ++m) {
      const uint32_t x[2] = {2 * m * sx, 2 * m * sx + sx}, y[2] = {2 * n * sy, 2 * n * sy + sy};
      const int64_t ccol = ((x[0] >> 16) + (x[1] >> 16) + 1) >> 2,
                    crow = ((y[0] >> 16) + (y[1] >> 16) + 1) >> 2;
      uint32_t b[4];
      for (int i = 0; i < 4; ++i) {
        const int64_t cy = rowChroma ? y[i / 2] >> 16 : crow;
        b[i] = px(Bilinear(pic, 0, sw - 1, x[i % 2], y[i / 2]), pic.Cb(ccol, cy), pic.Cr(ccol, cy));
      }
      put(m, n, b);
    }
}

// Spread lines, blended field by field, or (red and blue exchanged) on whole words as the interpolators do:
// their 6-bit red in the low field carries.
using Line = std::vector<uint64_t>;
inline Line Blend(const Line& a, const Line& b, uint32_t wb, uint32_t total, bool words = false) {
  Line out(a.size());
  for (size_t x = 0; x < a.size(); ++x) {
    const Sums s = FieldSums({{total - wb, a[x]}, {wb, b[x]}});
    out[x] = words ? (((total - wb) * a[x] + wb * b[x]) / total) & kMask
                   : Spread(s.r / total, s.g / total, s.b / total);
  }
  return out;
}
inline Line SpreadRow(const Tables& t, Picture& pic, int32_t sw, int64_t r, int64_t c, bool bgr) {
  Line l(sw);
  for (int32_t x = 0; x < sw; ++x) l[x] = RefSpread(t, pic.Y(x, r), pic.Cb(x / 2, c), pic.Cr(x / 2, c), bgr);
  return l;
}

// The output rows of the line-buffer enlargements (source orientation), as the weighted pixels of each output
// pixel.
using PhaseRows = std::vector<std::vector<Terms>>;

// The line cache: slots A, B, C tagged with rows; a pair that starts at row r is converted with chroma row r
// >> 1 for both rows. Output row j lies at j * step, blended from the rows either side.
template <class Stretch>
PhaseRows CachedRows(const Tables& t, Picture& pic, int32_t sw, int32_t sh, int32_t dh, bool bgr,
                     Stretch stretch) {
  Line line[3];
  int32_t tag[3] = {-1, -1, -1};
  auto fill = [&](int32_t r, int a, int b) {
    line[a] = SpreadRow(t, pic, sw, r, r >> 1, bgr), line[b] = SpreadRow(t, pic, sw, r + 1, r >> 1, bgr);
    tag[a] = r, tag[b] = r + 1;
  };
  PhaseRows rows;
  for (int32_t j = 0; j < dh; ++j) {
    const uint32_t p = j * static_cast<uint32_t>(Step(sh, dh));
    const int32_t y = p >> 16, f = (p >> 11) & 31, by = tag[1] == y ? 1 : tag[2] == y ? 2 : 0;
    if (tag[0] != y && by != 0) std::rotate(line, line + by, line + 3), std::rotate(tag, tag + by, tag + 3);
    if (tag[0] != y) fill(y, 0, 1);
    if (f != 0 && tag[1] != y + 1) fill(y + 1, 1, 2);
    rows.push_back(stretch(f == 0 ? line[0] : Blend(line[0], line[1], f, 32, bgr)));
  }
  return rows;
}

// Horizontal stretches of a spread line, as the weighted pixels (over 32) of each output pixel. Linear: the
// entry past the line only ever gets weight 0.
inline std::vector<Terms> LinearPhases(const Line& l, uint32_t step, int32_t dw) {
  std::vector<Terms> out(2 * std::max(1, dw / 2));
  for (size_t k = 0; k < out.size(); ++k) {
    const uint32_t p = k * step, i = p >> 16, f = (p >> 11) & 31;
    EXPECT_TRUE(i + 1 < l.size() || f == 0) << k;
    out[k] = {{32 - f, l.at(i)}, {f, i + 1 < l.size() ? l[i + 1] : 0}};
  }
  return out;
}
// Fixed ratios: each round of `in` pixels gives one output per phase {i, w}: w/32 of pixel i and the rest of
// pixel i + 1; past the whole rounds of four pixels the last one stands in.
inline std::vector<Terms> Fixed(const Line& l, int32_t in,
                                std::initializer_list<std::pair<int32_t, uint32_t>> ph) {
  const int32_t rounds = std::max<int32_t>(1, l.size() >> 2), last = 4 * rounds - 1;
  std::vector<Terms> out;
  for (int32_t at = 0; at < 4 * rounds; at += in)
    for (auto [i, w] : ph) out.push_back({{w, l[at + i]}, {32 - w, l[std::min(at + i + 1, last)]}});
  return out;
}
// 1.5x: 1/1, 11/32 21/32, 21/32 11/32 over pixels a b c, then the same over c d e.
inline std::vector<Terms> Phases23(const Line& l) {
  return Fixed(l, 4, {{0, 32}, {0, 11}, {1, 21}, {2, 32}, {2, 11}, {3, 21}});
}
// 2.5x: 1/1, 5/8 3/8, 7/32 25/32 over a b, then 13/16 3/16 and 19/32 13/32 over b c.
inline std::vector<Terms> Phases25(const Line& l) {
  return Fixed(l, 2, {{0, 32}, {0, 20}, {0, 7}, {1, 26}, {1, 19}});
}

// Output row 2k is source row k, row 2k + 1 the average of rows k and k + 1, in whole groups of 4 rows; the
// last group's second pair lies past the picture.
inline PhaseRows Case1Phases(const Tables& t, Picture& pic, int32_t sw, int32_t dh, bool bgr) {
  const int32_t groups = (dh - 1) / 4 + 1;
  std::vector<Line> src;
  for (int32_t r = 0; r < 2 * groups + 2; ++r) src.push_back(SpreadRow(t, pic, sw, r, r / 2, bgr));
  PhaseRows rows;
  for (int32_t k = 0; k < 2 * groups; ++k) {
    rows.push_back(Phases25(src[k]));
    rows.push_back(Phases25(Blend(src[k], src[k + 1], 1, 2, bgr)));
  }
  return rows;
}
// 320x240 to 480x272: output row k of band b blends source rows 15b + row and the one after by w/8, then
// stretches by 1.5.
inline PhaseRows Case3Phases(const Tables& t, Picture& pic) {
  constexpr int32_t kRow[17] = {0, 0, 1, 2, 3, 4, 5, 6, 7, 8, 8, 9, 10, 11, 12, 13, 14};
  constexpr uint32_t kWeight[17] = {0, 7, 6, 5, 4, 3, 2, 1, 0, 0, 7, 6, 5, 4, 3, 2, 1};
  std::vector<Line> src;
  for (int32_t r = 0; r < 240; ++r) src.push_back(SpreadRow(t, pic, 320, r, r / 2, false));
  PhaseRows rows;
  for (int32_t j = 0; j < 272; ++j) {
    const int32_t r = 15 * (j / 17) + kRow[j % 17];
    rows.push_back(Phases23(Blend(src[r], src[std::min(r + 1, 239)], kWeight[j % 17], 8)));
  }
  return rows;
}

// RGB565 line of source row r as the nearest kernels hold it: converted with its pair's chroma row, directly
// or doubled across by averaging.
inline std::vector<uint16_t> NearestLine(const Tables& t, Picture& pic, int32_t sw, int64_t r, bool doubled) {
  std::vector<uint16_t> out;
  uint64_t prev = 0;
  for (int32_t x = 0; x < sw; ++x) {
    const uint8_t y = pic.Y(x, r), cb = pic.Cb(x / 2, r / 2), cr = pic.Cr(x / 2, r / 2);
    if (!doubled) {
      out.push_back(Ref16(t, y, cb, cr));
      continue;
    }
    const uint64_t e = RefSpread(t, y, cb, cr);
    out.push_back(Blend565({{1, x == 0 ? e : prev}, {1, e}}, 2));
    out.push_back(Blend565({{1, e}}, 1));
    prev = e;
  }
  return out;
}
// Output row j shows source row floor(j * sh / dh) sampled at columns floor(k * lineWidth / dw); a row
// showing the same source row as the one before is a copy of that row's first dw * 2 bytes (half of its wide
// row).
inline void RenderNearest(Canvas& cv, const Tables& t, Picture& pic, int32_t sw, int32_t sh, int32_t dw,
                          int32_t dh, int32_t pitch, bool doubled) {
  const int64_t rowBytes = WideRow(pitch);
  int64_t shown = -1, pairDone = -1;
  std::vector<uint16_t> rows[2];
  for (int32_t j = 0; j < dh; ++j) {
    const int64_t r = int64_t{j} * sh / dh;
    if (r / 2 != pairDone) {  // the whole pair is converted
      pairDone = r / 2;
      for (int i = 0; i < 2; ++i) rows[i] = NearestLine(t, pic, sw, 2 * pairDone + i, doubled);
    }
    if (r == shown) {
      const auto from = cv.expected_.begin() + (j - 1) * rowBytes;
      cv.Put(j * rowBytes, std::vector<uint8_t>(from, from + 2 * dw).data(), 2 * static_cast<size_t>(dw));
    } else {
      const auto& line = rows[r % 2];
      const int64_t lw = static_cast<int64_t>(line.size());
      for (int32_t e = 0; e < dw / 2; ++e)
        cv.Put64(j * rowBytes + 8 * e, line[2 * e * lw / dw] | uint64_t{line[(2 * e + 1) * lw / dw]} << 16);
    }
    shown = r;
  }
}

enum class Fam { Rgb565, Argb, Abgr, Rgb888 };
// Members of a family (the kernels of one packing): same size, any ratio, line-buffer enlargements, fixed
// ratios, then the 4:2:2 and 4:4:4 ones.
struct M {
  static constexpr int Plain = 0, Rgb555 = 1, Rot = 2, Rsz = 3, RszRot = 4, RszUp = 5, Nearest = 6,
                       NearLinear = 7, RszUpRot = 8, Case1 = 9, Case2 = 10, Case3 = 11, Plain422 = 12,
                       Rsz422 = 13, RszRot422 = 14, RszRot444 = 15;
};
constexpr const char* kMemberNames[] = {"Plain",    "Rgb555",     "Rot",       "Rsz",      "RszRot", "RszUp",
                                        "Nearest",  "NearLinear", "RszUpRot",  "Case1",    "Case2",  "Case3",
                                        "Plain422", "Rsz422",     "RszRot422", "RszRot444"};
struct KRun {  // dw x dh = sw x sh for the same-size members
  int m;       // an M
  Fam f;
  int32_t sw, sh, dw, dh, rot, pad;  // pad: destination row bytes past the least the member needs
  uint32_t alpha;
};
inline bool Is32(Fam f) { return f == Fam::Argb || f == Fam::Abgr; }
inline int64_t PixelBytes(Fam f) { return f == Fam::Rgb565 ? 2 : f == Fam::Rgb888 ? 3 : 4; }

// Least row bytes plus the pad: block members in whole blocks (32-bit pixels in 64-bit words, RGB565 resize
// pairs in 64-bit words); the line members' pitches are the ones whose doubled spacing they use.
inline int32_t PitchOf(const KRun& r) {
  const bool same = r.m == M::Plain || r.m == M::Rgb555 || r.m == M::Rot || r.m == M::Plain422;
  const bool block = same || r.m == M::Rsz || r.m == M::Rsz422 || r.f != Fam::Rgb565;
  const int32_t w = r.rot == 1 || r.rot == 2 ? r.dh : same ? r.sw : r.dw;
  const int64_t bytes = (r.m == M::Plain || r.m == M::Rsz) && Is32(r.f)             ? 8
                        : r.m == M::Rsz422 || (r.m == M::Rsz && r.f == Fam::Rgb565) ? 4
                                                                                    : PixelBytes(r.f);
  return static_cast<int32_t>(bytes * (block ? w + (w & 1) : w)) + r.pad;
}

inline Picture MakePicture(const KRun& r, int32_t sw, int32_t sh, uint32_t seed) {
  const int cols = r.m == M::RszRot444 ? 1 : 2, rows = r.m >= M::Plain422 ? 1 : 2;
  return Picture(sw, sh, r.pad / 2 + 1, seed, sh + 8, cols, rows);
}
// Colour key on pixel (x, y) with the chroma of its block, as RGB555 reads it.
inline uint32_t KeyOf(Picture& pic, int32_t x, int32_t y) {
  return uint32_t{pic.Y(x, y)} << 16 | uint32_t{pic.C(1, x / 2, y / 2, pic.stride(1))} << 8 |
         pic.C(2, x / 2, y / 2, pic.stride(1));
}

// Draws what member r.m of family r.f writes, rows `pitch` bytes apart (rotating members: through `ro`).
inline void Render(const KRun& r, Canvas& cv, const Tables& t, Picture& pic, int32_t pitch,
                   const RecordOffsets& ro, uint32_t key) {
  const uint32_t a = Is32(r.f) ? (r.alpha & 0xFF) << 24 : 0;
  const PixelFn px = [&, a](uint8_t y, uint8_t cb, uint8_t cr) -> uint32_t {
    if (r.f == Fam::Rgb565) return Ref16(t, y, cb, cr, r.m == M::Rgb555, key);
    const uint32_t v = RefRgb8(t, y, cb, cr);
    return a | (r.f == Fam::Abgr ? (v & 0xFF) << 16 | (v & 0xFF00) | v >> 16 : v);
  };
  // One pixel: 32-bit values as sign-extended 64-bit words, RGB888 as 3 bytes.
  const PutFn put = [&](Canvas& c, int64_t at, uint32_t v) {
    if (Is32(r.f)) return c.Put64(at, static_cast<uint64_t>(static_cast<int64_t>(static_cast<int32_t>(v))));
    c.Put(at, &v, static_cast<size_t>(PixelBytes(r.f)));
  };
  // Rows of the block members: 32-bit pixels at 8c and 8c + 4, row pairs (pitch / 2) x 8 bytes apart; others
  // plain.
  const RecordOffsets rows = Is32(r.f)
                                 ? RecordOffsets{16, int32_t((pitch >> 1) * 8), {0, 4, pitch, pitch + 4}}
                                 : MakeOffsets(0, 0, 0, pitch, PixelBytes(r.f));
  const bool bgr = r.f == Fam::Abgr;
  PhaseRows lines;
  switch (r.m) {
    case M::Plain:
    case M::Rgb555:
    case M::Rot:
      return RenderBlocks(cv, pic, r.sw, r.sh, r.m == M::Rot ? ro : rows, px, put);
    case M::Rsz:
    case M::Rsz422:
    case M::RszRot: {
      const RecordOffsets& o = r.m == M::RszRot ? ro : rows;
      const int64_t col = (o.stepX >> 1) * 2, row = (o.stepY >> 1) * 2;
      const bool pairs = r.f == Fam::Rgb565 && r.m != M::RszRot;  // pairs as sign-extended 64-bit words
      auto block = [&](int32_t m, int32_t n, const uint32_t* b) {
        for (int i = 0; i < 4 && !pairs; ++i) put(cv, o.pix[i] + m * col + n * row, b[i]);
        for (int i = 0; i < 2 && pairs; ++i)
          cv.Put64((2 * n + i) * pitch + 8 * m, uint64_t(int64_t(int32_t(b[2 * i] | b[2 * i + 1] << 16))));
      };
      return ForEachResizedBlock(pic, r.sw, r.sh, r.dw, r.dh, px, block, r.m == M::Rsz422);
    }
    case M::Nearest:
    case M::NearLinear:
      return RenderNearest(cv, t, pic, r.sw, r.sh, r.dw, r.dh, pitch, r.m == M::NearLinear);
    case M::Plain422:  // row by row, chroma of its own row, both planes with stride 1
      for (int32_t y = 0; y < r.sh; ++y)
        for (int32_t x = 0; x < r.sw + (r.sw & 1); ++x)
          cv.Put16(y * (pitch & ~1) + 2 * x,
                   px(pic.Y(x, y), pic.C(1, x / 2, y, pic.stride(1)), pic.C(2, x / 2, y, pic.stride(1))));
      return;
    case M::RszRot422:
    case M::RszRot444: {  // one pixel at a time, half the block steps apart (even bytes but for RGB888)
      const uint32_t sx = Step(r.sw, r.dw), sy = Step(r.sh, r.dh);
      auto half = [&](int32_t s) -> int64_t { return r.f == Fam::Rgb888 ? s / 2 : (s >> 2) * 2; };
      const bool halfC = r.m == M::RszRot422;
      const int32_t lastC = halfC ? r.sw / 2 - 1 : r.sw - 1;
      for (int32_t j = 0; j < r.dh; ++j)
        for (int32_t i = 0; i < r.dw; ++i) {
          const uint32_t x = i * sx, y = j * sy, xc = halfC ? x >> 1 : x;
          put(cv, ro.pix[0] + i * half(ro.stepX) + j * half(ro.stepY),
              px(Bilinear(pic, 0, r.sw - 1, x, y), Bilinear(pic, 1, lastC, xc, y),
                 Bilinear(pic, 2, lastC, xc, y)));
        }
      return;
    }
    case M::RszUp:
    case M::RszUpRot:
      lines = CachedRows(t, pic, r.sw, r.sh, r.dh, bgr,
                         [&](const Line& l) { return LinearPhases(l, Step(r.sw, r.dw), r.dw); });
      break;
    case M::Case1:
      lines = Case1Phases(t, pic, r.sw, r.dh, bgr);
      break;
    case M::Case2:
      lines = CachedRows(t, pic, r.sw, r.sh, r.dh, bgr, Phases23);
      break;
    case M::Case3:
      lines = Case3Phases(t, pic);
      break;
  }
  // Line members. Rotated: row j at cursor + j * stepY / 2, pixels stepX / 2 apart (even bytes). RGB565:
  // pairs in 64-bit words, upper half 0. 32-bit: row pairs as the blocks place them; RGB888 3 bytes.
  for (size_t j = 0; j < lines.size(); ++j)
    for (size_t k = 0; k < lines[j].size(); ++k) {
      const Terms& p = lines[j][k];
      if (r.m == M::RszUpRot) {
        cv.Put16(ro.pix[0] + int64_t(j) * (ro.stepY / 2 >> 1) * 2 + int64_t(k) * (ro.stepX / 2 >> 1) * 2,
                 Blend565(p, 32));
      } else if (r.f == Fam::Rgb565) {
        if (k & 1)
          cv.Put64(int64_t(j) * WideRow(pitch) + 4 * int64_t(k - 1),
                   Blend565(lines[j][k - 1], 32) | uint64_t{Blend565(p, 32)} << 16);
      } else {
        const int64_t row =
            Is32(r.f) ? int64_t(j >> 1) * ((pitch >> 1) * 8) + int64_t(j & 1) * pitch : j * pitch;
        const uint32_t v = bgr ? Blend32Words(p, r.alpha & 0xFF) : Blend32(p, r.alpha & 0xFF);
        cv.Put(row + int64_t(k) * PixelBytes(r.f), &v, static_cast<size_t>(PixelBytes(r.f)));
      }
    }
}

}  // namespace kref
