// Same-size and any-ratio YCbCr 4:2:0 to ARGB32, ABGR32 and RGB888: the
// block walks of the RGB565 family with the 8-bit colour step of each family
// and its store (rows, or the rotation record's cursors).
#include "kernels/yuv420_rgb32.h"
#include "kernels/block_walk.h"
#include "kernels/resize_walk.h"
#include "kernels/rgb32_writers.h"
#include "kernels/rgb565_writers.h"
#include "kernels/rgb_steps.h"
#include "kernels/yuv420_rgb565_rows.h"

using namespace scrim;

namespace {

constexpr uint32_t kMissingRecord = 0xFFFFFFFFu;

// The 32-bit pixel rows of a step's family (RGB888 takes ARGB's, alpha 0).
inline const RowSet<const Rgb565RowPair*>& PixelRows(ArgbStep) { return argb_block_rows; }
inline const RowSet<const Rgb565RowPair*>& PixelRows(AbgrStep) { return abgr_block_rows; }

// The same-size walk: with vector rows in force (tables their integer forms
// reproduce), each row pair is converted a piece of kPiece blocks at a time
// by the family's pixel rows and the writer places the finished pixels;
// otherwise block by block through the lookups.
constexpr size_t kPiece = 64;
template <class Step, class Writer>
void Walk(const ImgPrcContext* ctx, const uint8_t* const* src, const uint32_t* strides, int32_t width,
          int32_t height, Step step, Writer& out) {
  if (Rgb565RowOf(ctx) == nullptr) {
    Walk420(src, strides, width, height, SharedChroma<Step>{ColorTables(ctx), step}, out);
    return;
  }
  const Row<const Rgb565RowPair*> row = pick_row(PixelRows(step));
  const size_t blocks = BlocksOf(width);
  uint32_t px[2][2 * kPiece];
  for (int32_t k = 0; 2 * k < height; ++k) {
    out.RowPair(k);
    for (size_t m0 = 0; m0 < blocks; m0 += kPiece) {
      const size_t n = blocks - m0 < kPiece ? blocks - m0 : kPiece;
      Rgb565RowPair rp = RowPairAt(ctx, src, strides, static_cast<size_t>(k));
      rp.y0 += 2 * m0, rp.y1 += 2 * m0, rp.cb += m0, rp.cr += m0;
      rp.d0 = reinterpret_cast<uint8_t*>(px[0]);
      rp.d1 = reinterpret_cast<uint8_t*>(px[1]);
      rp.key = step.alpha;
      run_row(row, 0, n, static_cast<const Rgb565RowPair*>(&rp));
      for (size_t i = 0; i < n; ++i)
        out.Block(static_cast<int32_t>(m0 + i), px[0][2 * i], px[0][2 * i + 1], px[1][2 * i],
                  px[1][2 * i + 1]);
    }
  }
}

template <class Pair, class Step>
uint32_t Plain(const ImgPrcContext* ctx, const uint8_t* const* src, const uint32_t* strides, int32_t width,
               int32_t height, uint8_t* dst, int32_t pitch, Step step) {
  if (height < 1) return 0;
  RowsBlockWriter<Pair> out(dst, pitch);
  Walk(ctx, src, strides, width, height, step, out);
  return 0;
}

template <class Px, class Step>
uint32_t Rot(const ImgPrcContext* ctx, const uint8_t* const* src, const uint32_t* strides, int32_t width,
             int32_t height, Step step) {
  if (height < 1) return 0;
  if (ctx->rotationRecord == nullptr) return kMissingRecord;
  CursorWriter<Px> out(*ctx->rotationRecord);
  Walk(ctx, src, strides, width, height, step, out);
  return 0;
}

template <class Pair, class Step>
uint32_t Rsz(const ImgPrcContext* ctx, const uint8_t* const* src, const uint32_t* strides, int32_t sw,
             int32_t sh, uint8_t* dst, int32_t pitch, int32_t dw, int32_t dh, Step step) {
  if (dh < 1) return 0;
  RowsBlockWriter<Pair> out(dst, pitch);
  WalkResized<ChromaRows::kShared420>(ColorTables(ctx), step, src, strides, sw, sh, dw, dh, out);
  return 0;
}

template <class Px, class Step>
uint32_t RszRot(const ImgPrcContext* ctx, const uint8_t* const* src, const uint32_t* strides, int32_t sw,
                int32_t sh, int32_t dw, int32_t dh, Step step) {
  if (dh < 1) return 0;
  if (ctx->rotationRecord == nullptr) return kMissingRecord;
  CursorWriter<Px> out(*ctx->rotationRecord);
  WalkResized<ChromaRows::kShared420>(ColorTables(ctx), step, src, strides, sw, sh, dw, dh, out);
  return 0;
}

}  // namespace

extern "C" SCRIM_API uint32_t _ORUYCbCr420ToARGB32(ImgPrcContext* ctx, const uint8_t* const* src,
                                                   const uint32_t* srcStrides, int32_t width, int32_t height,
                                                   uint8_t* dst, int32_t pitch, uint32_t alpha) {
  return Plain<Wide32Pair>(ctx, src, srcStrides, width, height, dst, pitch, ArgbStep{AlphaBits(alpha)});
}

