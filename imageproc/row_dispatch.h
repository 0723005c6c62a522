// Row function sets: the scalar reference row and one vector row per
// instruction set, the choice among them made once (per instance or per
// picture call, never per row), and the one place where the remainder of a
// row is handled.
//
// A row function has the form void fn(size_t begin, size_t end, Args...): it
// works the units (pixels, blocks, whatever the row is made of) begin..end-1
// of one row, reading and writing through its other arguments. A vector row
// is only ever given a multiple of its `step` units; run_row hands the
// rest to the scalar row, so no vector row carries a tail loop and every
// scalar row is also the reference the checker (tools/scrim-checkasm) holds
// the vector rows to.
//
// Adding a row: write the scalar row, write the vector rows (one portable
// source built once per instruction set: a file named *_sse41.cpp, *_avx2.cpp
// or *_neon.cpp is compiled for that set, see CMakeLists.txt), fill a RowSet,
// pick_row() it where the instance or the picture call starts, run_row() it
// per row, and register it with the checker.
#pragma once

#include <stddef.h>

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

// The row chosen for one level: a vector row (fn may be null) and the scalar row.
template <typename... Args>
struct Row {
  VectorRow<Args...> vector;
  void (*scalar)(size_t begin, size_t end, Args...);
};

// The best row of `set` at `level`: AVX2 falls back to SSE4.1, any missing
// row to the scalar row alone.
template <typename... Args>
Row<Args...> pick_row(const RowSet<Args...>& set, CpuLevel level = cpu_level()) {
  VectorRow<Args...> v{nullptr, 1};
  if (level == CPU_NEON) v = set.neon;
  if (level == CPU_AVX2) v = set.avx2.fn != nullptr ? set.avx2 : set.sse41;
  if (level == CPU_SSE41) v = set.sse41;
  return Row<Args...>{v, set.scalar};
}

// Units begin..end-1: whole steps by the vector row, the remainder by the
// scalar row.
template <typename... Args>
inline void run_row(const Row<Args...>& row, size_t begin, size_t end, Args... args) {
  size_t split = begin;
  if (row.vector.fn != nullptr && end > begin) {
    split = end - (end - begin) % row.vector.step;
    if (split > begin) row.vector.fn(begin, split, args...);
  }
  if (split < end) row.scalar(split, end, args...);
}
