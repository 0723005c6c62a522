// Destination addressing of the rotating kernels, set up once per frame.
#pragma once

#include <stdint.h>

#include "imageproc/imgprc_context.h"

// Fills ctx->rotationRecord for the output format and rotation of ctx, for a
// destination of width x height (even work sizes, in source orientation).
// 0; -1 when ctx or its record is missing; -3 for an output without a layout
// here (codes 1, 2, above 10) or a rotation above 5, leaving the record as it was.
int _ORU_RotationInit(ImgPrcContext* ctx, uint8_t* const dstPlanes[3], uint32_t width, uint32_t height,
                      const uint32_t dstStrides[3]);
