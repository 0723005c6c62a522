// Where the pictures come from: a Y4M file or the built-in clip.
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
};

// Null with a message when the input cannot be played.
std::unique_ptr<PictureSource> OpenPictureSource(const Options& options, std::string& error);
