// Enlarging YCbCr 4:2:0 to RGB565 through line buffers: source row pairs are
// converted into spread lines once, blended vertically into the blend slot,
// then stretched across by one of the line interpolators.
#include <stddef.h>

#include <type_traits>

#include "kernels/enlarge_rows.h"
#include "kernels/enlarge_walk.h"
#include "kernels/yuv420_rgb16.h"

using namespace scrim;

namespace {

// Each output row starts (pitch / 4, rounded down) * 8 bytes after the one
// before: callers read these rows as 64-bit pixel-pair words.
inline ptrdiff_t WideRowBytes(int32_t pitch) { return static_cast<ptrdiff_t>(pitch >> 2) * 8; }

// One output row of a fixed-ratio member stretched across: over 32-bit lines
// by its row set, chosen once for the picture; over 64-bit ones by the line
// interpolator.
class FixedStretcher {
 public:
  FixedStretcher(const RowSet<const FixedStretchLine*>& rows,
                 void (*wide)(const uint64_t*, uint8_t*, int32_t), int32_t srcWidth)
      : row_(pick_row(rows)),
        wide_(wide),
        width_(srcWidth),
        rounds_(srcWidth >> 2 < 1 ? 1 : static_cast<size_t>(srcWidth >> 2)) {}
  void operator()(const uint32_t* line, uint8_t* out) const {
    const FixedStretchLine l{line, out, rounds_};
    StretchFixed(row_, &l);
  }
  void operator()(const uint64_t* line, uint8_t* out) const { wide_(line, out, width_); }

 private:
  FixedStretchRow row_;
  void (*wide_)(const uint64_t*, uint8_t*, int32_t);
  int32_t width_;
  size_t rounds_;
};

}  // namespace

extern "C" SCRIM_API uint32_t _ORUYCbCr420ToRGB565RszUp(ImgPrcContext* ctx, uint8_t* const* lineBuffers,
                                                        const uint8_t* const* src, const uint32_t* srcStrides,
                                                        int32_t srcWidth, int32_t srcHeight, uint8_t* dst,
                                                        int32_t pitch, int32_t dstWidth, int32_t dstHeight) {
  if (dstHeight < 1) return 0;
  if (!HasLines(lineBuffers, 4)) return 0xFFFFFFFFu;
  const uint32_t sx = static_cast<uint32_t>(ResizeStep(srcWidth, dstWidth));
  const ptrdiff_t rowBytes = WideRowBytes(pitch);
  const size_t pairs = dstWidth >> 1 < 1 ? 1 : static_cast<size_t>(dstWidth >> 1);
  // Each output row stretched by HLerp's blends through its row set, chosen
  // once for the picture; its positions are worked out on the first row and
  // kept for the others where the instance has room for them (an instance's
  // plan holds its destination's pixel pairs).
  StretchPlan plan{ctx->stretchPlan, 0, 0, 0, 0};
  const bool keep = ctx->stretchPlan != nullptr && pairs <= ctx->workDstWidth / 2 + 1;
  WithSpreadLines(ctx, [&](auto* tag) {
    using Entry = std::remove_pointer_t<decltype(tag)>;
    const Hlerp565RowOf<Entry> stretch = PickHlerp565Row<Entry>(sx, dstWidth);
    EnlargeRows<Entry>(ctx, lineBuffers, src, srcStrides, srcWidth, srcHeight, dstHeight, Convert,
                       [&](const Entry* line, int32_t j) {
                         const Hlerp565LineOf<Entry> l{line, dst + j * rowBytes, sx, keep ? &plan : nullptr};
                         run_row(stretch, 0, pairs, static_cast<const Hlerp565LineOf<Entry>*>(&l));
                       });
  });
  return 0;
}

extern "C" SCRIM_API uint32_t _ORUYCbCr420ToRGB565RszUpRot(ImgPrcContext* ctx, uint8_t* const* lineBuffers,
                                                           const uint8_t* const* src,
                                                           const uint32_t* srcStrides, int32_t srcWidth,
                                                           int32_t srcHeight, uint8_t* first, int32_t rowStep,
                                                           int32_t colStep, int32_t dstWidth,
                                                           int32_t dstHeight) {
  if (dstHeight < 1) return 0;
  if (!HasLines(lineBuffers, 4) || first == nullptr) return 0xFFFFFFFFu;
  const uint32_t sx = static_cast<uint32_t>(ResizeStep(srcWidth, dstWidth));
  // Byte steps used rounded down to whole 16-bit pixels.
  const ptrdiff_t rowBytes = static_cast<ptrdiff_t>(rowStep >> 1) * 2;
  const int32_t colPixels = colStep >> 1;
  EnlargeRows(ctx, lineBuffers, src, srcStrides, srcWidth, srcHeight, dstHeight, Convert,
              [&](const uint64_t* line, int32_t j) {
                HLerpRot(line, first + j * rowBytes, sx, dstWidth, colPixels);
              });
  return 0;
}

extern "C" SCRIM_API uint32_t _ORUYCbCr420ToRGB565Case2(ImgPrcContext* ctx, uint8_t* const* lineBuffers,
                                                        const uint8_t* const* src, const uint32_t* srcStrides,
                                                        int32_t srcWidth, int32_t srcHeight, uint8_t* dst,
                                                        int32_t pitch, int32_t dstHeight) {
  if (dstHeight < 1) return 0;
  if (!HasLines(lineBuffers, 4)) return 0xFFFFFFFFu;
  const ptrdiff_t rowBytes = WideRowBytes(pitch);
  const FixedStretcher stretch(hlerp565_23_rows, HLerp_23, srcWidth);
  WithSpreadLines(ctx, [&](auto* tag) {
    using Entry = std::remove_pointer_t<decltype(tag)>;
    EnlargeRows<Entry>(ctx, lineBuffers, src, srcStrides, srcWidth, srcHeight, dstHeight, Convert,
                       [&](const Entry* line, int32_t j) { stretch(line, dst + j * rowBytes); });
  });
  return 0;
}

// 5:2 across, 2:1 down.
extern "C" SCRIM_API uint32_t _ORUYCbCr420ToRGB565Case1(ImgPrcContext* ctx, uint8_t* const* lineBuffers,
                                                        const uint8_t* const* src, const uint32_t* srcStrides,
                                                        int32_t srcWidth, uint8_t* dst, int32_t pitch,
                                                        int32_t dstHeight) {
  if (dstHeight < 1) return 0;
  if (!HasLines(lineBuffers, 4)) return 0xFFFFFFFFu;
  const ptrdiff_t rowBytes = WideRowBytes(pitch);
  const FixedStretcher stretch(hlerp565_25_rows, HLerp_25, srcWidth);
  WithSpreadLines(ctx, [&](auto* tag) {
    using Entry = std::remove_pointer_t<decltype(tag)>;
    EnlargeRowsCase1<Entry>(ctx, lineBuffers, src, srcStrides, srcWidth, dstHeight, Convert,
                            [&](const Entry* line, int32_t j) { stretch(line, dst + j * rowBytes); });
  });
  return 0;
}
