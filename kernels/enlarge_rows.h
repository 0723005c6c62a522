// Rows of the bilinear enlargement walk (kernels/enlarge_walk.h), over spread
// lines of 64-bit entries (the interpolators' own format, imageproc/interp.h)
// or of 32-bit ones. Only the low 32 bits of an entry ever carry a value, so
// a walk whose rows all come from these sets keeps its lines at 32 bits an
// entry: half the bytes to write and read, and vector rows that load entries
// as they lie instead of gathering their low halves.
//
// The horizontal stretch to RGB565 (HLerp):
// output entries begin..end-1 of one line, entry k holding the pixels at the
// 16.16 positions 2k * step and (2k + 1) * step, each a 5-bit weighted blend
// of the two spread entries around it, packed as HLerp packs them. The scalar
// row is the reference; the vector rows gather their entries from a window of
// consecutive entries, which needs a step below one entry (an enlargement).
#pragma once

#include <stddef.h>
#include <stdint.h>

#include "imageproc/row_dispatch.h"

// Every row of a picture is stretched at the same positions. A vector row
// given an empty plan works its positions out into it as it goes; given the
// plan it filled, over the same entries, it reads them back instead. A plan
// belongs to the row that filled it (by its width): other rows, and rows
// given none, work the positions out each time.
struct StretchPlan {
  uint8_t* bytes;  // StretchPlanBytes(entries) of them
  unsigned lanes;  // of the row that filled it; 0 while empty
  size_t begin, end;
  uint32_t step;
};
// Per group of a row's pixels: the window's first entry, the selectors of the
// left entries and the weights (at most 36 bytes a group of two entries).
inline size_t StretchPlanBytes(size_t entries) { return 18 * entries + 72; }

template <class Entry>
struct Hlerp565LineOf {
  const Entry* src;   // spread line
  uint8_t* out;       // entry k at bytes 8k..8k+7
  uint32_t step;      // 16.16
  StretchPlan* plan;  // or null
};
using Hlerp565Line = Hlerp565LineOf<uint64_t>;
using Hlerp565Line32 = Hlerp565LineOf<uint32_t>;

SCRIM_ROW_FUNCTIONS(hlerp565, const Hlerp565Line*);
SCRIM_ROW_FUNCTIONS(hlerp565_32, const Hlerp565Line32*);

extern const RowSet<const Hlerp565Line*> hlerp565_rows;
extern const RowSet<const Hlerp565Line32*> hlerp565_32_rows;
template <class Entry>
using Hlerp565RowOf = Row<const Hlerp565LineOf<Entry>*>;
using Hlerp565Row = Hlerp565RowOf<uint64_t>;

// The row for a picture stretched `step` at a time to `width` pixels (width / 2
// entries, at least one): the vector rows when the step is under one entry and
// every window they read lies within the entries the scalar row reads, the
// scalar row otherwise.
template <class Entry>
Hlerp565RowOf<Entry> PickHlerp565Row(uint32_t step, int32_t width, CpuLevel level = cpu_level());

// The fixed-ratio stretches to RGB565 over 32-bit spread lines: HLerp_23's
// 3:2 (3 output entries a round) and HLerp_25's 5:2 (5 entries). The units
// are rounds of 4 source entries: round r reads entries 4r..4r+4 and writes
// its entries from byte 8 * (entries a round) * r on; the last of `rounds`
// blends its last entry with itself instead of reading entry 4r + 4.
struct FixedStretchLine {
  const uint32_t* src;
  uint8_t* out;
  size_t rounds;  // at least one
};

SCRIM_ROW_FUNCTIONS(hlerp565_23, const FixedStretchLine*);
SCRIM_ROW_FUNCTIONS(hlerp565_25, const FixedStretchLine*);

extern const RowSet<const FixedStretchLine*> hlerp565_23_rows;
extern const RowSet<const FixedStretchLine*> hlerp565_25_rows;
using FixedStretchRow = Row<const FixedStretchLine*>;

// A whole line: the vector rows are never given the last round, which reads
// one entry fewer, so it goes to the scalar row.
inline void StretchFixed(const FixedStretchRow& row, const FixedStretchLine* line) {
  run_row(row, 0, line->rounds - 1, line);
  row.scalar(line->rounds - 1, line->rounds, line);
}

// The vertical blend of two spread lines (VLerp): entries begin..end-1 of out
// are ((32 - w) * a + w * b) / 32, masked.
template <class Entry>
struct VlerpLinesOf {
  const Entry* a;
  const Entry* b;
  Entry* out;
  uint32_t w;  // 0..31
};
using VlerpLines = VlerpLinesOf<uint64_t>;
using VlerpLines32 = VlerpLinesOf<uint32_t>;

SCRIM_ROW_FUNCTIONS(vlerp, const VlerpLines*);
SCRIM_ROW_FUNCTIONS(vlerp32, const VlerpLines32*);

extern const RowSet<const VlerpLines*> vlerp_rows;
extern const RowSet<const VlerpLines32*> vlerp32_rows;
template <class Entry>
using VlerpRowOf = Row<const VlerpLinesOf<Entry>*>;
using VlerpRow = VlerpRowOf<uint64_t>;

// The row sets by entry type.
inline const RowSet<const Hlerp565Line*>& Hlerp565Rows(uint64_t*) { return hlerp565_rows; }
inline const RowSet<const Hlerp565Line32*>& Hlerp565Rows(uint32_t*) { return hlerp565_32_rows; }
inline const RowSet<const VlerpLines*>& VlerpRows(uint64_t*) { return vlerp_rows; }
inline const RowSet<const VlerpLines32*>& VlerpRows(uint32_t*) { return vlerp32_rows; }

// The first step of the any-ratio luma sampler (PlaneRowPair::At,
// kernels/resize_step.h) over a run of columns: out[i] is
// (a[i] * 32 + (b[i] - a[i]) * w) >> 4, or 2 * a[i] at weight 0, where the
// lower row is not read (it may lie past the plane).
struct BlendDownRows {
  const uint8_t* a;
  const uint8_t* b;
  int16_t* out;
  int32_t w;  // 0..31
};

SCRIM_ROW_FUNCTIONS(blend_down, const BlendDownRows*);

extern const RowSet<const BlendDownRows*> blend_down_rows;
