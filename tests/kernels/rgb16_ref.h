// Test helpers for the RGB565/RGB555 kernels and the line interpolators: a
// context with random range tables, a reference colour step written from the
// formulas, source pictures that record which bytes a reference reads (so the
// kernel can then be run on planes cut to exactly those bytes), destinations
// that record what a reference writes, and rotation records built from the
// orientation table.
#pragma once

#include <gtest/gtest.h>
#include <stddef.h>
#include <stdint.h>
#include <string.h>

#include <algorithm>
#include <random>
#include <vector>

#include "imageproc/imgprc_context.h"

namespace rgb16test {

constexpr uint64_t kMask = 0x7E0FC1F;

// Range tables filled at random: wide ones push most results into the clamps,
// narrow ones keep most results inside the range.
struct Tables {
  std::vector<uint16_t> y = std::vector<uint16_t>(256);
  std::vector<int64_t> cb = std::vector<int64_t>(256);
  std::vector<int64_t> cr = std::vector<int64_t>(256);
  ImgPrcContext ctx{};

  Tables(uint32_t seed, bool wide) {
    std::mt19937 rng(seed);
    const int32_t yMax = wide ? 65535 : 40000;
    const int32_t hiMax = wide ? 32767 : 6000;
    std::uniform_int_distribution<int32_t> yd(0, yMax), hd(-hiMax, hiMax), ld(-32768, 32767);
    for (int i = 0; i < 256; ++i) {
      y[i] = static_cast<uint16_t>(yd(rng));
      cb[i] = Pack(hd(rng), wide ? ld(rng) : hd(rng) / 2);
      cr[i] = Pack(hd(rng), wide ? ld(rng) : hd(rng) / 2);
    }
    Attach();
  }
  // A copy of the tables an image processor built.
  explicit Tables(const ImgPrcContext& from)
      : y(from.rangeTableY, from.rangeTableY + 256),
        cb(from.rangeTableCb, from.rangeTableCb + 256),
        cr(from.rangeTableCr, from.rangeTableCr + 256) {
    Attach();
  }
  Tables(const Tables& o) : y(o.y), cb(o.cb), cr(o.cr), ctx(o.ctx) { Attach(); }
  Tables& operator=(const Tables&) = delete;

  static int64_t Pack(int32_t hi, int32_t lo) {
    const uint32_t w = static_cast<uint32_t>(hi) << 16 | (static_cast<uint32_t>(lo) & 0xFFFF);
    return static_cast<int64_t>(static_cast<int32_t>(w));
  }
  void Attach() {
    ctx.rangeTableY = y.data();
    ctx.rangeTableCb = cb.data();
    ctx.rangeTableCr = cr.data();
  }

