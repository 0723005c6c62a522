// Test- and tool-side control of the host native window stand-in. A window
// behaves like a device's: reference counted (starts at 1, frees itself at 0),
// a queue of buffers that rotate (a buffer posted without being written shows
// an older picture), strides aligned wider than the width, YV12 laid out as
// Android lays it out, and errors on misuse. Every posted frame is recorded.
#pragma once

#include <stddef.h>
#include <stdint.h>

#include <android/native_window.h>

#ifdef __cplusplus
extern "C" {
#endif

#define HOST_WINDOW_FORMAT_YV12 0x32315659

typedef struct HostWindowConfig {
  int32_t width;        // default buffer width (pixels); 0 gives 320
  int32_t height;       // default buffer height; 0 gives 240
  int32_t format;       // default format; 0 gives WINDOW_FORMAT_RGB_565
  int32_t strideAlign;  // stride alignment in pixels; 0 gives HOST_WINDOW_DEFAULT_STRIDE_ALIGN
  int32_t bufferCount;  // buffers in the queue; 0 gives 3
  int32_t keepPixels;   // 1 (default when the config is null): posted frames keep a copy of their pixels
} HostWindowConfig;

// 112 pixels: a multiple of 16 (as YV12 needs) that makes the stride differ
// from the width for common sizes (176, 320, 352, 640, 720, 1280, 1920).
#define HOST_WINDOW_DEFAULT_STRIDE_ALIGN 112

typedef struct HostPostedFrame {
  int32_t format;
  int32_t width;
  int32_t height;
  int32_t stride;         // in pixels, as the buffer was handed out
  int32_t bufferIndex;    // which buffer of the queue
  int64_t postedUs;       // gettimeofday time of the post, in microseconds
  const uint8_t* pixels;  // copy of the whole buffer (null when keepPixels is 0)
  size_t size;            // bytes in pixels
} HostPostedFrame;

typedef enum HostWindowFault {
  HOST_FAULT_LOCK = 0,
  HOST_FAULT_SET_GEOMETRY = 1,
  HOST_FAULT_POST = 2,
} HostWindowFault;

// Creates a window with reference count 1; config may be null for defaults.
ANativeWindow* HostWindow_create(const HostWindowConfig* config);
int32_t HostWindow_refCount(ANativeWindow* window);
// Number of live windows in the process (to check that releases free them).
int32_t HostWindow_liveCount(void);
int HostWindow_isLocked(ANativeWindow* window);
// Bytes of one buffer in the current geometry and format.
size_t HostWindow_bufferSize(ANativeWindow* window);
// Pointer to buffer i of the queue (for tests that preload or inspect buffers).
uint8_t* HostWindow_bufferBits(ANativeWindow* window, int32_t index);

size_t HostWindow_postedCount(ANativeWindow* window);
// Frame i (0-based, oldest first); the pointer stays valid until the window is
// freed or HostWindow_clearPosted is called.
const HostPostedFrame* HostWindow_posted(ANativeWindow* window, size_t index);
void HostWindow_clearPosted(ANativeWindow* window);
// Number of lock calls, successful or not.
size_t HostWindow_lockCount(ANativeWindow* window);

// The next `count` calls of the given kind fail with `error` (a negative errno).
void HostWindow_failNext(ANativeWindow* window, HostWindowFault fault, int32_t error, int32_t count);

#ifdef __cplusplus
}
#endif
