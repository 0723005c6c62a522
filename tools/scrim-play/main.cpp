// scrim-play: plays pictures through libscrimpresent into a host window in real
// time, the way a media player drives the presenter, and writes what the window
// showed as PNG files, a contact sheet and a summary.
#include <errno.h>
#include <stdio.h>
#include <string.h>
#include <sys/stat.h>
#include <sys/time.h>
#include <unistd.h>

#include <memory>
#include <string>

#include "contact_sheet.h"
#include "conversion_probe.h"
#include "library.h"
#include "options.h"
#include "picture_source.h"
#include "player.h"
#include "png_writer.h"
#include "summary.h"
#if SCRIM_PLAY_WITH_SDL
#include "window_view.h"
#endif

namespace {

// Exit statuses.
const int kBadUsage = 2;
const int kBadInput = 1;
const int kFailure = 3;

int64_t NowUs() {
  struct timeval tv;
  gettimeofday(&tv, nullptr);
  return static_cast<int64_t>(tv.tv_sec) * 1000000 + tv.tv_usec;
}

// mkdir -p.
bool MakeFolder(const std::string& path, std::string& error) {
  for (size_t i = 1; i <= path.size(); ++i) {
    if (i < path.size() && path[i] != '/') continue;
    std::string part = path.substr(0, i);
    if (mkdir(part.c_str(), 0755) != 0 && errno != EEXIST) {
      error = "cannot make " + part + ": " + strerror(errno);
      return false;
    }
  }
  struct stat st;
  if (stat(path.c_str(), &st) != 0 || !S_ISDIR(st.st_mode)) {
    error = path + " is not a folder";
    return false;
  }
  return true;
}

// The stream's colour description: the command line's, else the input's, else
// what players assume (BT.709 from 720 lines up, BT.601 below; video range).
std::string ResolveColour(const PictureSource& source, Options& o) {
  const char* matrixFrom = "--matrix";
  if (!o.matrixGiven) {
    matrixFrom = source.matrix() >= 0 ? "from the input" : "unstated: by the picture height";
    o.matrix = source.matrix() >= 0 ? source.matrix() : source.height() >= 720 ? 1 : 6;
  }
  const char* rangeFrom = "--range";
  if (!o.rangeGiven) {
    rangeFrom = source.range() >= 0 ? "from the input" : "unstated";
    o.range = source.range() >= 0 ? source.range() : 0;
  }
  char buf[160];
  snprintf(buf, sizeof buf, "%s (%s), %s range (%s)", MatrixName(o.matrix), matrixFrom,
           o.range ? "full" : "video", rangeFrom);
  return buf;
}

std::string DescribeWindow(const Options& o) {
  char buf[160];
  snprintf(buf, sizeof buf, "%s, colour format 0x%08X (%s, %s range)", o.yv12 ? "YV12" : "RGB565",
           o.colourFormat(), MatrixName(o.matrix), o.range ? "full" : "video");
  return buf;
}

class Progress {
 public:
  explicit Progress(bool enabled) : enabled_(enabled), tty_(isatty(fileno(stderr)) != 0) {}
  void update(long index, long total, const PlaySummary& s, bool last) {
    if (!enabled_) return;
    // On a terminal the line is redrawn in place; otherwise one line a second of video.
    if (!tty_ && (last ? index == lastShown_ : index % 25 != 0)) return;
    lastShown_ = index;
    char count[48];
    if (total > 0)
      snprintf(count, sizeof count, "%ld/%ld", index, total);
    else
      snprintf(count, sizeof count, "%ld", index);
    fprintf(stderr, "%spicture %s  presented %ld  late %ld  dropped %ld  lateness %.2f ms%s",
            tty_ ? "\r" : "", count, s.presented, s.late, s.dropped, s.latenessMs.mean(),
            tty_ ? (last ? "\n" : "   ") : "\n");
    fflush(stderr);
  }

 private:
  bool enabled_, tty_;
  long lastShown_ = -1;
};

}  // namespace

