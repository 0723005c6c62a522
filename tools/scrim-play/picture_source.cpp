#include "picture_source.h"

#include <stdio.h>

#include "test_clip.h"
#include "y4m_reader.h"

namespace {

class Y4mSource : public PictureSource {
 public:
  bool open(const std::string& path) { return reader_.open(path); }
  bool next(Picture& picture) override { return reader_.read(picture); }
  const std::string& error() const override { return reader_.error(); }
  int width() const override { return reader_.width(); }
  int height() const override { return reader_.height(); }
  FrameRate rate() const override { return reader_.rate(); }
  long count() const override { return reader_.pictureCountHint(); }
  std::string describe() const override {
    char buf[64];
    snprintf(buf, sizeof buf, " (%s)", reader_.interlaced() ? "interlaced" : "progressive");
    return "Y4M file" + std::string(buf);
  }

 private:
  Y4mReader reader_;
};

class ClipSource : public PictureSource {
 public:
  explicit ClipSource(bool interlaced) { clip_.interlaced = interlaced; }
  bool next(Picture& picture) override {
    if (index_ >= clip_.pictures) return false;
    clip_.render(index_++, picture);
    return true;
  }
  const std::string& error() const override { return error_; }
  int width() const override { return clip_.width; }
  int height() const override { return clip_.height; }
  FrameRate rate() const override { return clip_.rate; }
  long count() const override { return clip_.pictures; }
  std::string describe() const override {
    return std::string("built-in clip (") + (clip_.interlaced ? "interlaced" : "progressive") + ")";
  }

 private:
  TestClip clip_;
  int index_ = 0;
  std::string error_;
};

}  // namespace

std::unique_ptr<PictureSource> OpenPictureSource(const Options& options, std::string& error) {
  if (options.input.empty()) return std::make_unique<ClipSource>(options.interlacedClip);
  auto source = std::make_unique<Y4mSource>();
  if (!source->open(options.input)) {
    error = source->error();
    return nullptr;
  }
  return source;
}
