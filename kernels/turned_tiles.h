// Quarter turns of 16-bit pixels through tiles: in a quarter turn a source
// row pair lands as two adjacent pixels in each of many destination rows, so
// storing block by block touches a new destination row every 4 bytes.
// Converting a band of row pairs into a tile and turning it in registers
// writes each destination row a run of contiguous bytes at a time instead.
#pragma once

#include <stddef.h>
#include <stdint.h>

#include "imageproc/imgprc_context.h"
#include "kernels/byte_vectors.h"
#include "kernels/rgb565_writers.h"

namespace scrim {

// Where the block writer's cursors put the pixels when the record lays row
// pairs along destination rows: pixel (column x, row 2k + r) at
// start[x & 1] + (x >> 1) * colStep + dir * (4k + 2r).
struct TurnedRows {
  uint8_t* start[2];
  ptrdiff_t colStep;
  ptrdiff_t dir;  // +1: row pairs run forwards along a row, -1 backwards

  // Row pairs k0.. (4 x `quads` of them: tile rows 0..8 x quads - 1, whose
  // pixels t0..t0+7 are columns x0..x0+7) into the eight destination rows of
  // those columns, turning 8 x 8 pixels at a time.
  void StoreTile(const uint16_t* tile, size_t tilePitch, size_t quads, size_t x0, size_t t0,
                 size_t k0) const {
    uint8_t* rows[8];
    for (size_t i = 0; i < 8; ++i) {
      const size_t x = x0 + i;
      rows[i] =
          start[x & 1] + static_cast<ptrdiff_t>(x >> 1) * colStep + dir * 4 * static_cast<ptrdiff_t>(k0);
    }
    for (size_t q = 0; q < quads; ++q) {
      Bytes16 r[8];
#pragma GCC unroll 8
      for (size_t i = 0; i < 8; ++i)
        r[i] = LoadVector<Bytes16>(reinterpret_cast<const uint8_t*>(tile + (8 * q + i) * tilePitch + t0));
      Transpose8x8x16(r);
      const ptrdiff_t at = 16 * static_cast<ptrdiff_t>(q);
#pragma GCC unroll 8
      for (size_t i = 0; i < 8; ++i) {
        if (dir > 0) {
          StoreVector(rows[i] + at, r[i]);
        } else {
          StoreVector(rows[i] - at - 14, Reverse16(r[i]));
        }
      }
    }
  }
};

// The record's layout as TurnedRows, when it is a quarter turn whose
// destination rows (2 * pairs pixels each) do not overlap: the tiles then
// write exactly what the cursors would, in another order.
inline bool TurnedRowsOf(const ImgPrcRotationRecord& rec, size_t pairs, TurnedRows* out) {
  const ptrdiff_t rowStep = EvenBytes(rec.stepY), colStep = EvenBytes(rec.stepX);
  if (rowStep != 4 && rowStep != -4) return false;
  const ptrdiff_t dir = rowStep / 4;
  const ptrdiff_t apart =
      static_cast<ptrdiff_t>(reinterpret_cast<uintptr_t>(rec.pix10) - reinterpret_cast<uintptr_t>(rec.pix00));
  const ptrdiff_t span = static_cast<ptrdiff_t>(4 * pairs);
  if (rec.pix01 != rec.pix00 + 2 * dir || rec.pix11 != rec.pix10 + 2 * dir) return false;
  if (colStep != 2 * apart || (apart < span && -apart < span)) return false;
  *out = {{rec.pix00, rec.pix10}, colStep, dir};
  return true;
}

}  // namespace scrim
