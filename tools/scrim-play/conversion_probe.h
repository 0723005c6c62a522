// Times the conversion a stream makes of each picture. Present converts and
// then waits out the picture's delay before posting, so the conversion cannot
// be timed from outside it; the probe runs the library's image processor with
// the renderer's settings on the same picture into a buffer of its own.
#pragma once

#include <stdint.h>

#include <vector>

#include "library.h"
#include "picture.h"

class ConversionProbe {
 public:
  // deinterlace: the stream's deinterlace mode (0 none), so the probe does the same work.
  ConversionProbe(const ScrimLibrary& lib, int width, int height, uint32_t colourFormat, bool yv12,
                  uint32_t deinterlace);
  ~ConversionProbe();
  ConversionProbe(const ConversionProbe&) = delete;
  ConversionProbe& operator=(const ConversionProbe&) = delete;
  bool ok() const { return handle_ != nullptr; }
  // Milliseconds one conversion of the picture took; negative if it failed.
  double measure(Picture& picture);

 private:
  const ScrimLibrary& lib_;
  void* handle_ = nullptr;
  bool yv12_;
  uint32_t deinterlace_;
  int width_, height_;
  std::vector<uint8_t> out_;
};
