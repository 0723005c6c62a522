// Mode 1: keep the even lines and rebuild every odd line with the five-tap
// vertical filter centred on it. Works on `width` bytes per line, out of place
// or in place.
#include <stdlib.h>
#include <string.h>

#include "deinterlace/deint_filters.h"

namespace {

// Out of place: s is the source plane, d the destination, h lines of w bytes
// (h even and at least 2: a chroma plane of a picture 4 lines high has 2).
// Odd line 2k+1 is filtered from s[2k-1 .. 2k+3]; above the picture s[-1]
// reads as s[0], below it the last line repeats.
void fast_plane(uint8_t* d, size_t dPitch, const uint8_t* s, size_t sPitch, size_t w, unsigned h,
                const Row<const DeintTapLines*>& taps) {
  auto S = [&](unsigned y) { return s + y * sPitch; };
  auto D = [&](unsigned y) { return d + y * dPitch; };
  unsigned y = 0;
  for (; y + 2 < h; y += 2) {
    memcpy(D(y), S(y), w);
    const DeintTapLines lines{D(y + 1), {S(y == 0 ? 0 : y - 1), S(y), S(y + 1), S(y + 2), S(y + 3)}, nullptr};
    run_row(taps, 0, w, &lines);
  }
  memcpy(D(y), S(y), w);
  const DeintTapLines lines{D(y + 1), {S(y == 0 ? 0 : y - 1), S(y), S(y + 1), S(y + 1), S(y + 1)}, nullptr};
  run_row(taps, 0, w, &lines);
}

// In place: even lines stay; each odd line is replaced, the original of the
// line above it (needed by the next odd line) carried in a one-line buffer.
// False, with the plane untouched, when that buffer cannot be had.
bool fast_plane_inplace(uint8_t* p, size_t pitch, size_t w, unsigned h,
                        const Row<const DeintTapLines*>& taps) {
  auto L = [&](unsigned y) { return p + y * pitch; };
  uint8_t* tmp = static_cast<uint8_t*>(malloc(w));
  if (tmp == nullptr) return false;
  memcpy(tmp, L(0), w);
  unsigned y = 0;
  for (; y + 2 < h; y += 2) {
    const DeintTapLines lines{L(y + 1), {tmp, L(y), L(y + 1), L(y + 2), L(y + 3)}, tmp};
    run_row(taps, 0, w, &lines);
  }
  const DeintTapLines lines{L(y + 1), {tmp, L(y), L(y + 1), L(y + 1), L(y + 1)}, tmp};
  run_row(taps, 0, w, &lines);
  free(tmp);
  return true;
}

}  // namespace

int picture_deinterlace_fast(DeintPicture* dst, const DeintPicture* src, unsigned layout, unsigned width,
                             unsigned height) {
  if (dst == nullptr || src == nullptr) return -1;
  if (layout > DEINT_LAYOUT_444 || (width & 3) != 0 || (height & 3) != 0) return -1;
  unsigned planes = src->planeCount < 3 ? src->planeCount : 3;
  unsigned w = width;
  unsigned h = height;
  int result = 0;
  const Row<const DeintTapLines*> taps = pick_row(deint_taps_rows);
  const Row<const DeintTapLines*> tapsInPlace = pick_row(deint_taps_inplace_rows);
  for (unsigned i = 0; i < planes; ++i) {
    if (i == 1) {
      if (layout != DEINT_LAYOUT_444) w /= 2;
      if (layout == DEINT_LAYOUT_420) h /= 2;
    }
    uint8_t* s = src->planes[i];
    uint8_t* d = dst->planes[i];
    // A picture of no lines (or no columns) has nothing to filter.
    if (s == nullptr || d == nullptr || w == 0 || h == 0) continue;
    // The same plane given as source and destination is filtered in place,
    // also when the two records are distinct copies.
    bool inPlace = dst == src || (d == s && dst->pitches[i] == src->pitches[i]);
    if (!inPlace)
      fast_plane(d, dst->pitches[i], s, src->pitches[i], w, h, taps);
    else if (!fast_plane_inplace(d, src->pitches[i], w, h, tapsInPlace))
      result = -1;
  }
  return result;
}
