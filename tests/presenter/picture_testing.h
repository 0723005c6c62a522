// Helpers of the presenter, renderer and surface tests: decoder-like pictures,
// the library's log lines, host windows and the expected posted buffers.
#pragma once

#include <gtest/gtest.h>
#include <stdint.h>
#include <stdio.h>
#include <string.h>
#include <sys/time.h>

#include <regex>
#include <string>
#include <vector>

#include "host_log.h"
#include "host_window.h"
#include "imageproc/oru_imageproc.h"

namespace scrim_testing {

// A planar 4:2:0 picture with strides wider than its rows, filled with a
// pattern that differs per plane, row and column.
struct Picture {
  int width = 0, height = 0;
  std::vector<uint8_t> y, cb, cr;
  unsigned char* planes[3] = {nullptr, nullptr, nullptr};
  unsigned long strides[3] = {0, 0, 0};

  static Picture I420(int width, int height, int seed) {
    Picture p;
    p.width = width;
    p.height = height;
    const int ys = width + 8, cs = width / 2 + 4;
    for (int i = 0; i < ys * height; ++i)
      p.y.push_back(uint8_t(16 + (i % ys * 3 + i / ys * 5 + seed * 7) % 220));
    for (int i = 0; i < cs * (height / 2); ++i) {
      p.cb.push_back(uint8_t(16 + (i % cs * 11 + i / cs * 3 + seed * 13) % 224));
      p.cr.push_back(uint8_t(240 - (i % cs * 5 + i / cs * 9 + seed * 17) % 224));
    }
    p.planes[0] = p.y.data();
    p.planes[1] = p.cb.data();
    p.planes[2] = p.cr.data();
    p.strides[0] = ys;
    p.strides[1] = p.strides[2] = cs;
    return p;
  }

  uint8_t Y(int x, int r) const { return y[r * strides[0] + x]; }
  uint8_t Cb(int x, int r) const { return cb[r * strides[1] + x]; }
  uint8_t Cr(int x, int r) const { return cr[r * strides[2] + x]; }
};

inline int64_t NowUs() {
  struct timeval tv;
  gettimeofday(&tv, nullptr);
  return static_cast<int64_t>(tv.tv_sec) * 1000000 + tv.tv_usec;
}

// The record a player hands over for a surface.
struct SurfaceRecord {
  void* m_pJvm;
  void* m_pJobj;
};

// Lines the library wrote (all at error priority) without the
// "E/OruScrimPresent: " head, and with the source line number of "[func 123]"
// written as N: it is not pinned down.
inline std::vector<std::string> LibraryLines() {
  static const std::regex lineNumber(R"(^\[(\w+) [0-9]+\])");
  const std::string head = "E/OruScrimPresent: ";
  std::vector<std::string> out;
  for (const std::string& line : HostLog_lines())
    out.push_back(line.compare(0, head.size(), head) == 0
                      ? std::regex_replace(line.substr(head.size()), lineNumber, "[$1 N]")
                      : "?" + line);
  return out;
}

// Compares the lines written so far with the expected ones, and forgets them.
#define EXPECT_LINES(...)                                                            \
  do {                                                                               \
    EXPECT_EQ(std::vector<std::string>(__VA_ARGS__), scrim_testing::LibraryLines()); \
    HostLog_clear();                                                                 \
  } while (0)

// Owns one reference of a host window and gives it back at the end of the test.
class Window {
 public:
  explicit Window(int strideAlign = 0, int bufferCount = 0) {
    HostWindowConfig c{};
    c.strideAlign = strideAlign;
    c.bufferCount = bufferCount;
    c.keepPixels = 1;
    w_ = HostWindow_create(&c);
  }
  ~Window() { ANativeWindow_release(w_); }
  Window(const Window&) = delete;
  Window& operator=(const Window&) = delete;
  ANativeWindow* get() const { return w_; }
  int refs() const { return HostWindow_refCount(w_); }
  size_t posted() const { return HostWindow_postedCount(w_); }
  const HostPostedFrame* frame(size_t i) const { return HostWindow_posted(w_, i); }
  const HostPostedFrame* last() const { return frame(posted() - 1); }
  std::vector<uint8_t> lastPixels() const { return {last()->pixels, last()->pixels + last()->size}; }