  // The colour terms, worked out from the entry layout: high half (doubled,
  // plus the sign of the low half) for red and blue, the two low halves summed
  // on 16 bits and doubled for green.
  int32_t RedTerm(uint8_t v) const { return Word(cr[v]) >> 15; }
  int32_t BlueTerm(uint8_t v) const { return Word(cb[v]) >> 15; }
  int32_t GreenTerm(uint8_t b, uint8_t r) const {
    const uint32_t sum = (static_cast<uint32_t>(cb[b]) & 0xFFFF) + (static_cast<uint32_t>(cr[r]) & 0xFFFF);
    return static_cast<int16_t>(static_cast<uint16_t>(sum)) * 2;
  }
  static int32_t Word(int64_t e) { return static_cast<int32_t>(static_cast<uint32_t>(e)); }
};

inline int32_t Clamp(int32_t v, int32_t hi) { return std::min(std::max(v, 0), hi); }

// Channel sums of a pixel: its luma entry plus each colour term.
struct Sums {
  int32_t r, g, b;
};
inline Sums SumsOf(const Tables& t, uint8_t y, uint8_t cb, uint8_t cr) {
  const int32_t l = t.y[y];
  return {l + t.RedTerm(cr), l + t.GreenTerm(cb, cr), l + t.BlueTerm(cb)};
}

inline uint16_t Ref565(const Tables& t, uint8_t y, uint8_t cb, uint8_t cr) {
  const Sums s = SumsOf(t, y, cb, cr);
  return static_cast<uint16_t>(Clamp(s.r >> 10, 31) * 2048 + Clamp(s.g >> 9, 63) * 32 + Clamp(s.b >> 10, 31));
}

// 5-bit green (L >> 10, not >> 9) and the opaque bit; the keyed colour is 0.
inline uint16_t Ref555(const Tables& t, uint8_t y, uint8_t cb, uint8_t cr, uint32_t key) {
  if ((static_cast<uint32_t>(y) << 16 | static_cast<uint32_t>(cb) << 8 | cr) == key) return 0;
  const Sums s = SumsOf(t, y, cb, cr);
  return static_cast<uint16_t>(Clamp(s.r >> 10, 31) * 2048 + Clamp(s.g >> 10, 31) * 64 +
                               Clamp(s.b >> 10, 31) * 2 + 1);
}

// Spread pixel: 6-bit red at bit 21, 6-bit green at bit 10, 5-bit blue at 0.
inline uint64_t RefSpread(const Tables& t, uint8_t y, uint8_t cb, uint8_t cr) {
  const Sums s = SumsOf(t, y, cb, cr);
  return uint64_t(Clamp(s.r >> 9, 63)) << 21 | uint64_t(Clamp(s.g >> 9, 63)) << 10 | Clamp(s.b >> 10, 31);
}

// 8-bit channels: each sum >> 7 clamped to 0..255, as R << 16 | G << 8 | B.
inline uint32_t RefRgb8(const Tables& t, uint8_t y, uint8_t cb, uint8_t cr) {
  const Sums s = SumsOf(t, y, cb, cr);
  return uint32_t(Clamp(s.r >> 7, 255)) << 16 | Clamp(s.g >> 7, 255) << 8 | Clamp(s.b >> 7, 255);
}

// Spread pixel with red and blue exchanged: 5-bit blue at bit 21, 6-bit red at 0.
inline uint64_t RefSpreadBgr(const Tables& t, uint8_t y, uint8_t cb, uint8_t cr) {
  const Sums s = SumsOf(t, y, cb, cr);
  return uint64_t(Clamp(s.b >> 10, 31)) << 21 | uint64_t(Clamp(s.g >> 9, 63)) << 10 | Clamp(s.r >> 9, 63);
}

// Field values of a spread pixel.
inline uint32_t RedOf(uint64_t s) { return (s >> 21) & 63; }
inline uint32_t GreenOf(uint64_t s) { return (s >> 10) & 63; }
inline uint32_t BlueOf(uint64_t s) { return s & 31; }

// RGB565 of a weighted sum of spread pixels, field by field: sums of 6-bit red
// and green and 5-bit blue fields divided by the weight total; red then keeps
// its top 5 bits.
inline uint16_t Blend565(const std::vector<std::pair<uint32_t, uint64_t>>& terms, uint32_t total) {
  uint32_t r = 0, g = 0, b = 0;
  for (const auto& [w, s] : terms) {
    r += w * RedOf(s);
    g += w * GreenOf(s);
    b += w * BlueOf(s);
  }
  return static_cast<uint16_t>((r / total >> 1) << 11 | (g / total) << 5 | (b / total));
}

// A 4:2:0 source (4:2:2 with chromaRows 1, 4:4:4 with chromaCols 1 too). Planes are allocated generously and
// filled at random; the accessors record the furthest byte read in each plane, and Cut() then makes copies
// holding exactly the bytes up to it, for the kernel to read.
class Picture {
 public:
  Picture(int32_t width, int32_t height, int32_t pad, uint32_t seed, int32_t extraRows = 4,
          int chromaCols = 2, int chromaRows = 2) {
    const int32_t cw = (width + chromaCols - 1) / chromaCols, ch = (height + chromaRows - 1) / chromaRows;
    strides_[0] = static_cast<uint32_t>(width + pad);
    strides_[1] = static_cast<uint32_t>(cw + pad + 3);
    strides_[2] = static_cast<uint32_t>(cw + pad + 7);
    std::mt19937 rng(seed);
    const size_t rows[3] = {static_cast<size_t>(height + extraRows), static_cast<size_t>(ch + extraRows),
                            static_cast<size_t>(ch + extraRows)};
    for (int p = 0; p < 3; ++p) {
      full_[p].resize(rows[p] * strides_[p] + 64);
      for (auto& v : full_[p]) v = static_cast<uint8_t>(rng());
    }
  }

