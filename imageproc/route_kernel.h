// Small pieces the family routers share.
#pragma once

#include <stdint.h>

#include "imageproc/imgprc_context.h"

// What a router returns for a route whose kernel is not in the library; the
// frame call reports it as not implemented, never as success.
constexpr int kImgPrcNoKernel = -3;

// A route that ran its kernel reports 0: kernel results are not looked at.
inline int ImgPrcKernelRan(uint32_t /*kernelResult*/) { return 0; }

inline uint32_t ImgPrcOutputCode(const ImgPrcContext* ctx) { return ctx->format & 0xFF; }
// The conversion code is signed and shifted arithmetically.
inline int32_t ImgPrcInputCode(const ImgPrcContext* ctx) { return static_cast<int32_t>(ctx->format) >> 8; }
