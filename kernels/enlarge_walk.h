// The enlargement walk of the YCbCr 4:2:0 to RGB kernels: source row pairs
// are converted into spread lines once (Convert, or ConvertBGR for outputs
// with red in the low byte), cached, blended vertically, and each output row's
// line is handed to a row writer that stretches it across and packs it.
#pragma once

#include <stddef.h>
#include <stdint.h>

#include "imageproc/interp.h"
#include "kernels/enlarge_rows.h"
#include "kernels/resize_step.h"
#include "kernels/yuv420_rgb565_rows.h"

namespace scrim {

// Convert or ConvertBGR.
using SpreadConvert = void (*)(const ImgPrcContext*, const uint8_t*, const uint8_t*, const uint8_t*,
                               const uint8_t*, uint64_t*, uint64_t*, int32_t);

inline bool HasLines(uint8_t* const* lines, int count) {
  if (lines == nullptr) return false;
  for (int i = 0; i < count; ++i)
    if (lines[i] == nullptr) return false;
  return true;
}

// Converts a source row pair (rows r and r + 1, chroma row r >> 1, so a pair
// that starts on an odd row uses its first row's chroma for both) into spread
// lines of Entry. Lines of 32-bit entries hold Convert's values and come from
// the spread rows alone (SpreadLines32 says when a walk keeps them).
template <class Entry = uint64_t>
class RowPairConverter {
 public:
  RowPairConverter(const ImgPrcContext* ctx, const uint8_t* const* src, const uint32_t* strides,
                   int32_t width, SpreadConvert convert)
      : ctx_(ctx), src_(src), strides_(strides), width_(width), convert_(convert) {
    // Convert has vector rows, for tables their integer forms reproduce
    // (the same condition as the RGB565 rows'); chosen once for the picture.
    const auto& rows = SpreadBlockRows(static_cast<Entry*>(nullptr));
    row_.scalar = rows.scalar;
    if (convert == Convert && Rgb565RowOf(ctx) != nullptr) row_ = pick_row(rows);
  }
  void operator()(int32_t r, Entry* out0, Entry* out1) const {
    const uint8_t* y0 = src_[0] + static_cast<ptrdiff_t>(r) * strides_[0];
    const ptrdiff_t c = r >> 1;
    const uint8_t* cb = src_[1] + c * strides_[1];
    const uint8_t* cr = src_[2] + c * strides_[2];
    if (row_.vector.fn == nullptr && sizeof(Entry) == 8) {
      convert_(ctx_, y0, y0 + strides_[0], cb, cr, reinterpret_cast<uint64_t*>(out0),
               reinterpret_cast<uint64_t*>(out1), width_);
      return;
    }
    const Rgb565RowPair rp{y0,
                           y0 + strides_[0],
                           cb,
                           cr,
                           reinterpret_cast<uint8_t*>(out0),
                           reinterpret_cast<uint8_t*>(out1),
                           ctx_,
                           0};
    const size_t pairs = width_ >> 1 < 1 ? 1 : static_cast<size_t>(width_ >> 1);
    run_row(row_, 0, pairs, static_cast<const Rgb565RowPair*>(&rp));
  }
  int32_t width() const { return width_; }

 private:
  const ImgPrcContext* ctx_;
  const uint8_t* const* src_;
  const uint32_t* strides_;
  int32_t width_;
  SpreadConvert convert_;
  Rgb565Row row_{{nullptr, 1}, {nullptr, 1}, nullptr};
};

// Whether a walk may keep 32-bit lines: Convert's entries, and tables the
// spread rows reproduce.
inline bool SpreadLines32(const ImgPrcContext* ctx, SpreadConvert convert) {
  return convert == Convert && Rgb565RowOf(ctx) != nullptr;
}

// Calls walk(Entry* tag) with 32-bit lines' entry type when the walk may keep
// them (Convert's lines), with 64-bit entries otherwise.
template <class Walk>
void WithSpreadLines(const ImgPrcContext* ctx, Walk walk) {
  if (SpreadLines32(ctx, Convert)) {
    walk(static_cast<uint32_t*>(nullptr));
  } else {
    walk(static_cast<uint64_t*>(nullptr));
  }
}

// Three-slot cache of converted source rows (slots A, B, C tagged with their
// row numbers) and a blend slot, so that each source row is converted at most
// once per frame while the vertical position only moves down.
template <class Entry = uint64_t>
class SpreadRowCache {
 public:
  SpreadRowCache(uint8_t* const* lines, const RowPairConverter<Entry>& convert)
      : convert_(convert), blendRow_(pick_row(VlerpRows(static_cast<Entry*>(nullptr)))) {
    for (int i = 0; i < 3; ++i) slot_[i] = reinterpret_cast<Entry*>(lines[i]);
    blend_ = reinterpret_cast<Entry*>(lines[3]);
  }

