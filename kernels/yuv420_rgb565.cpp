// Same-size YCbCr 4:2:0 to RGB565 / RGB555: one walk over 2x2 blocks, a colour
// step per block and a writer that places the block (plain rows or rotation
// cursors).
#include "kernels/block_walk.h"
#include "kernels/rgb565_writers.h"
#include "kernels/rgb_steps.h"
#include "kernels/yuv420_rgb16.h"
#include "kernels/yuv_color_step.h"

using namespace scrim;

namespace {

using Color565 = SharedChroma<Rgb565Step>;

// Keyed RGB555: each pixel compares its own samples with the key; a match is
// written as 0x0000 (transparent) without computing its colour.
struct Color555Keyed {
  ColorTables tab;
  uint32_t key;
  uint16_t One(uint8_t y, uint8_t cb, uint8_t cr, ChromaTerms t) const {
    if ((static_cast<uint32_t>(y) << 16 | static_cast<uint32_t>(cb) << 8 | cr) == key) return 0;
    return Rgb555Opaque(tab.Luma(y), t);
  }
  Block4<uint16_t> operator()(uint8_t y00, uint8_t y10, uint8_t y01, uint8_t y11, uint8_t cb,
                              uint8_t cr) const {
    const ChromaTerms t = ChromaTermsOf(tab, cb, cr);
    return {One(y00, cb, cr, t), One(y10, cb, cr, t), One(y01, cb, cr, t), One(y11, cb, cr, t)};
  }
};

}  // namespace

extern "C" SCRIM_API uint32_t _ORUYCbCr420ToRGB565(ImgPrcContext* ctx, const uint8_t* const* src,
                                                   const uint32_t* srcStrides, int32_t width, int32_t height,
                                                   uint8_t* dst, int32_t pitch) {
  if (height < 1) return 0;
  PlainBlockWriter out(dst, pitch);
  Walk420(src, srcStrides, width, height, Color565{ColorTables(ctx), {}}, out);
  return 0;
}

extern "C" SCRIM_API uint32_t _ORUYCbCr420ToRGB565Rot(ImgPrcContext* ctx, const uint8_t* const* src,
                                                      const uint32_t* srcStrides, int32_t width,
                                                      int32_t height) {
  if (height < 1) return 0;
  if (ctx->rotationRecord == nullptr) return 0xFFFFFFFFu;
  CursorBlockWriter out(*ctx->rotationRecord);
  Walk420(src, srcStrides, width, height, Color565{ColorTables(ctx), {}}, out);
  return 0;
}

extern "C" SCRIM_API uint32_t _ORUYCbCr420ToRGB555(ImgPrcContext* ctx, const uint8_t* const* src,
                                                   const uint32_t* srcStrides, int32_t width, int32_t height,
                                                   uint8_t* dst, int32_t pitch, uint32_t colorKey) {
  if (height < 1) return 0;
  PlainBlockWriter out(dst, pitch);
  Walk420(src, srcStrides, width, height, Color555Keyed{ColorTables(ctx), colorKey}, out);
  return 0;
}
