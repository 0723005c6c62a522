// Helpers of the presenter and renderer tests: YCbCr pictures the way a
// decoder hands them over, the error lines the library wrote, and the windows
// the host gives it.
#pragma once

#include <stdint.h>

#include <string>
#include <vector>

#include "host_log.h"
#include "host_window.h"

namespace scrim_testing {

// A planar 4:2:0 picture (or NV12 with interleaved chroma) with strides wider
// than its rows, filled with a pattern that differs per plane, row and column.
struct Picture {
  int width = 0;
  int height = 0;
  std::vector<uint8_t> y, cb, cr;  // cr empty for NV12 (cb holds CbCr pairs)
  unsigned char* planes[3] = {nullptr, nullptr, nullptr};
  unsigned long strides[3] = {0, 0, 0};

  static Picture I420(int width, int height, int seed) {
    Picture p;
    p.width = width;
    p.height = height;
    const int ys = width + 8, cs = width / 2 + 4;
    p.y.resize(static_cast<size_t>(ys) * height);
    p.cb.resize(static_cast<size_t>(cs) * (height / 2));
    p.cr.resize(static_cast<size_t>(cs) * (height / 2));
    for (int r = 0; r < height; ++r)
      for (int x = 0; x < ys; ++x)
        p.y[r * ys + x] = static_cast<uint8_t>(16 + (x * 3 + r * 5 + seed * 7) % 220);
    for (int r = 0; r < height / 2; ++r)
      for (int x = 0; x < cs; ++x) {
        p.cb[r * cs + x] = static_cast<uint8_t>(16 + (x * 11 + r * 3 + seed * 13) % 224);
        p.cr[r * cs + x] = static_cast<uint8_t>(240 - (x * 5 + r * 9 + seed * 17) % 224);
      }
    p.planes[0] = p.y.data();
    p.planes[1] = p.cb.data();
    p.planes[2] = p.cr.data();
    p.strides[0] = ys;
    p.strides[1] = cs;
    p.strides[2] = cs;
    return p;
  }

  static Picture NV12(int width, int height, int seed) {
    Picture p = I420(width, height, seed);
    p.cr.clear();
    p.planes[2] = nullptr;
    p.strides[2] = 0;
    return p;
  }

  uint8_t Y(int x, int r) const { return y[r * strides[0] + x]; }
  uint8_t Cb(int x, int r) const { return cb[r * strides[1] + x]; }
  uint8_t Cr(int x, int r) const { return cr[r * strides[2] + x]; }
};

// Lines the library wrote (all at error priority), without the "E/OruScrimPresent: " head.
inline std::vector<std::string> LibraryLines() {
  std::vector<std::string> out;
  const std::string head = "E/OruScrimPresent: ";
  for (const std::string& line : HostLog_lines()) {
    if (line.compare(0, head.size(), head) == 0)
      out.push_back(line.substr(head.size()));
    else
      out.push_back("?" + line);
  }
  return out;
}

// "[func N]" followed by text: the source line number is not pinned down.
inline bool IsLine(const std::string& line, const std::string& func, const std::string& text) {
  std::string head = "[" + func + " ";
  if (line.compare(0, head.size(), head) != 0) return false;
  size_t close = line.find(']', head.size());
  if (close == std::string::npos || close == head.size()) return false;
  for (size_t i = head.size(); i < close; ++i)
    if (line[i] < '0' || line[i] > '9') return false;
  return line.substr(close + 1) == text;
}

// Matches every line against (function, text) in order; reports the first difference.
inline std::string CompareLines(const std::vector<std::string>& lines,
                                const std::vector<std::pair<std::string, std::string>>& expected) {
  if (lines.size() != expected.size()) {
    std::string all;
    for (const std::string& l : lines) all += "\n  " + l;
    return "expected " + std::to_string(expected.size()) + " lines, got " + std::to_string(lines.size()) +
           ":" + all;
  }
  for (size_t i = 0; i < lines.size(); ++i) {
    if (!IsLine(lines[i], expected[i].first, expected[i].second))
      return "line " + std::to_string(i) + ": got \"" + lines[i] + "\", expected [" + expected[i].first +
             " N]" + expected[i].second;
  }
  return "";
}

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

 private:
  ANativeWindow* w_;
};

}  // namespace scrim_testing
