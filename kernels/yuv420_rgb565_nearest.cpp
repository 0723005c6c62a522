// Nearest-neighbour enlargement of YCbCr 4:2:0 to RGB565: source row pairs are
// turned into RGB565 lines (directly, or doubled across by averaging), then
// each output row samples one of them with an error accumulator; a row that
// repeats the previous source row is copied instead of sampled again.
#include <stddef.h>
#include <string.h>

#include "imageproc/interp.h"
#include "kernels/yuv420_rgb16.h"
#include "kernels/yuv_color_step.h"

using namespace scrim;

void Convert_565(const ImgPrcContext* ctx, const uint8_t* y0, const uint8_t* y1, const uint8_t* cb,
                 const uint8_t* cr, uint16_t* out0, uint16_t* out1, int32_t width) {
  const ColorTables tab(ctx);
  int32_t blocks = width >> 1;
  if (blocks < 1) blocks = 1;
  for (int32_t m = 0; m < blocks; ++m) {
    const ChromaTerms t = ChromaTermsOf(tab, cb[m], cr[m]);
    out0[2 * m] = Rgb565(tab.Luma(y0[2 * m]), t);
    out0[2 * m + 1] = Rgb565(tab.Luma(y0[2 * m + 1]), t);
    out1[2 * m] = Rgb565(tab.Luma(y1[2 * m]), t);
    out1[2 * m + 1] = Rgb565(tab.Luma(y1[2 * m + 1]), t);
  }
}

namespace {

// Average of two spread entries from their sum (fields one bit wider).
inline uint32_t Average565(uint64_t s) {
  return static_cast<uint32_t>(((s >> 12) & 0xF800) | ((s >> 6) & 0x7E0) | ((s >> 1) & 31));
}
inline uint32_t Single565(uint64_t e) {
  return static_cast<uint32_t>(((e >> 11) & 0xF800) | ((e >> 5) & 0x7E0) | (e & 31));
}

// In place: entry i (bytes 8i..8i+7) is read before the pixel pair of entry i
// (bytes 4i..4i+3) is stored, and the previous entry is carried in a register,
// so the stores never overtake the loads. Accesses go through memcpy because
// the same bytes are seen as 64-bit entries and as 16-bit pixels.
void DoubleOne(uint8_t* out, const uint8_t* in, int32_t count) {
  uint64_t prev;
  memcpy(&prev, in, 8);
  for (int32_t i = 0; i < count; ++i) {
    uint64_t e;
    memcpy(&e, in + 8 * static_cast<ptrdiff_t>(i), 8);
    const uint32_t pair = Average565(prev + e) | Single565(e) << 16;
    memcpy(out + 4 * static_cast<ptrdiff_t>(i), &pair, 4);
    prev = e;
  }
}

}  // namespace

void DoubleLine(uint16_t* out0, uint16_t* out1, const uint64_t* in0, const uint64_t* in1, int32_t count) {
  if (count < 1) count = 1;
  DoubleOne(reinterpret_cast<uint8_t*>(out0), reinterpret_cast<const uint8_t*>(in0), count);
  DoubleOne(reinterpret_cast<uint8_t*>(out1), reinterpret_cast<const uint8_t*>(in1), count);
}

namespace {

// The nearest walk. convertPair(y0, y1, cb, cr, lineA, lineB) fills the two
// RGB565 lines (lineWidth pixels each) from a source row pair.
template <class ConvertPair>
uint32_t NearestRows(uint8_t* const* lines, const uint8_t* const* src, const uint32_t* strides,
                     int32_t srcHeight, int32_t lineWidth, uint8_t* dst, int32_t pitch, int32_t dstWidth,
                     int32_t dstHeight, ConvertPair convertPair) {
  if (dstHeight < 1 || dstWidth < 1) return 0;
  if (lines == nullptr || lines[0] == nullptr || lines[1] == nullptr) return 0xFFFFFFFFu;
  const int32_t qx = lineWidth / dstWidth;
  const int32_t rx = lineWidth - qx * dstWidth;
  const int32_t qy = srcHeight / dstHeight;
  const int32_t ry = srcHeight - qy * dstHeight;
  const ptrdiff_t rowBytes = static_cast<ptrdiff_t>(pitch >> 2) * 8;
  const ptrdiff_t ys = strides[0];
  const uint8_t* y = src[0];
  const uint8_t* cb = src[1];
  const uint8_t* cr = src[2];
  int32_t pair = -1;   // source row pair held in the lines
  int32_t k = 2;       // row within that pair; 2 asks for the next pair
  int32_t acc = 0;     // vertical error accumulator
  int32_t shown = -1;  // source row of the previous output row
  for (int32_t j = 0; j < dstHeight; ++j, dst += rowBytes) {
    if (k >= 2) {
      // Enlarging moves at most one pair on; a smaller destination may skip
      // whole pairs, which are then not converted.
      for (; k >= 2; k -= 2) {
        if (k < 4) convertPair(y, y + ys, cb, cr, lines[0], lines[1]);
        y += 2 * ys;
        cb += strides[1];
        cr += strides[2];
        ++pair;
      }
    }
    const int32_t row = 2 * pair + k;
    if (row == shown) {
      memcpy(dst, dst - rowBytes, static_cast<size_t>(dstWidth) * 2);
    } else {
      HLerp_Nearest(reinterpret_cast<const uint16_t*>(lines[k]), dst, dstWidth, qx, rx);
    }
    shown = row;
    acc += ry;
    k += qy;
    if (acc >= dstHeight) {
      ++k;
      acc -= dstHeight;
    }
  }
  return 0;
}

}  // namespace

extern "C" SCRIM_API uint32_t _ORUYCbCr420ToRGB565RszUp_Nearest(
    ImgPrcContext* ctx, uint8_t* const* lineBuffers, const uint8_t* const* src, const uint32_t* srcStrides,
    int32_t srcWidth, int32_t srcHeight, uint8_t* dst, int32_t pitch, int32_t dstWidth, int32_t dstHeight) {
  return NearestRows(lineBuffers, src, srcStrides, srcHeight, srcWidth, dst, pitch, dstWidth, dstHeight,
                     [&](const uint8_t* y0, const uint8_t* y1, const uint8_t* cb, const uint8_t* cr,
                         uint8_t* a, uint8_t* b) {
                       Convert_565(ctx, y0, y1, cb, cr, reinterpret_cast<uint16_t*>(a),
                                   reinterpret_cast<uint16_t*>(b), srcWidth);
                     });
}

extern "C" SCRIM_API uint32_t _ORUYCbCr420ToRGB565RszUp_NearLinear(
    ImgPrcContext* ctx, uint8_t* const* lineBuffers, const uint8_t* const* src, const uint32_t* srcStrides,
    int32_t srcWidth, int32_t srcHeight, uint8_t* dst, int32_t pitch, int32_t dstWidth, int32_t dstHeight) {
  return NearestRows(lineBuffers, src, srcStrides, srcHeight, 2 * srcWidth, dst, pitch, dstWidth, dstHeight,
                     [&](const uint8_t* y0, const uint8_t* y1, const uint8_t* cb, const uint8_t* cr,
                         uint8_t* a, uint8_t* b) {
                       uint64_t* la = reinterpret_cast<uint64_t*>(a);
                       uint64_t* lb = reinterpret_cast<uint64_t*>(b);
                       Convert(ctx, y0, y1, cb, cr, la, lb, srcWidth);
                       DoubleLine(reinterpret_cast<uint16_t*>(a), reinterpret_cast<uint16_t*>(b), la, lb,
                                  srcWidth);
                     });
}
