// The process-wide software renderer: sets the window's buffer geometry to the
// picture size, and per picture locks a window buffer, has an image processor
// convert the picture straight into it, and posts it. One record per process;
// every handle given out is its address.
#pragma once

#include <android/native_window.h>
#include <stdint.h>

#ifndef SCRIM_API
#define SCRIM_API __attribute__((visibility("default")))
#endif

// Output modes: what the window's buffers hold.
#define SOFTRENDER_OUTPUT_RGB565 0u
#define SOFTRENDER_OUTPUT_YV12 1u

// Fields of the colour-format word.
#define SOFTRENDER_MATRIX(word) ((word)&0xFFu)
#define SOFTRENDER_RANGE(word) (((word) >> 8) & 0xFFu)
#define SOFTRENDER_LAYOUT(word) (((word) >> 16) & 0xFFu)
#define SOFTRENDER_LAYOUT_I420 0u
#define SOFTRENDER_LAYOUT_NV12 1u
#define SOFTRENDER_LAYOUT_NO_CONVERTER 4u

typedef struct ANDROID_SOFTRENDER {
  uint32_t size;  // 80
  uint32_t reserved0;
  uint32_t InWidth;
  uint32_t InHeight;
  uint8_t reserved1[32];
  uint32_t InputFormat;    // the stream's colour-format word
  uint32_t OutputMode;     // SOFTRENDER_OUTPUT_*
  ANativeWindow* Handler;  // holds one reference; null when none
  void* Converter;         // image processor handle; null when none
  uint8_t reserved2[8];    // pads the record to the size it declares
} ANDROID_SOFTRENDER;
static_assert(sizeof(ANDROID_SOFTRENDER) == 80, "the renderer record declares 80 bytes");

extern "C" {
SCRIM_API extern ANDROID_SOFTRENDER g_SoftRenderer;

// True exactly when the top byte of colourFormat is 0 (not a FOURCC).
SCRIM_API bool oru_nativewindow_determin(void** ppbPlanes, unsigned long* pdwStrides, unsigned int width,
                                         unsigned int height, unsigned int colourFormat);
// Sets the renderer up on window (or returns it unchanged when it already
// serves window); null on failure.
SCRIM_API void* oru_nativewindow_init(void* window, unsigned int width, unsigned int height,
                                      unsigned int colourFormat, unsigned int outputMode);
SCRIM_API void CreateConverter(ANDROID_SOFTRENDER* r);
SCRIM_API void ReleaseConverter(void* converter);
// Locks a buffer and converts the picture into it; 0, or -1 when nothing was locked.
SCRIM_API int oru_nativewindow_render(void* handle, void** ppbPlanes, unsigned long* pdwStrides,
                                      unsigned int width, unsigned int height, unsigned int colourFormat,
                                      unsigned int deinterlace);
SCRIM_API void render_this_frame(void* handle, void** ppbPlanes, unsigned long* pdwStrides, int width,
                                 int height, ANativeWindow_Buffer buffer, unsigned int deinterlace);
// Unlocks and posts the locked buffer; 0 or -1.
SCRIM_API int oru_nativewindow_dorender(void* handle);
// Releases the window and the converter.
SCRIM_API void oru_nativewindow_uninit(void* handle);
}
