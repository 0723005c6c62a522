// The walk over the rows of one plane, kept apart from what happens to a row,
// so that the members of a kernel family differ only in their row operation.
#pragma once

#include <stddef.h>
#include <stdint.h>
#include <string.h>

// Calls rowOp(srcRow, dstRow) for `rows` rows, each side advancing by its own
// stride. The destination stride is signed: a rotated plane may be walked
// bottom-up or right to left.
template <typename RowOp>
inline void WalkPlaneRows(const uint8_t* src, ptrdiff_t srcStride, uint8_t* dst, ptrdiff_t dstStride,
                          uint32_t rows, RowOp rowOp) {
  for (uint32_t y = 0; y < rows; ++y) {
    rowOp(src, dst);
    src += srcStride;
    dst += dstStride;
  }
}

// `rows` rows of `width` bytes, one block copy a row.
inline void CopyPlaneRows(const uint8_t* src, ptrdiff_t srcStride, uint8_t* dst, ptrdiff_t dstStride,
                          uint32_t width, uint32_t rows) {
  if (width == 0) return;
  WalkPlaneRows(src, srcStride, dst, dstStride, rows,
                [width](const uint8_t* s, uint8_t* d) { memcpy(d, s, width); });
}
