// Saves what a host window posted as PNG images, for tests and tools.
#pragma once

#include <stddef.h>
#include <stdint.h>

#include "host_window.h"

#ifdef __cplusplus
extern "C" {
#endif

// Converts a posted RGB565 or YV12 frame to tightly packed 8-bit RGB
// (width x height x 3 bytes at rgb). RGB565 fields are widened by bit
// replication; YV12 is shown through BT.601 video range. 0, or -1 for a frame
// with no pixels or an unsupported format.
int HostPng_postedToRgb(const HostPostedFrame* frame, uint8_t* rgb);

// Writes tightly packed 8-bit RGB as a PNG file. 0, or -1 with a message in err.
int HostPng_writeRgb(const char* path, const uint8_t* rgb, int32_t width, int32_t height, char* err,
                     size_t errSize);

// HostPng_postedToRgb followed by HostPng_writeRgb.
int HostPng_writePostedFrame(const HostPostedFrame* frame, const char* path, char* err, size_t errSize);

#ifdef __cplusplus
}
#endif
