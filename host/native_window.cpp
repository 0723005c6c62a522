// Host stand-in for libandroid's native window: reference counted, a rotating
// queue of buffers in the geometry in force, strides wider than the width,
// YV12 laid out as Android lays it out, errors on misuse, and a record of every
// posted frame for tests and tools.
#include <android/native_window.h>
#include <errno.h>
#include <string.h>
#include <sys/time.h>

#include <atomic>
#include <deque>
#include <memory>
#include <mutex>
#include <vector>

#include "host_window.h"

namespace {

std::atomic<int32_t> g_liveWindows{0};

int32_t alignUp(int32_t v, int32_t a) { return (v + a - 1) / a * a; }

bool isKnownFormat(int32_t f) {
  return f == WINDOW_FORMAT_RGBA_8888 || f == WINDOW_FORMAT_RGBX_8888 || f == WINDOW_FORMAT_RGB_565 ||
         f == HOST_WINDOW_FORMAT_YV12;
}

struct Posted {
  HostPostedFrame frame;
  std::vector<uint8_t> pixels;
};

struct Fault {
  int32_t error = 0;
  int32_t count = 0;
};

}  // namespace

struct ANativeWindow {
  std::mutex lock;
  int32_t refs = 1;
  int32_t defaultWidth, defaultHeight, defaultFormat;
  int32_t strideAlign, bufferCount;
  bool keepPixels;
  int32_t geomWidth = 0, geomHeight = 0, geomFormat = 0;  // 0: the default
  std::vector<std::vector<uint8_t>> buffers;
  int32_t bufWidth = -1, bufHeight = -1, bufFormat = -1;  // geometry the buffers were made for
  int32_t next = 0;
  bool locked = false;
  int32_t lockedIndex = -1;
  ANativeWindow_Buffer lockedBuffer{};
  std::deque<std::unique_ptr<Posted>> posted;
  Fault faults[3];
  size_t lockCalls = 0;

  int32_t width() const { return geomWidth ? geomWidth : defaultWidth; }
  int32_t height() const { return geomHeight ? geomHeight : defaultHeight; }
  int32_t format() const { return geomFormat ? geomFormat : defaultFormat; }

  int32_t stride() const {
    int32_t s = alignUp(width(), strideAlign);
    return format() == HOST_WINDOW_FORMAT_YV12 ? alignUp(s, 16) : s;
  }

  size_t bufferSize() const {
    size_t s = static_cast<size_t>(stride()), h = static_cast<size_t>(height());
    switch (format()) {
      case WINDOW_FORMAT_RGB_565:
        return s * h * 2;
      case HOST_WINDOW_FORMAT_YV12: {
        size_t c = static_cast<size_t>(alignUp(stride() / 2, 16));
        return s * h + 2 * c * ((h + 1) / 2);
      }
      default:
        return s * h * 4;
    }
  }

  // Buffers are remade (cleared) only when the geometry changes; otherwise they
  // keep what was last drawn in them, as a device's queue does.
  void ensureBuffers() {
    if (bufWidth == width() && bufHeight == height() && bufFormat == format()) return;
    buffers.assign(static_cast<size_t>(bufferCount), std::vector<uint8_t>(bufferSize(), 0));
    bufWidth = width();
    bufHeight = height();
    bufFormat = format();
    next = 0;
  }

  bool takeFault(HostWindowFault which, int32_t* error) {
    Fault& f = faults[which];
    if (f.count <= 0) return false;
    --f.count;
    *error = f.error;
    return true;
  }
};

