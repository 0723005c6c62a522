// The enlargement rows in vectors: one portable source (GCC and Clang vector
// extensions) built once per instruction set by the file that includes it
// after defining
//   ENLARGE_VECTOR_BYTES  register bytes: a step of the stretch is one
//                         register of 32-bit blends, two pixels an output
//                         entry; a step of the blend is a register of entries
//   HLERP565_VECTOR_ROW   the names of the stretch row
//   VLERP_VECTOR_ROW      and of the blend row over 64-bit entries,
//   HLERP565_32_VECTOR_ROW
//   VLERP32_VECTOR_ROW    and over 32-bit entries,
//   HLERP565_23_VECTOR_ROW
//   HLERP565_25_VECTOR_ROW the fixed 3:2 and 5:2 stretches (a step is four
//                         rounds),
//   BLEND_DOWN_VECTOR_ROW the any-ratio sampler's blend down (a step is a
//                         register of 16-bit values).
//
// The stretch:
// A register's positions span at most one entry per pixel, so with a step
// under one entry its left entries lie in a window of as many consecutive
// entries as there are lanes, and its right entries in the window one entry
// on: each is a variable permute of the window's entries (the low halves of
// 64-bit ones). The window ends at the last right entry the register needs (or
// starts at entry 0), so it reads nothing the scalar row would not.
#include <string.h>

#include "imageproc/interp.h"
#include "kernels/enlarge_rows.h"
#include "kernels/isa_vector.h"

#if defined(__AVX2__) || defined(__SSE4_1__)
#include <immintrin.h>
#elif defined(__ARM_NEON)
#include <arm_neon.h>
#endif

