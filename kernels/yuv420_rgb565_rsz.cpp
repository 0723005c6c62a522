// Any-ratio YCbCr 4:2:0 to RGB565: a walk over 2x2 output blocks that samples
// bilinear luma and nearest chroma, and a writer that places each block (wide
// pairs in rows, or the rotation cursors).
#include "kernels/enlarge_rows.h"
#include "kernels/resize_walk.h"
#include "kernels/rgb565_writers.h"
#include "kernels/rgb_steps.h"
#include "kernels/yuv420_rgb16.h"
#include "kernels/yuv420_rgb565_rows.h"
#include "kernels/yuv_color_step.h"

using namespace scrim;

namespace {

// With the RGB565 block row in force, an output row pair goes a piece of
// kPiece blocks at a time: the source columns the piece samples are blended
// down for both output rows (the first step of PlaneRowPair::At, for a run of
// columns at once, by a row set), sampled across into rows of
// luma and chroma bytes, converted by the block row and widened into the
// pixel-pair words. A piece whose samples span more than kSpan columns (a
// shrink beyond 7x) takes the per-block walk's arithmetic column by column.
constexpr int32_t kPiece = 64;
constexpr int32_t kSpan = 1024;

// Columns c0..c1-1 of a row pair blended down by its weight, values x 2.
void BlendDown(const Row<const BlendDownRows*>& blend, const PlaneRowPair& rows, int32_t c0, int32_t c1,
               int16_t* out) {
  const BlendDownRows r{rows.a + c0, rows.b + c0, out, rows.wy};
  run_row(blend, 0, static_cast<size_t>(c1 - c0), &r);
}

// The sample at pos from columns blended down from c0 on (PlaneRowPair::At's
// second step; a whole position gives the blended value back, as At's
// shortcut does).
inline uint8_t Across(const int16_t* s, int32_t c0, uint32_t pos, int32_t last) {
  const int32_t xi = static_cast<int32_t>(pos >> 16);
  const int32_t wx = static_cast<int32_t>((pos >> 11) & 31);
  const int32_t xn = xi + 1 > last ? last : xi + 1;
  const int32_t s0 = s[xi - c0], s1 = s[xn - c0];
  return static_cast<uint8_t>(((s1 - s0) * wx + (s0 << 5)) >> 6);
}

// Output row pair n of the any-ratio walk, through the block row.
void ResizedRowPair(const Rgb565Row& row, const Row<const BlendDownRows*>& blend, const ImgPrcContext* ctx,
                    const uint8_t* const* src, const uint32_t* strides, int32_t srcWidth, int32_t dstWidth,
                    uint32_t sx, uint32_t sy, int32_t n, uint8_t* row0, uint8_t* row1) {
  const int32_t last = srcWidth - 1;
  const uint32_t y0 = static_cast<uint32_t>(2 * n) * sy;
  const PlaneRowPair top(src[0], strides[0], y0);
  const PlaneRowPair bottom(src[0], strides[0], y0 + sy);
  const ptrdiff_t c = (top.yi + bottom.yi + 1) >> 2;
  const uint8_t* cb = src[1] + c * static_cast<ptrdiff_t>(strides[1]);
  const uint8_t* cr = src[2] + c * static_cast<ptrdiff_t>(strides[2]);
  const int32_t blocks = (dstWidth + 1) / 2;
  int16_t sTop[kSpan], sBottom[kSpan];
  uint8_t y[2][2 * kPiece], cbs[kPiece], crs[kPiece];
  uint32_t pairs[2][kPiece];
  for (int32_t m0 = 0; m0 < blocks; m0 += kPiece) {
    const int32_t count = blocks - m0 < kPiece ? blocks - m0 : kPiece;
    const uint32_t first = static_cast<uint32_t>(2 * m0) * sx;
    const uint64_t end = static_cast<uint64_t>(2 * (m0 + count) - 1) * sx;
    // Columns read: from the first position's on, up to the last position's
    // and the one after it (clamped to the row).
    const int32_t c0 = static_cast<int32_t>(first >> 16), xe = static_cast<int32_t>(end >> 16);
    const int32_t c1 = (xe + 1 > last ? (xe > last ? xe : last) : xe + 1) + 1;
    const bool runs = end >> 32 == 0 && c1 - c0 <= kSpan;  // positions that do not wrap
    if (runs) {
      BlendDown(blend, top, c0, c1, sTop);
      BlendDown(blend, bottom, c0, c1, sBottom);
    }
    for (int32_t i = 0; i < count; ++i) {
      const uint32_t x0 = static_cast<uint32_t>(2 * (m0 + i)) * sx, x1 = x0 + sx;
      y[0][2 * i] = runs ? Across(sTop, c0, x0, last) : top.At(x0, last);
      y[0][2 * i + 1] = runs ? Across(sTop, c0, x1, last) : top.At(x1, last);
      y[1][2 * i] = runs ? Across(sBottom, c0, x0, last) : bottom.At(x0, last);
      y[1][2 * i + 1] = runs ? Across(sBottom, c0, x1, last) : bottom.At(x1, last);
      const int32_t ccol = static_cast<int32_t>((x0 >> 16) + (x1 >> 16) + 1) >> 2;
      cbs[i] = cb[ccol];
      crs[i] = cr[ccol];
    }
    const Rgb565RowPair rp{
        y[0], y[1], cbs, crs, reinterpret_cast<uint8_t*>(pairs[0]), reinterpret_cast<uint8_t*>(pairs[1]),
        ctx,  0};
    run_row(row, 0, static_cast<size_t>(count), &rp);
    for (int32_t i = 0; i < count; ++i) {
      Store64(row0 + 8 * (m0 + i),
              static_cast<uint64_t>(static_cast<int64_t>(static_cast<int32_t>(pairs[0][i]))));
      Store64(row1 + 8 * (m0 + i),
              static_cast<uint64_t>(static_cast<int64_t>(static_cast<int32_t>(pairs[1][i]))));
    }
  }
}

}  // namespace

