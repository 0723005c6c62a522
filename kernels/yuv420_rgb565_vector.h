// The RGB565 block row in vectors: one portable source (GCC and Clang vector
// extensions) built once per instruction set by the file that includes it
// after defining
//   RGB565_VECTOR_BLOCKS  blocks per step (one register of 16-bit lanes)
//   RGB565_VECTOR_ROW     the name of the row function.
// Terms come from the tables' integer forms in 32-bit lanes; the pixel step
// is taken on 16-bit lanes with saturating adds (the only intrinsic):
// with X = L - 32768, X + term saturated and capped at -1 stands for the sum
// L + term clamped to 0..32767, whose bits 10-14 (red, blue) or 9-14 (green)
// are the clamped field. Red and blue terms are Cr >> 15 and Cb >> 15 of the
// packed entries, that is 2 x high half + the sign bit of the low half, added
// as high half + (high half + sign bit); green is the 16-bit sum of the low
// halves (carry dropped) added twice. Saturating in two same-signed steps
// gives the clamp of the whole sum.
#include <string.h>

#include "imageproc/color_affine.h"
#include "kernels/yuv420_rgb565_rows.h"

#if defined(__AVX2__) || defined(__SSE4_1__)
#include <immintrin.h>
#elif defined(__ARM_NEON)
#include <arm_neon.h>
#endif

namespace {

constexpr unsigned B = RGB565_VECTOR_BLOCKS;  // blocks a step; 2B pixels a row

typedef uint8_t U8b __attribute__((vector_size(B)));
typedef uint8_t U8p __attribute__((vector_size(2 * B)));
typedef int32_t I32b __attribute__((vector_size(4 * B)));
typedef uint32_t U32b __attribute__((vector_size(4 * B)));
typedef int32_t I32p __attribute__((vector_size(8 * B)));
typedef uint32_t U32p __attribute__((vector_size(8 * B)));
typedef int16_t I16p __attribute__((vector_size(4 * B)));
typedef uint16_t U16p __attribute__((vector_size(4 * B)));

#define V_INLINE inline __attribute__((always_inline))

template <class To, class From>
V_INLINE To As(From v) {
  static_assert(sizeof(To) == sizeof(From), "same size");
  To t;
  memcpy(&t, &v, sizeof t);
  return t;
}

// Saturating signed 16-bit add, one native register at a time.
V_INLINE I16p AddSat(I16p a, I16p b) {
#if defined(__AVX2__)
  typedef __m256i R;
  constexpr unsigned kPer = 32;
#define V_ADDS(x, y) _mm256_adds_epi16(x, y)
#elif defined(__SSE4_1__)
  typedef __m128i R;
  constexpr unsigned kPer = 16;
#define V_ADDS(x, y) _mm_adds_epi16(x, y)
#else
  typedef int16x8_t R;
  constexpr unsigned kPer = 16;
#define V_ADDS(x, y) vqaddq_s16(x, y)
#endif
  I16p out;
  for (unsigned o = 0; o < sizeof(I16p); o += kPer) {
    R x, y;
    memcpy(&x, reinterpret_cast<const char*>(&a) + o, kPer);
    memcpy(&y, reinterpret_cast<const char*>(&b) + o, kPer);
    const R s = V_ADDS(x, y);
    memcpy(reinterpret_cast<char*>(&out) + o, &s, kPer);
  }
#undef V_ADDS
  return out;
}

template <class I32v>
V_INLINE I32v Clamp(I32v v, int32_t lo, int32_t hi) {
  v = v < lo ? I32v{} + lo : v;
  return v > hi ? I32v{} + hi : v;
}

// A chroma term of B samples, saturated to 16 bits and doubled into both
// halves of each 32-bit lane: the term of block m for its two pixels.
V_INLINE I16p ChromaTerm(U8b idx, const ImgPrcAffineTerm& t, int32_t shift) {
  const U32b i = __builtin_convertvector(idx, U32b);
  const I32b a = As<I32b>(i * uint32_t(t.mul[0]) + uint32_t(t.add[0])) >> shift;
  const I32b b = As<I32b>(i * uint32_t(t.mul[1]) + uint32_t(t.add[1])) >> shift;
  const I32b v = Clamp(As<I32b>(i) < t.split ? a : b, -32768, 32767);
  const U32b h = As<U32b>(v) & 0xFFFF;
  return As<I16p>(h | h << 16);
}

// Luma entries of 2B samples minus 32768, saturated to 16 bits.
V_INLINE I16p LumaX(const uint8_t* p, uint32_t mul, uint32_t add, int32_t shift) {
  U8p idx;
  memcpy(&idx, p, sizeof idx);
  const I32p v = As<I32p>(__builtin_convertvector(idx, U32p) * mul + add) >> shift;
  return __builtin_convertvector(Clamp(v, -32768, 32767), I16p);
}

struct Terms {
  I16p rh, rq, g, bh, bq;  // see the head of this file
};

V_INLINE U16p Pixels(I16p x, const Terms& t) {
  const I16p m1 = I16p{} - 1;
  I16p r = AddSat(AddSat(x, t.rh), t.rq);
  I16p g = AddSat(AddSat(x, t.g), t.g);
  I16p b = AddSat(AddSat(x, t.bh), t.bq);
  r = r < m1 ? r : m1;
  g = g < m1 ? g : m1;
  b = b < m1 ? b : m1;
  return (As<U16p>(r) >> 10 << 11) | ((As<U16p>(g) >> 4) & 0x7E0) | ((As<U16p>(b) >> 10) & 31);
}

}  // namespace

void RGB565_VECTOR_ROW(size_t begin, size_t end, const Rgb565RowPair* rp) {
  const ImgPrcAffineTables& k = rp->ctx->affine;
  const int32_t s = k.shift;
  const uint32_t ymul = uint32_t(k.y.mul[1]);
  const uint32_t yadd = uint32_t(k.y.add[1]) - (uint32_t{32768} << s);
  for (size_t m = begin; m < end; m += B) {
    U8b cb, cr;
    memcpy(&cb, rp->cb + m, B);
    memcpy(&cr, rp->cr + m, B);
    const I16p gcr = ChromaTerm(cr, k.gcr, s), gcb = ChromaTerm(cb, k.gcb, s);
    Terms t;
    t.rh = ChromaTerm(cr, k.rcr, s);
    t.rq = AddSat(t.rh, As<I16p>(As<U16p>(gcr) >> 15));
    t.bh = ChromaTerm(cb, k.bcb, s);
    t.bq = AddSat(t.bh, As<I16p>(As<U16p>(gcb) >> 15));
    t.g = As<I16p>(As<U16p>(gcb) + As<U16p>(gcr));
    const U16p p0 = Pixels(LumaX(rp->y0 + 2 * m, ymul, yadd, s), t);
    const U16p p1 = Pixels(LumaX(rp->y1 + 2 * m, ymul, yadd, s), t);
    memcpy(rp->d0 + 4 * m, &p0, sizeof p0);
    memcpy(rp->d1 + 4 * m, &p1, sizeof p1);
  }
}
