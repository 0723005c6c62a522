// The RGB565 block row in vectors: one portable source (GCC and Clang vector
// extensions) built once per instruction set by the file that includes it
// after defining
//   RGB565_VECTOR_BYTES   register bytes: a step is one register of 16-bit
//                         pixels a row, a quarter of them blocks
//   RGB565_VECTOR_ROW     the names of the RGB565 row function
//   RGB555_VECTOR_ROW     of the keyed RGB555 one
//   SPREAD_VECTOR_ROW     of the spread-line one (imageproc/interp.h)
//   SPREAD32_VECTOR_ROW   of the one with 32-bit entries
//   ARGB_VECTOR_ROW       and of the 32-bit pixel ones, ARGB and ABGR.
// Terms come from the tables' integer forms in 32-bit lanes; the pixel step
// is taken on 16-bit lanes with saturating adds (the only intrinsic):
// with X = L - 32768, X + term saturated and capped at -1 stands for the sum
// L + term clamped to 0..32767, whose bits 10-14 (red, blue) or 9-14 (green)
// are the clamped field. Red and blue terms are Cr >> 15 and Cb >> 15 of the
// packed entries, that is 2 x high half + the sign bit of the low half, added
// as high half + (high half + sign bit); green is the 16-bit sum of the low
// halves (carry dropped) added twice. Saturating in two same-signed steps
// gives the clamp of the whole sum. Where the tables have a narrow form
// (imageproc/color_affine.h), luma comes from 16-bit products instead and
// red's and green's terms are summed before they meet it, one add each.
#include <string.h>

#include "imageproc/color_affine.h"
#include "kernels/isa_vector.h"
#include "kernels/yuv420_rgb565_rows.h"

#if defined(__AVX2__) || defined(__SSE4_1__)
#include <immintrin.h>
#elif defined(__ARM_NEON)
#include <arm_neon.h>
#endif

