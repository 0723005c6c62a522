// Reference renderings of the RGB565/RGB555 kernels, written from their
// descriptions pixel by pixel: each draws the expected bytes into a Canvas and
// reads the source through a Picture, so that the kernel under test can then
// run on exactly the bytes the description says it reads and writes.
#pragma once

#include <algorithm>
#include <functional>
#include <vector>

#include "rgb16_ref.h"

namespace rgb16test {

using Line = std::vector<uint64_t>;
using Pixels = std::vector<uint16_t>;
using Grid = std::vector<uint32_t>;
// A family's reference pixel of a sample triple, and its store of one pixel.
using PixelFn = std::function<uint32_t(uint8_t y, uint8_t cb, uint8_t cr)>;
using PutFn = std::function<void(Canvas&, int64_t at, uint32_t v)>;
inline void Put565(Canvas& cv, int64_t at, uint32_t v) { cv.Put16(at, static_cast<uint16_t>(v)); }

inline uint64_t Spread(uint32_t r, uint32_t g, uint32_t b) {
  return uint64_t{r} << 21 | uint64_t{g} << 10 | b;
}

// 16.16 step: ((src - 1) << 16) / (dst - 1), 0 for a destination of 1.
inline int32_t Step(int32_t src, int32_t dst) {
  return dst == 1 ? 0 : static_cast<int32_t>((int64_t{src - 1} << 16) / (dst - 1));
}

// Rows of the enlarging kernels are (pitch / 4) * 8 bytes apart.
inline int64_t WideRow(int32_t pitch) { return int64_t{pitch >> 2} * 8; }

// ---- Same size ----------------------------------------------------------

// 2x2 blocks while row < height and column < width; both chroma planes are
// addressed with stride 1.
template <class Put>
void ForEachBlockPixel(Picture& pic, int32_t w, int32_t h, Put put) {
  for (int32_t r = 0; r < h; r += 2) {
    for (int32_t c = 0; c < w; c += 2) {
      const uint8_t cb = pic.C(1, c / 2, r / 2, pic.stride(1));
      const uint8_t cr = pic.C(2, c / 2, r / 2, pic.stride(1));
      for (int dy = 0; dy < 2; ++dy)
        for (int dx = 0; dx < 2; ++dx) put(c + dx, r + dy, pic.Y(c + dx, r + dy), cb, cr);
    }
  }
}

// Through the four cursors (unrotated rows: MakeOffsets(0, ...)); steps used
// rounded down to even bytes. Returns the picture as well (w x h, source
// orientation).
inline Grid RenderBlocks(Canvas& cv, Picture& pic, int32_t w, int32_t h, const RecordOffsets& ro,
                         const PixelFn& px, const PutFn& put = Put565) {
  const int64_t col = (ro.stepX >> 1) * 2, row = (ro.stepY >> 1) * 2;
  Grid grid(static_cast<size_t>(w) * h);
  ForEachBlockPixel(pic, w, h, [&](int32_t x, int32_t y, uint8_t yv, uint8_t cb, uint8_t cr) {
    const uint32_t v = px(yv, cb, cr);
    put(cv, ro.pix[(x & 1) + 2 * (y & 1)] + (x >> 1) * col + (y >> 1) * row, v);
    if (x < w && y < h) grid[static_cast<size_t>(y) * w + x] = v;
  });
  return grid;
}
// RGB565, or RGB555 with colour key `key` when `rgb555`.
inline Grid RenderBlocks(Canvas& cv, const Tables& t, Picture& pic, int32_t w, int32_t h,
                         const RecordOffsets& ro, bool rgb555 = false, uint32_t key = 0) {
  return RenderBlocks(cv, pic, w, h, ro, [&](uint8_t y, uint8_t cb, uint8_t cr) -> uint32_t {
    return rgb555 ? Ref555(t, y, cb, cr, key) : Ref565(t, y, cb, cr);
  });
}

// ---- Any ratio ------------------------------------------------------------

// Sample of a plane at 16.16 position (x, y): down each column with weight wy
// (values x 2), then across with wx; the next column is clamped to `last`, the
// next row is not.
inline uint8_t Bilinear(Picture& pic, int plane, int32_t last, uint32_t x, uint32_t y) {
  const int64_t xi = x >> 16, yi = y >> 16, xn = std::min<int64_t>(xi + 1, last);
  const int32_t wx = (x >> 11) & 31, wy = (y >> 11) & 31;
  const uint32_t st = pic.stride(plane);
  auto down = [&](int64_t c) {
    const int32_t a = pic.C(plane, c, yi, st), b = pic.C(plane, c, yi + 1, st);
    return (a * 32 + (b - a) * wy) >> 4;
  };
  const int32_t s0 = down(xi), s1 = down(xn);
  return static_cast<uint8_t>((s1 * wx + s0 * (32 - wx)) >> 6);
}
inline uint8_t BilinearLuma(Picture& pic, int32_t sw, uint32_t x, uint32_t y) {
  return Bilinear(pic, 0, sw - 1, x, y);
}

struct Block {
  uint32_t p[4];  // (0,0), (1,0), (0,1), (1,1)
};

// Output block (m, n) of an any-ratio resize: bilinear luma, chroma nearest
// to the block centre (4:2:2 with `rowChroma`: each row's chroma from its own
// luma row). RGB565 unless a pixel function is given.
template <class Put>
void ForEachResizedBlock(const Tables& t, Picture& pic, int32_t sw, int32_t sh, int32_t dw, int32_t dh,
                         Put put, PixelFn px = nullptr, bool rowChroma = false) {
  if (!px) px = [&](uint8_t y, uint8_t cb, uint8_t cr) -> uint32_t { return Ref565(t, y, cb, cr); };
  const uint32_t sx = Step(sw, dw), sy = Step(sh, dh);
  for (int32_t n = 0; 2 * n < dh; ++n) {
    const uint32_t y0 = 2 * n * sy, y1 = y0 + sy;
    for (int32_t m = 0; 2 * m < dw; ++m) {
      const uint32_t x0 = 2 * m * sx, x1 = x0 + sx;
      const int64_t ccol = ((x0 >> 16) + (x1 >> 16) + 1) >> 2, crow = ((y0 >> 16) + (y1 >> 16) + 1) >> 2;
      const int64_t r0 = rowChroma ? y0 >> 16 : crow, r1 = rowChroma ? y1 >> 16 : crow;
      Block b;
      b.p[0] = px(BilinearLuma(pic, sw, x0, y0), pic.Cb(ccol, r0), pic.Cr(ccol, r0));
      b.p[1] = px(BilinearLuma(pic, sw, x1, y0), pic.Cb(ccol, r0), pic.Cr(ccol, r0));
      b.p[2] = px(BilinearLuma(pic, sw, x0, y1), pic.Cb(ccol, r1), pic.Cr(ccol, r1));
      b.p[3] = px(BilinearLuma(pic, sw, x1, y1), pic.Cb(ccol, r1), pic.Cr(ccol, r1));
      put(m, n, b);
    }
  }
}

// A row's pixel pair as a 32-bit value, sign-extended to 64 bits.
inline uint64_t WidePair(uint16_t lo, uint16_t hi) {
  return static_cast<uint64_t>(static_cast<int64_t>(static_cast<int32_t>(lo | uint32_t{hi} << 16)));
}

inline void RenderRsz(Canvas& cv, const Tables& t, Picture& pic, int32_t sw, int32_t sh, int32_t dw,
                      int32_t dh, int64_t pitch, bool rowChroma = false) {
  ForEachResizedBlock(
      t, pic, sw, sh, dw, dh,
      [&](int32_t m, int32_t n, const Block& b) {
        cv.Put64(2 * n * pitch + 8 * m, WidePair(b.p[0], b.p[1]));
        cv.Put64((2 * n + 1) * pitch + 8 * m, WidePair(b.p[2], b.p[3]));
      },
      nullptr, rowChroma);
}

// Returns the output grid (dw x dh, source orientation) as well.
inline Grid RenderRszRot(Canvas& cv, const Tables& t, Picture& pic, int32_t sw, int32_t sh, int32_t dw,
                         int32_t dh, const RecordOffsets& ro, const PixelFn& px = nullptr,
                         const PutFn& put = Put565) {
  const int64_t col = (ro.stepX >> 1) * 2, row = (ro.stepY >> 1) * 2;
  Grid grid(static_cast<size_t>(dw) * dh);
  ForEachResizedBlock(
      t, pic, sw, sh, dw, dh,
      [&](int32_t m, int32_t n, const Block& b) {
        for (int i = 0; i < 4; ++i) {
          put(cv, ro.pix[i] + m * col + n * row, b.p[i]);
          const int32_t x = 2 * m + i % 2, y = 2 * n + i / 2;
          if (x < dw && y < dh) grid[static_cast<size_t>(y) * dw + x] = b.p[i];
        }
      },
      px);
  return grid;
}

// ---- Line-buffer enlargement ----------------------------------------------

// Lines converted with red and blue exchanged are blended on whole words, as
// the interpolators do: their 6-bit red in the low field carries into green.
inline Line BlendWords(const Line& a, const Line& b, uint32_t wb, uint32_t total) {
  Line out(a.size());
  for (size_t x = 0; x < a.size(); ++x) out[x] = (((total - wb) * a[x] + wb * b[x]) / total) & kMask;
  return out;
}

inline Line Blend(const Line& a, const Line& b, uint32_t wb, uint32_t total) {
  Line out(a.size());
  const uint32_t wa = total - wb;
  for (size_t x = 0; x < a.size(); ++x)
    out[x] = Spread((wa * RedOf(a[x]) + wb * RedOf(b[x])) / total,
                    (wa * GreenOf(a[x]) + wb * GreenOf(b[x])) / total,
                    (wa * BlueOf(a[x]) + wb * BlueOf(b[x])) / total);
  return out;
}

// Spread source row r converted with chroma row c (red and blue exchanged when bgr).
inline Line SpreadRow(const Tables& t, Picture& pic, int32_t sw, int64_t r, int64_t c, bool bgr = false) {
  Line l(sw);
  for (int32_t x = 0; x < sw; ++x)
    l[x] = (bgr ? RefSpreadBgr : RefSpread)(t, pic.Y(x, r), pic.Cb(x / 2, c), pic.Cr(x / 2, c));
  return l;
}

// The line cache as described: slots A, B, C tagged with rows; a pair that
// starts at row r is converted with chroma row r >> 1 for both rows.
class RefCache {
 public:
  RefCache(const Tables& t, Picture& pic, int32_t sw, bool bgr = false)
      : t_(t), pic_(pic), sw_(sw), bgr_(bgr) {}
  Line At(uint32_t p) {
    const int32_t y = p >> 16, f = (p >> 11) & 31;
    if (tag_[0] != y) {
      if (tag_[1] == y) {
        Rotate(1);
      } else if (tag_[2] == y) {
        Rotate(2);
      } else {
        Fill(y, 0, 1);
      }
    }
    if (f == 0) return line_[0];
    if (tag_[1] != y + 1) Fill(y + 1, 1, 2);
    return (bgr_ ? BlendWords : Blend)(line_[0], line_[1], f, 32);
  }

