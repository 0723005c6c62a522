// Planar 4:2:0 to planar 4:2:0 with rotation, resizing and colour
// adjustment: each kernel is one instantiation of the same-size or the
// resized walk with its destination and its per-sample step.
#include "kernels/yuv420_planar.h"
#include "kernels/yuv420_planar_walk.h"

using namespace scrim;

namespace {

constexpr uint32_t kMissing = 0xFFFFFFFFu;

bool HasTables(const ImgPrcContext* ctx) { return ctx->lumaAdjustTable && ctx->chromaAdjustTable; }

TableSample LumaTable(const ImgPrcContext* ctx) { return {ctx->lumaAdjustTable}; }
TableSample ChromaTable(const ImgPrcContext* ctx) { return {ctx->chromaAdjustTable}; }

}  // namespace

extern "C" uint32_t _ORUYCbCrAdjust(ImgPrcContext* ctx, const uint8_t* const srcPlanes[3],
                                    const uint32_t srcStrides[3], uint32_t width, uint32_t height,
                                    uint8_t* const dstPlanes[3], const uint32_t dstStrides[3]) {
  for (int p = 0; p < 3; ++p) {
    if (!srcPlanes[p] || !dstPlanes[p]) return kMissing;
  }
  if (!HasTables(ctx)) return kMissing;
  Map420(srcPlanes, srcStrides, width, height, RowsDst(dstPlanes, dstStrides), LumaTable(ctx),
         ChromaTable(ctx));
  return 0;
}

extern "C" uint32_t _ORUYCbCr420Rot(const ImgPrcRotationRecord* rec, const uint8_t* const srcPlanes[3],
                                    const uint32_t srcStrides[3], uint32_t width, uint32_t height) {
  if (!rec) return kMissing;
  Map420(srcPlanes, srcStrides, width, height, RecordDst(*rec), SameSample{}, SameSample{});
  return 0;
}

extern "C" uint32_t _ORUYCbCr420RotAdjust(ImgPrcContext* ctx, const uint8_t* const srcPlanes[3],
                                          const uint32_t srcStrides[3], uint32_t width, uint32_t height) {
  if (!ctx->rotationRecord || !HasTables(ctx)) return kMissing;
  Map420(srcPlanes, srcStrides, width, height, RecordDst(*ctx->rotationRecord), LumaTable(ctx),
         ChromaTable(ctx));
  return 0;
}

extern "C" uint32_t _ORUYCbCr420Rsz(const uint8_t* const srcPlanes[3], const uint32_t srcStrides[3],
                                    int32_t srcWidth, int32_t srcHeight, uint8_t* const dstPlanes[3],
                                    const uint32_t dstStrides[3], int32_t dstWidth, int32_t dstHeight) {
  Resize420(srcPlanes, srcStrides, srcWidth, srcHeight, dstWidth, dstHeight, RowsDst(dstPlanes, dstStrides),
            SameSample{}, SameSample{});
  return 0;
}

extern "C" uint32_t _ORUYCbCr420RszRot(const ImgPrcRotationRecord* rec, const uint8_t* const srcPlanes[3],
                                       const uint32_t srcStrides[3], int32_t srcWidth, int32_t srcHeight,
                                       int32_t dstWidth, int32_t dstHeight) {
  if (!rec) return kMissing;
  Resize420(srcPlanes, srcStrides, srcWidth, srcHeight, dstWidth, dstHeight, RecordDst(*rec), SameSample{},
            SameSample{});
  return 0;
}

extern "C" uint32_t _ORUYCbCr420RszAdjust(ImgPrcContext* ctx, const uint8_t* const srcPlanes[3],
                                          const uint32_t srcStrides[3], int32_t srcWidth, int32_t srcHeight,
                                          uint8_t* const dstPlanes[3], const uint32_t dstStrides[3],
                                          int32_t dstWidth, int32_t dstHeight) {
  if (!HasTables(ctx)) return kMissing;
  Resize420(srcPlanes, srcStrides, srcWidth, srcHeight, dstWidth, dstHeight, RowsDst(dstPlanes, dstStrides),
            LumaTable(ctx), ChromaTable(ctx));
  return 0;
}

extern "C" uint32_t _ORUYCbCr420RszRotAdjust(ImgPrcContext* ctx, const uint8_t* const srcPlanes[3],
                                             const uint32_t srcStrides[3], int32_t srcWidth,
                                             int32_t srcHeight, int32_t dstWidth, int32_t dstHeight) {
  if (!ctx->rotationRecord || !HasTables(ctx)) return kMissing;
  Resize420(srcPlanes, srcStrides, srcWidth, srcHeight, dstWidth, dstHeight, RecordDst(*ctx->rotationRecord),
            LumaTable(ctx), ChromaTable(ctx));
  return 0;
}