  uint8_t Y(int64_t x, int64_t y) const { return Read(0, y * strides_[0] + x); }
  // Chroma sample (x, y) of plane 1 or 2, addressed with the given stride.
  uint8_t C(int plane, int64_t x, int64_t y, uint32_t stride) const { return Read(plane, y * stride + x); }
  uint8_t Cb(int64_t x, int64_t y) const { return C(1, x, y, strides_[1]); }
  uint8_t Cr(int64_t x, int64_t y) const { return C(2, x, y, strides_[2]); }
  void Set(int plane, int64_t offset, uint8_t v) { full_[plane].at(static_cast<size_t>(offset)) = v; }
  uint32_t stride(int plane) const { return strides_[plane]; }

  void Cut() {
    for (int p = 0; p < 3; ++p) {
      cut_[p].assign(full_[p].begin(), full_[p].begin() + (reach_[p] + 1));
      ptrs_[p] = cut_[p].data();
      raw_[p] = cut_[p].data();
    }
  }
  const uint8_t* const* planes() const { return ptrs_; }
  uint8_t** raw() { return raw_; }  // the same planes, as the frame call takes them
  uint32_t* strides() { return strides_; }
  int64_t reach(int plane) const { return reach_[plane]; }

 private:
  uint8_t Read(int p, int64_t off) const {
    reach_[p] = std::max(reach_[p], off);
    return full_[p].at(static_cast<size_t>(off));
  }
  uint32_t strides_[3];
  std::vector<uint8_t> full_[3];
  std::vector<uint8_t> cut_[3];
  const uint8_t* ptrs_[3] = {nullptr, nullptr, nullptr};
  uint8_t* raw_[3] = {nullptr, nullptr, nullptr};
  mutable int64_t reach_[3] = {0, 0, 0};
};

// A destination: the reference writes the expected bytes into a generous
// buffer filled with a pattern; Target() is then a buffer of exactly the bytes
// up to the last one written, with the same pattern, for the kernel.
class Canvas {
 public:
  explicit Canvas(size_t generous, uint32_t seed = 99) : expected_(generous) {
    std::mt19937 rng(seed);
    for (auto& v : expected_) v = static_cast<uint8_t>(rng());
    pattern_ = expected_;
  }
  void Put16(int64_t off, uint16_t v) { Put(off, &v, 2); }
  void Put64(int64_t off, uint64_t v) { Put(off, &v, 8); }
  // Copies n bytes inside the expected picture, as a kernel's row copy does.
  void Copy(int64_t to, int64_t from, size_t n) {
    std::vector<uint8_t> tmp(expected_.begin() + from, expected_.begin() + from + static_cast<int64_t>(n));
    Put(to, tmp.data(), n);
  }
  uint16_t Get16(int64_t off) const {
    uint16_t v;
    memcpy(&v, &expected_.at(static_cast<size_t>(off)), 2);
    return v;
  }

  // When nothing is to be written it still holds one byte, so that the kernel
  // gets a real pointer.
  std::vector<uint8_t> Target() const {
    return std::vector<uint8_t>(pattern_.begin(), pattern_.begin() + size());
  }
  // The kernel's buffer equals the expected bytes, written and untouched alike.
  void ExpectEqual(const std::vector<uint8_t>& got) const {
    ASSERT_EQ(got.size(), size());
    size_t bad = 0;
    for (size_t i = 0; i < got.size(); ++i) {
      if (got[i] != expected_[i] && bad++ < 8)
        ADD_FAILURE() << "byte " << i << ": got " << int(got[i]) << ", expected " << int(expected_[i]);
    }
    EXPECT_EQ(bad, 0u);
  }
  size_t size() const { return static_cast<size_t>(std::max<int64_t>(high_ + 1, 1)); }
  void Put(int64_t off, const void* v, size_t n) {
    ASSERT_GE(off, 0);
    ASSERT_LE(static_cast<size_t>(off) + n, expected_.size());
    memcpy(&expected_[static_cast<size_t>(off)], v, n);
    high_ = std::max(high_, off + static_cast<int64_t>(n) - 1);
  }