  // The spread line at 16.16 vertical position p: row p >> 16, blended with the
  // row after it by the weight (p >> 11) & 31 unless that weight is 0.
  const Entry* At(uint32_t p) {
    const int32_t y = static_cast<int32_t>(p >> 16);
    const int32_t f = static_cast<int32_t>((p >> 11) & 31);
    if (tag_[0] != y) {
      if (tag_[1] == y) {
        Rotate(1);
      } else if (tag_[2] == y) {
        Rotate(2);
      } else {
        Fill(y, 0, 1);
      }
    }
    if (f == 0) return slot_[0];
    if (tag_[1] != y + 1) Fill(y + 1, 1, 2);
    const VlerpLinesOf<Entry> v{slot_[0], slot_[1], blend_, static_cast<uint32_t>(f)};
    run_row(blendRow_, 0, static_cast<size_t>(convert_.width() > 0 ? convert_.width() : 0),
            static_cast<const VlerpLinesOf<Entry>*>(&v));
    return blend_;
  }

 private:
  void Fill(int32_t row, int a, int b) {
    convert_(row, slot_[a], slot_[b]);
    tag_[a] = row;
    tag_[b] = row + 1;
  }
  // Cyclic, so that a row cached after y stays after it.
  void Rotate(int by) {
    Entry* s[3] = {slot_[0], slot_[1], slot_[2]};
    int32_t t[3] = {tag_[0], tag_[1], tag_[2]};
    for (int i = 0; i < 3; ++i) {
      slot_[i] = s[(i + by) % 3];
      tag_[i] = t[(i + by) % 3];
    }
  }

  const RowPairConverter<Entry>& convert_;
  const VlerpRowOf<Entry> blendRow_;  // VLerp's blend, chosen once for the picture
  Entry* slot_[3];
  int32_t tag_[3] = {-1, -1, -1};
  Entry* blend_;
};

// The bilinear enlargement walk: one spread line of Entry per output row,
// handed to write(line, j).
template <class Entry = uint64_t, class WriteRow>
void EnlargeRows(const ImgPrcContext* ctx, uint8_t* const* lines, const uint8_t* const* src,
                 const uint32_t* strides, int32_t srcWidth, int32_t srcHeight, int32_t dstHeight,
                 SpreadConvert spread, WriteRow write) {
  const RowPairConverter<Entry> convert(ctx, src, strides, srcWidth, spread);
  SpreadRowCache<Entry> cache(lines, convert);
  const uint32_t sy = static_cast<uint32_t>(ResizeStep(srcHeight, dstHeight));
  uint32_t p = 0;
  for (int32_t j = 0; j < dstHeight; ++j, p += sy) write(cache.At(p), j);
}

// 5:2 across, 2:1 down: output row 2k is source row k, row 2k + 1 the average
// of rows k and k + 1, four output rows per source row pair, in whole groups
// of four rows (((dstHeight - 1) & ~3) + 4 of them). write(line, j) stretches.
// The average of two rows, (a + b) >> 1 masked, is their blend at weight 16.
template <class Entry = uint64_t, class WriteRow>
void EnlargeRowsCase1(const ImgPrcContext* ctx, uint8_t* const* lines, const uint8_t* const* src,
                      const uint32_t* strides, int32_t srcWidth, int32_t dstHeight, SpreadConvert spread,
                      WriteRow write) {
  const RowPairConverter<Entry> convert(ctx, src, strides, srcWidth, spread);
  const VlerpRowOf<Entry> blendRow = pick_row(VlerpRows(static_cast<Entry*>(nullptr)));
  Entry* a = reinterpret_cast<Entry*>(lines[0]);
  Entry* b = reinterpret_cast<Entry*>(lines[1]);
  Entry* c = reinterpret_cast<Entry*>(lines[2]);
  Entry* mid = reinterpret_cast<Entry*>(lines[3]);
  auto average = [&](const Entry* x, const Entry* y) {
    const VlerpLinesOf<Entry> v{x, y, mid, 16};
    run_row(blendRow, 0, static_cast<size_t>(srcWidth > 0 ? srcWidth : 0),
            static_cast<const VlerpLinesOf<Entry>*>(&v));
    return mid;
  };
  const int32_t groups = ((dstHeight - 1) >> 2) + 1;
  convert(0, a, b);
  for (int32_t g = 0; g < groups; ++g) {
    write(a, 4 * g);
    write(average(a, b), 4 * g + 1);
    convert(2 * g + 2, c, a);  // a is done with: the newer row of the pair goes there
    write(b, 4 * g + 2);
    write(average(b, c), 4 * g + 3);
    Entry* newest = c;  // the newest pair (c, a) plays a and b next
    c = b;
    b = a;
    a = newest;
  }
}

}  // namespace scrim
