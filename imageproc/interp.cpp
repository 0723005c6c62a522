// Line interpolators: spread-pixel conversion, vertical blends and the
// horizontal stretchers that pack a spread line into the output format.
#include "imageproc/interp.h"

#include <stddef.h>

#include "kernels/yuv_color_step.h"

using scrim::ChromaTerms;
using scrim::ChromaTermsOf;
using scrim::ColorTables;

namespace {

// Every horizontal blend is brought to a weight sum of 32 before packing, so
// one packer serves all denominators: (5a + 3b) / 8 is packed as
// (5a + 3b) << 2, which gives exactly the shifts of a /8 unpacking.
inline uint16_t Pack565(uint64_t v32) {
  return static_cast<uint16_t>(((v32 >> 16) & 0xF800) | ((v32 >> 10) & 0x7E0) | ((v32 >> 5) & 31));
}

// Red and green come out as 6 bits x 4 and blue as 5 bits x 8; the bits below
// are whatever the blend left there, not a replication.
inline uint32_t Pack32(uint64_t v32) {
  return static_cast<uint32_t>(((v32 >> 8) & 0xFF0000) | ((v32 >> 5) & 0xFF00) | ((v32 >> 2) & 0xFF));
}

// Pixel sinks of the stretchers. Each takes blends in the weight-32 scale.
class Sink565 {  // two pixels per 64-bit entry, first in the low half
 public:
  explicit Sink565(uint8_t* out) : out_(out) {}
  void Pair(uint64_t v0, uint64_t v1) {
    scrim::Store64(out_, static_cast<uint64_t>(Pack565(v0)) | static_cast<uint64_t>(Pack565(v1)) << 16);
    out_ += 8;
  }

 private:
  uint8_t* out_;
};

class Sink565Rot {  // one pixel per store, pixelStep pixels apart
 public:
  Sink565Rot(uint8_t* out, int32_t pixelStep) : out_(out), step_(static_cast<ptrdiff_t>(pixelStep) * 2) {}
  void Pair(uint64_t v0, uint64_t v1) {
    scrim::Store16(out_ + at_, Pack565(v0));
    scrim::Store16(out_ + at_ + step_, Pack565(v1));
    at_ += 2 * step_;
  }

 private:
  uint8_t* out_;
  ptrdiff_t step_;
  ptrdiff_t at_ = 0;
};

class Sink24 {  // memory order B, G, R
 public:
  explicit Sink24(uint8_t* out) : out_(out) {}
  void Pair(uint64_t v0, uint64_t v1) {
    One(v0);
    One(v1);
  }

 private:
  void One(uint64_t v) {
    const uint32_t p = Pack32(v);
    out_[0] = static_cast<uint8_t>(p);
    out_[1] = static_cast<uint8_t>(p >> 8);
    out_[2] = static_cast<uint8_t>(p >> 16);
    out_ += 3;
  }
  uint8_t* out_;
};

class Sink32 {  // one ARGB word per pixel
 public:
  Sink32(uint32_t* out, uint32_t alpha) : out_(out), alpha_(alpha << 24) {}
  void Pair(uint64_t v0, uint64_t v1) {
    out_[0] = alpha_ | Pack32(v0);
    out_[1] = alpha_ | Pack32(v1);
    out_ += 2;
  }

 private:
  uint32_t* out_;
  uint32_t alpha_;
};

inline int32_t PairsOf(int32_t width) {
  const int32_t pairs = width >> 1;
  return pairs < 1 ? 1 : pairs;
}

inline uint64_t LinearAt(const uint64_t* src, uint32_t p) {
  const uint32_t i = p >> 16;
  const uint64_t f = (p >> 11) & 31;
  return (32 - f) * src[i] + f * src[i + 1];
}

template <class Sink>
void Stretch(const uint64_t* src, uint32_t step, int32_t width, Sink sink) {
  uint32_t p = 0;
  for (int32_t n = PairsOf(width); n > 0; --n) {
    const uint64_t v0 = LinearAt(src, p);
    const uint64_t v1 = LinearAt(src, p + step);
    p += 2 * step;
    sink.Pair(v0, v1);
  }
}

// 2.5x phases of one source pair a, b with c the pixel after: positions 0,
// 3/8, 25/32, 1 + 3/16 and 1 + 13/32 (the last one deliberately nearer 1.4
// than 1.6). Fives of pixels from a pair straddle output entries, so two
// pairs (ten pixels, five entries) make one call.
template <class Sink>
void Phases25(uint64_t a, uint64_t b, uint64_t c, uint64_t d, uint64_t e, Sink& sink) {
  sink.Pair(32 * a, (5 * a + 3 * b) << 2);
  sink.Pair(7 * a + 25 * b, (13 * b + 3 * c) << 1);
  sink.Pair(19 * b + 13 * c, 32 * c);
  sink.Pair((5 * c + 3 * d) << 2, 7 * c + 25 * d);
  sink.Pair((13 * d + 3 * e) << 1, 19 * d + 13 * e);
}

template <class Sink>
void Stretch25(const uint64_t* s, int32_t width, Sink sink) {
  const int32_t rounds = width >> 2;
  for (int32_t n = 1; n < rounds; ++n, s += 4) Phases25(s[0], s[1], s[2], s[3], s[4], sink);
  Phases25(s[0], s[1], s[2], s[3], s[3], sink);  // last pixel written twice
}

// 1.5x phases of four source pixels a..d with e the pixel after: positions 0,
// 21/32, 1 + 11/32, 2, 2 + 21/32, 3 + 11/32 (thirds rounded to 32nds).
template <class Sink>
void Phases23(uint64_t a, uint64_t b, uint64_t c, uint64_t d, uint64_t e, Sink& sink) {
  sink.Pair(32 * a, 11 * a + 21 * b);
  sink.Pair(21 * b + 11 * c, 32 * c);
  sink.Pair(11 * c + 21 * d, 21 * d + 11 * e);
}

template <class Sink>
void Stretch23(const uint64_t* s, int32_t width, Sink sink) {
  const int32_t rounds = width >> 2;
  for (int32_t n = 1; n < rounds; ++n, s += 4) Phases23(s[0], s[1], s[2], s[3], s[4], sink);
  Phases23(s[0], s[1], s[2], s[3], s[3], sink);
}

template <uint32_t (*Spread)(ptrdiff_t, ChromaTerms)>
void ConvertLines(const ImgPrcContext* ctx, const uint8_t* y0, const uint8_t* y1, const uint8_t* cb,
                  const uint8_t* cr, uint64_t* out0, uint64_t* out1, int32_t width) {
  const ColorTables tab(ctx);
  for (int32_t n = PairsOf(width); n > 0; --n) {
    const ChromaTerms t = ChromaTermsOf(tab, *cb++, *cr++);
    out0[0] = Spread(tab.Luma(y0[0]), t);
    out0[1] = Spread(tab.Luma(y0[1]), t);
    out1[0] = Spread(tab.Luma(y1[0]), t);
    out1[1] = Spread(tab.Luma(y1[1]), t);
    y0 += 2;
    y1 += 2;
    out0 += 2;
    out1 += 2;
  }
}

}  // namespace