 private:
  void Fill(int32_t r, int a, int b) {
    line_[a] = SpreadRow(t_, pic_, sw_, r, r >> 1, bgr_);
    line_[b] = SpreadRow(t_, pic_, sw_, r + 1, r >> 1, bgr_);
    tag_[a] = r;
    tag_[b] = r + 1;
  }
  void Rotate(int by) {
    Line l[3] = {line_[0], line_[1], line_[2]};
    int32_t g[3] = {tag_[0], tag_[1], tag_[2]};
    for (int i = 0; i < 3; ++i) line_[i] = l[(i + by) % 3], tag_[i] = g[(i + by) % 3];
  }
  const Tables& t_;
  Picture& pic_;
  int32_t sw_;
  bool bgr_;
  Line line_[3];
  int32_t tag_[3] = {-1, -1, -1};
};

// The horizontal stretches of a spread line, as the weighted pixels (weights
// over 32) each output pixel blends.
using Terms = std::vector<std::pair<uint32_t, uint64_t>>;

// Linear: the entry past the line only ever gets weight 0.
inline std::vector<Terms> LinearPhases(const Line& l, uint32_t step, int32_t dw) {
  std::vector<Terms> out(2 * std::max(1, dw / 2));
  for (size_t k = 0; k < out.size(); ++k) {
    const uint32_t p = k * step, i = p >> 16, f = (p >> 11) & 31;
    if (i + 1 >= l.size()) {
      EXPECT_EQ(f, 0u);
    }
    out[k] = {{32 - f, l.at(i)}, {f, i + 1 < l.size() ? l[i + 1] : 0}};
  }
  return out;
}

// Fixed 1.5x and 2.5x stretches, by their phase tables; the last pixel
// stands in for the one past the line.
inline std::vector<Terms> Phases23(const Line& l) {
  const int32_t rounds = std::max<int32_t>(1, l.size() >> 2);
  std::vector<Terms> out;
  for (int32_t r = 0; r < rounds; ++r) {
    const uint64_t a = l[4 * r], b = l[4 * r + 1], c = l[4 * r + 2], d = l[4 * r + 3];
    const uint64_t e = r + 1 < rounds ? l[4 * r + 4] : d;
    for (Terms t : {Terms{{32, a}},
                    {{11, a}, {21, b}},
                    {{21, b}, {11, c}},
                    {{32, c}},
                    {{11, c}, {21, d}},
                    {{21, d}, {11, e}}})
      out.push_back(t);
  }
  return out;
}

// Weights 1/1, 5/8 3/8, 7/32 25/32, 13/16 3/16 and 19/32 13/32, over 32.
inline std::vector<Terms> Phases25(const Line& l) {
  const int32_t rounds = std::max<int32_t>(1, l.size() >> 2);
  std::vector<Terms> out;
  for (int32_t pair = 0; pair < 2 * rounds; ++pair) {
    const uint64_t a = l[2 * pair], b = l[2 * pair + 1];
    const uint64_t c = pair + 1 < 2 * rounds ? l[2 * pair + 2] : b;
    for (Terms t :
         {Terms{{32, a}}, {{20, a}, {12, b}}, {{7, a}, {25, b}}, {{26, b}, {6, c}}, {{19, b}, {13, c}}})
      out.push_back(t);
  }
  return out;
}

inline Pixels To565(const std::vector<Terms>& phases) {
  Pixels out;
  for (const Terms& t : phases) out.push_back(Blend565(t, 32));
  return out;
}

// 32-bit ARGB of a blend: red and green sums / 8, blue sum / 4 (6-bit x 32
// to 8 bits, 5-bit x 32 to 8 bits).
inline uint32_t Blend32(const Terms& terms, uint32_t alpha) {
  uint32_t r = 0, g = 0, b = 0;
  for (const auto& [w, s] : terms) r += w * RedOf(s), g += w * GreenOf(s), b += w * BlueOf(s);
  return alpha << 24 | (r >> 3) << 16 | (g >> 3) << 8 | b >> 2;
}
// The same packing on the whole weighted word, for lines with red and blue exchanged.
inline uint32_t Blend32Words(const Terms& terms, uint32_t alpha) {
  uint64_t v = 0;
  for (const auto& [w, s] : terms) v += w * s;
  return alpha << 24 | uint32_t(((v >> 8) & 0xFF0000) | ((v >> 5) & 0xFF00) | ((v >> 2) & 0xFF));
}

// One output row of pixel pairs in 64-bit words with a zero upper half.
inline void PutPairs(Canvas& cv, int64_t at, const Pixels& px) {
  for (size_t e = 0; e + 1 < px.size(); e += 2) cv.Put64(at + 4 * e, px[e] | uint64_t{px[e + 1]} << 16);
}

// Bytes of a line buffer for the spread-line kernels.
inline size_t SpreadLineBytes(int32_t sw) { return std::max<size_t>(sw + 1, 4) * 8; }

// The output rows of the line-buffer enlargements, as the weighted pixels of
// each output pixel (source orientation).
using PhaseRows = std::vector<std::vector<Terms>>;
inline PhaseRows RszUpPhases(const Tables& t, Picture& pic, int32_t sw, int32_t sh, int32_t dw, int32_t dh,
                             bool bgr = false) {
  RefCache cache(t, pic, sw, bgr);
  const uint32_t sx = Step(sw, dw), sy = Step(sh, dh);
  PhaseRows rows;
  for (int32_t j = 0; j < dh; ++j) rows.push_back(LinearPhases(cache.At(j * sy), sx, dw));
  return rows;
}
inline PhaseRows Case2Phases(const Tables& t, Picture& pic, int32_t sw, int32_t sh, int32_t dh,
                             bool bgr = false) {
  RefCache cache(t, pic, sw, bgr);
  const uint32_t sy = Step(sh, dh);
  PhaseRows rows;
  for (int32_t j = 0; j < dh; ++j) rows.push_back(Phases23(cache.At(j * sy)));
  return rows;
}
// Output row 2k is source row k, row 2k + 1 the average of rows k and k + 1,
// in whole groups of 4 rows; the last group's second pair lies past the
// picture.
inline PhaseRows Case1Phases(const Tables& t, Picture& pic, int32_t sw, int32_t dh, bool bgr = false) {
  const int32_t groups = (dh - 1) / 4 + 1;
  std::vector<Line> src;
  for (int32_t r = 0; r < 2 * groups + 2; ++r) src.push_back(SpreadRow(t, pic, sw, r, r / 2, bgr));
  PhaseRows rows;
  for (int32_t k = 0; k < 2 * groups; ++k) {
    rows.push_back(Phases25(src[k]));
    rows.push_back(Phases25((bgr ? BlendWords : Blend)(src[k], src[k + 1], 1, 2)));
  }
  return rows;
}
inline std::vector<Pixels> RszUpRows(const Tables& t, Picture& pic, int32_t sw, int32_t sh, int32_t dw,
                                     int32_t dh) {
  std::vector<Pixels> rows;
  for (const auto& r : RszUpPhases(t, pic, sw, sh, dw, dh)) rows.push_back(To565(r));
  return rows;
}

inline void RenderRszUp(Canvas& cv, const Tables& t, Picture& pic, int32_t sw, int32_t sh, int32_t dw,
                        int32_t dh, int32_t pitch) {
  const auto rows = RszUpRows(t, pic, sw, sh, dw, dh);
  for (size_t j = 0; j < rows.size(); ++j) PutPairs(cv, int64_t(j) * WideRow(pitch), rows[j]);
}

inline void PutRows565(Canvas& cv, const PhaseRows& rows, int32_t pitch) {
  for (size_t j = 0; j < rows.size(); ++j) PutPairs(cv, int64_t(j) * WideRow(pitch), To565(rows[j]));
}

// The documented weight table of the 320x240 to 480x272 kernel: output row k
// of band b blends source rows 15b + row and the one after by w/8.
constexpr int32_t kBandRow[17] = {0, 0, 1, 2, 3, 4, 5, 6, 7, 8, 8, 9, 10, 11, 12, 13, 14};
constexpr uint32_t kBandWeight[17] = {0, 7, 6, 5, 4, 3, 2, 1, 0, 0, 7, 6, 5, 4, 3, 2, 1};

inline void RenderCase3(Canvas& cv, const Tables& t, Picture& pic, int32_t pitch) {
  std::vector<Line> src;
  for (int32_t r = 0; r < 240; ++r) src.push_back(SpreadRow(t, pic, 320, r, r / 2));
  for (int32_t j = 0; j < 272; ++j) {
    const int32_t r = 15 * (j / 17) + kBandRow[j % 17];
    const Pixels px = To565(Phases23(Blend(src[r], src[std::min(r + 1, 239)], kBandWeight[j % 17], 8)));
    EXPECT_EQ(px.size(), 480u);
    PutPairs(cv, j * WideRow(pitch), px);
  }
}

// ---- Nearest --------------------------------------------------------------

// RGB565 line of source row r as the nearest kernels hold it: converted with
// its pair's chroma row, directly or doubled across by averaging.
inline Pixels NearestLine(const Tables& t, Picture& pic, int32_t sw, int64_t r, bool doubled) {
  Pixels out;
  uint64_t prev = 0;
  for (int32_t x = 0; x < sw; ++x) {
    const uint8_t y = pic.Y(x, r), cb = pic.Cb(x / 2, r / 2), cr = pic.Cr(x / 2, r / 2);
    if (!doubled) {
      out.push_back(Ref565(t, y, cb, cr));
      continue;
    }
    const uint64_t e = RefSpread(t, y, cb, cr);
    out.push_back(Blend565({{1, x == 0 ? e : prev}, {1, e}}, 2));
    out.push_back(Blend565({{1, e}}, 1));
    prev = e;
  }
  return out;
}

// Output row j shows source row floor(j * sh / dh) sampled at columns
// floor(k * lineWidth / dw); a row showing the same source row as the one
// before is a copy of that row's first dw * 2 bytes.
inline void RenderNearest(Canvas& cv, const Tables& t, Picture& pic, int32_t sw, int32_t sh, int32_t dw,
                          int32_t dh, int32_t pitch, bool doubled) {
  const int64_t rowBytes = WideRow(pitch);
  int64_t shown = -1, pairDone = -1;
  Pixels rows[2];
  for (int32_t j = 0; j < dh; ++j) {
    const int64_t r = int64_t{j} * sh / dh;
    if (r / 2 != pairDone) {  // the whole pair is converted
      pairDone = r / 2;
      rows[0] = NearestLine(t, pic, sw, 2 * pairDone, doubled);
      rows[1] = NearestLine(t, pic, sw, 2 * pairDone + 1, doubled);
    }
    if (r == shown) {
      cv.Copy(j * rowBytes, (j - 1) * rowBytes, 2 * static_cast<size_t>(dw));
    } else {
      const Pixels& line = rows[r % 2];
      const int64_t lw = static_cast<int64_t>(line.size());
      for (int32_t e = 0; e < dw / 2; ++e)
        cv.Put64(j * rowBytes + 8 * e, line[2 * e * lw / dw] | uint64_t{line[(2 * e + 1) * lw / dw]} << 16);
    }
    shown = r;
  }
}

// ---- Any kernel, by name ---------------------------------------------------

enum class Kernel {
  Plain,
  Rgb555,
  Rot,
  Rsz,
  RszRot,
  RszUp,
  Nearest,
  NearLinear,
  RszUpRot,
  Case1,
  Case2,
  Case3
};

inline bool Rotating(Kernel k) { return k == Kernel::Rot || k == Kernel::RszRot || k == Kernel::RszUpRot; }

// Colour key on pixel (x, y) with the chroma of its block, both chroma planes
// addressed with stride 1 as the RGB555 kernel reads them.
inline uint32_t KeyOf(Picture& pic, int32_t x, int32_t y) {
  return uint32_t{pic.Y(x, y)} << 16 | uint32_t{pic.C(1, x / 2, y / 2, pic.stride(1))} << 8 |
         pic.C(2, x / 2, y / 2, pic.stride(1));
}

// Draws what kernel k writes for a sw x sh source and a dw x dh destination
// (the same-size kernels take sw x sh), rows `pitch` bytes apart (rotating
// kernels: through `ro`). Rotating kernels also return the output picture
// (dw x dh, source orientation).
inline Grid RenderKernel(Kernel k, Canvas& cv, const Tables& t, Picture& pic, int32_t sw, int32_t sh,
                         int32_t dw, int32_t dh, int32_t pitch, const RecordOffsets& ro, uint32_t key) {
  switch (k) {
    case Kernel::Plain:
    case Kernel::Rgb555:
      return RenderBlocks(cv, t, pic, sw, sh, MakeOffsets(0, sw, sh, pitch), k == Kernel::Rgb555, key);
    case Kernel::Rot:
      return RenderBlocks(cv, t, pic, sw, sh, ro);
    case Kernel::Rsz:
      RenderRsz(cv, t, pic, sw, sh, dw, dh, pitch);
      break;
    case Kernel::RszRot:
      return RenderRszRot(cv, t, pic, sw, sh, dw, dh, ro);
    case Kernel::RszUp:
      RenderRszUp(cv, t, pic, sw, sh, dw, dh, pitch);
      break;
    case Kernel::Nearest:
    case Kernel::NearLinear:
      RenderNearest(cv, t, pic, sw, sh, dw, dh, pitch, k == Kernel::NearLinear);
      break;
    case Kernel::RszUpRot: {
      // Row j from the first cursor + j * (stepY / 2), pixels stepX / 2 apart
      // (byte steps, used rounded down to whole pixels).
      const auto rows = RszUpRows(t, pic, sw, sh, dw, dh);
      const int64_t row = (ro.stepY / 2 >> 1) * 2, col = (ro.stepX / 2 >> 1) * 2;
      Grid grid;
      for (size_t j = 0; j < rows.size(); ++j)
        for (size_t k = 0; k < rows[j].size(); ++k)
          cv.Put16(ro.pix[0] + int64_t(j) * row + int64_t(k) * col, rows[j][k]);
      for (const Pixels& r : rows)
        grid.insert(grid.end(), r.begin(), r.begin() + std::min<size_t>(dw, r.size()));
      return grid;
    }
    case Kernel::Case1:
      PutRows565(cv, Case1Phases(t, pic, sw, dh), pitch);
      break;
    case Kernel::Case2:
      PutRows565(cv, Case2Phases(t, pic, sw, sh, dh), pitch);
      break;
    case Kernel::Case3:
      RenderCase3(cv, t, pic, pitch);
      break;
  }
  return {};
}

}  // namespace rgb16test
