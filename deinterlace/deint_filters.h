// Internal interface of the deinterlacer: the picture record, the shared line
// arithmetic and one function per filter. ORU_DeInterlace (deinterlace.h) is
// the only entry point the rest of the library uses.
#pragma once

#include <stddef.h>
#include <stdint.h>

#include <array>

#include "imageproc/row_dispatch.h"

// One picture, source or destination. Filters walk min(planeCount, 3) planes.
struct DeintPicture {
  uint32_t planeCount;
  uint8_t* planes[3];
  uint32_t pitches[3];  // bytes from one line to the next
};

// Chroma layout of planes 1 and 2, the image processor's input format code.
enum DeintLayout : unsigned {
  DEINT_LAYOUT_420 = 0,  // half width, half height
  DEINT_LAYOUT_422 = 1,  // half width, full height
  DEINT_LAYOUT_444 = 2,  // full size
};

// How many bytes modes 2 to 6 move per line: the source pitch, or no more
// than the destination pitch (what the image processor's work area holds).
enum DeintLineWidth : unsigned {
  DEINT_LINE_SOURCE_PITCH = 0,
  DEINT_LINE_FITS_DESTINATION = 1,
};

// Byte clamp indexed by value + 1024: 0 below index 1024, 255 above 1279.
constexpr int kDeintClipBias = 1024;
extern const std::array<uint8_t, 2304> deint_clip_table;
inline uint8_t deint_clip(int v) { return deint_clip_table[v + kDeintClipBias]; }

// dst[i] = (a[i] + b[i]) >> 1 for exactly n bytes.
void Merge(uint8_t* dst, const uint8_t* a, const uint8_t* b, size_t n);

// Five-tap vertical filter, weights -1 4 2 4 -1 over 8, rounded and clamped.
void deinterlace_line(uint8_t* dst, const uint8_t* p0, const uint8_t* p1, const uint8_t* p2,
                      const uint8_t* p3, const uint8_t* p4, size_t n);

// The same filter in place: tmp holds the original of the line above a; b is
// replaced by the filtered line and its original moves into tmp. c and d may
// be the same line as b (the last line of a plane).
void deinterlace_line_inplace(uint8_t* tmp, const uint8_t* a, uint8_t* b, const uint8_t* c, const uint8_t* d,
                              size_t n);

// The two as row sets (units: bytes), for filters that pick their rows once
// per picture; deinterlace_line and deinterlace_line_inplace are their scalar
// rows over a whole line. Out of place: dst := taps(p[0..4]). In place: dst is
// p[2] itself and keep (holding p[0]) takes its original bytes.
struct DeintTapLines {
  uint8_t* dst;
  const uint8_t* p[5];
  uint8_t* keep;
};
extern const RowSet<const DeintTapLines*> deint_taps_rows;
extern const RowSet<const DeintTapLines*> deint_taps_inplace_rows;
SCRIM_ROW_FUNCTIONS(deint_taps, const DeintTapLines*);
SCRIM_ROW_FUNCTIONS(deint_taps_inplace, const DeintTapLines*);

// Height of plane `plane` for a picture `height` lines high.
unsigned deint_plane_height(unsigned plane, unsigned height, unsigned layout);

// The filters. Each returns 0, or -1 when it refuses its arguments. `field`
// (0 or 1, any non-zero value counts as 1) is the field the line-doubling
// filters keep.
int picture_deinterlace_fast(DeintPicture* dst, const DeintPicture* src, unsigned layout, unsigned width,
                             unsigned height);
int picture_deinterlace_discard(DeintPicture* dst, const DeintPicture* src, unsigned layout, unsigned height,
                                unsigned field, DeintLineWidth lineWidth = DEINT_LINE_SOURCE_PITCH);
int picture_deinterlace_bob(DeintPicture* dst, const DeintPicture* src, unsigned layout, unsigned height,
                            unsigned field, DeintLineWidth lineWidth = DEINT_LINE_SOURCE_PITCH);
int picture_deinterlace_blend(DeintPicture* dst, const DeintPicture* src, unsigned layout, unsigned height,
                              DeintLineWidth lineWidth = DEINT_LINE_SOURCE_PITCH);
int picture_deinterlace_mean(DeintPicture* dst, const DeintPicture* src, unsigned layout, unsigned height,
                             DeintLineWidth lineWidth = DEINT_LINE_SOURCE_PITCH);
int picture_deinterlace_linear(DeintPicture* dst, const DeintPicture* src, unsigned layout, unsigned height,
                               unsigned field, DeintLineWidth lineWidth = DEINT_LINE_SOURCE_PITCH);
int picture_deinterlace_x(DeintPicture* dst, const DeintPicture* src, unsigned layout, unsigned width,
                          unsigned height);

// Runs the filter of `mode` (0 none, 1 fast, 2 discard, 3 bob, 4 blend, 5 mean,
// 6 linear, 7 x, 8 and above fast). -1 for a null record, else 0: a filter
// that refuses its arguments is not reported.
int DeInterlace(DeintPicture* dst, DeintPicture* src, unsigned width, unsigned height, unsigned field,
                unsigned layout, unsigned mode, DeintLineWidth lineWidth = DEINT_LINE_SOURCE_PITCH);
