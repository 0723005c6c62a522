// Deinterlacing of one picture (two woven fields) into a progressive one.
#pragma once

#include <stdint.h>

#include "imageproc/imgprc_context.h"

#ifndef SCRIM_API
#define SCRIM_API __attribute__((visibility("default")))
#endif

#ifdef __cplusplus
extern "C" {
#endif

// Deinterlaces the caller's planes into dstPlanes with the context's mode, chroma
// layout from the context's input format code. 0, or -1 for bad arguments.
SCRIM_API int ORU_DeInterlace(ImgPrcContext* ctx, uint8_t* srcPlanes[3], uint32_t srcPitches[3],
                              uint8_t* dstPlanes[3], uint32_t dstPitches[3]);

#ifdef __cplusplus
}
#endif
