// Rows of the bilinear enlargement walk (kernels/enlarge_walk.h).
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

struct Hlerp565Line {
  const uint64_t* src;  // spread line
  uint8_t* out;         // entry k at bytes 8k..8k+7
  uint32_t step;        // 16.16
};

void hlerp565_scalar(size_t begin, size_t end, const Hlerp565Line* line);
void hlerp565_sse41(size_t begin, size_t end, const Hlerp565Line* line);
void hlerp565_avx2(size_t begin, size_t end, const Hlerp565Line* line);
void hlerp565_neon(size_t begin, size_t end, const Hlerp565Line* line);

extern const RowSet<const Hlerp565Line*> hlerp565_rows;
using Hlerp565Row = Row<const Hlerp565Line*>;

// The row for a picture stretched `step` at a time to `width` pixels (width / 2
// entries, at least one): the vector rows when the step is under one entry and
// every window they read lies within the entries the scalar row reads, the
// scalar row otherwise.
Hlerp565Row PickHlerp565Row(uint32_t step, int32_t width, CpuLevel level = cpu_level());

// The vertical blend of two spread lines (VLerp): entries begin..end-1 of out
// are ((32 - w) * a + w * b) / 32, masked.
struct VlerpLines {
  const uint64_t* a;
  const uint64_t* b;
  uint64_t* out;
  uint32_t w;  // 0..31
};

void vlerp_scalar(size_t begin, size_t end, const VlerpLines* lines);
void vlerp_sse41(size_t begin, size_t end, const VlerpLines* lines);
void vlerp_avx2(size_t begin, size_t end, const VlerpLines* lines);
void vlerp_neon(size_t begin, size_t end, const VlerpLines* lines);

extern const RowSet<const VlerpLines*> vlerp_rows;
using VlerpRow = Row<const VlerpLines*>;
