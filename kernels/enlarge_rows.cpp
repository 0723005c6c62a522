// The enlargement row sets and the stretch's choice per picture call (the
// scalar stretch and blend rows live beside HLerp and VLerp, in
// imageproc/interp.cpp), and the any-ratio sampler's blend down.
#include "kernels/enlarge_rows.h"

SCRIM_ROW_SET(const Hlerp565Line*, hlerp565_rows, hlerp565, 2, 4, 2);
SCRIM_ROW_SET(const Hlerp565Line32*, hlerp565_32_rows, hlerp565_32, 2, 4, 2);
SCRIM_ROW_SET(const VlerpLines*, vlerp_rows, vlerp, 2, 4, 2);
SCRIM_ROW_SET(const VlerpLines32*, vlerp32_rows, vlerp32, 4, 8, 4);
SCRIM_ROW_SET(const BlendDownRows*, blend_down_rows, blend_down, 8, 16, 8);
SCRIM_ROW_SET(const FixedStretchLine*, hlerp565_23_rows, hlerp565_23, 4, 4, 4);
SCRIM_ROW_SET(const FixedStretchLine*, hlerp565_25_rows, hlerp565_25, 4, 4, 4);

void blend_down_scalar(size_t begin, size_t end, const BlendDownRows* rows) {
  const uint8_t* a = rows->a;
  const uint8_t* b = rows->b;
  const int32_t w = rows->w;
  for (size_t i = begin; i < end; ++i)
    rows->out[i] = static_cast<int16_t>(w == 0 ? 2 * a[i] : (a[i] * 32 + (b[i] - a[i]) * w) >> 4);
}

template <class Entry>
Hlerp565RowOf<Entry> PickHlerp565Row(uint32_t step, int32_t width, CpuLevel level) {
  const auto& rows = Hlerp565Rows(static_cast<Entry*>(nullptr));
  const Hlerp565RowOf<Entry> chosen = pick_row(rows, level);
  const Hlerp565RowOf<Entry> scalar{{nullptr, 1}, {nullptr, 1}, rows.scalar};
  const uint64_t pairs = width >> 1 < 1 ? 1 : static_cast<uint64_t>(width >> 1);
  const uint64_t lastPos = (2 * pairs - 1) * step;
  // Entries the scalar row reads: 0 .. (last position >> 16) + 1; a window
  // anchored at entry 0 reads 0 .. pixels a step.
  const bool fits = lastPos >> 32 == 0 && (lastPos >> 16) + 1 >= 2 * chosen.vector.step;
  return step < 0x10000 && fits ? chosen : scalar;
}

template Hlerp565RowOf<uint64_t> PickHlerp565Row<uint64_t>(uint32_t, int32_t, CpuLevel);
template Hlerp565RowOf<uint32_t> PickHlerp565Row<uint32_t>(uint32_t, int32_t, CpuLevel);
