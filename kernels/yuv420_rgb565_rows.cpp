// The scalar RGB565 block row (the reference of the vector rows), the row set
// and the choice an instance makes when its tables are built.
#include "kernels/yuv420_rgb565_rows.h"

#include "kernels/yuv_color_step.h"

using namespace scrim;

void rgb565_blocks_scalar(size_t begin, size_t end, const Rgb565RowPair* rp) {
  const ColorTables tab(rp->ctx);
  for (size_t m = begin; m < end; ++m) {
    const ChromaTerms t = ChromaTermsOf(tab, rp->cb[m], rp->cr[m]);
    const uint32_t top = Rgb565(tab.Luma(rp->y0[2 * m]), t) | Rgb565(tab.Luma(rp->y0[2 * m + 1]), t) << 16;
    const uint32_t bottom = Rgb565(tab.Luma(rp->y1[2 * m]), t) | Rgb565(tab.Luma(rp->y1[2 * m + 1]), t) << 16;
    Store32(rp->d0 + 4 * m, top);
    Store32(rp->d1 + 4 * m, bottom);
  }
}

#if defined(__x86_64__)
const RowSet<const Rgb565RowPair*> rgb565_block_rows = {
    rgb565_blocks_scalar, {rgb565_blocks_sse41, 4}, {rgb565_blocks_avx2, 8}, {nullptr, 1}};
#elif defined(__aarch64__)
const RowSet<const Rgb565RowPair*> rgb565_block_rows = {
    rgb565_blocks_scalar, {nullptr, 1}, {nullptr, 1}, {rgb565_blocks_neon, 4}};
#else
const RowSet<const Rgb565RowPair*> rgb565_block_rows = {
    rgb565_blocks_scalar, {nullptr, 1}, {nullptr, 1}, {nullptr, 1}};
#endif

// One chosen row per level, kept for the life of the process; an instance
// points at the one in force when its tables were built. The scalar level
// leaves the kernels on their own lookup walk.
const void* ImgPrcChooseRgb565Row() {
  static const Rgb565Row rows[] = {
      pick_row(rgb565_block_rows, CPU_SCALAR), pick_row(rgb565_block_rows, CPU_SSE41),
      pick_row(rgb565_block_rows, CPU_AVX2), pick_row(rgb565_block_rows, CPU_NEON)};
  const CpuLevel level = cpu_level();
  return level == CPU_SCALAR ? nullptr : &rows[level];
}
