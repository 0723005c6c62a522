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

// Rotated rows are produced a piece of kRotPiece blocks at a time, bands of
// kTileRows row pairs into one tile.
constexpr size_t kRotPiece = 64;
constexpr size_t kTileRows = 32;

// The walk of the rotated kernels: fill(k, m0, n, row0, row1) writes the
// pixels of blocks m0..m0+n-1 of row pair k into two tile rows of 16-bit
// pixels (block i's top pair at row0[2i], its bottom pair at row1[2i]); when
// the record allows, whole groups of 4 row pairs x 4 blocks go out turned,
// the rest block by block through the cursors.
template <class Fill>
void TurnedWalk(const ImgPrcRotationRecord& rec, size_t pairs, size_t blocks, Fill fill) {
  CursorBlockWriter out(rec);
  TurnedRows turned{};
  const bool tiles = TurnedRowsOf(rec, pairs, &turned);
  uint16_t tile[2 * kTileRows][2 * kRotPiece];
  for (size_t k0 = 0; k0 < pairs; k0 += kTileRows) {
    const size_t rows = pairs - k0 < kTileRows ? pairs - k0 : kTileRows;
    const size_t quads = tiles ? rows / 4 : 0;
    for (size_t m0 = 0; m0 < blocks; m0 += kRotPiece) {
      const size_t n = blocks - m0 < kRotPiece ? blocks - m0 : kRotPiece;
      for (size_t j = 0; j < rows; ++j) fill(k0 + j, m0, n, tile[2 * j], tile[2 * j + 1]);
      const size_t grouped = quads > 0 ? n & ~size_t{3} : 0;
      for (size_t x = 0; x < 2 * grouped; x += 8)
        turned.StoreTile(&tile[0][0], 2 * kRotPiece, quads, 2 * m0 + x, x, k0);
      for (size_t j = 0; j < rows; ++j) {
        out.RowPair(static_cast<int32_t>(k0 + j));
        for (size_t i = j < 4 * quads ? grouped : 0; i < n; ++i)
          out.Block(static_cast<int32_t>(m0 + i), tile[2 * j][2 * i], tile[2 * j][2 * i + 1],
                    tile[2 * j + 1][2 * i], tile[2 * j + 1][2 * i + 1]);
      }
    }
  }
}

}  // namespace scrim
