// Line interpolators: spread-pixel conversion, vertical blends and the
// horizontal stretchers that pack a spread line into the output format.
#include "imageproc/interp.h"

#include <stddef.h>
#include <string.h>

#include "kernels/enlarge_rows.h"
#include "kernels/yuv420_rgb565_rows.h"
#include "kernels/yuv_color_step.h"

using scrim::ChromaTerms;
using scrim::ChromaTermsOf;
using scrim::ColorTables;

namespace {

static_assert(__BYTE_ORDER__ == __ORDER_LITTLE_ENDIAN__, "pair entries are built in little-endian lanes");

// Four 32-bit lanes, two per 64-bit line entry (GCC and Clang vector
// extensions; SSE2 on x86-64, NEON on aarch64).
typedef uint32_t U32x4 __attribute__((vector_size(16)));
typedef uint64_t U64x2 __attribute__((vector_size(16)));

// Only the low 32 bits of a blend are ever unpacked, and the low 32 bits of
// (32 - f) * a + f * b depend only on the low 32 bits of a and b: the blends
// below run on 32-bit lanes as a * 32 + f * (b - a), which is the same sum
// modulo 2^32 with one multiply.

// Entries i and i + 1 of a line as lanes {a, a high, b, b high}.
inline U32x4 LoadEntryPair(const uint64_t* src, uint32_t i) {
  U32x4 v;
  memcpy(&v, src + i, 16);
  return v;
}

// The four linear blends at positions p + k * step, k = 0..3.
inline U32x4 Blend4(const uint64_t* src, uint32_t p, uint32_t step) {
  const U32x4 l0 = LoadEntryPair(src, p >> 16);
  const U32x4 l1 = LoadEntryPair(src, (p + step) >> 16);
  const U32x4 l2 = LoadEntryPair(src, (p + 2 * step) >> 16);
  const U32x4 l3 = LoadEntryPair(src, (p + 3 * step) >> 16);
  const U32x4 ab01 = __builtin_shufflevector(l0, l1, 0, 2, 4, 6);
  const U32x4 ab23 = __builtin_shufflevector(l2, l3, 0, 2, 4, 6);
  const U32x4 a = __builtin_shufflevector(ab01, ab23, 0, 2, 4, 6);
  const U32x4 b = __builtin_shufflevector(ab01, ab23, 1, 3, 5, 7);
  const U32x4 pos = U32x4{0, step, 2 * step, 3 * step} + p;
  const U32x4 f = (pos >> 11) & 31;
  return (a << 5) + f * (b - a);
}

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
  // Four blends, two entries: each 64-bit lane {p0, p1} becomes p0 | p1 << 16.
  void Quad(U32x4 v) {
    const U32x4 px = ((v >> 16) & 0xF800) | ((v >> 10) & 0x7E0) | ((v >> 5) & 31);
    U64x2 e = reinterpret_cast<U64x2>(px);
    e = (e | e >> 16) & 0xFFFFFFFF;
    memcpy(out_, &e, 16);
    out_ += 16;
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
  Sink32(uint32_t* out, uint32_t alpha) : out_(reinterpret_cast<uint8_t*>(out)), alpha_(alpha << 24) {}
  void Pair(uint64_t v0, uint64_t v1) {
    scrim::Store32(out_, alpha_ | Pack32(v0));
    scrim::Store32(out_ + 4, alpha_ | Pack32(v1));
    out_ += 8;
  }

 private:
  uint8_t* out_;  // rows of the 32-bit kernels need not be 4-byte aligned
  uint32_t alpha_;
};

inline int32_t PairsOf(int32_t width) {
  const int32_t pairs = width >> 1;
  return pairs < 1 ? 1 : pairs;
}

template <class Entry>
inline uint64_t LinearAt(const Entry* src, uint32_t p) {
  const uint32_t i = p >> 16;
  const uint64_t f = (p >> 11) & 31;
  return (32 - f) * src[i] + f * src[i + 1];
}

// Sinks without a four-pixel store take a quad as two pairs.
template <class Sink>
auto PutQuad(Sink& sink, U32x4 v, int) -> decltype(sink.Quad(v)) {
  sink.Quad(v);
}
template <class Sink>
void PutQuad(Sink& sink, U32x4 v, long) {
  sink.Pair(v[0], v[1]);
  sink.Pair(v[2], v[3]);
}

// Four pixels a round; an odd last pair is blended alone so that nothing past
// its src[i + 1] is read.
template <class Sink>
void Stretch(const uint64_t* src, uint32_t step, int32_t width, Sink sink) {
  uint32_t p = 0;
  int32_t n = PairsOf(width);
  for (; n >= 2; n -= 2, p += 4 * step) PutQuad(sink, Blend4(src, p, step), 0);
  if (n > 0) sink.Pair(LinearAt(src, p), LinearAt(src, p + step));
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

// Two rounds (s[0..7], e the pixel after) as three quads of linear blends
// L * 32 + f * (R - L) on 32-bit lanes (see Blend4).
template <class Sink>
void DoublePhases23(const uint64_t* s, uint32_t e, Sink& sink) {
  const U32x4 s01 = LoadEntryPair(s, 0), s23 = LoadEntryPair(s, 2);
  const U32x4 s45 = LoadEntryPair(s, 4), s67 = LoadEntryPair(s, 6);
  const U32x4 e4 = {e, 0, 0, 0};
  const U32x4 l0 = __builtin_shufflevector(s01, s23, 0, 0, 2, 4);
  const U32x4 r0 = __builtin_shufflevector(s01, s23, 2, 2, 4, 6);
  const U32x4 l1 = __builtin_shufflevector(s23, s45, 0, 2, 4, 4);
  const U32x4 r1 = __builtin_shufflevector(s23, s45, 2, 4, 6, 6);
  const U32x4 l2 = __builtin_shufflevector(s45, s67, 2, 4, 4, 6);
  const U32x4 r2 = __builtin_shufflevector(s67, e4, 0, 2, 2, 4);
  PutQuad(sink, (l0 << 5) + U32x4{0, 21, 11, 0} * (r0 - l0), 0);
  PutQuad(sink, (l1 << 5) + U32x4{21, 11, 0, 21} * (r1 - l1), 0);
  PutQuad(sink, (l2 << 5) + U32x4{11, 0, 21, 11} * (r2 - l2), 0);
}

// (width >> 2) rounds, at least one; the last blends its last pixel with
// itself.
template <class Sink>
void Stretch23(const uint64_t* s, int32_t width, Sink sink) {
  int32_t n = width >> 2 < 1 ? 1 : width >> 2;
  for (; n >= 2; n -= 2, s += 8) DoublePhases23(s, static_cast<uint32_t>(n == 2 ? s[7] : s[8]), sink);
  if (n == 1) Phases23(s[0], s[1], s[2], s[3], s[3], sink);
}

template <uint32_t (*Spread)(ptrdiff_t, ChromaTerms), class Entry>
void ConvertLines(const ImgPrcContext* ctx, const uint8_t* y0, const uint8_t* y1, const uint8_t* cb,
                  const uint8_t* cr, Entry* out0, Entry* out1, int32_t width) {
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

namespace {
template <class Entry>
void SpreadBlocks(size_t begin, size_t end, const Rgb565RowPair* rp) {
  ConvertLines<scrim::SpreadRgb>(rp->ctx, rp->y0 + 2 * begin, rp->y1 + 2 * begin, rp->cb + begin,
                                 rp->cr + begin, reinterpret_cast<Entry*>(rp->d0) + 2 * begin,
                                 reinterpret_cast<Entry*>(rp->d1) + 2 * begin,
                                 static_cast<int32_t>(2 * (end - begin)));
}
}  // namespace
void spread_blocks_scalar(size_t begin, size_t end, const Rgb565RowPair* rp) {
  SpreadBlocks<uint64_t>(begin, end, rp);
}
void spread32_blocks_scalar(size_t begin, size_t end, const Rgb565RowPair* rp) {
  SpreadBlocks<uint32_t>(begin, end, rp);
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

namespace {
template <class Entry>
void BlendLines(size_t begin, size_t end, const VlerpLinesOf<Entry>* lines) {
  const uint64_t w = lines->w;
  for (size_t i = begin; i < end; ++i)
    lines->out[i] = static_cast<Entry>((((32 - w) * lines->a[i] + w * lines->b[i]) >> 5) & kSpreadMask);
}
}  // namespace
void vlerp_scalar(size_t begin, size_t end, const VlerpLines* lines) { BlendLines(begin, end, lines); }
void vlerp32_scalar(size_t begin, size_t end, const VlerpLines32* lines) { BlendLines(begin, end, lines); }

// The blend row's scalar reference over the whole line.
void VLerp(const uint64_t* a, const uint64_t* b, uint64_t* out, int32_t w, int32_t count) {
  const VlerpLines lines{a, b, out, static_cast<uint32_t>(w)};
  vlerp_scalar(0, count > 0 ? static_cast<size_t>(count) : 0, &lines);
}

void VLerp_12(const uint64_t* a, const uint64_t* b, uint64_t* out, int32_t count) {
  for (int32_t i = 0; i < count; ++i) out[i] = ((a[i] + b[i]) >> 1) & kSpreadMask;
}

void HLerp(const uint64_t* src, uint8_t* out, uint32_t step, int32_t width) {
  Stretch(src, step, width, Sink565(out));
}

// The same blends as HLerp, pair by pair, from any pair on.
namespace {
template <class Entry>
void StretchPairs(size_t begin, size_t end, const Hlerp565LineOf<Entry>* line) {
  Sink565 sink(line->out + 8 * begin);
  for (size_t k = begin; k < end; ++k) {
    const uint32_t p = static_cast<uint32_t>(2 * k * line->step);
    sink.Pair(LinearAt(line->src, p), LinearAt(line->src, p + line->step));
  }
}
}  // namespace
void hlerp565_scalar(size_t begin, size_t end, const Hlerp565Line* line) { StretchPairs(begin, end, line); }
void hlerp565_32_scalar(size_t begin, size_t end, const Hlerp565Line32* line) {
  StretchPairs(begin, end, line);
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

// The fixed stretches round by round, over 32-bit entries.
namespace {
template <int kEntries, class PhasesOf>
void FixedRounds(size_t begin, size_t end, const FixedStretchLine* line, PhasesOf phases) {
  Sink565 sink(line->out + 8 * kEntries * begin);
  for (size_t r = begin; r < end; ++r) {
    const uint32_t* s = line->src + 4 * r;
    phases(s[0], s[1], s[2], s[3], r + 1 < line->rounds ? s[4] : s[3], sink);
  }
}
}  // namespace
void hlerp565_23_scalar(size_t begin, size_t end, const FixedStretchLine* line) {
  FixedRounds<3>(begin, end, line, Phases23<Sink565>);
}
void hlerp565_25_scalar(size_t begin, size_t end, const FixedStretchLine* line) {
  FixedRounds<5>(begin, end, line, Phases25<Sink565>);
}

void HLerp32_23(const uint64_t* src, uint32_t* out, int32_t width, uint32_t alpha) {
  Stretch23(src, width, Sink32(out, alpha));
}