extern "C" SCRIM_API uint32_t _ORUYCbCr420ToARGB32Rot(ImgPrcContext* ctx, const uint8_t* const* src,
                                                      const uint32_t* srcStrides, int32_t width,
                                                      int32_t height, uint32_t alpha) {
  return Rot<Store32Wide>(ctx, src, srcStrides, width, height, ArgbStep{AlphaBits(alpha)});
}

extern "C" SCRIM_API uint32_t _ORUYCbCr420ToARGB32Rsz(ImgPrcContext* ctx, const uint8_t* const* src,
                                                      const uint32_t* srcStrides, int32_t srcWidth,
                                                      int32_t srcHeight, uint8_t* dst, int32_t pitch,
                                                      int32_t dstWidth, int32_t dstHeight, uint32_t alpha) {
  return Rsz<Wide32Pair>(ctx, src, srcStrides, srcWidth, srcHeight, dst, pitch, dstWidth, dstHeight,
                         ArgbStep{AlphaBits(alpha)});
}

extern "C" SCRIM_API uint32_t _ORUYCbCr420ToARGB32RszRot(ImgPrcContext* ctx, const uint8_t* const* src,
                                                         const uint32_t* srcStrides, int32_t srcWidth,
                                                         int32_t srcHeight, int32_t dstWidth,
                                                         int32_t dstHeight, uint32_t alpha) {
  return RszRot<Store32Wide>(ctx, src, srcStrides, srcWidth, srcHeight, dstWidth, dstHeight,
                             ArgbStep{AlphaBits(alpha)});
}
extern "C" SCRIM_API uint32_t _ORUYCbCr420ToABGR32(ImgPrcContext* ctx, const uint8_t* const* src,
                                                   const uint32_t* srcStrides, int32_t width, int32_t height,
                                                   uint8_t* dst, int32_t pitch, uint32_t alpha) {
  return Plain<Wide32Pair>(ctx, src, srcStrides, width, height, dst, pitch, AbgrStep{AlphaBits(alpha)});
}

extern "C" SCRIM_API uint32_t _ORUYCbCr420ToABGR32Rot(ImgPrcContext* ctx, const uint8_t* const* src,
                                                      const uint32_t* srcStrides, int32_t width,
                                                      int32_t height, uint32_t alpha) {
  return Rot<Store32Wide>(ctx, src, srcStrides, width, height, AbgrStep{AlphaBits(alpha)});
}

extern "C" SCRIM_API uint32_t _ORUYCbCr420ToABGR32Rsz(ImgPrcContext* ctx, const uint8_t* const* src,
                                                      const uint32_t* srcStrides, int32_t srcWidth,
                                                      int32_t srcHeight, uint8_t* dst, int32_t pitch,
                                                      int32_t dstWidth, int32_t dstHeight, uint32_t alpha) {
  return Rsz<Wide32Pair>(ctx, src, srcStrides, srcWidth, srcHeight, dst, pitch, dstWidth, dstHeight,
                         AbgrStep{AlphaBits(alpha)});
}

extern "C" SCRIM_API uint32_t _ORUYCbCr420ToABGR32RszRot(ImgPrcContext* ctx, const uint8_t* const* src,
                                                         const uint32_t* srcStrides, int32_t srcWidth,
                                                         int32_t srcHeight, int32_t dstWidth,
                                                         int32_t dstHeight, uint32_t alpha) {
  return RszRot<Store32Wide>(ctx, src, srcStrides, srcWidth, srcHeight, dstWidth, dstHeight,
                             AbgrStep{AlphaBits(alpha)});
}
extern "C" SCRIM_API uint32_t _ORUYCbCr420ToRGB888(ImgPrcContext* ctx, const uint8_t* const* src,
                                                   const uint32_t* srcStrides, int32_t width, int32_t height,
                                                   uint8_t* dst, int32_t pitch) {
  return Plain<Rgb888Pair>(ctx, src, srcStrides, width, height, dst, pitch, ArgbStep{0});
}

extern "C" SCRIM_API uint32_t _ORUYCbCr420ToRGB888Rot(ImgPrcContext* ctx, const uint8_t* const* src,
                                                      const uint32_t* srcStrides, int32_t width,
                                                      int32_t height) {
  return Rot<Store888>(ctx, src, srcStrides, width, height, ArgbStep{0});
}

extern "C" SCRIM_API uint32_t _ORUYCbCr420ToRGB888Rsz(ImgPrcContext* ctx, const uint8_t* const* src,
                                                      const uint32_t* srcStrides, int32_t srcWidth,
                                                      int32_t srcHeight, uint8_t* dst, int32_t pitch,
                                                      int32_t dstWidth, int32_t dstHeight) {
  return Rsz<Rgb888Pair>(ctx, src, srcStrides, srcWidth, srcHeight, dst, pitch, dstWidth, dstHeight,
                         ArgbStep{0});
}

extern "C" SCRIM_API uint32_t _ORUYCbCr420ToRGB888RszRot(ImgPrcContext* ctx, const uint8_t* const* src,
                                                         const uint32_t* srcStrides, int32_t srcWidth,
                                                         int32_t srcHeight, int32_t dstWidth,
                                                         int32_t dstHeight) {
  return RszRot<Store888>(ctx, src, srcStrides, srcWidth, srcHeight, dstWidth, dstHeight, ArgbStep{0});
}