extern "C" SCRIM_API uint32_t _ORUYCbCr420ToRGB565Rsz(ImgPrcContext* ctx, const uint8_t* const* src,
                                                      const uint32_t* srcStrides, int32_t srcWidth,
                                                      int32_t srcHeight, uint8_t* dst, int32_t pitch,
                                                      int32_t dstWidth, int32_t dstHeight) {
  if (dstHeight < 1) return 0;
  if (const Rgb565Row* row = Rgb565RowOf(ctx)) {
    const uint32_t sx = static_cast<uint32_t>(ResizeStep(srcWidth, dstWidth));
    const uint32_t sy = static_cast<uint32_t>(ResizeStep(srcHeight, dstHeight));
    const Row<const BlendDownRows*> blend = pick_row(blend_down_rows);
    for (int32_t n = 0; 2 * n < dstHeight; ++n) {
      uint8_t* row0 = dst + static_cast<ptrdiff_t>(n) * WidePair::RowPairBytes(pitch);
      ResizedRowPair(*row, blend, ctx, src, srcStrides, srcWidth, dstWidth, sx, sy, n, row0, row0 + pitch);
    }
    return 0;
  }
  WidePairBlockWriter out(dst, pitch);
  WalkResized<ChromaRows::kShared420>(ColorTables(ctx), Rgb565Step{}, src, srcStrides, srcWidth, srcHeight,
                                      dstWidth, dstHeight, out);
  return 0;
}

extern "C" SCRIM_API uint32_t _ORUYCbCr420ToRGB565RszRot(ImgPrcContext* ctx, const uint8_t* const* src,
                                                         const uint32_t* srcStrides, int32_t srcWidth,
                                                         int32_t srcHeight, int32_t dstWidth,
                                                         int32_t dstHeight) {
  if (dstHeight < 1) return 0;
  if (ctx->rotationRecord == nullptr) return 0xFFFFFFFFu;
  CursorBlockWriter out(*ctx->rotationRecord);
  WalkResized<ChromaRows::kShared420>(ColorTables(ctx), Rgb565Step{}, src, srcStrides, srcWidth, srcHeight,
                                      dstWidth, dstHeight, out);
  return 0;
}
