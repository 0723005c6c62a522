// Any-ratio YCbCr 4:2:0 to RGB565: a walk over 2x2 output blocks that samples
// bilinear luma and nearest chroma, and a writer that places each block (wide
// pairs in rows, or the rotation cursors); with vector rows in force, pieces
// of row pairs sampled, then converted by the RGB565 block row.
#include "kernels/enlarge_rows.h"
#include "kernels/resize_walk.h"
#include "kernels/rgb565_writers.h"
#include "kernels/rgb_steps.h"
#include "kernels/turned_tiles.h"
#include "kernels/yuv420_rgb16.h"
#include "kernels/yuv420_rgb565_rows.h"
#include "kernels/yuv_color_step.h"

using namespace scrim;

namespace {

// With the RGB565 block row in force, output row pairs go a piece of kPiece
// blocks at a time (into the pixel-pair words, or the rotated walk's tiles): the source columns the piece
// samples are blended down for both output rows (the first step of PlaneRowPair::At, for a run of columns at
// once, by a row set), sampled across into rows of luma and chroma bytes, converted by the block row and
// widened into the pixel-pair words. A piece whose samples span more than kSpan columns (a shrink beyond
// about 8x) takes the per-block walk's arithmetic column by column.
constexpr size_t kPiece = kRotPiece;
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

// Pieces of output row pairs of the any-ratio walk, through the block row.
class ResizedPieces {
 public:
  ResizedPieces(const Rgb565Row& row, const ImgPrcContext* ctx, const uint8_t* const* src,
                const uint32_t* strides, int32_t srcWidth, int32_t srcHeight, int32_t dstWidth,
                int32_t dstHeight)
      : row_(row),
        blend_(pick_row(blend_down_rows)),
        ctx_(ctx),
        src_(src),
        strides_(strides),
        last_(srcWidth - 1),
        sx_(static_cast<uint32_t>(ResizeStep(srcWidth, dstWidth))),
        sy_(static_cast<uint32_t>(ResizeStep(srcHeight, dstHeight))) {}

  // Blocks m0..m0+count-1 (count up to kPiece) of output row pair n as
  // RGB565 pixels: block i's top pair at row0[2i], its bottom pair at row1[2i].
  void operator()(size_t n, size_t m0, size_t count, uint16_t* row0, uint16_t* row1) const {
    const RowPairSources420 rows(src_, strides_, sy_, static_cast<uint32_t>(n));
    const PlaneRowPair& top = rows.top;
    const PlaneRowPair& bottom = rows.bottom;
    const uint32_t first = static_cast<uint32_t>(2 * m0) * sx_;
    const uint64_t end = static_cast<uint64_t>(2 * (m0 + count) - 1) * sx_;
    // Columns read: from the first position's on, up to the last position's
    // and the one after it (clamped to the row).
    const int32_t c0 = static_cast<int32_t>(first >> 16), xe = static_cast<int32_t>(end >> 16);
    const int32_t c1 = (xe + 1 > last_ ? (xe > last_ ? xe : last_) : xe + 1) + 1;
    const bool runs = end >> 32 == 0 && c1 - c0 <= kSpan;  // positions that do not wrap
    int16_t sTop[kSpan], sBottom[kSpan];
    if (runs) {
      BlendDown(blend_, top, c0, c1, sTop);
      BlendDown(blend_, bottom, c0, c1, sBottom);
    }
    uint8_t y[2][2 * kPiece], cbs[kPiece], crs[kPiece];
    for (size_t i = 0; i < count; ++i) {
      const uint32_t x0 = static_cast<uint32_t>(2 * (m0 + i)) * sx_, x1 = x0 + sx_;
      y[0][2 * i] = runs ? Across(sTop, c0, x0, last_) : top.At(x0, last_);
      y[0][2 * i + 1] = runs ? Across(sTop, c0, x1, last_) : top.At(x1, last_);
      y[1][2 * i] = runs ? Across(sBottom, c0, x0, last_) : bottom.At(x0, last_);
      y[1][2 * i + 1] = runs ? Across(sBottom, c0, x1, last_) : bottom.At(x1, last_);
      const int32_t ccol = static_cast<int32_t>((x0 >> 16) + (x1 >> 16) + 1) >> 2;
      cbs[i] = rows.cb[ccol];
      crs[i] = rows.cr[ccol];
    }
    const Rgb565RowPair rp{
        y[0], y[1], cbs, crs, reinterpret_cast<uint8_t*>(row0), reinterpret_cast<uint8_t*>(row1), ctx_, 0};
    run_row(row_, 0, count, &rp);
  }

 private:
  const Rgb565Row& row_;
  const Row<const BlendDownRows*> blend_;
  const ImgPrcContext* ctx_;
  const uint8_t* const* src_;
  const uint32_t* strides_;
  int32_t last_;
  uint32_t sx_, sy_;
};

}  // namespace

extern "C" SCRIM_API uint32_t _ORUYCbCr420ToRGB565Rsz(ImgPrcContext* ctx, const uint8_t* const* src,
                                                      const uint32_t* srcStrides, int32_t srcWidth,
                                                      int32_t srcHeight, uint8_t* dst, int32_t pitch,
                                                      int32_t dstWidth, int32_t dstHeight) {
  if (dstHeight < 1) return 0;
  if (const Rgb565Row* row = Rgb565RowOf(ctx)) {
    const ResizedPieces piece(*row, ctx, src, srcStrides, srcWidth, srcHeight, dstWidth, dstHeight);
    const size_t blocks = dstWidth > 0 ? (static_cast<size_t>(dstWidth) + 1) / 2 : 0;
    uint16_t px[2][2 * kPiece];
    for (int32_t n = 0; 2 * n < dstHeight; ++n) {
      uint8_t* row0 = dst + static_cast<ptrdiff_t>(n) * WidePair::RowPairBytes(pitch);
      for (size_t m0 = 0; m0 < blocks; m0 += kPiece) {
        const size_t count = blocks - m0 < kPiece ? blocks - m0 : kPiece;
        piece(static_cast<size_t>(n), m0, count, px[0], px[1]);
        for (size_t i = 0; i < count; ++i) {
          WidePair::Store(row0 + 8 * (m0 + i), px[0][2 * i], px[0][2 * i + 1]);
          WidePair::Store(row0 + pitch + 8 * (m0 + i), px[1][2 * i], px[1][2 * i + 1]);
        }
      }
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
  if (const Rgb565Row* row = Rgb565RowOf(ctx)) {
    const size_t pairs = (static_cast<size_t>(dstHeight) + 1) / 2;
    const size_t blocks = dstWidth > 0 ? (static_cast<size_t>(dstWidth) + 1) / 2 : 0;
    TurnedWalk(*ctx->rotationRecord, pairs, blocks,
               ResizedPieces(*row, ctx, src, srcStrides, srcWidth, srcHeight, dstWidth, dstHeight));
    return 0;
  }
  CursorBlockWriter out(*ctx->rotationRecord);
  WalkResized<ChromaRows::kShared420>(ColorTables(ctx), Rgb565Step{}, src, srcStrides, srcWidth, srcHeight,
                                      dstWidth, dstHeight, out);
  return 0;
}