namespace {

constexpr unsigned N = ENLARGE_VECTOR_BYTES;
constexpr unsigned L = N / 4;  // pixels a step

typedef uint32_t U32 __attribute__((vector_size(N)));

#if ENLARGE_VECTOR_BYTES == 32
#define LANE_ORDER 0, 1, 2, 3, 4, 5, 6, 7
#define EVEN_LANES 0, 2, 4, 6, 8, 10, 12, 14
#define PAIR_BYTES \
  0x05040100, 0x80808080, 0x0D0C0908, 0x80808080, 0x05040100, 0x80808080, 0x0D0C0908, 0x80808080
#else
#define LANE_ORDER 0, 1, 2, 3
#define EVEN_LANES 0, 2, 4, 6
#define PAIR_BYTES 0x05040100, 0x80808080, 0x0D0C0908, 0x80808080
#endif

// Bytes of v picked by index within each 16-byte half (indices with the top
// bit set give 0).
#if defined(__AVX2__)
V_INLINE U32 ShuffleBytes(U32 v, U32 bytes) {
  return As<U32>(_mm256_shuffle_epi8(As<__m256i>(v), As<__m256i>(bytes)));
}
#elif defined(__SSE4_1__)
V_INLINE U32 ShuffleBytes(U32 v, U32 bytes) {
  return As<U32>(_mm_shuffle_epi8(As<__m128i>(v), As<__m128i>(bytes)));
}
#else
V_INLINE U32 ShuffleBytes(U32 v, U32 bytes) {
  return As<U32>(vqtbl1q_u8(As<uint8x16_t>(v), As<uint8x16_t>(bytes)));
}
#endif

// Lanes of v picked by selectors: on AVX2 the lanes' indices (one lane
// permute), elsewhere their bytes' indices (a byte shuffle; the indices are
// built with shifts, as a 32-bit multiply is slow on many cores).
#if defined(__AVX2__)
constexpr uint32_t LaneSelector(uint32_t i) { return i; }
V_INLINE U32 Selectors(U32 idx) { return idx; }
V_INLINE U32 Pick(U32 v, U32 sel) {
  return As<U32>(_mm256_permutevar8x32_epi32(As<__m256i>(v), As<__m256i>(sel)));
}
constexpr uint32_t kNextLane = 1;
#else
constexpr uint32_t LaneSelector(uint32_t i) { return 0x03020100u + 0x04040404u * i; }
V_INLINE U32 Selectors(U32 idx) {
  const U32 b = idx << 2;
  return (b | b << 8 | b << 16 | b << 24) + 0x03020100u;
}
V_INLINE U32 Pick(U32 v, U32 sel) { return ShuffleBytes(v, sel); }
constexpr uint32_t kNextLane = 0x04040404u;  // the byte indices of the next lane are 4 on
#endif
// The lanes picked by sel and the lanes one on.
V_INLINE void PickPair(U32 v, U32 sel, U32* at, U32* next) {
  *at = Pick(v, sel);
  *next = Pick(v, sel + kNextLane);
}

typedef int16_t I16 __attribute__((vector_size(N)));

// N / 2 bytes widened to 16-bit lanes.
#if defined(__AVX2__)
V_INLINE I16 Widen16(const uint8_t* p) {
  return As<I16>(_mm256_cvtepu8_epi16(_mm_loadu_si128(reinterpret_cast<const __m128i*>(p))));
}
#elif defined(__SSE4_1__)
V_INLINE I16 Widen16(const uint8_t* p) {
  return As<I16>(_mm_cvtepu8_epi16(_mm_loadl_epi64(reinterpret_cast<const __m128i*>(p))));
}
#else
V_INLINE I16 Widen16(const uint8_t* p) { return As<I16>(vmovl_u8(vld1_u8(p))); }
#endif

// Entries e..e+L-1 in 32-bit lanes (of 64-bit entries, the low halves).
V_INLINE U32 Window(const uint64_t* e) {
  U32 r0, r1;
  memcpy(&r0, e, N);
  memcpy(&r1, e + L / 2, N);
  return __builtin_shufflevector(r0, r1, EVEN_LANES);
}
V_INLINE U32 Window(const uint32_t* e) {
  U32 r;
  memcpy(&r, e, N);
  return r;
}

// A register of blends packed as RGB565, each pair's two 16-bit pixels side
// by side in the low half of its 64-bit entry, zeros above (byte indices with
// the top bit set give 0).
V_INLINE void StorePairs(uint8_t* out, U32 v) {
  const U32 px = ((v >> 16) & 0xF800) | ((v >> 10) & 0x7E0) | ((v >> 5) & 31);
  const U32 e = ShuffleBytes(px, U32{PAIR_BYTES});
  memcpy(out, &e, N);
}

// A group's blends, a * 32 + f * (b - a) on 32-bit lanes, from the window at
// `window`: the left entries are picked by `sel` and the right ones lie one
// lane on in it (kOneWindow) or in the window one entry on.
template <bool kOneWindow, class Entry>
V_INLINE void StoreGroup(const Entry* window, U32 sel, U32 w, uint8_t* out) {
  U32 a, b;
  if (kOneWindow) {
    PickPair(Window(window), sel, &a, &b);
  } else {
    a = Pick(Window(window), sel);
    b = Pick(Window(window + 1), sel);
  }
  StorePairs(out, (a << 5) + w * (b - a));
}

// Blends on 32-bit lanes as a * 32 + f * (b - a), packed and paired as
// HLerp's sink does. With kOneWindow (steps short enough that a register's
// left entries span at most L - 2 entries) one window of L entries holds the
// right entries too, and both are permutes of it. Given plan bytes, each
// group's window, selectors and weights are also written there.
template <bool kOneWindow, class Entry>
V_INLINE void Stretch(size_t begin, size_t end, const Entry* src, uint8_t* out, uint32_t step,
                      uint8_t* plan) {
  const U32 offsets = U32{LANE_ORDER} * step;
  for (size_t k = begin; k < end; k += L / 2) {
    const uint32_t at = static_cast<uint32_t>(2 * k * step);
    const U32 pos = at + offsets;
    const uint32_t last = (at + (L - 1) * step) >> 16;   // the last lane's index, kept out of the vectors
    const uint32_t reach = last + (kOneWindow ? 2 : 1);  // one past the last entry the window must hold
    const uint32_t first = reach >= L ? reach - L : 0;
    const U32 sel = Selectors((pos >> 16) - first), w = (pos >> 11) & 31;
    StoreGroup<kOneWindow>(src + first, sel, w, out + 8 * k);
    if (plan != nullptr) {
      memcpy(plan, &first, 4);
      memcpy(plan + 4, &sel, N);
      memcpy(plan + 4 + N, &w, N);
      plan += 4 + 2 * N;
    }
  }
}

// The same from a filled plan.
template <bool kOneWindow, class Entry>
V_INLINE void StretchPlanned(size_t begin, size_t end, const Entry* src, uint8_t* out, const uint8_t* plan) {
  for (size_t k = begin; k < end; k += L / 2, plan += 4 + 2 * N) {
    uint32_t first;
    U32 sel, w;
    memcpy(&first, plan, 4);
    memcpy(&sel, plan + 4, N);
    memcpy(&w, plan + 4 + N, N);
    StoreGroup<kOneWindow>(src + first, sel, w, out + 8 * k);
  }
}

template <bool kOneWindow, class Entry>
V_INLINE void StretchWith(size_t begin, size_t end, const Hlerp565LineOf<Entry>* line) {
  StretchPlan* plan = line->plan;
  if (plan != nullptr && plan->lanes == L && plan->begin == begin && plan->end == end &&
      plan->step == line->step)
    return StretchPlanned<kOneWindow>(begin, end, line->src, line->out, plan->bytes);
  const bool fill = plan != nullptr && plan->lanes == 0;
  Stretch<kOneWindow>(begin, end, line->src, line->out, line->step, fill ? plan->bytes : nullptr);
  if (fill) *plan = StretchPlan{plan->bytes, L, begin, end, line->step};
}

template <class Entry>
V_INLINE void StretchRow(size_t begin, size_t end, const Hlerp565LineOf<Entry>* line) {
  if (static_cast<uint64_t>(line->step) * (L - 1) < uint64_t{L - 2} << 16) {
    StretchWith<true>(begin, end, line);
  } else {
    StretchWith<false>(begin, end, line);
  }
}

// The fixed stretches: pixel k of a round blends the round's entry left[k]
// with the one after it, weight[k] / 32 on the latter (the phases of HLerp_23
// and HLerp_25 written as a * 32 + f * (b - a)).
struct Phases {
  unsigned pixels;  // a round
  uint8_t left[10], weight[10];
};
constexpr Phases kPhases23 = {6, {0, 0, 1, 2, 2, 3}, {0, 21, 11, 0, 21, 11}};
constexpr Phases kPhases25 = {10, {0, 0, 0, 1, 1, 2, 2, 2, 3, 3}, {0, 12, 25, 6, 13, 0, 12, 25, 6, 13}};

// A step is four rounds, whole registers of pixels. Register j's left and
// right entries lie in a window of L entries that ends at its last right
// entry (or starts at the step's first), so no window reaches past entry 16
// of the step, the fifth entry of its last round.
template <const Phases& P>
struct FixedLayout {
  static constexpr unsigned kRegs = 4 * P.pixels / L;
  uint32_t first[kRegs];
  uint32_t sel[kRegs][L];  // selectors of the left entries in the window
  uint32_t weight[kRegs][L];
};
template <const Phases& P>
constexpr FixedLayout<P> MakeFixedLayout() {
  FixedLayout<P> f{};
  for (unsigned j = 0; j < f.kRegs; ++j) {
    uint32_t left[L] = {}, last = 0;
    for (unsigned i = 0; i < L; ++i) {
      const unsigned k = j * L + i;
      left[i] = 4 * (k / P.pixels) + P.left[k % P.pixels];
      f.weight[j][i] = P.weight[k % P.pixels];
      last = left[i] + 1 > last ? left[i] + 1 : last;
    }
    f.first[j] = last + 1 >= L ? last + 1 - L : 0;
    for (unsigned i = 0; i < L; ++i) f.sel[j][i] = LaneSelector(left[i] - f.first[j]);
  }
  return f;
}

template <const Phases& P>
V_INLINE void FixedStretch(size_t begin, size_t end, const FixedStretchLine* line) {
  static constexpr FixedLayout<P> kLayout = MakeFixedLayout<P>();
  for (size_t r = begin; r < end; r += 4) {
    const uint32_t* s = line->src + 4 * r;
    uint8_t* out = line->out + 4 * P.pixels * r;  // a round's pixels, two to an 8-byte entry
#pragma GCC unroll 10
    for (unsigned j = 0; j < kLayout.kRegs; ++j) {
      U32 sel, w;
      memcpy(&sel, kLayout.sel[j], N);
      memcpy(&w, kLayout.weight[j], N);
      StoreGroup<true>(s + kLayout.first[j], sel, w, out + N * j);
    }
  }
}

// Only the low 32 bits of an entry reach the masked result, so the blend runs
// on 32-bit lanes as a * 32 + w * (b - a); the high lanes of 64-bit entries
// are masked to 0.
template <class Entry>
V_INLINE void Blend(size_t begin, size_t end, const VlerpLinesOf<Entry>* lines) {
  const Entry* const a = lines->a;
  const Entry* const b = lines->b;
  Entry* const out = lines->out;
  const uint32_t w = lines->w;
  typedef Entry E __attribute__((vector_size(N)));
  const U32 mask = As<U32>(E{} + Entry{kSpreadMask});
  for (size_t i = begin; i < end; i += N / sizeof(Entry)) {
    U32 x, y;
    memcpy(&x, a + i, N);
    memcpy(&y, b + i, N);
    const U32 v = (((x << 5) + w * (y - x)) >> 5) & mask;
    memcpy(out + i, &v, N);
  }
}

}  // namespace