 private:
  ANativeWindow* w_;
};

// Tests that read the log start and end with an empty, silent one.
class LoggedTest : public testing::Test {
 protected:
  void SetUp() override {
    HostLog_setEcho(0);
    HostLog_clear();
  }
  void TearDown() override { HostLog_clear(); }
};

// What the image processor makes of the picture as RGB565 rows of rowBytes.
inline std::vector<uint8_t> ReferenceRGB565(Picture& p, uint32_t matrix, uint32_t range, uint32_t rowBytes) {
  ImgPrcCreateParams c{};
  c.size = sizeof c;
  c.format = 0x003;
  c.resizeMode = 1;
  c.srcWidth = c.dstWidth = p.width;
  c.srcHeight = c.dstHeight = p.height;
  c.colorMatrix = matrix;
  c.fullRange = range;
  void* h = nullptr;
  EXPECT_EQ(0u, ORU_IMAGEPROC_Create(&h, 0, &c));
  std::vector<uint8_t> out(static_cast<size_t>(rowBytes) * p.height, 0);
  uint8_t* src[3] = {p.planes[0], p.planes[1], p.planes[2]};
  uint32_t srcStrides[3] = {uint32_t(p.strides[0]), uint32_t(p.strides[1]), uint32_t(p.strides[2])};
  uint8_t* dst[3] = {out.data(), nullptr, nullptr};
  uint32_t dstStrides[3] = {rowBytes, 0, 0};
  ImgPrcFrameParams f{sizeof f, 1, 0};
  EXPECT_EQ(0u, ORU_IMAGEPROC_ProcessFrame(h, src, srcStrides, dst, dstStrides, &f));
  ORU_IMAGEPROC_Destroy(h);
  return out;
}

// A posted RGB565 buffer holds the image processor's output for the picture in
// its rows (wider than the picture's when the window pads them).
inline void ExpectRGB565(Picture& p, const HostPostedFrame* f, uint32_t matrix, uint32_t range) {
  ASSERT_EQ(WINDOW_FORMAT_RGB_565, f->format);
  ASSERT_EQ(p.width, f->width);
  ASSERT_EQ(p.height, f->height);
  const size_t rowBytes = static_cast<size_t>(f->stride) * 2;
  std::vector<uint8_t> expected = ReferenceRGB565(p, matrix, range, static_cast<uint32_t>(rowBytes));
  for (int r = 0; r < p.height; ++r)
    ASSERT_EQ(0, memcmp(expected.data() + r * rowBytes, f->pixels + r * rowBytes, p.width * 2u))
        << "row " << r;
}

// Android's YV12: Y with the buffer stride, then Cr, then Cb, each with the
// half stride rounded up to 16.
inline void ExpectYV12(const Picture& p, const HostPostedFrame* f) {
  ASSERT_EQ(HOST_WINDOW_FORMAT_YV12, f->format);
  ASSERT_EQ(p.width, f->width);
  ASSERT_EQ(p.height, f->height);
  const size_t ys = static_cast<size_t>(f->stride), cs = (ys / 2 + 15) / 16 * 16;
  const uint8_t* cr = f->pixels + ys * p.height;
  const uint8_t* cb = cr + cs * (p.height / 2);
  for (int r = 0; r < p.height; ++r)
    for (int x = 0; x < p.width; ++x) ASSERT_EQ(p.Y(x, r), f->pixels[r * ys + x]) << x << "," << r;
  for (int r = 0; r < p.height / 2; ++r)
    for (int x = 0; x < p.width / 2; ++x) {
      ASSERT_EQ(p.Cr(x, r), cr[r * cs + x]) << x << "," << r;
      ASSERT_EQ(p.Cb(x, r), cb[r * cs + x]) << x << "," << r;
    }
}

}  // namespace scrim_testing
