// Where the pictures come from: a video file decoded by FFmpeg, a Y4M file or
// the built-in clip.
#pragma once

#include <memory>
#include <string>

#include "options.h"
#include "picture.h"

class PictureSource {
 public:
  virtual ~PictureSource() = default;
  // The next picture; false at the end, or on a damaged input (error() set).
  virtual bool next(Picture& picture) = 0;
  virtual const std::string& error() const = 0;
  virtual int width() const = 0;
  virtual int height() const = 0;
  virtual FrameRate rate() const = 0;
  // Pictures it holds, if known (0 otherwise).
  virtual long count() const = 0;
  virtual std::string describe() const = 0;
  // Whether the pictures are interlaced, as the input marks them.
  virtual bool interlaced() const = 0;
  // The colour description the input gives: matrix as H.264 numbers it (1
  // BT.709, 4 FCC, 6 BT.601, 7 SMPTE 240M) and range (0 video, 1 full);
  // -1 when the input does not say.
  virtual int matrix() const { return -1; }
  virtual int range() const { return -1; }
  // How the pictures reach the presenter (decoded as they are, or converted).
  virtual std::string decoding() const { return ""; }
};

// Null with a message when the input cannot be played.
std::unique_ptr<PictureSource> OpenPictureSource(const Options& options, std::string& error);
