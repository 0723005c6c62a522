// RGB to planar YCbCr 4:2:0: one walk over 2x2 blocks; the source fetch, the
// coefficient row and the range rule are its parameters, and the 24 members
// are its instantiations.
#include <stddef.h>
#include <string.h>

#include "kernels/byte_vectors.h"
#include "kernels/rgb_convert.h"

using namespace scrim;

namespace {

struct Rgb8 {
  int32_t r, g, b;
};

// Eight pixels as 16-bit lanes.
struct Rgb8x8 {
  U16x8 r, g, b;
};

// Pixel x of a row whose pixel pairs lie 8 bytes apart; At8 takes the eight
// pixels from x (even) as four whole 64-bit words.
struct Rgb565Source {
  static Rgb8 At(const uint8_t* row, uint32_t x) {
    uint16_t p;
    memcpy(&p, row + 8 * static_cast<size_t>(x >> 1) + 2 * (x & 1), 2);
    return {(p >> 11) << 3, ((p >> 5) & 63) << 2, (p & 31) << 3};
  }
  static Rgb8x8 At8(const uint8_t* row, uint32_t x) {
    const uint8_t* at = row + 4 * static_cast<size_t>(x);
    const U16x8 a = LoadVector<U16x8>(at), b = LoadVector<U16x8>(at + 16);
    const U16x8 p = __builtin_shufflevector(a, b, 0, 1, 4, 5, 8, 9, 12, 13);
    return {(p >> 11) << 3, ((p >> 5) & 63) << 2, (p & 31) << 3};
  }
};
struct Argb32Source {
  static uint32_t Word(const uint8_t* row, uint32_t x) {
    uint32_t p;
    memcpy(&p, row + 4 * static_cast<size_t>(x), 4);
    return p;
  }
  // The byte at `shift` of each of eight pixels.
  static U16x8 Channel(U32x4 a, U32x4 b, int shift) {
    return __builtin_shufflevector(Lanes<U16x8>((a >> shift) & 255), Lanes<U16x8>((b >> shift) & 255), 0, 2,
                                   4, 6, 8, 10, 12, 14);
  }
  static Rgb8x8 At8(const uint8_t* row, uint32_t x) {
    const uint8_t* at = row + 4 * static_cast<size_t>(x);
    const U32x4 a = LoadVector<U32x4>(at), b = LoadVector<U32x4>(at + 16);
    return {Channel(a, b, 16), Channel(a, b, 8), Channel(a, b, 0)};
  }
  static Rgb8 At(const uint8_t* row, uint32_t x) {
    const uint32_t p = Word(row, x);
    return {static_cast<int32_t>((p >> 16) & 0xFF), static_cast<int32_t>((p >> 8) & 0xFF),
            static_cast<int32_t>(p & 0xFF)};
  }
};
struct Abgr32Source {
  static Rgb8 At(const uint8_t* row, uint32_t x) {
    const uint32_t p = Argb32Source::Word(row, x);
    return {static_cast<int32_t>(p & 0xFF), static_cast<int32_t>((p >> 8) & 0xFF),
            static_cast<int32_t>((p >> 16) & 0xFF)};
  }
  static Rgb8x8 At8(const uint8_t* row, uint32_t x) {
    const Rgb8x8 v = Argb32Source::At8(row, x);
    return {v.b, v.g, v.r};
  }
};

// Integer weights of R, G, B for Y, Cb and Cr, per matrix.
// Eight sums at once are formed on 16-bit lanes: luma sums are below 65536
// and chroma sums within +-32640, so the lanes give the same low bits.
struct Weights {
  int32_t r, g, b;
  int32_t Sum(const Rgb8& p) const { return r * p.r + g * p.g + b * p.b; }
  U16x8 Sum(const Rgb8x8& p) const {
    return p.r * static_cast<uint16_t>(r) + p.g * static_cast<uint16_t>(g) + p.b * static_cast<uint16_t>(b);
  }
};
struct Matrix {
  Weights y, cb, cr;
};
// Each matrix rounded to integers as the members have always used them; the
// rounding differs slightly from row to row and is kept.
constexpr Matrix kStudio[4] = {
    {{65, 129, 25}, {-38, -74, 112}, {112, -94, -18}},
    {{46, 157, 15}, {-25, -86, 112}, {112, -102, -10}},
    {{46, 154, 19}, {-26, -86, 112}, {112, -100, -12}},
    {{65, 129, 24}, {-37, -74, 112}, {112, -94, -17}},
};
constexpr Matrix kFull[4] = {
    {{76, 150, 29}, {-43, -84, 128}, {128, -107, -20}},
    {{54, 183, 18}, {-29, -98, 128}, {128, -116, -11}},
    {{54, 179, 22}, {-29, -98, 128}, {128, -113, -14}},
    {{76, 151, 28}, {-43, -84, 128}, {128, -107, -20}},
};

// Range rules: which rows, and how a sum becomes a stored byte (low 8 bits,
// no clamp). Chroma sums are signed (arithmetic shifts), luma sums are not.
struct StudioTruncated {
  static constexpr const Matrix* kRows = kStudio;
  template <class T>
  static T Luma(T sum) {
    return (sum >> 8) + 16;
  }
  template <class T>
  static T Chroma(T sum) {
    return (sum >> 8) + 128;
  }
};
struct StudioRounded {
  static constexpr const Matrix* kRows = kStudio;
  template <class T>
  static T Luma(T sum) {
    return ((sum + 128) >> 8) + 16;
  }
  template <class T>
  static T Chroma(T sum) {
    return ((sum + 128) >> 8) - 128;
  }
};
struct FullRange {
  static constexpr const Matrix* kRows = kFull;
  template <class T>
  static T Luma(T sum) {
    return sum >> 8;
  }
  template <class T>
  static T Chroma(T sum) {
    return sum >> 8;
  }
};

// Low bytes of the eight lanes, and of lanes 0, 2, 4, 6.
// (Truncating conversions: a mask and a pack on SSE2, one narrowing move on NEON.)
void StoreLowBytes(uint8_t* out, U16x8 v) { StoreVector(out, __builtin_convertvector(v, Bytes8)); }
void StoreEvenLanes(uint8_t* out, I16x8 v) {
  typedef int16_t I16x4 __attribute__((vector_size(8)));
  StoreVector(out, __builtin_convertvector(I16x4(__builtin_shufflevector(v, v, 0, 2, 4, 6)), Bytes4));
}

template <class Source, class Range, int kMatrix>
uint32_t RgbToYuv420(const uint8_t* src, uint32_t pitch, uint8_t** dst, uint32_t* strides, uint32_t width,
                     uint32_t height) {
  const Matrix& m = Range::kRows[kMatrix];
  const size_t below = static_cast<size_t>(pitch / 4) * 8;
  for (uint32_t row = 0; row < height; row += 2) {
    const uint8_t* top = src + static_cast<size_t>(row) * pitch;
    const uint8_t* bottom = top + below;
    uint8_t* y0 = dst[0] + static_cast<size_t>(row) * strides[0];
    uint8_t* y1 = y0 + strides[0];
    uint8_t* cb = dst[1] + static_cast<size_t>(row / 2) * strides[1];
    uint8_t* cr = dst[2] + static_cast<size_t>(row / 2) * strides[2];
    uint32_t x = 0;
    for (; x + 8 <= width; x += 8) {
      const Rgb8x8 t = Source::At8(top, x), b = Source::At8(bottom, x);
      StoreLowBytes(y0 + x, Range::Luma(m.y.Sum(t)));
      StoreLowBytes(y1 + x, Range::Luma(m.y.Sum(b)));
      StoreEvenLanes(cb + x / 2, Range::Chroma(Lanes<I16x8>(m.cb.Sum(b))));
      StoreEvenLanes(cr + x / 2, Range::Chroma(Lanes<I16x8>(m.cr.Sum(b))));
    }
    for (; x < width; x += 2) {
      const Rgb8 bottomLeft = Source::At(bottom, x);
      y0[x] = static_cast<uint8_t>(Range::Luma(m.y.Sum(Source::At(top, x))));
      y0[x + 1] = static_cast<uint8_t>(Range::Luma(m.y.Sum(Source::At(top, x + 1))));
      y1[x] = static_cast<uint8_t>(Range::Luma(m.y.Sum(bottomLeft)));
      y1[x + 1] = static_cast<uint8_t>(Range::Luma(m.y.Sum(Source::At(bottom, x + 1))));
      cb[x / 2] = static_cast<uint8_t>(Range::Chroma(m.cb.Sum(bottomLeft)));
      cr[x / 2] = static_cast<uint8_t>(Range::Chroma(m.cr.Sum(bottomLeft)));
    }
  }
  return 0;
}

}  // namespace

#define SCRIM_DEFINE_RGB_TO_YUV420(name, source, range, matrix)                                           \
  extern "C" uint32_t name(const uint8_t* src, uint32_t pitch, uint8_t** dstPlanes, uint32_t* dstStrides, \
                           uint32_t width, uint32_t height) {                                             \
    return RgbToYuv420<source, range, matrix>(src, pitch, dstPlanes, dstStrides, width, height);          \
  }
SCRIM_RGB_TO_YUV420_MEMBERS(SCRIM_DEFINE_RGB_TO_YUV420)
#undef SCRIM_DEFINE_RGB_TO_YUV420