extern "C" {

ANativeWindow* HostWindow_create(const HostWindowConfig* config) {
  HostWindowConfig c{};
  if (config) c = *config;
  ANativeWindow* w = new ANativeWindow;
  w->defaultWidth = c.width > 0 ? c.width : 320;
  w->defaultHeight = c.height > 0 ? c.height : 240;
  w->defaultFormat = c.format > 0 ? c.format : WINDOW_FORMAT_RGB_565;
  w->strideAlign = c.strideAlign > 0 ? c.strideAlign : HOST_WINDOW_DEFAULT_STRIDE_ALIGN;
  w->bufferCount = c.bufferCount > 0 ? c.bufferCount : 3;
  w->keepPixels = config ? c.keepPixels != 0 : true;
  ++g_liveWindows;
  return w;
}

int32_t HostWindow_refCount(ANativeWindow* window) {
  std::lock_guard<std::mutex> g(window->lock);
  return window->refs;
}

int32_t HostWindow_liveCount(void) { return g_liveWindows.load(); }

int HostWindow_isLocked(ANativeWindow* window) {
  std::lock_guard<std::mutex> g(window->lock);
  return window->locked ? 1 : 0;
}

size_t HostWindow_bufferSize(ANativeWindow* window) {
  std::lock_guard<std::mutex> g(window->lock);
  return window->bufferSize();
}

uint8_t* HostWindow_bufferBits(ANativeWindow* window, int32_t index) {
  std::lock_guard<std::mutex> g(window->lock);
  window->ensureBuffers();
  if (index < 0 || index >= window->bufferCount) return nullptr;
  return window->buffers[static_cast<size_t>(index)].data();
}

size_t HostWindow_postedCount(ANativeWindow* window) {
  std::lock_guard<std::mutex> g(window->lock);
  return window->posted.size();
}

const HostPostedFrame* HostWindow_posted(ANativeWindow* window, size_t index) {
  std::lock_guard<std::mutex> g(window->lock);
  return index < window->posted.size() ? &window->posted[index]->frame : nullptr;
}

void HostWindow_clearPosted(ANativeWindow* window) {
  std::lock_guard<std::mutex> g(window->lock);
  window->posted.clear();
}

size_t HostWindow_lockCount(ANativeWindow* window) {
  std::lock_guard<std::mutex> g(window->lock);
  return window->lockCalls;
}

void HostWindow_failNext(ANativeWindow* window, HostWindowFault fault, int32_t error, int32_t count) {
  std::lock_guard<std::mutex> g(window->lock);
  window->faults[fault].error = error;
  window->faults[fault].count = count;
}

void ANativeWindow_acquire(ANativeWindow* window) {
  std::lock_guard<std::mutex> g(window->lock);
  ++window->refs;
}

void ANativeWindow_release(ANativeWindow* window) {
  bool last;
  {
    std::lock_guard<std::mutex> g(window->lock);
    last = --window->refs == 0;
  }
  if (last) {
    delete window;
    --g_liveWindows;
  }
}

int32_t ANativeWindow_getWidth(ANativeWindow* window) {
  std::lock_guard<std::mutex> g(window->lock);
  return window->width();
}

int32_t ANativeWindow_getHeight(ANativeWindow* window) {
  std::lock_guard<std::mutex> g(window->lock);
  return window->height();
}

int32_t ANativeWindow_getFormat(ANativeWindow* window) {
  std::lock_guard<std::mutex> g(window->lock);
  return window->format();
}

int32_t ANativeWindow_setBuffersGeometry(ANativeWindow* window, int32_t width, int32_t height,
                                         int32_t format) {
  std::lock_guard<std::mutex> g(window->lock);
  int32_t error;
  if (window->takeFault(HOST_FAULT_SET_GEOMETRY, &error)) return error;
  if (width < 0 || height < 0 || format < 0) return -EINVAL;
  if ((width == 0) != (height == 0)) return -EINVAL;
  if (format != 0 && !isKnownFormat(format)) return -EINVAL;
  window->geomWidth = width;
  window->geomHeight = height;
  window->geomFormat = format;
  return 0;
}

int32_t ANativeWindow_lock(ANativeWindow* window, ANativeWindow_Buffer* outBuffer, ARect* inOutDirtyBounds) {
  std::lock_guard<std::mutex> g(window->lock);
  ++window->lockCalls;
  int32_t error;
  if (window->takeFault(HOST_FAULT_LOCK, &error)) return error;
  if (window->locked) return -ENOSYS;  // Android's INVALID_OPERATION
  if (!outBuffer) return -EINVAL;
  window->ensureBuffers();
  ANativeWindow_Buffer b{};
  b.width = window->width();
  b.height = window->height();
  b.stride = window->stride();
  b.format = window->format();
  b.bits = window->buffers[static_cast<size_t>(window->next)].data();
  *outBuffer = b;
  if (inOutDirtyBounds) *inOutDirtyBounds = ARect{0, 0, b.width, b.height};
  window->lockedBuffer = b;
  window->lockedIndex = window->next;
  window->locked = true;
  return 0;
}

int32_t ANativeWindow_unlockAndPost(ANativeWindow* window) {
  std::lock_guard<std::mutex> g(window->lock);
  if (!window->locked) return -ENOSYS;
  window->locked = false;
  window->next = (window->next + 1) % window->bufferCount;
  int32_t error;
  if (window->takeFault(HOST_FAULT_POST, &error)) return error;  // unlocked, but nothing reaches the screen

  auto p = std::make_unique<Posted>();
  const ANativeWindow_Buffer& b = window->lockedBuffer;
  const std::vector<uint8_t>& buf = window->buffers[static_cast<size_t>(window->lockedIndex)];
  if (window->keepPixels) p->pixels = buf;
  struct timeval tv;
  gettimeofday(&tv, nullptr);
  p->frame.format = b.format;
  p->frame.width = b.width;
  p->frame.height = b.height;
  p->frame.stride = b.stride;
  p->frame.bufferIndex = window->lockedIndex;
  p->frame.postedUs = static_cast<int64_t>(tv.tv_sec) * 1000000 + tv.tv_usec;
  p->frame.pixels = p->pixels.empty() ? nullptr : p->pixels.data();
  p->frame.size = p->pixels.size();
  window->posted.push_back(std::move(p));
  return 0;
}

}  // extern "C"
