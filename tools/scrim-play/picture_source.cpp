#include "picture_source.h"

#include <stdio.h>

#include "test_clip.h"
#include "y4m_reader.h"
#if SCRIM_PLAY_WITH_FFMPEG
#include "av_source.h"
#endif

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
  bool interlaced() const override { return reader_.interlaced(); }

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
  bool interlaced() const override { return clip_.interlaced; }
  int matrix() const override { return 6; }  // drawn in BT.601 video range
  int range() const override { return 0; }

 private:
  TestClip clip_;
  int index_ = 0;
  std::string error_;
};

bool IsY4mName(const std::string& path) {
  return path.size() > 4 && path.compare(path.size() - 4, 4, ".y4m") == 0;
}

}  // namespace

std::unique_ptr<PictureSource> OpenPictureSource(const Options& options, std::string& error) {
  if (options.input.empty()) return std::make_unique<ClipSource>(options.interlacedClip);
#if SCRIM_PLAY_WITH_FFMPEG
  // Y4M files keep their own reader, whose messages say what is wrong with them.
  if (!IsY4mName(options.input)) return OpenAvSource(options.input, static_cast<int>(options.stream), error);
#else
  if (options.stream >= 0 || !IsY4mName(options.input)) {
    error = options.input + ": this scrim-play was built without FFmpeg and plays only Y4M files";
    return nullptr;
  }
#endif
  auto source = std::make_unique<Y4mSource>();
  if (!source->open(options.input)) {
    error = source->error();
    return nullptr;
  }
  return source;
}
