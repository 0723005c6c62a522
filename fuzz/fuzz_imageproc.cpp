// The image processor as a hostile host would drive it: any accepted
// conversion, sizes 0 to 256 (odd ones included), every rotation, resize
// method, matrix and range, colour adjustment and key, Reset, one to several
// frames with random strides, deinterlace modes, short and oversized records,
// null and missing planes. Every plane is a heap block of exactly the bytes
// the frame may touch (imageproc_extents.h), so AddressSanitizer reports any
// byte beyond; every result code the interface fixes is checked, so a wrong
// answer is a finding too.
//
// The conversions come from the list creation accepts, not from the routes
// the library has today: a route without a kernel answers "not implemented"
// and is fuzzed like any other as soon as its kernel lands.
#include <algorithm>

#include "fuzz_support.h"
#include "imageproc/imgprc_context.h"
#include "imageproc/oru_imageproc.h"
#include "imageproc_extents.h"

using namespace scrimfuzz;

namespace {

const uint32_t kAccepted[] = {0x000, 0x003, 0x004, 0x005, 0x006, 0x007, 0x008, 0x009,
                              0x00A, 0x103, 0x105, 0x109, 0x203, 0x204, 0x205, 0x209,
                              0x300, 0x303, 0x305, 0x403, 0x404, 0x500, 0x800, 0x900};

bool Accepted(uint32_t code) {
  return std::find(std::begin(kAccepted), std::end(kAccepted), code) != std::end(kAccepted);
}

// Conversions that can apply a colour adjustment.
bool Adjustable(uint32_t code) { return code <= 767 && code != 6 && code != 7 && code != 8; }

uint32_t ExpectedCreate(const ImgPrcCreateParams& given, ImgPrcCreateParams& used) {
  used = {};
  if (given.size > sizeof used) return IMGPRC_E_INVALIDARG;
  memcpy(&used, &given, given.size);
  if (!Accepted(used.format) || used.rotation > 5 || (used.format == 0x00A && used.rotation != 0))
    return IMGPRC_E_FAIL;
  return IMGPRC_OK;
}

// One side of a frame call: plane pointers into exact blocks, and strides.
struct Side {
  Block blocks[3];
  uint8_t* planes[3] = {nullptr, nullptr, nullptr};
  uint32_t strides[3] = {0, 0, 0};
  std::vector<uint8_t> before[3];

