// Instances that destroy themselves, and pictures whose planes are separate
// buffers of exactly their size, so that AddressSanitizer sees any overrun.
#pragma once

#include <stdint.h>

#include <algorithm>
#include <vector>

#include "imageproc/imgprc_context.h"
#include "imageproc/oru_imageproc.h"
#include "support/bilinear.h"

// The creation record's fields a test varies, in the order tests list them:
// CreateArgs{0x303} is RGB565 to RGB565 at 16 x 8.
struct CreateArgs {
  uint32_t format = 0x000;
  uint32_t srcWidth = 16, srcHeight = 8, dstWidth = 16, dstHeight = 8;
  uint32_t rotation = 0, resizeMode = 1, colorMatrix = 0, fullRange = 0;
};

inline ImgPrcCreateParams MakeParams(const CreateArgs& a) {
  const ImgPrcCreateParams p = {sizeof p,   a.format,    a.rotation,    a.resizeMode,
                                a.srcWidth, a.srcHeight, a.dstWidth,    a.dstHeight,
                                0xFF,       0,           a.colorMatrix, a.fullRange};
  return p;
}

// Made from the arguments or from a whole record (size included).
class Instance {
 public:
  explicit Instance(const CreateArgs& a) : Instance(MakeParams(a), 0) {}
  static Instance Of(const ImgPrcCreateParams& p) { return Instance(p, 0); }
  ~Instance() {
    if (handle_) ORU_IMAGEPROC_Destroy(handle_);
  }
  Instance(const Instance&) = delete;
  Instance& operator=(const Instance&) = delete;

  uint32_t result() const { return result_; }
  void* handle() const { return handle_; }
  ImgPrcContext* ctx() const { return static_cast<ImgPrcContext*>(handle_); }

 private:
  Instance(const ImgPrcCreateParams& p, int) { result_ = ORU_IMAGEPROC_Create(&handle_, 0, &p); }
  void* handle_ = nullptr;
  uint32_t result_ = 0;
};

// Up to three planes, each `rows` rows at its own stride, the last row only
// `width` bytes long. Filled with a pattern that differs per plane and seed.
struct Picture {
  std::vector<uint8_t> bytes[3];
  uint8_t* planes[3] = {nullptr, nullptr, nullptr};
  uint32_t strides[3] = {0, 0, 0};

  void AddPlane(int i, uint32_t width, uint32_t rows, uint32_t stride, uint8_t seed) {
    size_t size = rows == 0 ? 0 : static_cast<size_t>(stride) * (rows - 1) + width;
    bytes[i].resize(size == 0 ? 1 : size);
    for (size_t k = 0; k < bytes[i].size(); ++k)
      bytes[i][k] = static_cast<uint8_t>(seed + k * 13 + (k >> 5) * 7);
    planes[i] = bytes[i].data();
    strides[i] = stride;
  }
};

// Planes of input or output code `code`: planar YCbCr three, NV12 two, others one.
inline int PlanesOf(int32_t code) { return code <= 2 ? 3 : code == 8 ? 2 : 1; }

// A picture for either side of format `code`, each plane `side` rows of `side`
// bytes. 64 x 20 is enough for the 16 x 8 default instance in any layout
// (32-bit rows land up to 4 strides apart, resizing kernels read a row past).
inline void MakeFor(Picture& pic, int32_t code, uint8_t seed, uint32_t side = 0) {
  for (int i = 0; i < PlanesOf(code); ++i)
    pic.AddPlane(i, side ? side : 64, side ? side : 20, side ? side : 64, static_cast<uint8_t>(seed + i));
}

inline uint32_t Frame(const Instance& inst, uint8_t* const* src, const uint32_t* srcStrides,
                      uint8_t* const* dst, const uint32_t* dstStrides, uint32_t deinterlace = 0) {
  ImgPrcFrameParams f = {sizeof f, 0, deinterlace};
  return ORU_IMAGEPROC_ProcessFrame(inst.handle(), const_cast<uint8_t**>(src),
                                    const_cast<uint32_t*>(srcStrides), const_cast<uint8_t**>(dst),
                                    const_cast<uint32_t*>(dstStrides), &f);
}
inline uint32_t Frame(const Instance& inst, Picture& src, Picture& dst, uint32_t deinterlace = 0) {
  return Frame(inst, src.planes, src.strides, dst.planes, dst.strides, deinterlace);
}

inline uint32_t SetAdjust(const Instance& inst, int b, int c, int s, uint32_t size = 12) {
  ImgPrcColorAdjust a = {b, c, s};
  return ORU_IMAGEPROC_Set(inst.handle(), IMGPRC_PROP_COLOR_ADJUST, &a, size);
}
