// The row of the same-size YCbCr 4:2:0 to RGB565 and RGB555 kernels: a row pair of 2x2
// blocks, begin..end-1, from two luma rows and one chroma row into two rows of
// 16-bit pixels. The scalar row looks the terms up in the range tables and is
// the reference; the vector rows compute them from the tables' integer forms
// (imageproc/color_affine.h), so they are only chosen for tables that those
// forms reproduce exactly.
#pragma once

#include <stddef.h>
#include <stdint.h>

#include "imageproc/imgprc_context.h"
#include "imageproc/row_dispatch.h"

struct Rgb565RowPair {
  const uint8_t* y0;  // luma rows: block m reads columns 2m and 2m + 1
  const uint8_t* y1;
  const uint8_t* cb;  // chroma rows: block m reads column m
  const uint8_t* cr;
  uint8_t* d0;  // destination rows: block m writes bytes 4m..4m+3
  uint8_t* d1;
  const ImgPrcContext* ctx;  // range tables and their integer forms
  uint32_t key;              // RGB555 rows: Y << 16 | Cb << 8 | Cr written as 0
};

SCRIM_ROW_FUNCTIONS(rgb565_blocks, const Rgb565RowPair*);

extern const RowSet<const Rgb565RowPair*> rgb565_block_rows;

// Opaque RGB555 with the colour key, the same walk and terms.
SCRIM_ROW_FUNCTIONS(rgb555_key_blocks, const Rgb565RowPair*);

extern const RowSet<const Rgb565RowPair*> rgb555_key_block_rows;

// Spread lines of the enlarging kernels (Convert, imageproc/interp.h), the
// same walk and terms; d0 and d1 are the two lines, block m writing bytes
// 16m..16m+15 of each.
SCRIM_ROW_FUNCTIONS(spread_blocks, const Rgb565RowPair*);

extern const RowSet<const Rgb565RowPair*> spread_block_rows;

// The same entries in 32-bit slots (kernels/enlarge_rows.h), block m writing
// bytes 8m..8m+7 of each line.
SCRIM_ROW_FUNCTIONS(spread32_blocks, const Rgb565RowPair*);

extern const RowSet<const Rgb565RowPair*> spread32_block_rows;

// 32-bit pixels of the ARGB32 (alpha | R << 16 | G << 8 | B) and ABGR32
// families, the same walk and terms, block m writing bytes 8m..8m+7 of each
// row; key holds the alpha in bits 31-24.
SCRIM_ROW_FUNCTIONS(argb_blocks, const Rgb565RowPair*);
SCRIM_ROW_FUNCTIONS(abgr_blocks, const Rgb565RowPair*);

extern const RowSet<const Rgb565RowPair*> argb_block_rows;
extern const RowSet<const Rgb565RowPair*> abgr_block_rows;

// The spread rows by entry type.
inline const RowSet<const Rgb565RowPair*>& SpreadBlockRows(uint64_t*) { return spread_block_rows; }
inline const RowSet<const Rgb565RowPair*>& SpreadBlockRows(uint32_t*) { return spread32_block_rows; }
using Rgb565Row = Row<const Rgb565RowPair*>;

// Column pairs of a row: an odd width is walked as the next even one.
inline size_t BlocksOf(int32_t width) { return width > 0 ? (static_cast<size_t>(width) + 1) / 2 : 0; }

// Row pair k's sources in a row record (both chroma planes use stride 1).
inline Rgb565RowPair RowPairAt(const ImgPrcContext* ctx, const uint8_t* const* src, const uint32_t* strides,
                               size_t k) {
  const uint8_t* y0 = src[0] + 2 * k * strides[0];
  return {y0, y0 + strides[0], src[1] + k * strides[1], src[2] + k * strides[1], nullptr, nullptr, ctx, 0};
}

// The rows an instance chose when its tables were built (RGB565, keyed
// RGB555), or null (look up).
inline const Rgb565Row* Rgb565RowOf(const ImgPrcContext* ctx) {
  return static_cast<const Rgb565Row*>(ctx->affine.rgb565Row);
}
inline const Rgb565Row* Rgb555KeyRowOf(const ImgPrcContext* ctx) {
  const Rgb565Row* rows = Rgb565RowOf(ctx);
  return rows != nullptr ? rows + 1 : nullptr;
}
