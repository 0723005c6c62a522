// The one walk behind the planar 4:2:0 to planar 4:2:0 kernels. What a kernel
// does to a sample (copy it, or look it up in an adjustment table) and where
// it puts it (plain rows, or the rotation record's addressing) are parameters,
// so that rotating, resizing and adjusting are instantiations of two walks:
// same size, and resized.
#pragma once

#include <stddef.h>
#include <stdint.h>

#include <type_traits>

#include "imageproc/imgprc_context.h"
#include "kernels/byte_vectors.h"
#include "kernels/plane_walk.h"
#include "kernels/resize_step.h"

namespace scrim {

// Where source sample (0, 0) of a plane goes, and how far one sample along a
// source row and one source row move it.
struct PlaneDst {
  uint8_t* start;
  ptrdiff_t sampleStep;
  ptrdiff_t rowStep;
};

// The three planes' destinations, Y, Cb, Cr.
struct Planar420Dst {
  PlaneDst plane[3];
};

inline Planar420Dst RowsDst(uint8_t* const planes[3], const uint32_t strides[3]) {
  return {{{planes[0], 1, strides[0]}, {planes[1], 1, strides[1]}, {planes[2], 1, strides[2]}}};
}

inline Planar420Dst RecordDst(const ImgPrcRotationRecord& rec) {
  return {{{rec.yStart, rec.stepX, rec.stepY},
           {rec.cbStart, rec.cbStepX, rec.cbStepY},
           {rec.crStart, rec.crStepX, rec.crStepY}}};
}

// Per-sample steps.
struct SameSample {
  uint8_t operator()(uint8_t v) const { return v; }
};
struct TableSample {
  const uint8_t* table;
  uint8_t operator()(uint8_t v) const { return table[v]; }
};

// A 16 x 16 block of bytes turned: source row t, column i lands at
// d + i * step + t * rowStep, rowStep being +1 or -1 (then the rows are
// loaded last first, so that each turned column is stored in ascending order).
inline void TurnBlock16(const uint8_t* s, ptrdiff_t srcStride, uint8_t* d, ptrdiff_t step,
                        ptrdiff_t rowStep) {
  if (rowStep < 0) {
    s += 15 * srcStride;
    srcStride = -srcStride;
    d -= 15;
  }
  Bytes16 r[16];
#pragma GCC unroll 16
  for (int t = 0; t < 16; ++t) r[t] = LoadVector<Bytes16>(s + t * srcStride);
  Transpose16x16(r);
#pragma GCC unroll 16
  for (int i = 0; i < 16; ++i) StoreVector(d + i * step, r[i]);
}

// Quarter turns: a source row lands down a destination column. A band of 16
// source rows at a time, column by column, writes 16 neighbouring bytes per
// column instead of one byte in each of `width` destination rows; plain
// copies turn whole 16 x 16 blocks in registers.
template <class Sample>
void MapPlaneTurned(const uint8_t* src, uint32_t srcStride, uint32_t width, uint32_t rows,
                    const PlaneDst& dst, Sample sample) {
  constexpr uint32_t kBand = 16;
  for (uint32_t y0 = 0; y0 < rows; y0 += kBand) {
    const uint32_t n = rows - y0 < kBand ? rows - y0 : kBand;
    const uint8_t* s = src + static_cast<ptrdiff_t>(y0) * srcStride;
    uint8_t* d = dst.start + static_cast<ptrdiff_t>(y0) * dst.rowStep;
    uint32_t x = 0;
    if (std::is_same<Sample, SameSample>::value && n == kBand) {
      for (; x + 16 <= width; x += 16)
        TurnBlock16(s + x, srcStride, d + x * dst.sampleStep, dst.sampleStep, dst.rowStep);
    }
    for (; x < width; ++x) {
      for (uint32_t t = 0; t < n; ++t) {
        d[x * dst.sampleStep + t * dst.rowStep] = sample(s[static_cast<ptrdiff_t>(t) * srcStride + x]);
      }
    }
  }
}

// `rows` source rows of `width` samples. Destinations whose samples lie side
// by side (plain rows, and the top-bottom flip) take the contiguous loop.
template <class Sample>
void MapPlane(const uint8_t* src, uint32_t srcStride, uint32_t width, uint32_t rows, const PlaneDst& dst,
              Sample sample) {
  const ptrdiff_t step = dst.sampleStep;
  if (step == 1) {
    WalkPlaneRows(src, srcStride, dst.start, dst.rowStep, rows, [&](const uint8_t* s, uint8_t* d) {
      for (uint32_t x = 0; x < width; ++x) d[x] = sample(s[x]);
    });
  } else if (dst.rowStep == 1 || dst.rowStep == -1) {
    MapPlaneTurned(src, srcStride, width, rows, dst, sample);
  } else {
    WalkPlaneRows(src, srcStride, dst.start, dst.rowStep, rows, [&](const uint8_t* s, uint8_t* d) {
      for (uint32_t x = 0; x < width; ++x) d[static_cast<ptrdiff_t>(x) * step] = sample(s[x]);
    });
  }
}

// Same size: width x height luma, then (width / 2) x (height / 2) Cb and Cr;
// a picture of one row gets no chroma.
template <class Luma, class Chroma>
void Map420(const uint8_t* const src[3], const uint32_t strides[3], uint32_t width, uint32_t height,
            const Planar420Dst& dst, Luma luma, Chroma chroma) {
  MapPlane(src[0], strides[0], width, height, dst.plane[0], luma);
  if (height < 2) return;
  MapPlane(src[1], strides[1], width / 2, height / 2, dst.plane[1], chroma);
  MapPlane(src[2], strides[2], width / 2, height / 2, dst.plane[2], chroma);
}

// Any ratio, in 2x2 output blocks: each output row of a pair samples luma
// bilinearly at its own vertical position; the block's chroma is the source
// sample nearest the centre of the four luma positions.
template <class Luma, class Chroma>
void Resize420(const uint8_t* const src[3], const uint32_t strides[3], int32_t srcWidth, int32_t srcHeight,
               int32_t dstWidth, int32_t dstHeight, const Planar420Dst& dst, Luma luma, Chroma chroma) {
  const uint32_t sx = static_cast<uint32_t>(ResizeStep(srcWidth, dstWidth));
  const uint32_t sy = static_cast<uint32_t>(ResizeStep(srcHeight, dstHeight));
  const int32_t last = srcWidth - 1;
  const PlaneDst& y = dst.plane[0];
  const PlaneDst& cb = dst.plane[1];
  const PlaneDst& cr = dst.plane[2];
  for (int32_t n = 0; 2 * n < dstHeight; ++n) {
    const RowPairSources420 rows(src, strides, sy, static_cast<uint32_t>(n));
    const PlaneRowPair& top = rows.top;
    const PlaneRowPair& bottom = rows.bottom;
    const uint8_t* cbRow = rows.cb;
    const uint8_t* crRow = rows.cr;
    uint8_t* up = y.start + 2 * n * y.rowStep;
    uint8_t* down = up + y.rowStep;
    uint8_t* cbOut = cb.start + n * cb.rowStep;
    uint8_t* crOut = cr.start + n * cr.rowStep;
    for (int32_t m = 0; 2 * m < dstWidth; ++m) {
      const uint32_t x0 = static_cast<uint32_t>(2 * m) * sx;
      const uint32_t x1 = x0 + sx;
      const ptrdiff_t ccol = static_cast<ptrdiff_t>((x0 >> 16) + (x1 >> 16) + 1) >> 2;
      const ptrdiff_t at = 2 * m * y.sampleStep;
      up[at] = luma(top.At(x0, last));
      up[at + y.sampleStep] = luma(top.At(x1, last));
      down[at] = luma(bottom.At(x0, last));
      down[at + y.sampleStep] = luma(bottom.At(x1, last));
      cbOut[m * cb.sampleStep] = chroma(cbRow[ccol]);
      crOut[m * cr.sampleStep] = chroma(crRow[ccol]);
    }
  }
}

}  // namespace scrim