  void Allocate(const Span spans[3], int count, uint32_t seed) {
    for (int i = 0; i < 3; ++i) {
      if (i >= count) continue;
      const int64_t lo = std::min<int64_t>(spans[i].lo, 0), hi = std::max<int64_t>(spans[i].hi, 0);
      blocks[i] = Block(static_cast<size_t>(hi - lo));
      Fill(blocks[i].data(), blocks[i].size(), seed + i);
      planes[i] = blocks[i].data() - lo;
      before[i] = blocks[i].copy();
    }
  }
  bool Untouched() const {
    for (int i = 0; i < 3; ++i)
      if (!blocks[i].same(before[i])) return false;
    return true;
  }
};

// Strides for the planes a format has; the others get what a careless host
// leaves there (nothing, or a pointer that must never be followed).
void PickStrides(FuzzedDataProvider& in, Side& s, int32_t format, uint32_t width) {
  for (int i = 0; i < 3; ++i) s.strides[i] = PickStride(in, RowBytes(format, i, width));
}

void PoisonUnused(FuzzedDataProvider& in, Side& s, int count) {
  for (int i = count; i < 3; ++i) {
    if (in.ConsumeBool()) {
      s.planes[i] = reinterpret_cast<uint8_t*>(uintptr_t{0x10});
      s.strides[i] = in.ConsumeIntegral<uint32_t>();
    }
  }
}

// Takes away one plane or stride the format needs, or nothing. True if taken.
bool MaybeTakePlane(FuzzedDataProvider& in, Side& s, int count) {
  if (in.ConsumeIntegralInRange<int>(0, 15) != 0) return false;
  const int i = in.ConsumeIntegralInRange<int>(0, count - 1);
  if (in.ConsumeBool())
    s.planes[i] = nullptr;
  else
    s.strides[i] = 0;
  return true;
}

void Frame(FuzzedDataProvider& in, void* handle, Conversion& c) {
  ImgPrcFrameParams f{sizeof f, in.ConsumeIntegral<uint32_t>(), 0};
  const int m = in.ConsumeIntegralInRange<int>(0, 12);
  f.deinterlace = m <= 9 ? static_cast<uint32_t>(m) : m == 10 ? 0xFFFFFFFFu : 0;
  if (in.ConsumeIntegralInRange<int>(0, 15) == 0) f.size = in.ConsumeIntegralInRange<uint32_t>(0, 16);
  ImgPrcFrameParams used{};
  if (f.size <= sizeof used) {
    memcpy(&used, &f, f.size);
    if (used.deinterlace != 0) c.deintMode = c.in <= 2 ? used.deinterlace : 0;
  }

  Side src, dst;
  PickStrides(in, src, c.in, c.sw);
  uint32_t dstWidth = 0, dstHeight = 0;
  DestinationShape(c, dstWidth, dstHeight);
  PickStrides(in, dst, c.out, dstWidth);
  Span srcSpans[3], dstSpans[3];
  SourceSpans(c, src.strides, srcSpans);
  DestinationSpans(c, dst.strides, dstSpans);
  const uint32_t seed = in.ConsumeIntegral<uint32_t>();
  src.Allocate(srcSpans, PlaneCount(c.in), seed);
  dst.Allocate(dstSpans, PlaneCount(c.out), seed ^ 0x5A5A5A5A);
  PoisonUnused(in, src, PlaneCount(c.in));
  PoisonUnused(in, dst, PlaneCount(c.out));
  const bool srcMissing = MaybeTakePlane(in, src, PlaneCount(c.in));
  const bool dstMissing = MaybeTakePlane(in, dst, PlaneCount(c.out));
  const bool missing = srcMissing || dstMissing;

  if (Verbose()) {
    fprintf(
        stderr,
        "frame: conversion 0x%X rotation %u method %u %ux%u to %ux%u (case %u) deinterlace %u, "
        "source strides %u %u %u, spans %lld %lld %lld; destination strides %u %u %u, spans %lld..%lld %lld "
        "%lld\n",
        c.code, c.rotation, c.resizeMode, c.sw, c.sh, c.dw, c.dh, c.resizeCase, c.deintMode, src.strides[0],
        src.strides[1], src.strides[2], (long long)srcSpans[0].hi, (long long)srcSpans[1].hi,
        (long long)srcSpans[2].hi, dst.strides[0], dst.strides[1], dst.strides[2], (long long)dstSpans[0].lo,
        (long long)dstSpans[0].hi, (long long)dstSpans[1].hi, (long long)dstSpans[2].hi);
  }
  const uint32_t r = ORU_IMAGEPROC_ProcessFrame(handle, src.planes, src.strides, dst.planes, dst.strides, &f);
  if (f.size > sizeof f || missing) {
    Expect("frame with a bad record or a missing plane", r, IMGPRC_E_INVALIDARG);
  } else if (c.AnyWorkSizeZero()) {
    Expect("frame of a picture that rounds to no pixels", r, IMGPRC_E_NOTIMPL);
  } else if (r != IMGPRC_E_NOTIMPL) {
    Expect("frame", r, IMGPRC_OK);
  }
  if (r != IMGPRC_OK && !dst.Untouched()) WrongAnswer("a refused frame wrote to the destination", r, 0);
  if (!src.Untouched()) WrongAnswer("a frame wrote to its source", r, 0);
}

void Properties(FuzzedDataProvider& in, void* handle, const Conversion& c, uint32_t& key) {
  switch (in.ConsumeIntegralInRange<int>(0, 5)) {
    case 0: {
      ImgPrcColorAdjust a;
      a.brightness =
          in.ConsumeBool() ? in.ConsumeIntegralInRange<int32_t>(-16, 300) : in.ConsumeIntegral<int32_t>();
      a.contrast = in.ConsumeIntegralInRange<int32_t>(-16, 300);
      a.saturation = in.ConsumeIntegralInRange<int32_t>(-16, 300);
      const uint32_t size = in.ConsumeIntegralInRange<uint32_t>(0, 16);
      Expect("Set colour adjustment", ORU_IMAGEPROC_Set(handle, IMGPRC_PROP_COLOR_ADJUST, &a, size),
             size > sizeof a ? IMGPRC_E_INVALIDARG : IMGPRC_OK);
      break;
    }
    case 1: {
      uint8_t out[16];
      uint32_t written = 0;
      const uint32_t size = in.PickValueInArray({8u, 11u, 12u, 16u});
      const uint32_t r = ORU_IMAGEPROC_Get(handle, IMGPRC_PROP_COLOR_ADJUST, out, size, &written);
      if (size < 12) {
        Expect("Get colour adjustment into a small record", r, IMGPRC_E_INVALIDARG);
      } else {
        Expect("Get colour adjustment", r, Adjustable(c.code) ? IMGPRC_OK : IMGPRC_E_FAIL);
        Expect("Get colour adjustment size", written, 12);
      }
      break;
    }
    case 2: {
      const uint32_t k = in.ConsumeIntegral<uint32_t>();
      const uint32_t size = in.PickValueInArray({0u, 3u, 4u, 8u});
      const uint32_t r = ORU_IMAGEPROC_Set(handle, IMGPRC_PROP_COLOR_KEY, &k, size);
      Expect("Set colour key", r, size < 4 ? IMGPRC_E_INVALIDARG : IMGPRC_OK);
      if (r == IMGPRC_OK) key = k;
      break;
    }
    case 3: {
      uint32_t k = 0, written = 0;
      Expect("Get colour key", ORU_IMAGEPROC_Get(handle, IMGPRC_PROP_COLOR_KEY, &k, 4, &written), IMGPRC_OK);
      Expect("Get colour key size", written, 4);
      if (c.code != 0x00A) Expect("colour key kept as given", k, key);  // 0x00A keeps its RGB555 form
      break;
    }
    case 4:
      Expect("Reset", ORU_IMAGEPROC_Reset(handle), IMGPRC_OK);
      break;
    default: {
      const uint32_t id = in.ConsumeIntegralInRange<uint32_t>(3, 0xFFFF);
      uint32_t data[4] = {}, written = 0;
      Expect("Set of an unknown property", ORU_IMAGEPROC_Set(handle, id, data, 16), IMGPRC_E_NOTFOUND);
      Expect("Get of an unknown property", ORU_IMAGEPROC_Get(handle, id, data, 16, &written),
             IMGPRC_E_NOTFOUND);
      break;
    }
  }
}

void NullHandle() {
  uint8_t* planes[3] = {};
  uint32_t strides[3] = {};
  ImgPrcFrameParams f{sizeof f, 0, 0};
  uint32_t data[4] = {}, written = 0;
  Expect("Destroy(null)", ORU_IMAGEPROC_Destroy(nullptr), IMGPRC_E_INVALIDARG);
  Expect("ProcessFrame(null)", ORU_IMAGEPROC_ProcessFrame(nullptr, planes, strides, planes, strides, &f),
         IMGPRC_E_INVALIDARG);
  Expect("Set(null)", ORU_IMAGEPROC_Set(nullptr, 2, data, 4), IMGPRC_E_INVALIDARG);
  Expect("Get(null)", ORU_IMAGEPROC_Get(nullptr, 2, data, 4, &written), IMGPRC_E_INVALIDARG);
  Expect("Reset(null)", ORU_IMAGEPROC_Reset(nullptr), IMGPRC_E_INVALIDARG);
}

uint32_t PickSize(FuzzedDataProvider& in) {
  // Mostly small pictures (fast runs), sometimes up to 256, and the fixed
  // ratios of the fast paths now and then.
  switch (in.ConsumeIntegralInRange<int>(0, 7)) {
    case 0:
      return in.ConsumeIntegralInRange<uint32_t>(0, 256);
    case 1:
      return 4 * in.ConsumeIntegralInRange<uint32_t>(1, 40);
    default:
      return in.ConsumeIntegralInRange<uint32_t>(1, 48);
  }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  FuzzedDataProvider in(data, size);
  ImgPrcCreateParams p{};
  p.size = sizeof p;
  p.format = in.ConsumeIntegralInRange<int>(0, 31) == 0 ? in.ConsumeIntegral<uint32_t>()
                                                        : in.PickValueInArray(kAccepted);
  p.rotation = in.ConsumeIntegralInRange<uint32_t>(0, 6);
  p.resizeMode = in.ConsumeIntegralInRange<uint32_t>(0, 4);
  p.srcWidth = PickSize(in);
  p.srcHeight = PickSize(in);
  switch (in.ConsumeIntegralInRange<int>(0, 7)) {
    case 0:  // twice, 2.5 x 2, 1.5 across: the fixed-ratio paths
      p.dstWidth = 2 * p.srcWidth, p.dstHeight = 2 * p.srcHeight;
      break;
    case 1:
      p.dstWidth = p.srcWidth / 2 * 5, p.dstHeight = 2 * p.srcHeight;
      break;
    case 2:
      p.dstWidth = p.srcWidth / 2 * 3, p.dstHeight = PickSize(in);
      break;
    case 3:
      p.dstWidth = p.srcWidth, p.dstHeight = p.srcHeight;
      break;
    case 4:
      p.srcWidth = 320, p.srcHeight = 240, p.dstWidth = 480, p.dstHeight = 272;
      break;
    default:
      p.dstWidth = PickSize(in), p.dstHeight = PickSize(in);
      break;
  }
  p.alpha = in.ConsumeIntegral<uint32_t>();
  p.colorKey = in.ConsumeIntegral<uint32_t>();
  p.colorMatrix = in.ConsumeIntegralInRange<uint32_t>(0, 3);
  p.fullRange = in.ConsumeIntegralInRange<uint32_t>(0, 1);
  if (in.ConsumeIntegralInRange<int>(0, 15) == 0) p.size = in.ConsumeIntegralInRange<uint32_t>(0, 52);
  if (in.ConsumeIntegralInRange<int>(0, 63) == 0) NullHandle();

  ImgPrcCreateParams used;
  const uint32_t want = ExpectedCreate(p, used);
  void* handle = nullptr;
  const uint32_t r = ORU_IMAGEPROC_Create(&handle, 0, &p);
  Expect("Create", r, want);
  if (r != IMGPRC_OK) {
    if (handle != nullptr) WrongAnswer("a refused Create gave a handle", 1, 0);
    return 0;
  }

  Conversion c;
  c.code = used.format, c.rotation = used.rotation, c.resizeMode = used.resizeMode;
  c.sw = used.srcWidth, c.sh = used.srcHeight, c.dw = used.dstWidth, c.dh = used.dstHeight;
  c.Classify();
  const ImgPrcContext* ctx = static_cast<const ImgPrcContext*>(handle);
  Expect("resize case", ctx->resizeCase, c.resizeCase);
  Expect("work width", ctx->workSrcWidth, c.wsw);
  Expect("work height", ctx->workDstHeight, c.wdh);

  uint32_t key = used.colorKey;
  const int steps = in.ConsumeIntegralInRange<int>(1, 6);
  int frames = 0;
  for (int i = 0; i < steps && in.remaining_bytes() > 0; ++i) {
    if (in.ConsumeIntegralInRange<int>(0, 2) == 0) {
      Properties(in, handle, c, key);
    } else {
      Frame(in, handle, c);
      ++frames;
    }
  }
  if (frames == 0) Frame(in, handle, c);
  Expect("Destroy", ORU_IMAGEPROC_Destroy(handle), IMGPRC_OK);
  return 0;
}