void HLERP565_VECTOR_ROW(size_t begin, size_t end, const Hlerp565Line* line) { StretchRow(begin, end, line); }
void HLERP565_32_VECTOR_ROW(size_t begin, size_t end, const Hlerp565Line32* line) {
  StretchRow(begin, end, line);
}
void HLERP565_23_VECTOR_ROW(size_t begin, size_t end, const FixedStretchLine* line) {
  FixedStretch<kPhases23>(begin, end, line);
}
void HLERP565_25_VECTOR_ROW(size_t begin, size_t end, const FixedStretchLine* line) {
  FixedStretch<kPhases25>(begin, end, line);
}
void VLERP_VECTOR_ROW(size_t begin, size_t end, const VlerpLines* lines) { Blend(begin, end, lines); }
void VLERP32_VECTOR_ROW(size_t begin, size_t end, const VlerpLines32* lines) { Blend(begin, end, lines); }

// On 16-bit lanes: a * 32 + (b - a) * w lies in 0..16065.
void BLEND_DOWN_VECTOR_ROW(size_t begin, size_t end, const BlendDownRows* rows) {
  const uint8_t* const a = rows->a;
  const uint8_t* const b = rows->b;
  int16_t* const out = rows->out;
  const int16_t w = static_cast<int16_t>(rows->w);
  for (size_t i = begin; i < end; i += N / 2) {
    const I16 x = Widen16(a + i);
    const I16 v = w == 0 ? x + x : (x * 32 + (Widen16(b + i) - x) * w) >> 4;
    memcpy(out + i, &v, N);
  }
}
