// The scalar RGB565 block row (the reference of the vector rows), the row set
// and the choice an instance makes when its tables are built.
#include "kernels/yuv420_rgb565_rows.h"

#include "kernels/rgb_steps.h"
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

void rgb555_key_blocks_scalar(size_t begin, size_t end, const Rgb565RowPair* rp) {
  const ColorTables tab(rp->ctx);
  auto one = [&](uint8_t y, uint8_t cb, uint8_t cr, ChromaTerms t) -> uint32_t {
    if ((static_cast<uint32_t>(y) << 16 | static_cast<uint32_t>(cb) << 8 | cr) == rp->key) return 0;
    return Rgb555Opaque(tab.Luma(y), t);
  };
  for (size_t m = begin; m < end; ++m) {
    const uint8_t cb = rp->cb[m], cr = rp->cr[m];
    const ChromaTerms t = ChromaTermsOf(tab, cb, cr);
    Store32(rp->d0 + 4 * m, one(rp->y0[2 * m], cb, cr, t) | one(rp->y0[2 * m + 1], cb, cr, t) << 16);
    Store32(rp->d1 + 4 * m, one(rp->y1[2 * m], cb, cr, t) | one(rp->y1[2 * m + 1], cb, cr, t) << 16);
  }
}

namespace {

template <class Step>
void Blocks8888(size_t begin, size_t end, const Rgb565RowPair* rp, Step step) {
  const ColorTables tab(rp->ctx);
  for (size_t m = begin; m < end; ++m) {
    const ChromaTerms t = ChromaTermsOf(tab, rp->cb[m], rp->cr[m]);
    Store32(rp->d0 + 8 * m, step(tab.Luma(rp->y0[2 * m]), t));
    Store32(rp->d0 + 8 * m + 4, step(tab.Luma(rp->y0[2 * m + 1]), t));
    Store32(rp->d1 + 8 * m, step(tab.Luma(rp->y1[2 * m]), t));
    Store32(rp->d1 + 8 * m + 4, step(tab.Luma(rp->y1[2 * m + 1]), t));
  }
}

}  // namespace

void argb_blocks_scalar(size_t begin, size_t end, const Rgb565RowPair* rp) {
  Blocks8888(begin, end, rp, ArgbStep{rp->key & 0xFF000000u});
}
void abgr_blocks_scalar(size_t begin, size_t end, const Rgb565RowPair* rp) {
  Blocks8888(begin, end, rp, AbgrStep{rp->key & 0xFF000000u});
}

SCRIM_ROW_SET(const Rgb565RowPair*, rgb565_block_rows, rgb565_blocks, 4, 8, 8);
SCRIM_ROW_SET(const Rgb565RowPair*, rgb555_key_block_rows, rgb555_key_blocks, 4, 8, 8);
SCRIM_ROW_SET(const Rgb565RowPair*, spread_block_rows, spread_blocks, 4, 8, 8);
SCRIM_ROW_SET(const Rgb565RowPair*, spread32_block_rows, spread32_blocks, 4, 8, 8);
SCRIM_ROW_SET(const Rgb565RowPair*, argb_block_rows, argb_blocks, 4, 8, 8);
SCRIM_ROW_SET(const Rgb565RowPair*, abgr_block_rows, abgr_blocks, 4, 8, 8);

// The chosen rows per level (RGB565, keyed RGB555 side by side), kept for
// the life of the process; an instance points at the pair in force when its
// tables were built. The scalar level leaves the kernels on their own lookup
// walk.
const void* ImgPrcChooseRgb565Row() {
  static const Rgb565Row rows[4][2] = {
      {pick_row(rgb565_block_rows, CPU_SCALAR), pick_row(rgb555_key_block_rows, CPU_SCALAR)},
      {pick_row(rgb565_block_rows, CPU_SSE41), pick_row(rgb555_key_block_rows, CPU_SSE41)},
      {pick_row(rgb565_block_rows, CPU_AVX2), pick_row(rgb555_key_block_rows, CPU_AVX2)},
      {pick_row(rgb565_block_rows, CPU_NEON), pick_row(rgb555_key_block_rows, CPU_NEON)}};
  const CpuLevel level = cpu_level();
  return level == CPU_SCALAR ? nullptr : rows[level];
}
