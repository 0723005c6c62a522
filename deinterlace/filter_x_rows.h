// Mode 7's row of interior blocks: the band record the walker (filter_x.cpp)
// fills, and the row set that works the full 8x8 blocks of one band between
// its first and last block column. Units are block columns.
#pragma once

#include <stddef.h>
#include <stdint.h>

#include "imageproc/row_dispatch.h"

constexpr unsigned kXBlock = 8;

// One band of a plane: source lines 0..9 from its top (lines below the plane
// repeat its last line) and destination lines 0..7; `lines` of them belong to
// the band.
struct XBand {
  const uint8_t* s[kXBlock + 2];
  uint8_t* d[kXBlock];
  unsigned lines;
};

// Blocks begin..end-1 of a full band, none of them the first or the last
// block column (a combed block there takes the directional filter, which
// reads four columns either side of it). The scalar row is the reference.
SCRIM_ROW_FUNCTIONS(x_interior_blocks, const XBand*);

extern const RowSet<const XBand*> x_interior_rows;
