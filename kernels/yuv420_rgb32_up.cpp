// Enlarging YCbCr 4:2:0 to ARGB32, ABGR32 and RGB888 through line buffers:
// the enlargement walks of the RGB565 family, rows stretched by the 32-bit
// and 24-bit line interpolators. ABGR32 converts lines with ConvertBGR.
#include "kernels/enlarge_walk.h"
#include "kernels/rgb32_writers.h"
#include "kernels/yuv420_rgb32.h"

using namespace scrim;

namespace {

constexpr uint32_t kMissingLines = 0xFFFFFFFFu;

// The 32-bit stretchers store through memcpy: a row need not be 4-byte aligned.
inline uint32_t* Row32(uint8_t* dst, int32_t j, int32_t pitch) {
  return reinterpret_cast<uint32_t*>(dst + Row32Offset(j, pitch));
}

uint32_t Up32(ImgPrcContext* ctx, uint8_t* const* lines, const uint8_t* const* src, const uint32_t* strides,
              int32_t sw, int32_t sh, uint8_t* dst, int32_t pitch, int32_t dw, int32_t dh, uint32_t alpha,
              SpreadConvert spread) {
  if (dh < 1) return 0;
  if (!HasLines(lines, 4)) return kMissingLines;
  const uint32_t sx = static_cast<uint32_t>(ResizeStep(sw, dw));
  EnlargeRows(ctx, lines, src, strides, sw, sh, dh, spread, [&](const uint64_t* line, int32_t j) {
    HLerp32(line, Row32(dst, j, pitch), sx, dw, alpha & 0xFF);
  });
  return 0;
}

uint32_t Case1_32(ImgPrcContext* ctx, uint8_t* const* lines, const uint8_t* const* src,
                  const uint32_t* strides, int32_t sw, uint8_t* dst, int32_t pitch, int32_t dh,
                  uint32_t alpha, SpreadConvert spread) {
  if (dh < 1) return 0;
  if (!HasLines(lines, 4)) return kMissingLines;
  EnlargeRowsCase1(ctx, lines, src, strides, sw, dh, spread, [&](const uint64_t* line, int32_t j) {
    HLerp32_25(line, Row32(dst, j, pitch), sw, alpha & 0xFF);
  });
  return 0;
}

uint32_t Case2_32(ImgPrcContext* ctx, uint8_t* const* lines, const uint8_t* const* src,
                  const uint32_t* strides, int32_t sw, int32_t sh, uint8_t* dst, int32_t pitch, int32_t dh,
                  uint32_t alpha, SpreadConvert spread) {
  if (dh < 1) return 0;
  if (!HasLines(lines, 4)) return kMissingLines;
  EnlargeRows(ctx, lines, src, strides, sw, sh, dh, spread, [&](const uint64_t* line, int32_t j) {
    HLerp32_23(line, Row32(dst, j, pitch), sw, alpha & 0xFF);
  });
  return 0;
}

}  // namespace

extern "C" SCRIM_API uint32_t _ORUYCbCr420ToARGB32RszUp(ImgPrcContext* ctx, uint8_t* const* lineBuffers,
                                                        const uint8_t* const* src, const uint32_t* srcStrides,
                                                        int32_t srcWidth, int32_t srcHeight, uint8_t* dst,
                                                        int32_t pitch, int32_t dstWidth, int32_t dstHeight,
                                                        uint32_t alpha) {
  return Up32(ctx, lineBuffers, src, srcStrides, srcWidth, srcHeight, dst, pitch, dstWidth, dstHeight, alpha,
              Convert);
}

extern "C" SCRIM_API uint32_t _ORUYCbCr420ToARGB32Case1(ImgPrcContext* ctx, uint8_t* const* lineBuffers,
                                                        const uint8_t* const* src, const uint32_t* srcStrides,
                                                        int32_t srcWidth, uint8_t* dst, int32_t pitch,
                                                        int32_t dstHeight, uint32_t alpha) {
  return Case1_32(ctx, lineBuffers, src, srcStrides, srcWidth, dst, pitch, dstHeight, alpha, Convert);
}

extern "C" SCRIM_API uint32_t _ORUYCbCr420ToARGB32Case2(ImgPrcContext* ctx, uint8_t* const* lineBuffers,
                                                        const uint8_t* const* src, const uint32_t* srcStrides,
                                                        int32_t srcWidth, int32_t srcHeight, uint8_t* dst,
                                                        int32_t pitch, int32_t dstHeight, uint32_t alpha) {
  return Case2_32(ctx, lineBuffers, src, srcStrides, srcWidth, srcHeight, dst, pitch, dstHeight, alpha,
                  Convert);
}

extern "C" SCRIM_API uint32_t _ORUYCbCr420ToABGR32RszUp(ImgPrcContext* ctx, uint8_t* const* lineBuffers,
                                                        const uint8_t* const* src, const uint32_t* srcStrides,
                                                        int32_t srcWidth, int32_t srcHeight, uint8_t* dst,
                                                        int32_t pitch, int32_t dstWidth, int32_t dstHeight,
                                                        uint32_t alpha) {
  return Up32(ctx, lineBuffers, src, srcStrides, srcWidth, srcHeight, dst, pitch, dstWidth, dstHeight, alpha,
              ConvertBGR);
}

extern "C" SCRIM_API uint32_t _ORUYCbCr420ToABGR32Case1(ImgPrcContext* ctx, uint8_t* const* lineBuffers,
                                                        const uint8_t* const* src, const uint32_t* srcStrides,
                                                        int32_t srcWidth, uint8_t* dst, int32_t pitch,
                                                        int32_t dstHeight, uint32_t alpha) {
  return Case1_32(ctx, lineBuffers, src, srcStrides, srcWidth, dst, pitch, dstHeight, alpha, ConvertBGR);
}

extern "C" SCRIM_API uint32_t _ORUYCbCr420ToABGR32Case2(ImgPrcContext* ctx, uint8_t* const* lineBuffers,
                                                        const uint8_t* const* src, const uint32_t* srcStrides,
                                                        int32_t srcWidth, int32_t srcHeight, uint8_t* dst,
                                                        int32_t pitch, int32_t dstHeight, uint32_t alpha) {
  return Case2_32(ctx, lineBuffers, src, srcStrides, srcWidth, srcHeight, dst, pitch, dstHeight, alpha,
                  ConvertBGR);
}

extern "C" SCRIM_API uint32_t _ORUYCbCr420ToRGB888RszUp(ImgPrcContext* ctx, uint8_t* const* lineBuffers,
                                                        const uint8_t* const* src, const uint32_t* srcStrides,
                                                        int32_t srcWidth, int32_t srcHeight, uint8_t* dst,
                                                        int32_t pitch, int32_t dstWidth, int32_t dstHeight) {
  if (dstHeight < 1) return 0;
  if (!HasLines(lineBuffers, 4)) return kMissingLines;
  const uint32_t sx = static_cast<uint32_t>(ResizeStep(srcWidth, dstWidth));
  EnlargeRows(
      ctx, lineBuffers, src, srcStrides, srcWidth, srcHeight, dstHeight, Convert,
      [&](const uint64_t* line, int32_t j) { HLerp24(line, dst + Row24Offset(j, pitch), sx, dstWidth); });
  return 0;
}
