// Same-size YCbCr 4:2:0 to RGB565 / RGB555: one walk over 2x2 blocks, a colour
// step per block and a writer that places the block (plain rows or rotation
// cursors).
#include "kernels/block_walk.h"
#include "kernels/rgb565_writers.h"
#include "kernels/rgb_steps.h"
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

// The walk of the row-pair functions: row pair k's sources in a row record,
// then Sink(k, record, blocks) converts and places it.
template <class Sink>
void WalkRowPairs(const ImgPrcContext* ctx, const uint8_t* const* src, const uint32_t* strides, int32_t width,
                  int32_t height, Sink sink) {
  const size_t blocks = width > 0 ? (static_cast<size_t>(width) + 1) / 2 : 0;
  Rgb565RowPair rp{src[0], src[0] + strides[0], src[1], src[2], nullptr, nullptr, ctx, 0};
  for (int32_t k = 0; 2 * k < height; ++k) {
    sink(k, rp, blocks);
    rp.y0 += 2 * static_cast<ptrdiff_t>(strides[0]);
    rp.y1 += 2 * static_cast<ptrdiff_t>(strides[0]);
    rp.cb += strides[1];
    rp.cr += strides[1];
  }
}

// Row pairs into plain destination rows pitch bytes apart.
void ConvertRows(const Rgb565Row& row, const ImgPrcContext* ctx, const uint8_t* const* src,
                 const uint32_t* strides, int32_t width, int32_t height, uint8_t* dst, int32_t pitch,
                 uint32_t key) {
  WalkRowPairs(ctx, src, strides, width, height, [&](int32_t k, Rgb565RowPair& rp, size_t blocks) {
    rp.d0 = dst + 2 * static_cast<ptrdiff_t>(k) * pitch;
    rp.d1 = rp.d0 + pitch;
    rp.key = key;
    run_row(row, 0, blocks, static_cast<const Rgb565RowPair*>(&rp));
  });
}

// Rotated rows are converted a piece at a time into two short rows, then
// stored through the cursors.
constexpr size_t kRotPiece = 64;

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
  CursorBlockWriter out(*ctx->rotationRecord);
  if (const Rgb565Row* row = Rgb565RowOf(ctx)) {
    uint16_t line[2][2 * kRotPiece];
    WalkRowPairs(ctx, src, srcStrides, width, height, [&](int32_t k, Rgb565RowPair rp, size_t blocks) {
      out.RowPair(k);
      for (size_t m0 = 0; m0 < blocks; m0 += kRotPiece) {
        const size_t n = blocks - m0 < kRotPiece ? blocks - m0 : kRotPiece;
        Rgb565RowPair piece = rp;
        piece.y0 += 2 * m0, piece.y1 += 2 * m0, piece.cb += m0, piece.cr += m0;
        piece.d0 = reinterpret_cast<uint8_t*>(line[0]);
        piece.d1 = reinterpret_cast<uint8_t*>(line[1]);
        run_row(*row, 0, n, static_cast<const Rgb565RowPair*>(&piece));
        for (size_t i = 0; i < n; ++i)
          out.Block(static_cast<int32_t>(m0 + i), line[0][2 * i], line[0][2 * i + 1], line[1][2 * i],
                    line[1][2 * i + 1]);
      }
    });
    return 0;
  }
  Walk420(src, srcStrides, width, height, Color565{ColorTables(ctx), {}}, out);
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
