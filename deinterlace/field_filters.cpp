// Modes 2 to 6: filters that rebuild a picture from whole lines of one or both
// fields (discard, bob, blend, mean, linear).
//
// Every line they copy or merge is the source pitch wide, not the picture
// width: a destination whose pitch is narrower than the source's therefore
// gets each line's tail overwritten by the next line, and its last line runs
// pitch minus destination pitch bytes past the plane. Lines are written top to
// bottom so that the visible part of each line is right.
//
// The image processor's work area is sized from the picture width, while a
// decoder's pitch can be any size (a picture cut out of a 1920-wide frame), so
// for it ORU_DeInterlace asks for lines no wider than the destination pitch.
// The part of each line that stays visible is the same either way.
//
// Per-plane heights follow the chroma layout; modes 2 to 5 act on layouts 0
// and 1 only and leave a 4:4:4 picture as it is. In layout 1 the chroma planes
// are full height, and discard, bob and blend step two source lines for every
// destination line there, so they read those planes over about twice their
// height. Callers depend on this being kept as it is.
//
// Odd plane heights (the chroma of a 4:2:0 picture whose height is 2 mod 4)
// and field 1 end the doubling loops in places where the next line to write or
// read lies outside the plane. Such writes are dropped, and a destination line
// that would otherwise be left unwritten repeats the last kept line, so every
// line of the plane is written once and nothing outside it is touched (beyond
// the pitch-wide run-over and the layout 1 reading above).
#include <string.h>

#include "deinterlace/deint_filters.h"

namespace {

struct FieldPlane {
  uint8_t* dst;
  size_t dstPitch;
  const uint8_t* src;
  size_t srcPitch;
  size_t lineBytes;  // bytes copied or merged per line
  unsigned h;
  // Layout 1 chroma: one destination line per two source lines.
  bool stepTwo;

  uint8_t* D(unsigned y) const { return dst + y * dstPitch; }
  const uint8_t* S(unsigned y) const { return src + y * srcPitch; }
  // Destination line o := source line i.
  void copy(unsigned o, unsigned i) const { memmove(D(o), S(i), lineBytes); }
  // Destination line o := average of source lines i and j.
  void merge(unsigned o, unsigned i, unsigned j) const { Merge(D(o), S(i), S(j), lineBytes); }
};

typedef void (*FieldPlaneFilter)(const FieldPlane& p, unsigned field);

// The walk over the planes shared by modes 2 to 6.
int for_each_plane(DeintPicture* dst, const DeintPicture* src, unsigned layout, unsigned height,
                   unsigned field, DeintLineWidth lineWidth, bool fullSizeChromaToo,
                   FieldPlaneFilter filter) {
  if (dst == nullptr || src == nullptr) return -1;
  if (layout > DEINT_LAYOUT_444) return -1;
  if (layout == DEINT_LAYOUT_444 && !fullSizeChromaToo) return 0;
  unsigned planes = src->planeCount < 3 ? src->planeCount : 3;
  for (unsigned i = 0; i < planes; ++i) {
    if (src->planes[i] == nullptr || dst->planes[i] == nullptr) continue;
    const size_t srcPitch = src->pitches[i], dstPitch = dst->pitches[i];
    const bool fit = lineWidth == DEINT_LINE_FITS_DESTINATION && dstPitch < srcPitch;
    FieldPlane p{dst->planes[i],
                 dstPitch,
                 src->planes[i],
                 srcPitch,
                 fit ? dstPitch : srcPitch,
                 deint_plane_height(i, height, layout),
                 layout == DEINT_LAYOUT_422 && i > 0};
    if (p.h == 0) continue;
    filter(p, field != 0);
  }
  return 0;
}

// Kept line k (from the top, counting from 0) of field `field`.
void discard_plane(const FieldPlane& p, unsigned field) {
  if (p.stepTwo) {
    for (unsigned o = 0; o < p.h; ++o) p.copy(o, field + 2 * o);
    return;
  }
  for (unsigned o = 0; o < p.h; ++o) {
    unsigned i = field + (o & ~1u);
    // Field 1 of an odd-height plane: its last line has no kept line of its
    // own, it repeats the one above.
    if (i >= p.h) i = p.h >= 2 ? i - 2 : 0;
    p.copy(o, i);
  }
}

void bob_plane(const FieldPlane& p, unsigned field) {
  unsigned o = 0;  // destination line
  unsigned i = 0;  // source line
  if (field) {
    p.copy(0, 0);
    o = i = 1;
  }
  // Double each kept line, stopping two destination lines before the end.
  for (; o + 2 < p.h; i += 2) {
    p.copy(o++, i);
    if (!p.stepTwo) p.copy(o++, i);
  }
  if (o >= p.h) return;
  p.copy(o, i);  // the next kept line once more
  if (o + 1 >= p.h) return;
  if (field == 0)
    p.copy(o + 1, i + 1);  // the last line from the source line below
  else
    p.copy(o + 1, p.stepTwo ? i + 2 : i);  // would stay unwritten: next kept line
}

void blend_plane(const FieldPlane& p, unsigned) {
  p.copy(0, 0);
  for (unsigned o = 1; o < p.h; ++o) {
    if (p.stepTwo)
      p.merge(o, 2 * o - 2, 2 * o - 1);
    else
      p.merge(o, o - 1, o);
  }
}

void mean_plane(const FieldPlane& p, unsigned) {
  for (unsigned o = 0; o < p.h; o += 2) {
    if (o + 1 == p.h) {
      p.copy(o, o);  // odd height: the last line has no partner
      break;
    }
    p.merge(o, o, o + 1);
    memmove(p.D(o + 1), p.D(o), p.lineBytes);
  }
}

void linear_plane(const FieldPlane& p, unsigned field) {
  unsigned o = 0;  // destination line, also the source line: both step by two
  if (field) {
    p.copy(0, 0);
    o = 1;
  }
  for (; o + 2 < p.h; o += 2) {
    p.copy(o, o);
    p.merge(o + 1, o, o + 2);
  }
  if (o >= p.h) return;
  p.copy(o, o);  // the last kept line
  if (o + 1 >= p.h) return;
  p.copy(o + 1, field == 0 ? o + 1 : o);  // field 0: the source line below
}

}  // namespace

int picture_deinterlace_discard(DeintPicture* dst, const DeintPicture* src, unsigned layout, unsigned height,
                                unsigned field, DeintLineWidth lineWidth) {
  return for_each_plane(dst, src, layout, height, field, lineWidth, false, discard_plane);
}

int picture_deinterlace_bob(DeintPicture* dst, const DeintPicture* src, unsigned layout, unsigned height,
                            unsigned field, DeintLineWidth lineWidth) {
  return for_each_plane(dst, src, layout, height, field, lineWidth, false, bob_plane);
}

int picture_deinterlace_blend(DeintPicture* dst, const DeintPicture* src, unsigned layout, unsigned height,
                              DeintLineWidth lineWidth) {
  return for_each_plane(dst, src, layout, height, 0, lineWidth, false, blend_plane);
}

int picture_deinterlace_mean(DeintPicture* dst, const DeintPicture* src, unsigned layout, unsigned height,
                             DeintLineWidth lineWidth) {
  return for_each_plane(dst, src, layout, height, 0, lineWidth, false, mean_plane);
}

// 4:4:4 pictures get the full height on every plane here, as in mode 7.
int picture_deinterlace_linear(DeintPicture* dst, const DeintPicture* src, unsigned layout, unsigned height,
                               unsigned field, DeintLineWidth lineWidth) {
  return for_each_plane(dst, src, layout, height, field, lineWidth, true, linear_plane);
}
