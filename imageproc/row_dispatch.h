// Row function sets: the scalar reference row and one vector row per
// instruction set, the choice among them made once (per instance or per
// picture call, never per row), and the one place where the remainder of a
// row is handled.
//
// A row function has the form void fn(size_t begin, size_t end, Args...): it
// works the units (pixels, blocks, whatever the row is made of) begin..end-1
// of one row, reading and writing through its other arguments. A vector row
// is only ever given a multiple of its `step` units; run_row hands the rest
// to a narrower vector row and then to the scalar row, so no vector row
// carries a tail loop, and every scalar row is also the reference that the
// checker (tools/scrim-checkasm) holds the vector rows to.
//
// Adding a row: declare its functions with SCRIM_ROW_FUNCTIONS, write the scalar row, write the vector rows
// (one portable source built once per instruction set: a file named *_sse41.cpp, *_avx2.cpp or *_neon.cpp is
// compiled for that set, see CMakeLists.txt), fill a RowSet, pick_row() it where the instance or the picture
// call starts, run_row() it per row, and register it with the checker.
#pragma once

#include <stddef.h>

#include <initializer_list>

#include "imageproc/cpu_features.h"

template <typename... Args>
struct VectorRow {
  void (*fn)(size_t begin, size_t end, Args...);  // null where the set has no such row
  unsigned step;                                  // units per vector iteration
};

template <typename... Args>
struct RowSet {
  void (*scalar)(size_t begin, size_t end, Args...);
  VectorRow<Args...> sse41, avx2, neon;
};

// The rows chosen for one level: the widest vector row, a narrower one for
// what is left of the row after it (AVX2 leaves its remainder to SSE4.1), and
// the scalar row for the last units. Missing rows have a null fn.
template <typename... Args>
struct Row {
  VectorRow<Args...> vector, narrower;
  void (*scalar)(size_t begin, size_t end, Args...);
};

template <typename... Args>
Row<Args...> pick_row(const RowSet<Args...>& set, CpuLevel level = cpu_level()) {
  Row<Args...> row{{nullptr, 1}, {nullptr, 1}, set.scalar};
  if (level == CPU_NEON) row.vector = set.neon;
  if (level == CPU_SSE41) row.vector = set.sse41;
  if (level == CPU_AVX2) {
    row.vector = set.avx2.fn != nullptr ? set.avx2 : set.sse41;
    if (set.avx2.fn != nullptr) row.narrower = set.sse41;
  }
  return row;
}

// Units begin..end-1: whole steps by the vector row, whole steps of what is
// left by the narrower row, the rest by the scalar row.
template <typename... Args>
inline void run_row(const Row<Args...>& row, size_t begin, size_t end, Args... args) {
  for (const VectorRow<Args...>& v : {row.vector, row.narrower}) {
    if (v.fn == nullptr || end - begin < v.step) continue;
    const size_t split = end - (end - begin) % v.step;
    v.fn(begin, split, args...);
    begin = split;
  }
  if (begin < end) row.scalar(begin, end, args...);
}

// The functions of a row set over one argument: the scalar row name_scalar and
// the vector rows name_sse41, name_avx2 and name_neon (only the target's are
// defined).
#define SCRIM_ROW_FUNCTIONS(name, Arg)               \
  void name##_scalar(size_t begin, size_t end, Arg); \
  void name##_sse41(size_t begin, size_t end, Arg);  \
  void name##_avx2(size_t begin, size_t end, Arg);   \
  void name##_neon(size_t begin, size_t end, Arg)

// Defines row set `set` of the name_* rows: on x86-64 the SSE4.1 and AVX2 rows
// take sse and avx units a step, on aarch64 the NEON row neon units; other
// targets have the scalar row alone.
#if defined(__x86_64__)
#define SCRIM_ROW_SET(Arg, set, name, sse, avx, neon) \
  const RowSet<Arg> set = {name##_scalar, {name##_sse41, sse}, {name##_avx2, avx}, {nullptr, 1}}
#elif defined(__aarch64__)
#define SCRIM_ROW_SET(Arg, set, name, sse, avx, neon) \
  const RowSet<Arg> set = {name##_scalar, {nullptr, 1}, {nullptr, 1}, {name##_neon, neon}}
#else
#define SCRIM_ROW_SET(Arg, set, name, sse, avx, neon) \
  const RowSet<Arg> set = {name##_scalar, {nullptr, 1}, {nullptr, 1}, {nullptr, 1}}
#endif