namespace {

constexpr unsigned N = RGB565_VECTOR_BYTES;  // one register
constexpr int kShift = IMGPRC_AFFINE_SHIFT;

// How a step's lanes map to pixels. On x86 a step is a register of 16-bit
// pixels a row, B = N / 4 blocks, whose chroma terms are doubled into both
// pixels' lanes. On NEON the lanes are blocks: a step is B = N / 2 blocks,
// each luma row loaded split into its even and odd pixels (ld2) and its
// pixels stored interleaved again (st2, st4), which costs nothing there and
// spares doubling the terms.
#if defined(__ARM_NEON) && !defined(__SSE4_1__)
#define BLOCK_LANES 1
constexpr unsigned B = N / 2;
#else
#define BLOCK_LANES 0
constexpr unsigned B = N / 4;
#endif
constexpr unsigned kLumaRegs = 2 * B * 2 / N;  // registers of 16-bit pixels a luma row

typedef int32_t I32 __attribute__((vector_size(N)));
typedef uint32_t U32 __attribute__((vector_size(N)));
typedef int16_t I16 __attribute__((vector_size(N)));
typedef uint16_t U16 __attribute__((vector_size(N)));

template <class V, class M>
V_INLINE V Select(M mask, V a, V b) {
  return As<V>((As<M>(a) & mask) | (As<M>(b) & ~mask));
}

// The intrinsics: bytes widened to 32-bit lanes (x86; the generic conversion
// goes through scalars), the saturating signed 16-bit add and (x86) minimum, 32-bit
// lanes of two registers saturated to 16 bits, in order, and the same after a
// shift by kShift, in order or (x86) each written into both halves of each
// lane.
#if defined(__AVX2__)
V_INLINE U32 Widen(const uint8_t* p) {
  return As<U32>(_mm256_cvtepu8_epi32(_mm_loadl_epi64(reinterpret_cast<const __m128i*>(p))));
}
V_INLINE I16 AddSat(I16 a, I16 b) { return As<I16>(_mm256_adds_epi16(As<__m256i>(a), As<__m256i>(b))); }
V_INLINE I16 Min(I16 a, I16 b) { return As<I16>(_mm256_min_epi16(As<__m256i>(a), As<__m256i>(b))); }
V_INLINE I16 PackSat(I32 a, I32 b) {
  return As<I16>(_mm256_permute4x64_epi64(_mm256_packs_epi32(As<__m256i>(a), As<__m256i>(b)), 0xD8));
}
V_INLINE I16 PackShifted(I32 a, I32 b) { return PackSat(a >> kShift, b >> kShift); }
// Packs and unpacks work within 16-byte halves: the lanes stay in order.
V_INLINE void TwiceShifted(I32 a, I32 b, I16* da, I16* db) {
  const __m256i h = _mm256_packs_epi32(As<__m256i>(a >> kShift), As<__m256i>(b >> kShift));
  *da = As<I16>(_mm256_unpacklo_epi16(h, h));
  *db = As<I16>(_mm256_unpackhi_epi16(h, h));
}
#elif defined(__SSE4_1__)
V_INLINE U32 Widen(const uint8_t* p) {
  int32_t w;
  memcpy(&w, p, 4);
  return As<U32>(_mm_cvtepu8_epi32(_mm_cvtsi32_si128(w)));
}
V_INLINE I16 AddSat(I16 a, I16 b) { return As<I16>(_mm_adds_epi16(As<__m128i>(a), As<__m128i>(b))); }
V_INLINE I16 Min(I16 a, I16 b) { return As<I16>(_mm_min_epi16(As<__m128i>(a), As<__m128i>(b))); }
V_INLINE I16 PackSat(I32 a, I32 b) { return As<I16>(_mm_packs_epi32(As<__m128i>(a), As<__m128i>(b))); }
V_INLINE I16 PackShifted(I32 a, I32 b) { return PackSat(a >> kShift, b >> kShift); }
V_INLINE void TwiceShifted(I32 a, I32 b, I16* da, I16* db) {
  const __m128i h = _mm_packs_epi32(As<__m128i>(a >> kShift), As<__m128i>(b >> kShift));
  *da = As<I16>(_mm_unpacklo_epi16(h, h));
  *db = As<I16>(_mm_unpackhi_epi16(h, h));
}
#else
V_INLINE I16 AddSat(I16 a, I16 b) { return As<I16>(vqaddq_s16(As<int16x8_t>(a), As<int16x8_t>(b))); }
V_INLINE I16 PackSat(I32 a, I32 b) {
  return As<I16>(vqmovn_high_s32(vqmovn_s32(As<int32x4_t>(a)), As<int32x4_t>(b)));
}
V_INLINE I16 PackShifted(I32 a, I32 b) {  // one instruction shifts and saturates
  return As<I16>(vqshrn_high_n_s32(vqshrn_n_s32(As<int32x4_t>(a), kShift), As<int32x4_t>(b), kShift));
}
#endif

// Bytes p[0..N/2-1] widened to two registers of 32-bit lanes (NEON: from one load).
struct Wide2 {
  U32 lo, hi;
};
#if BLOCK_LANES
V_INLINE Wide2 Widen2(uint8x8_t v) {
  const uint16x8_t w = vmovl_u8(v);
  return {As<U32>(vmovl_u16(vget_low_u16(w))), As<U32>(vmovl_high_u16(w))};
}
V_INLINE Wide2 Widen2(const uint8_t* p) { return Widen2(vld1_u8(p)); }
#else
V_INLINE Wide2 Widen2(const uint8_t* p) { return {Widen(p), Widen(p + N / 4)}; }
#endif

// A term's integer form in registers, set up once a row.
struct TermVectors {
  I32 split;
  U32 add0, add1, mul;
  explicit TermVectors(const ImgPrcAffineTerm& t)
      : split(I32{} + t.split),
        add0(U32{} + uint32_t(t.add[0])),
        add1(U32{} + uint32_t(t.add[1])),
        mul(U32{} + uint32_t(t.mul[1])) {}
};

// A term's value before the shift, i * mul + the add of i's piece.
V_INLINE I32 Affine(U32 i, const TermVectors& t) {
  return As<I32>(i * t.mul + Select(As<I32>(i) < t.split, t.add0, t.add1));
}

// The chroma samples of a step's blocks, and two terms of them saturated to
// 16 bits: one lane a block (NEON), or doubled into both halves of each
// 32-bit lane, the term of block m for its two pixels.
#if BLOCK_LANES
using ChromaSamples = Wide2;
V_INLINE ChromaSamples ChromaAt(const uint8_t* p) { return Widen2(p); }
V_INLINE void ChromaTerms(const Wide2& i, const TermVectors& t1, const TermVectors& t2, I16* d1, I16* d2) {
  *d1 = PackShifted(Affine(i.lo, t1), Affine(i.hi, t1));
  *d2 = PackShifted(Affine(i.lo, t2), Affine(i.hi, t2));
}
#else
using ChromaSamples = U32;
V_INLINE ChromaSamples ChromaAt(const uint8_t* p) { return Widen(p); }
V_INLINE void ChromaTerms(U32 i, const TermVectors& t1, const TermVectors& t2, I16* d1, I16* d2) {
  TwiceShifted(Affine(i, t1), Affine(i, t2), d1, d2);
}
#endif

// Luma entries of a register of samples: minus 32768, saturated to 16 bits
// (x86), or saturated to 0..65535 (NEON, see Sums).
V_INLINE I16 LumaX(const Wide2& y, uint32_t mul, uint32_t add) {
#if BLOCK_LANES
  const int32x4_t lo = As<int32x4_t>(y.lo * mul + add), hi = As<int32x4_t>(y.hi * mul + add);
  return As<I16>(vqshrun_high_n_s32(vqshrun_n_s32(lo, kShift), hi, kShift));
#else
  return PackShifted(As<I32>(y.lo * mul + add), As<I32>(y.hi * mul + add));
#endif
}
// What the rows take off a luma entry's product before shifting.
constexpr uint32_t kLumaBias = BLOCK_LANES ? 0 : uint32_t{32768} << kShift;

#if RGB565_VECTOR_BYTES == 32
// Interleaves within each 16-byte half, as the instructions do them.
#define ZIP16_LO 0, 16, 1, 17, 2, 18, 3, 19, 8, 24, 9, 25, 10, 26, 11, 27
#define ZIP16_HI 4, 20, 5, 21, 6, 22, 7, 23, 12, 28, 13, 29, 14, 30, 15, 31
#define ZIP32_LO 0, 8, 1, 9, 4, 12, 5, 13
#define ZIP32_HI 2, 10, 3, 11, 6, 14, 7, 15
#else
#define ZIP16_LO 0, 8, 1, 9, 2, 10, 3, 11
#define ZIP16_HI 4, 12, 5, 13, 6, 14, 7, 15
#define ZIP32_LO 0, 4, 1, 5
#define ZIP32_HI 2, 6, 3, 7
#endif

// Pixel registers in the order of LumaRow stored in pixel order: 16-bit
// pixels, or 32-bit values lo | hi << 16.
V_INLINE void Store16s(uint8_t* d, const U16 (&px)[kLumaRegs]) {
#if BLOCK_LANES
  uint16x8x2_t v;
  v.val[0] = (uint16x8_t)px[0];
  v.val[1] = (uint16x8_t)px[1];
  vst2q_u16(reinterpret_cast<uint16_t*>(d), v);
#else
  memcpy(d, &px[0], N);
#endif
}

struct Terms {
  I16 rh, rq, g, bh, bq;  // see the head of this file
};
// Red's and green's terms summed, where the narrow form says they fit 16
// bits (blue's reach 17 bits in video range).
struct SummedTerms {
  I16 r, g, bh, bq;
};

// The three sums of a register of pixels, each clamped to 0..32767, and
// bits of them. On x86 a sum is held as X = sum - 32768 in -32768..-1. NEON
// starts from the luma entry itself and adds the signed terms with unsigned
// saturation (usqadd; two same-signed steps clamp like one), then doubles
// with unsigned saturation, which clamps to 0..32767 in bits 1-15.
struct Sums {
  U16 r, g, b;
};
#if BLOCK_LANES
V_INLINE I16 Add(I16 l, I16 a) { return As<I16>(vsqaddq_u16(As<uint16x8_t>(l), As<int16x8_t>(a))); }
V_INLINE U16 Clamped(I16 sum) { return As<U16>(vqshlq_n_u16(As<uint16x8_t>(sum), 1)); }
V_INLINE U16 Bits(U16 sum, unsigned shift) { return sum >> (shift + 1); }
#else
V_INLINE I16 Add(I16 x, I16 a) { return AddSat(x, a); }
V_INLINE U16 Clamped(I16 x) { return As<U16>(Min(x, I16{} - 1)); }
V_INLINE U16 Bits(U16 sum, unsigned shift) { return sum >> shift; }  // bit 15 is set: mask above
#endif
V_INLINE Sums SumsOf(I16 x, const Terms& t) {
  return {Clamped(Add(Add(x, t.rh), t.rq)), Clamped(Add(Add(x, t.g), t.g)), Clamped(Add(Add(x, t.bh), t.bq))};
}
V_INLINE Sums SumsOf(I16 x, const SummedTerms& t) {
  return {Clamped(Add(x, t.r)), Clamped(Add(x, t.g)), Clamped(Add(Add(x, t.bh), t.bq))};
}

// RGB565: red sum >> 10, green >> 9, blue >> 10. On NEON each field is
// shifted into place over the one before (shift right and insert), from the
// doubled sums, whose bits 11-15 (red) or 10-15 are the field.
template <class T>
V_INLINE U16 Pixels565(I16 x, const T& t) {
  const Sums s = SumsOf(x, t);
#if BLOCK_LANES
  const uint16x8_t rg = vsriq_n_u16(As<uint16x8_t>(s.r), As<uint16x8_t>(s.g), 5);
  return As<U16>(vsriq_n_u16(rg, As<uint16x8_t>(s.b), 11));
#else
  return (Bits(s.r, 10) << 11) | (Bits(s.g, 4) & 0x7E0) | (Bits(s.b, 10) & 31);
#endif
}

// Opaque RGB555 (green >> 10 too, bit 0 set).
template <class T>
V_INLINE U16 Pixels555(I16 x, const T& t) {
  const Sums s = SumsOf(x, t);
  return (Bits(s.r, 10) << 11) | (Bits(s.g, 4) & 0x7C0) | (Bits(s.b, 9) & 0x3E) | 1;
}

// The four chroma terms' integer forms in registers.
struct ChromaVectors {
  TermVectors rcr, gcr, gcb, bcb;
  explicit ChromaVectors(const ImgPrcAffineTables& k) : rcr(k.rcr), gcr(k.gcr), gcb(k.gcb), bcb(k.bcb) {}
};

// The colour terms of blocks m..m+B-1.
V_INLINE Terms TermsOf(const ChromaVectors& k, const ChromaSamples& cb, const ChromaSamples& cr) {
  Terms t;
  I16 gcr, gcb;
  ChromaTerms(cr, k.rcr, k.gcr, &t.rh, &gcr);
  ChromaTerms(cb, k.bcb, k.gcb, &t.bh, &gcb);
  t.rq = AddSat(t.rh, As<I16>(As<U16>(gcr) >> 15));
  t.bq = AddSat(t.bh, As<I16>(As<U16>(gcb) >> 15));
  t.g = As<I16>(As<U16>(gcb) + As<U16>(gcr));
  return t;
}
V_INLINE SummedTerms Summed(const Terms& t) { return {AddSat(t.rh, t.rq), t.g + t.g, t.bh, t.bq}; }

// Spread entries: red and green are the sums >> 9 (6 bits), blue >> 10. Each
// pixel is built as its two 16-bit halves, which are interleaved (x86), then
// interleaved with zeros for the high 32 bits of its entry (a widening
// conversion would go lane by lane on some targets). Interleaves stay within
// 16-byte halves, which are stored apart, rather than crossing them.

// 32-bit values lo | hi << 16 of a luma row's pixel registers, in pixel
// order (NEON: one four-way interleaving store). Each 16-byte half of the
// interleaves holds four; the first halves come first.
V_INLINE void Store32s(uint8_t* d, const U16 (&lo)[kLumaRegs], const U16 (&hi)[kLumaRegs]) {
#if BLOCK_LANES
  uint16x8x4_t v;
  v.val[0] = (uint16x8_t)lo[0];
  v.val[1] = (uint16x8_t)hi[0];
  v.val[2] = (uint16x8_t)lo[1];
  v.val[3] = (uint16x8_t)hi[1];
  vst4q_u16(reinterpret_cast<uint16_t*>(d), v);
#else
  const U32 e[2] = {As<U32>(U16(__builtin_shufflevector(lo[0], hi[0], ZIP16_LO))),
                    As<U32>(U16(__builtin_shufflevector(lo[0], hi[0], ZIP16_HI)))};
  for (unsigned h = 0; h < N / 16; ++h)
    for (unsigned j = 0; j < 2; ++j)
      memcpy(d + 16 * (2 * h + j), reinterpret_cast<const uint8_t*>(&e[j]) + 16 * h, 16);
#endif
}

// The same values as the low halves of 64-bit entries, zeros above.
V_INLINE void Store64s(uint8_t* d, const U16 (&lo)[kLumaRegs], const U16 (&hi)[kLumaRegs]) {
  const U32 z{};
#if BLOCK_LANES
  // Entries of even and odd pixels, each in pixel order; stored four blocks
  // at a time as even entry, 0, odd entry, 0.
  const U32 even[2] = {As<U32>(U16(__builtin_shufflevector(lo[0], hi[0], ZIP16_LO))),
                       As<U32>(U16(__builtin_shufflevector(lo[0], hi[0], ZIP16_HI)))};
  const U32 odd[2] = {As<U32>(U16(__builtin_shufflevector(lo[1], hi[1], ZIP16_LO))),
                      As<U32>(U16(__builtin_shufflevector(lo[1], hi[1], ZIP16_HI)))};
  for (unsigned h = 0; h < 2; ++h) {
    uint32x4x4_t v;
    v.val[0] = (uint32x4_t)even[h];
    v.val[1] = (uint32x4_t)z;
    v.val[2] = (uint32x4_t)odd[h];
    v.val[3] = (uint32x4_t)z;
    vst4q_u32(reinterpret_cast<uint32_t*>(d + 64 * h), v);
  }
#else
  const U32 a = As<U32>(U16(__builtin_shufflevector(lo[0], hi[0], ZIP16_LO)));
  const U32 b = As<U32>(U16(__builtin_shufflevector(lo[0], hi[0], ZIP16_HI)));
  const U32 e[4] = {__builtin_shufflevector(a, z, ZIP32_LO), __builtin_shufflevector(a, z, ZIP32_HI),
                    __builtin_shufflevector(b, z, ZIP32_LO), __builtin_shufflevector(b, z, ZIP32_HI)};
  // Each 16-byte half of e[j] holds two entries; the first halves of all
  // four come first.
  for (unsigned h = 0; h < N / 16; ++h)
    for (unsigned j = 0; j < 4; ++j)
      memcpy(d + 16 * (4 * h + j), reinterpret_cast<const uint8_t*>(&e[j]) + 16 * h, 16);
#endif
}

// The row's inputs held in locals and its constants set up in registers
// once: its stores go through byte pointers, which could alias the tables in
// the compiler's view, and would make it reload them every step.
struct Locals {
  const uint8_t *y0, *y1, *cb, *cr;
  uint8_t *d0, *d1;
  ChromaVectors terms;
  uint32_t ymul, yadd;
  ImgPrcNarrowStep narrow;
  explicit Locals(const Rgb565RowPair* rp)
      : y0(rp->y0),
        y1(rp->y1),
        cb(rp->cb),
        cr(rp->cr),
        d0(rp->d0),
        d1(rp->d1),
        terms(rp->ctx->affine),
        ymul(uint32_t(rp->ctx->affine.y.mul[1])),
        yadd(uint32_t(rp->ctx->affine.y.add[1]) - kLumaBias),
        narrow(rp->ctx->affine.narrow) {}
};

// A luma row's entries of one step in the pixel registers (x86: each less
// 32768, saturated), and its samples in 16-bit lanes for the colour key (the
// other rows leave them to the compiler to drop). The pixel registers hold
// the even and odd pixels (NEON) or the pixels in order.
struct LumaRow {
  I16 x[kLumaRegs];
  U16 y[kLumaRegs];
};

// From the 32-bit form.
V_INLINE LumaRow LumaWide(const uint8_t* p, const Locals& l) {
  LumaRow r;
#if BLOCK_LANES
  const uint8x8x2_t v = vld2_u8(p);
  for (unsigned h = 0; h < 2; ++h) {
    r.x[h] = LumaX(Widen2(v.val[h]), l.ymul, l.yadd);
    r.y[h] = As<U16>(vmovl_u8(v.val[h]));
  }
#else
  const Wide2 w = Widen2(p);
  r.x[0] = LumaX(w, l.ymul, l.yadd);
  r.y[0] = As<U16>(PackSat(As<I32>(w.lo), As<I32>(w.hi)));
#endif
  return r;
}

// From the narrow form: 16-bit products, on NEON straight from the 8-bit
// samples (widening multiplies, the fraction shifted in and accumulated, the
// add saturated in with the signed-to-unsigned accumulate).
V_INLINE LumaRow LumaNarrow(const uint8_t* p, const Locals& l) {
  const ImgPrcNarrowStep& n = l.narrow;
  constexpr int kFrac = IMGPRC_NARROW_SHIFT;
  LumaRow r;
#if BLOCK_LANES
  const uint8x8x2_t v = vld2_u8(p);
  for (unsigned h = 0; h < 2; ++h) {
    const uint16x8_t a = vmull_u8(v.val[h], vdup_n_u8(uint8_t(n.mul)));
    const uint16x8_t t = vmlal_u8(vdupq_n_u16(n.fracAdd), v.val[h], vdup_n_u8(uint8_t(n.fracMul)));
    r.x[h] = As<I16>(vsqaddq_u16(vsraq_n_u16(a, t, kFrac), vdupq_n_s16(n.add)));
    r.y[h] = As<U16>(vmovl_u8(v.val[h]));
  }
#else
#if RGB565_VECTOR_BYTES == 32
  r.y[0] = As<U16>(_mm256_cvtepu8_epi16(_mm_loadu_si128(reinterpret_cast<const __m128i*>(p))));
#else
  r.y[0] = As<U16>(_mm_cvtepu8_epi16(_mm_loadl_epi64(reinterpret_cast<const __m128i*>(p))));
#endif
  const U16 a = r.y[0] * n.mul + ((r.y[0] * n.fracMul + n.fracAdd) >> kFrac);
  r.x[0] = AddSat(As<I16>(a ^ 0x8000), I16{} + n.add);
#endif
  return r;
}

// The walk of a block row: per step, the terms of B blocks, then each of
// the two luma rows handed to row(luma, destination, terms), the
// destination `bytes` a block. The narrow and the 32-bit form have a loop
// each; which one runs is fixed when the tables are built.
template <size_t kBytes, bool kNarrow, class WriteRow>
V_INLINE void Steps(size_t begin, size_t end, const Locals& l, WriteRow row) {
  for (size_t m = begin; m < end; m += B) {
    const ChromaSamples cb = ChromaAt(l.cb + m), cr = ChromaAt(l.cr + m);
    const Terms t = TermsOf(l.terms, cb, cr);
    if constexpr (kNarrow) {
      const SummedTerms s = Summed(t);
      row(LumaNarrow(l.y0 + 2 * m, l), l.d0 + kBytes * m, s, cb, cr);
      row(LumaNarrow(l.y1 + 2 * m, l), l.d1 + kBytes * m, s, cb, cr);
    } else {
      row(LumaWide(l.y0 + 2 * m, l), l.d0 + kBytes * m, t, cb, cr);
      row(LumaWide(l.y1 + 2 * m, l), l.d1 + kBytes * m, t, cb, cr);
    }
  }
}
template <size_t kBytes, class WriteRow>
V_INLINE void EachStep(size_t begin, size_t end, const Locals& l, WriteRow row) {
  if (l.narrow.fits) return Steps<kBytes, true>(begin, end, l, row);
  Steps<kBytes, false>(begin, end, l, row);
}

}  // namespace

