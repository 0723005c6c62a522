// The walk over the rows of one plane, kept apart from what happens to a row,
// so that the members of a kernel family differ only in their row operation.
#pragma once

#include <stdint.h>

// Calls rowOp(srcRow, dstRow) for `rows` rows, each side advancing by its own stride.
template <typename RowOp>
inline void WalkPlaneRows(const uint8_t* src, uint32_t srcStride, uint8_t* dst, uint32_t dstStride,
                          uint32_t rows, RowOp rowOp) {
  for (uint32_t y = 0; y < rows; ++y) {
    rowOp(src, dst);
    src += srcStride;
    dst += dstStride;
  }
}
