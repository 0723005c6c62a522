// The deinterlacer on its own: every mode (0 to 7 and above), chroma layout
// (0 to 2 and a bad one), field, plane count and pitch, out of place and in
// place, through DeInterlace and through ORU_DeInterlace. Each plane is a heap
// block of exactly the bytes the mode may touch, its documented overruns
// included: modes 2 to 6 move whole source-pitch lines (so a narrower
// destination's last line runs past the plane, except through
// ORU_DeInterlace, whose lines fit the destination), and in 4:2:2 discard, bob
// and blend read the chroma planes over twice their height.
#include <algorithm>

#include "deinterlace/deint_filters.h"
#include "deinterlace/deinterlace.h"
#include "fuzz_support.h"
#include "imageproc/imgprc_context.h"

using namespace scrimfuzz;

namespace {

struct Geometry {
  unsigned width, height, layout, mode;
  bool fitLines;  // through ORU_DeInterlace
};

// Source and destination bytes of plane i, given the pitches.
void PlaneSpans(const Geometry& g, unsigned i, size_t sp, size_t dp, size_t& src, size_t& dst) {
  src = dst = 0;
  const unsigned m = g.mode;
  if (m == 0 || g.layout > 2) return;
  const unsigned h = deint_plane_height(i, g.height, g.layout);
  if (m == 1 || m >= 8) {
    if (g.width % 4 || g.height % 4) return;
    const size_t w = i > 0 && g.layout != 2 ? g.width / 2 : g.width;
    src = PlaneBytes(h, sp, w), dst = PlaneBytes(h, dp, w);
    return;
  }
  if (m == 7) {
    const size_t line = std::min(sp, dp);
    src = PlaneBytes(h, sp, line), dst = PlaneBytes(h, dp, line);
    return;
  }
  if (g.layout == 2 && m != 6) return;
  const bool stepTwo = g.layout == 1 && i > 0 && m <= 4;
  src = PlaneBytes(stepTwo ? 2 * h : h, sp, sp);
  dst = PlaneBytes(h, dp, g.fitLines ? std::min(sp, dp) : sp);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  FuzzedDataProvider in(data, size);
  Geometry g;
  g.width = in.ConsumeBool() ? 4 * in.ConsumeIntegralInRange<unsigned>(0, 24)
                             : in.ConsumeIntegralInRange<unsigned>(0, 96);
  g.height = in.ConsumeBool() ? 4 * in.ConsumeIntegralInRange<unsigned>(0, 24)
                              : in.ConsumeIntegralInRange<unsigned>(0, 96);
  g.layout = in.ConsumeIntegralInRange<unsigned>(0, 3);
  g.mode = in.ConsumeIntegralInRange<unsigned>(0, 10);
  g.fitLines = in.ConsumeIntegralInRange<int>(0, 3) == 0;
  const unsigned field = in.PickValueInArray({0u, 1u, 7u});
  const bool inPlace = !g.fitLines && in.ConsumeBool();
  const uint32_t planeCount = g.fitLines ? 3 : in.ConsumeIntegralInRange<uint32_t>(0, 4);

  DeintPicture src{planeCount, {}, {}}, dst{planeCount, {}, {}};
  Block srcBlocks[3], dstBlocks[3];
  std::vector<uint8_t> srcBefore[3], dstBefore[3];
  const uint32_t seed = in.ConsumeIntegral<uint32_t>();
  for (unsigned i = 0; i < 3; ++i) {
    const uint32_t row = i > 0 && g.layout != 2 ? g.width / 2 : g.width;
    const uint32_t sp = PickStride(in, row);
    const uint32_t dp = inPlace ? sp : PickStride(in, row);
    size_t srcBytes = 0, dstBytes = 0;
    // Planes a filter does not walk are left null where a caller may leave them.
    const bool walked = i < std::min(planeCount, 3u);
    if (walked) PlaneSpans(g, i, sp, dp, srcBytes, dstBytes);
    if (inPlace) srcBytes = std::max(srcBytes, dstBytes);
    srcBlocks[i] = Block(srcBytes);
    Fill(srcBlocks[i].data(), srcBytes, seed + i);
    srcBefore[i] = srcBlocks[i].copy();
    src.planes[i] = srcBlocks[i].data();
    src.pitches[i] = sp;
    if (!inPlace) {
      dstBlocks[i] = Block(dstBytes);
      Fill(dstBlocks[i].data(), dstBytes, ~seed + i);
      dstBefore[i] = dstBlocks[i].copy();
    }
    dst.planes[i] = inPlace ? src.planes[i] : dstBlocks[i].data();
    dst.pitches[i] = dp;
    // Modes 2 to 7 skip a plane that is missing on either side.
    if (g.mode >= 2 && g.mode <= 7 && in.ConsumeIntegralInRange<int>(0, 7) == 0) {
      (in.ConsumeBool() ? src : dst).planes[i] = nullptr;
    }
  }

  if (g.fitLines) {
    ImgPrcContext ctx;
    memset(&ctx, 0, sizeof ctx);
    ctx.format = g.layout << 8 | in.ConsumeIntegralInRange<uint32_t>(0, 10);
    ctx.srcWidth = g.width, ctx.srcHeight = g.height, ctx.deinterlaceMode = g.mode;
    const int r = ORU_DeInterlace(&ctx, src.planes, src.pitches, dst.planes, dst.pitches);
    Expect("ORU_DeInterlace", static_cast<unsigned long>(r), g.layout > 2 ? -1ul : 0ul);
  } else {
    DeintPicture* s = &src;
    DeintPicture* d = inPlace && in.ConsumeBool() ? &src : &dst;
    const int r = DeInterlace(d, s, g.width, g.height, field, g.layout, g.mode);
    Expect("DeInterlace", static_cast<unsigned long>(r), 0);
    Expect("DeInterlace(null)", static_cast<unsigned long>(DeInterlace(nullptr, s, 4, 4, 0, 0, 2)), -1ul);
  }
  for (unsigned i = 0; i < 3 && !inPlace; ++i) {
    if (!srcBlocks[i].same(srcBefore[i])) WrongAnswer("the deinterlacer wrote to its source", i, 0);
    if (g.mode == 0 && !dstBlocks[i].same(dstBefore[i])) WrongAnswer("mode 0 wrote to the destination", i, 0);
  }
  return 0;
}