void RGB565_VECTOR_ROW(size_t begin, size_t end, const Rgb565RowPair* rp) {
  const Locals l(rp);
  EachStep<4>(begin, end, l, [&](const LumaRow& y, uint8_t* d, const auto& t, auto&, auto&) V_INLINE_LAMBDA {
    U16 px[kLumaRegs];
#pragma GCC unroll 2
    for (unsigned i = 0; i < kLumaRegs; ++i) px[i] = Pixels565(y.x[i], t);
    Store16s(d, px);
  });
}

// Keyed: a pixel whose own Y, Cb, Cr equal the key's is 0. The chroma match
// is a 32-bit mask per block (x86: covering both of its pixels).
void RGB555_VECTOR_ROW(size_t begin, size_t end, const Rgb565RowPair* rp) {
  const Locals l(rp);
  const uint16_t ky = uint16_t(rp->key >> 16);
  const uint32_t kcb = (rp->key >> 8) & 0xFF, kcr = rp->key & 0xFF;
  EachStep<4>(begin, end, l,
              [&](const LumaRow& y, uint8_t* d, const auto& t, const ChromaSamples& cb,
                  const ChromaSamples& cr) V_INLINE_LAMBDA {
#if BLOCK_LANES
                const I16 chroma = PackSat(As<I32>((cb.lo == kcb) & (cr.lo == kcr)),
                                           As<I32>((cb.hi == kcb) & (cr.hi == kcr)));
#else
        const I16 chroma = As<I16>((cb == kcb) & (cr == kcr));
#endif
                U16 px[kLumaRegs];
#pragma GCC unroll 2
                for (unsigned i = 0; i < kLumaRegs; ++i) {
                  const I16 match = As<I16>(y.y[i] == ky) & chroma;
                  px[i] = Pixels555(y.x[i], t) & ~As<U16>(match);
                }
                Store16s(d, px);
              });
}