int main(int argc, char** argv) {
  Options options;
  std::string error;
  if (!ParseOptions(argc, argv, options, error)) {
    fprintf(stderr, "scrim-play: %s (see --help)\n", error.c_str());
    return kBadUsage;
  }
  if (options.help) {
    PrintUsage(stdout);
    return 0;
  }

#if !SCRIM_PLAY_WITH_SDL
  if (options.window) {
    fprintf(stderr, "scrim-play: --window: this scrim-play was built without SDL2\n");
    return kBadUsage;
  }
#endif
  std::unique_ptr<PictureSource> source = OpenPictureSource(options, error);
  if (!source) {
    fprintf(stderr, "scrim-play: %s\n", error.c_str());
    return kBadInput;
  }
  ScrimLibrary lib;
  if (!lib.load(options.library, error)) {
    fprintf(stderr, "scrim-play: %s\n", error.c_str());
    return kFailure;
  }
  if (!MakeFolder(options.outDir, error)) {
    fprintf(stderr, "scrim-play: %s\n", error.c_str());
    return kFailure;
  }

  const int width = source->width(), height = source->height();
  const FrameRate rate = source->rate();
  long total = source->count();
  if (options.frames > 0 && (total == 0 || options.frames < total)) total = options.frames;

  // What the stream is opened with: the command line's settings, else the input's.
  Options play = options;
  PlaySummary summary;
  summary.colour = ResolveColour(*source, play);
  if (play.deinterlace < 0 && source->interlaced()) play.deinterlace = 7;
  summary.deinterlace = options.deinterlace >= 0
                            ? "mode " + std::to_string(options.deinterlace) + " (--deinterlace)"
                        : play.deinterlace >= 0 ? "mode 7 (the input is interlaced)"
                                                : "none (the input is progressive)";
  char text[512];
  summary.library = lib.version();
  snprintf(text, sizeof text, "%s%s%s, %dx%d, %.3f pictures/s", source->describe().c_str(),
           options.input.empty() ? "" : " ", options.input.c_str(), width, height, rate.fps());
  summary.input = text;
  summary.output = DescribeWindow(play);
  summary.outDir = options.outDir;

  Player player(lib, play);
  if (!player.start(width, height, error)) {
    fprintf(stderr, "scrim-play: %s\n", error.c_str());
    return kFailure;
  }
  ConversionProbe probe(lib, width, height, play.colourFormat(), play.yv12,
                        play.deinterlace > 0 ? static_cast<uint32_t>(play.deinterlace) : 0);
  ContactSheet sheet(8, total);
  Progress progress(!options.quiet);
#if SCRIM_PLAY_WITH_SDL
  std::unique_ptr<WindowView> view;
  if (options.window) {
    view = std::make_unique<WindowView>();
    if (!view->open(width, height, error)) {
      fprintf(stderr, "scrim-play: %s\n", error.c_str());
      return kFailure;
    }
  }
#endif

  // The clock starts at the first picture. Each picture is due at its own
  // time on it (its timestamp, or one picture period after the one before);
  // its display delay is whatever is left until then. A picture whose time
  // has passed is late: presented at once, or with --drop-late not at all.
  Picture picture;
  long index = 0, postedIndex = 0;
  int64_t startUs = 0, firstPtsUs = 0;
  while ((options.frames < 0 || index < options.frames) && source->next(picture)) {
    double ms = probe.measure(picture);
    if (ms >= 0) summary.conversionMs.add(ms);
    const int64_t ptsUs = picture.ptsUs >= 0 ? picture.ptsUs : index * rate.frameUs();
    const int64_t nowUs = NowUs();
    if (index == 0) {
      startUs = nowUs;
      firstPtsUs = ptsUs;
    }
    const int64_t dueUs = startUs + (ptsUs - firstPtsUs), leftUs = dueUs - nowUs;
    if (leftUs < 0) ++summary.late;
    bool stop = false;
    if (leftUs < 0 && options.dropLate) {
      ++summary.dropped;
    } else {
      // Rounded up, so that no picture is posted before its time.
      const long delayMs = static_cast<long>(leftUs > 0 ? (leftUs + 999) / 1000 : 0);
      Player::Shown shown = player.present(picture, delayMs);
      if (shown.result != KV_S_OK || shown.frame == nullptr) {
        ++summary.dropped;
      } else {
        ++summary.presented;
        summary.latenessMs.add((shown.frame->postedUs - (shown.entryUs + delayMs * 1000)) / 1000.0);
        summary.clockMs.add((shown.frame->postedUs - dueUs) / 1000.0);
        if (options.every > 0 && postedIndex % options.every == 0) {
          char path[4096];
          snprintf(path, sizeof path, "%s/frame_%05ld.png", options.outDir.c_str(), index);
          char err[256] = {0};
          if (HostPng_writePostedFrame(shown.frame, path, err, sizeof err) != 0) {
            fprintf(stderr, "\nscrim-play: %s: %s\n", path, err);
            return kFailure;
          }
          ++summary.pngs;
        }
        sheet.offer(postedIndex, shown.frame);
        ++postedIndex;
#if SCRIM_PLAY_WITH_SDL
        stop = view && !view->show(shown.frame, index, (ptsUs - firstPtsUs) / 1e6);
#endif
      }
    }
    player.dropPosted();
    ++index;
    progress.update(index, total, summary, false);
    if (stop) {
      summary.problem = "the window was closed";
      break;
    }
  }
  progress.update(index, total, summary, true);
  int status = 0;
  summary.decoding = source->decoding();
  if (!source->error().empty()) {
    summary.problem = source->error();
    fprintf(stderr, "scrim-play: %s\n", source->error().c_str());
    status = kBadInput;
  }

  if (sheet.size() > 0) {
    std::string path = options.outDir + "/contact_sheet.png";
    if (sheet.write(path, error))
      summary.contactSheet = path;
    else
      fprintf(stderr, "scrim-play: contact sheet: %s\n", error.c_str());
  }
  summary.print(stdout);
  std::string summaryPath = options.outDir + "/summary.txt";
  if (FILE* f = fopen(summaryPath.c_str(), "w")) {
    summary.print(f);
    fclose(f);
  } else {
    fprintf(stderr, "scrim-play: cannot write %s: %s\n", summaryPath.c_str(), strerror(errno));
    status = kFailure;
  }
  if (summary.presented == 0 && status == 0) status = kFailure;
#if SCRIM_PLAY_WITH_SDL
  if (view && summary.problem.empty()) view->waitForClose();
#endif
  return status;
}
