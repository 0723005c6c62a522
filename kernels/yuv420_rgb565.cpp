// Same-size YCbCr 4:2:0 to RGB565 / RGB555: one walk over 2x2 blocks, a colour
// step per block and a writer that places the block (plain rows or rotation
// cursors).
#include "kernels/block_walk.h"
#include "kernels/rgb565_writers.h"
#include "kernels/rgb_steps.h"
#include "kernels/turned_tiles.h"
#include "kernels/yuv420_rgb16.h"
#include "kernels/yuv420_rgb565_rows.h"
#include "kernels/yuv_color_step.h"

using namespace scrim;

namespace {

using Color565 = SharedChroma<Rgb565Step>;

// Keyed RGB555: each pixel compares its own samples with the key; a match is
// written as 0x0000 (transparent) without computing its colour.
struct Color555Keyed {
  ColorTables tab;
  uint32_t key;
  uint16_t One(uint8_t y, uint8_t cb, uint8_t cr, ChromaTerms t) const {
    if ((static_cast<uint32_t>(y) << 16 | static_cast<uint32_t>(cb) << 8 | cr) == key) return 0;
    return Rgb555Opaque(tab.Luma(y), t);
  }
  Block4<uint16_t> operator()(uint8_t y00, uint8_t y10, uint8_t y01, uint8_t y11, uint8_t cb,
                              uint8_t cr) const {
    const ChromaTerms t = ChromaTermsOf(tab, cb, cr);
    return {One(y00, cb, cr, t), One(y10, cb, cr, t), One(y01, cb, cr, t), One(y11, cb, cr, t)};
  }
};

// Row pairs into plain destination rows pitch bytes apart.
void ConvertRows(const Rgb565Row& row, const ImgPrcContext* ctx, const uint8_t* const* src,
                 const uint32_t* strides, int32_t width, int32_t height, uint8_t* dst, int32_t pitch,
                 uint32_t key) {
  const size_t blocks = BlocksOf(width);
  for (int32_t k = 0; 2 * k < height; ++k) {
    Rgb565RowPair rp = RowPairAt(ctx, src, strides, static_cast<size_t>(k));
    rp.d0 = dst + 2 * static_cast<ptrdiff_t>(k) * pitch;
    rp.d1 = rp.d0 + pitch;
    rp.key = key;
    run_row(row, 0, blocks, static_cast<const Rgb565RowPair*>(&rp));
  }
}

}  // namespace

extern "C" SCRIM_API uint32_t _ORUYCbCr420ToRGB565(ImgPrcContext* ctx, const uint8_t* const* src,
                                                   const uint32_t* srcStrides, int32_t width, int32_t height,
                                                   uint8_t* dst, int32_t pitch) {
  if (height < 1) return 0;
  if (const Rgb565Row* row = Rgb565RowOf(ctx)) {
    ConvertRows(*row, ctx, src, srcStrides, width, height, dst, pitch, 0);
    return 0;
  }
  PlainBlockWriter out(dst, pitch);
  Walk420(src, srcStrides, width, height, Color565{ColorTables(ctx), {}}, out);
  return 0;
}

extern "C" SCRIM_API uint32_t _ORUYCbCr420ToRGB565Rot(ImgPrcContext* ctx, const uint8_t* const* src,
                                                      const uint32_t* srcStrides, int32_t width,
                                                      int32_t height) {
  if (height < 1) return 0;
  if (ctx->rotationRecord == nullptr) return 0xFFFFFFFFu;
  const Rgb565Row* row = Rgb565RowOf(ctx);
  if (row == nullptr) {
    CursorBlockWriter out(*ctx->rotationRecord);
    Walk420(src, srcStrides, width, height, Color565{ColorTables(ctx), {}}, out);
    return 0;
  }
  const size_t pairs = (static_cast<size_t>(height) + 1) / 2;
  TurnedWalk(*ctx->rotationRecord, pairs, BlocksOf(width),
             [&](size_t k, size_t m0, size_t n, uint16_t* row0, uint16_t* row1) {
               Rgb565RowPair rp = RowPairAt(ctx, src, srcStrides, k);
               rp.y0 += 2 * m0, rp.y1 += 2 * m0, rp.cb += m0, rp.cr += m0;
               rp.d0 = reinterpret_cast<uint8_t*>(row0);
               rp.d1 = reinterpret_cast<uint8_t*>(row1);
               run_row(*row, 0, n, static_cast<const Rgb565RowPair*>(&rp));
             });
  return 0;
}

extern "C" SCRIM_API uint32_t _ORUYCbCr420ToRGB555(ImgPrcContext* ctx, const uint8_t* const* src,
                                                   const uint32_t* srcStrides, int32_t width, int32_t height,
                                                   uint8_t* dst, int32_t pitch, uint32_t colorKey) {
  if (height < 1) return 0;
  if (const Rgb565Row* row = Rgb555KeyRowOf(ctx)) {
    ConvertRows(*row, ctx, src, srcStrides, width, height, dst, pitch, colorKey);
    return 0;
  }
  PlainBlockWriter out(dst, pitch);
  Walk420(src, srcStrides, width, height, Color555Keyed{ColorTables(ctx), colorKey}, out);
  return 0;
}