namespace {

// Entries of 64 or 32 bits (Entry); block m writes entries 2m and 2m + 1 of
// each line.
template <class Entry>
V_INLINE void SpreadRow(size_t begin, size_t end, const Rgb565RowPair* rp) {
  const Locals l(rp);
  EachStep<2 * sizeof(Entry)>(begin, end, l,
                              [&](const LumaRow& y, uint8_t* d, const auto& t, auto&, auto&) V_INLINE_LAMBDA {
                                U16 lo[kLumaRegs], hi[kLumaRegs];
#pragma GCC unroll 2
                                for (unsigned i = 0; i < kLumaRegs; ++i) {
                                  const Sums s = SumsOf(y.x[i], t);
                                  lo[i] = ((Bits(s.g, 9) & 63) << 10) | (Bits(s.b, 10) & 31);
                                  hi[i] = (Bits(s.r, 9) & 63) << 5;
                                }
                                if (sizeof(Entry) == 4) return Store32s(d, lo, hi);
                                Store64s(d, lo, hi);
                              });
}

// 8-bit channels are the clamped sums >> 7: alpha | R << 16 | G << 8 | B, or
// with red and blue exchanged (kAbgr).
template <bool kAbgr>
V_INLINE void Row8888(size_t begin, size_t end, const Rgb565RowPair* rp) {
  const Locals l(rp);
  const uint16_t alpha = static_cast<uint16_t>(rp->key >> 16);
  EachStep<8>(begin, end, l, [&](const LumaRow& y, uint8_t* d, const auto& t, auto&, auto&) V_INLINE_LAMBDA {
    U16 lo[kLumaRegs], hi[kLumaRegs];
#pragma GCC unroll 2
    for (unsigned i = 0; i < kLumaRegs; ++i) {
      const Sums s = SumsOf(y.x[i], t);
      const U16 r = Bits(s.r, 7) & 255, g = Bits(s.g, 7) & 255, b = Bits(s.b, 7) & 255;
      lo[i] = g << 8 | (kAbgr ? r : b);
      hi[i] = alpha | (kAbgr ? b : r);
    }
    Store32s(d, lo, hi);
  });
}

}  // namespace

void ARGB_VECTOR_ROW(size_t begin, size_t end, const Rgb565RowPair* rp) { Row8888<false>(begin, end, rp); }
void ABGR_VECTOR_ROW(size_t begin, size_t end, const Rgb565RowPair* rp) { Row8888<true>(begin, end, rp); }

void SPREAD_VECTOR_ROW(size_t begin, size_t end, const Rgb565RowPair* rp) {
  SpreadRow<uint64_t>(begin, end, rp);
}
void SPREAD32_VECTOR_ROW(size_t begin, size_t end, const Rgb565RowPair* rp) {
  SpreadRow<uint32_t>(begin, end, rp);
}