void Convert(const ImgPrcContext* ctx, const uint8_t* y0, const uint8_t* y1, const uint8_t* cb,
             const uint8_t* cr, uint64_t* out0, uint64_t* out1, int32_t width) {
  ConvertLines<scrim::SpreadRgb>(ctx, y0, y1, cb, cr, out0, out1, width);
}

void ConvertBGR(const ImgPrcContext* ctx, const uint8_t* y0, const uint8_t* y1, const uint8_t* cb,
                const uint8_t* cr, uint64_t* out0, uint64_t* out1, int32_t width) {
  ConvertLines<scrim::SpreadBgr>(ctx, y0, y1, cb, cr, out0, out1, width);
}

void _convert(const ImgPrcContext* ctx, uint32_t* out, uint16_t yPair0, uint16_t yPair1, uint8_t cb,
              uint8_t cr) {
  const ColorTables tab(ctx);
  const ChromaTerms t = ChromaTermsOf(tab, cb, cr);
  out[0] = scrim::SpreadRgb(tab.Luma(static_cast<uint8_t>(yPair0)), t);
  out[1] = scrim::SpreadRgb(tab.Luma(static_cast<uint8_t>(yPair0 >> 8)), t);
  out[2] = scrim::SpreadRgb(tab.Luma(static_cast<uint8_t>(yPair1)), t);
  out[3] = scrim::SpreadRgb(tab.Luma(static_cast<uint8_t>(yPair1 >> 8)), t);
}

void VLerp(const uint64_t* a, const uint64_t* b, uint64_t* out, int32_t w, int32_t count) {
  const uint64_t wb = static_cast<uint64_t>(w);
  const uint64_t wa = 32 - wb;
  for (int32_t i = 0; i < count; ++i) out[i] = ((wa * a[i] + wb * b[i]) >> 5) & kSpreadMask;
}

void VLerp_12(const uint64_t* a, const uint64_t* b, uint64_t* out, int32_t count) {
  for (int32_t i = 0; i < count; ++i) out[i] = ((a[i] + b[i]) >> 1) & kSpreadMask;
}

void HLerp(const uint64_t* src, uint8_t* out, uint32_t step, int32_t width) {
  Stretch(src, step, width, Sink565(out));
}

void HLerpRot(const uint64_t* src, uint8_t* out, uint32_t step, int32_t width, int32_t pixelStep) {
  Stretch(src, step, width, Sink565Rot(out, pixelStep));
}

void HLerp24(const uint64_t* src, uint8_t* out, uint32_t step, int32_t width) {
  Stretch(src, step, width, Sink24(out));
}

void HLerp32(const uint64_t* src, uint32_t* out, uint32_t step, int32_t width, uint32_t alpha) {
  Stretch(src, step, width, Sink32(out, alpha));
}

void HLerp_Nearest(const uint16_t* src, uint8_t* out, int32_t n, int32_t q, int32_t r) {
  int32_t i = 0;
  int32_t acc = 0;
  auto next = [&]() {
    const uint64_t v = src[i];
    acc += r;
    i += q;
    if (acc >= n) {
      ++i;
      acc -= n;
    }
    return v;
  };
  for (int32_t k = n >> 1; k > 0; --k) {
    const uint64_t p0 = next();
    const uint64_t p1 = next();
    scrim::Store64(out, p0 | p1 << 16);
    out += 8;
  }
}

void HLerp_25(const uint64_t* src, uint8_t* out, int32_t width) { Stretch25(src, width, Sink565(out)); }

void HLerp32_25(const uint64_t* src, uint32_t* out, int32_t width, uint32_t alpha) {
  Stretch25(src, width, Sink32(out, alpha));
}

void HLerp_23(const uint64_t* src, uint8_t* out, int32_t width) { Stretch23(src, width, Sink565(out)); }

void HLerp32_23(const uint64_t* src, uint32_t* out, int32_t width, uint32_t alpha) {
  Stretch23(src, width, Sink32(out, alpha));
}
