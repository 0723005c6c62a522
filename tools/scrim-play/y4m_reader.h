// Reads YUV4MPEG2 files of 8-bit 4:2:0 pictures.
#pragma once

#include <stdio.h>

#include <string>

#include "picture.h"

class Y4mReader {
 public:
  ~Y4mReader();
  // Opens the file and reads its header; false with a message in error().
  bool open(const std::string& path);
  // Reads the next picture. False at the end of the file (error() empty) or
  // on a damaged picture or a file without any (error() says what).
  bool read(Picture& picture);

  int width() const { return width_; }
  int height() const { return height_; }
  FrameRate rate() const { return rate_; }
  bool interlaced() const { return interlaced_; }
  const std::string& error() const { return error_; }
  // Pictures the file holds, judged from its size (0 if unknown).
  long pictureCountHint() const { return countHint_; }

 private:
  bool parseHeader(const std::string& header);
  bool fail(const std::string& message);
  long pictureBytes() const;  // Y, Cb and Cr of one picture

  FILE* file_ = nullptr;
  std::string path_;
  std::string error_;
  int width_ = 0, height_ = 0;
  FrameRate rate_;
  bool interlaced_ = false;
  long countHint_ = 0;
  long pictureIndex_ = 0;
  long fileBytes_ = -1;  // size of a regular file, else -1
};