 private:
  std::vector<uint8_t> expected_;
  std::vector<uint8_t> pattern_;
  int64_t high_ = -1;
};

// A line-buffer set of exactly the given size per buffer, holding garbage.
struct LineSet {
  std::vector<std::vector<uint8_t>> store;
  uint8_t* ptr[4] = {nullptr, nullptr, nullptr, nullptr};
  explicit LineSet(size_t bytes, int count = 4, uint32_t seed = 7) {
    std::mt19937 rng(seed);
    for (int i = 0; i < count; ++i) {
      store.emplace_back(bytes);
      for (auto& v : store.back()) v = static_cast<uint8_t>(rng());
      ptr[i] = store.back().data();
    }
  }
};

// The rotation record of a packed destination as the orientation table gives
// it, as offsets from the destination start: p bytes a pixel, W x H picture
// (source orientation), stride S.
struct RecordOffsets {
  int32_t stepX, stepY;
  int64_t pix[4];  // pix00, pix10, pix01, pix11
};
inline RecordOffsets MakeOffsets(int rotation, int64_t w, int64_t h, int64_t s, int64_t p = 2) {
  RecordOffsets r{};
  int64_t& o00 = r.pix[0];
  int64_t& o10 = r.pix[1];
  int64_t& o01 = r.pix[2];
  int64_t& o11 = r.pix[3];
  switch (rotation) {
    case 0:
      r.stepX = int32_t(2 * p), r.stepY = int32_t(2 * s);
      o00 = 0, o10 = p, o01 = s, o11 = s + p;
      break;
    case 1:
      r.stepX = int32_t(-2 * s), r.stepY = int32_t(2 * p);
      o00 = (w - 1) * s, o10 = o00 - s, o01 = o00 + p, o11 = o10 + p;
      break;
    case 2:
      r.stepX = int32_t(2 * s), r.stepY = int32_t(-2 * p);
      o00 = (h - 1) * p, o10 = o00 + s, o01 = o00 - p, o11 = o10 - p;
      break;
    case 3:
      r.stepX = int32_t(-2 * p), r.stepY = int32_t(-2 * s);
      o00 = h * s - p, o10 = o00 - p, o01 = o00 - s, o11 = o01 - p;
      break;
    case 4:
      r.stepX = int32_t(-2 * p), r.stepY = int32_t(2 * s);
      o00 = (w - 1) * p, o10 = o00 - p, o01 = o00 + s, o11 = o01 - p;
      break;
    case 5:
      r.stepX = int32_t(2 * p), r.stepY = int32_t(-2 * s);
      o00 = (h - 1) * s, o10 = o00 + p, o01 = o00 - s, o11 = o01 + p;
      break;
  }
  return r;
}
inline ImgPrcRotationRecord MakeRecord(const RecordOffsets& o, uint8_t* base) {
  ImgPrcRotationRecord r{};
  r.stepX = o.stepX;
  r.stepY = o.stepY;
  r.pix00 = base + o.pix[0];
  r.pix10 = base + o.pix[1];
  r.pix01 = base + o.pix[2];
  r.pix11 = base + o.pix[3];
  return r;
}

// Where a straightforward rotation puts source pixel (x, y) of a W x H picture:
// destination (column, row).
inline std::pair<int64_t, int64_t> Rotated(int rotation, int64_t x, int64_t y, int64_t w, int64_t h) {
  switch (rotation) {
    case 1:
      return {y, w - 1 - x};  // quarter turn anticlockwise: W rows of H
    case 2:
      return {h - 1 - y, x};  // quarter turn clockwise
    case 3:
      return {w - 1 - x, h - 1 - y};  // half turn
    case 4:
      return {w - 1 - x, y};  // left-right mirror
    case 5:
      return {x, h - 1 - y};  // top-bottom flip
    default:
      return {x, y};
  }
}
inline bool QuarterTurn(int rotation) { return rotation == 1 || rotation == 2; }

}  // namespace rgb16test
