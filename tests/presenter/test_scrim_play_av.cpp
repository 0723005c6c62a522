// scrim-play on video files: clips encoded here with libavcodec are played,
// and every posted picture is checked against the same file decoded here and
// turned into RGB by the textbook formulas; the desktop window under Xvfb;
// files that cannot be played.
#include <gtest/gtest.h>
#include <stdio.h>

#ifndef SCRIM_PLAY_AV_SKIP
#include <X11/Xlib.h>
#include <X11/Xutil.h>
#include <math.h>
#include <png.h>
#include <signal.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <fstream>
#include <regex>
#include <sstream>
#include <string>
#include <vector>

extern "C" {
#include <libavcodec/avcodec.h>
#include <libavformat/avformat.h>
#include <libavutil/pixdesc.h>
}

namespace {

struct Clip {
  const char* codec;
  AVPixelFormat format;
  int width, height;
  std::vector<int64_t> ptsMs;
  AVColorSpace space;
  AVColorRange range;
  bool interlaced;
};

// Smooth ramps, so that chroma resampling cannot tell converters apart, and a
// luma level that steps with the picture number.
uint8_t Pattern(int plane, int x, int y, const Clip& c, int n) {
  return static_cast<uint8_t>(plane == 0   ? 30 + 15 * n + x * 120 / c.width + y * 40 / c.height
                              : plane == 1 ? 40 + x * 176 / c.width
                                           : 40 + y * 176 / c.height);
}

// A Matroska file of the clip.
void Encode(const std::string& path, const Clip& c) {
  AVFormatContext* fmt = nullptr;
  ASSERT_GE(avformat_alloc_output_context2(&fmt, nullptr, "matroska", path.c_str()), 0);
  const AVCodec* codec = avcodec_find_encoder_by_name(c.codec);
  AVCodecContext* ctx = avcodec_alloc_context3(codec);
  ctx->width = c.width;
  ctx->height = c.height;
  ctx->pix_fmt = c.format;
  ctx->time_base = {1, 1000};
  ctx->colorspace = c.space;
  ctx->color_range = c.range;
  ctx->flags |= AV_CODEC_FLAG_GLOBAL_HEADER;
  if (c.interlaced) ctx->flags |= AV_CODEC_FLAG_INTERLACED_DCT | AV_CODEC_FLAG_INTERLACED_ME;
  ctx->field_order = c.interlaced ? AV_FIELD_TT : AV_FIELD_PROGRESSIVE;
  ASSERT_EQ(0, avcodec_open2(ctx, codec, nullptr));
  AVStream* st = avformat_new_stream(fmt, nullptr);
  avcodec_parameters_from_context(st->codecpar, ctx);
  st->time_base = ctx->time_base;
  ASSERT_GE(avio_open(&fmt->pb, path.c_str(), AVIO_FLAG_WRITE), 0);
  ASSERT_GE(avformat_write_header(fmt, nullptr), 0);
  AVFrame* f = av_frame_alloc();
  AVPacket* pkt = av_packet_alloc();
  f->format = c.format;
  f->width = c.width;
  f->height = c.height;
  av_frame_get_buffer(f, 0);
  const AVPixFmtDescriptor* d = av_pix_fmt_desc_get(c.format);
  for (size_t n = 0; n <= c.ptsMs.size(); ++n) {
    if (n < c.ptsMs.size()) {
      av_frame_make_writable(f);
      for (int p = 0; p < 3; ++p) {
        const int sw = p ? d->log2_chroma_w : 0, sh = p ? d->log2_chroma_h : 0;
        for (int y = 0; y < AV_CEIL_RSHIFT(c.height, sh); ++y)
          for (int x = 0; x < AV_CEIL_RSHIFT(c.width, sw); ++x)
            f->data[p][y * f->linesize[p] + x] = Pattern(p, x << sw, y << sh, c, static_cast<int>(n));
      }
      f->pts = c.ptsMs[n];
      f->interlaced_frame = c.interlaced;
      f->top_field_first = 1;
    }
    avcodec_send_frame(ctx, n < c.ptsMs.size() ? f : nullptr);
    while (avcodec_receive_packet(ctx, pkt) == 0) {
      av_packet_rescale_ts(pkt, ctx->time_base, st->time_base);
      av_interleaved_write_frame(fmt, pkt);
    }
  }
  av_write_trailer(fmt);
  avio_closep(&fmt->pb);
  av_packet_free(&pkt);
  av_frame_free(&f);
  avcodec_free_context(&ctx);
  avformat_free_context(fmt);
}

// A decoded picture as 4:2:0: chroma taken from the top-left sample of each 2x2 block.
struct Decoded {
  int w, h;
  std::vector<uint8_t> y, cb, cr;
};

std::vector<Decoded> DecodeAll(const std::string& path) {
  AVFormatContext* fmt = nullptr;
  avformat_open_input(&fmt, path.c_str(), nullptr, nullptr);
  avformat_find_stream_info(fmt, nullptr);
  const AVCodec* dec = avcodec_find_decoder(fmt->streams[0]->codecpar->codec_id);
  AVCodecContext* ctx = avcodec_alloc_context3(dec);
  avcodec_parameters_to_context(ctx, fmt->streams[0]->codecpar);
  avcodec_open2(ctx, dec, nullptr);
  AVPacket* pkt = av_packet_alloc();
  AVFrame* f = av_frame_alloc();
  std::vector<Decoded> out;
  for (bool more = true; more;) {
    more = av_read_frame(fmt, pkt) >= 0;
    avcodec_send_packet(ctx, more ? pkt : nullptr);
    av_packet_unref(pkt);
    while (avcodec_receive_frame(ctx, f) == 0) {
      const AVPixFmtDescriptor* d = av_pix_fmt_desc_get(static_cast<AVPixelFormat>(f->format));
      Decoded p{f->width, f->height, {}, {}, {}};
      for (int y = 0; y < f->height; ++y) p.y.insert(p.y.end(), f->data[0] + y * f->linesize[0], f->data[0] + y * f->linesize[0] + f->width);
      for (int j = 0; j < (f->height + 1) / 2; ++j)
        for (int i = 0; i < (f->width + 1) / 2; ++i) {
          const int at = ((2 * j) >> d->log2_chroma_h) * f->linesize[1] + ((2 * i) >> d->log2_chroma_w);
          p.cb.push_back(f->data[1][at]);
          p.cr.push_back(f->data[2][at]);
        }
      out.push_back(p);
    }
  }
  av_frame_free(&f);
  av_packet_free(&pkt);
  avcodec_free_context(&ctx);
  avformat_close_input(&fmt);
  return out;
}

std::vector<uint8_t> ReadPng(const std::string& path, int& w, int& h) {
  png_image img{};
  img.version = PNG_IMAGE_VERSION;
  if (!png_image_begin_read_from_file(&img, path.c_str())) return {};
  img.format = PNG_FORMAT_RGB;
  std::vector<uint8_t> rgb(PNG_IMAGE_SIZE(img));
  png_image_finish_read(&img, nullptr, rgb.data(), 0, nullptr);
  w = static_cast<int>(img.width);
  h = static_cast<int>(img.height);
  return rgb;
}

// The posted picture against the decoded one in RGB, matrix (kr, kb) and range
// as given: mean and worst difference per channel (RGB565 keeps 5 or 6 bits).
void ExpectPicture(const std::string& png, const Decoded& d, double kr, double kb, bool full) {
  SCOPED_TRACE(png);
  int w = 0, h = 0;
  const std::vector<uint8_t> rgb = ReadPng(png, w, h);
  ASSERT_EQ(d.w, w);
  ASSERT_EQ(d.h, h);
  double sum[3] = {0, 0, 0};
  int worst[3] = {0, 0, 0};
  for (int y = 0; y < h; ++y)
    for (int x = 0; x < w; ++x) {
      const int c = (y / 2) * ((w + 1) / 2) + x / 2;
      const double l = full ? d.y[y * w + x] / 255.0 : (d.y[y * w + x] - 16) / 219.0;
      const double cb = (d.cb[c] - 128) / (full ? 255.0 : 224.0), cr = (d.cr[c] - 128) / (full ? 255.0 : 224.0);
      const double r = l + 2 * (1 - kr) * cr, b = l + 2 * (1 - kb) * cb, g = (l - kr * r - kb * b) / (1 - kr - kb);
      const double want[3] = {r, g, b};
      for (int k = 0; k < 3; ++k) {
        const int diff = abs(static_cast<int>(lround(fmin(fmax(want[k], 0), 1) * 255)) - rgb[(y * w + x) * 3 + k]);
        sum[k] += diff;
        worst[k] = std::max(worst[k], diff);
      }
    }
  for (int k = 0; k < 3; ++k) {
    EXPECT_LE(sum[k] / (w * h), 3.0) << "channel " << k;
    EXPECT_LE(worst[k], 12) << "channel " << k;
  }
}

std::string Slurp(const std::string& path) {
  std::ifstream f(path);
  std::stringstream s;
  s << f.rdbuf();
  return s.str();
}

struct Played {
  int status;
  std::string out, err;
  double Field(const char* pattern) const {
    std::smatch m;
    return std::regex_search(out, m, std::regex(pattern)) ? std::stod(m[1]) : NAN;
  }
};

class ScrimPlayAv : public testing::Test {
 protected:
  void SetUp() override {
    dir_ = "/tmp/scrim_play_av_" + std::to_string(getpid());
    mkdir(dir_.c_str(), 0755);
  }
  void TearDown() override { if (!getenv("KEEP")) system(("rm -rf " + dir_).c_str()); }
  Played Play(const std::string& args) {
    const int rc = system((std::string(SCRIM_PLAY_PATH) + " --quiet " + args + " >" + dir_ + "/stdout 2>" + dir_ +
                           "/stderr").c_str());
    return {WIFEXITED(rc) ? WEXITSTATUS(rc) : -1, Slurp(dir_ + "/stdout"), Slurp(dir_ + "/stderr")};
  }
  std::string dir_;
};

}  // namespace

TEST_F(ScrimPlayAv, PostsTheDecodedPicturesInTheirColoursAndOnTime) {
  // The full-range clip goes to YV12 buffers (a plain copy), whose PNG is
  // written with BT.601 video-range formulas: the picture checks the planes,
  // the summary the colour-format word.
  const struct {
    Clip clip;
    const char* args;
    double kr, kb;
    bool full;
    const char* lines[4];
  } cases[] = {
      {{"ffv1", AV_PIX_FMT_YUV420P, 160, 96, {0, 40, 80, 400, 440}, AVCOL_SPC_BT709, AVCOL_RANGE_MPEG, false},
       "",
       0.2126,
       0.0722,
       false,
       {"yuv420p, to the presenter as decoded \\(no copy\\)", "BT.709 \\(from the input\\), video range \\(from the input\\)",
        "deinterlace: +none", "RGB565, colour format 0x00000001"}},
      {{"ffv1", AV_PIX_FMT_YUV422P, 160, 96, {0, 40, 80}, AVCOL_SPC_SMPTE170M, AVCOL_RANGE_JPEG, false},
       "--mode yv12",
       0.299,
       0.114,
       false,
       {"yuv422p, converted to planar 4:2:0 with libswscale \\(3 of 3 pictures\\)",
        "BT.601 \\(from the input\\), full range \\(from the input\\)", "deinterlace: +none",
        "YV12, colour format 0x00000106"}},
      {{"mpeg4", AV_PIX_FMT_YUV420P, 160, 96, {0, 40, 80, 120}, AVCOL_SPC_UNSPECIFIED, AVCOL_RANGE_UNSPECIFIED, true},
       "",
       0.299,
       0.114,
       false,
       {"as decoded", "BT.601 \\(unstated: by the picture height\\), video range \\(unstated\\)",
        "mode 7 \\(the input is interlaced\\)", "colour format 0x00000006"}},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.lines[0]);
    const std::string n = std::to_string(&c - cases), file = dir_ + "/clip" + n + ".mkv", out = dir_ + "/out" + n;
    Encode(file, c.clip);
    const Played p = Play(file + " --out " + out + " " + c.args);
    ASSERT_EQ(0, p.status) << p.out << p.err;
    for (const char* line : c.lines) EXPECT_TRUE(std::regex_search(p.out, std::regex(line))) << line << "\n" << p.out;
    EXPECT_TRUE(std::regex_search(p.out, std::regex("pictures late: +0\n  pictures dropped: +0"))) << p.out;
    const std::vector<Decoded> decoded = DecodeAll(file);
    ASSERT_EQ(c.clip.ptsMs.size(), decoded.size());
    EXPECT_EQ(decoded.size(), static_cast<size_t>(p.Field("pictures presented: (\\d+)")));
    for (size_t n = 0; n < decoded.size(); ++n) {
      char png[64];
      snprintf(png, sizeof png, "/frame_%05zu.png", n);
      ExpectPicture(out + png, decoded[n], c.kr, c.kb, c.full);
    }
    // No picture before its time, none far behind it (loose: the machine is shared).
    EXPECT_GE(p.Field("earliest (-?[0-9.]+) ms"), -0.5) << p.out;
    EXPECT_LE(p.Field("against the clock: +mean -?[0-9.]+ ms, worst (-?[0-9.]+) ms"), 100.0) << p.out;
  }
}

TEST_F(ScrimPlayAv, LargePicturesAssumeBt709AndLatePicturesCanBeDropped) {
  // 1 ms apart, 720-line pictures written as PNG files cannot keep up.
  const Clip clip{"mpeg4", AV_PIX_FMT_YUV420P, 1280, 720, {0, 1, 2, 3, 4, 5, 6, 7}, AVCOL_SPC_UNSPECIFIED,
                  AVCOL_RANGE_UNSPECIFIED, false};
  Encode(dir_ + "/big.mkv", clip);
  const Played p = Play(dir_ + "/big.mkv --drop-late --out " + dir_ + "/out");
  ASSERT_EQ(0, p.status) << p.out << p.err;
  EXPECT_TRUE(std::regex_search(p.out, std::regex("BT.709 \\(unstated: by the picture height\\)"))) << p.out;
  const double presented = p.Field("presented: +(\\d+)"), late = p.Field("late: +(\\d+)");
  EXPECT_GE(late, 1);
  EXPECT_EQ(late, p.Field("dropped: +(\\d+)"));
  EXPECT_EQ(8, presented + late);
}

TEST_F(ScrimPlayAv, BadFilesGetClearMessages) {
  const Clip clip{"ffv1", AV_PIX_FMT_YUV420P, 320, 240, std::vector<int64_t>(20), AVCOL_SPC_BT709, AVCOL_RANGE_MPEG, false};
  std::vector<int64_t>& pts = const_cast<std::vector<int64_t>&>(clip.ptsMs);
  for (size_t i = 0; i < pts.size(); ++i) pts[i] = static_cast<int64_t>(i) * 10;
  Encode(dir_ + "/good.mkv", clip);
  std::string good = Slurp(dir_ + "/good.mkv"), unknown = good;
  const size_t id = unknown.find("FFV1");  // the FOURCC that names the codec
  ASSERT_NE(std::string::npos, id);
  unknown.replace(id, 4, "ZZZ1");
  std::string damaged = good;
  for (size_t i = good.size() / 2; i < good.size() / 2 + 4000; ++i) damaged[i] = static_cast<char>(i * 7);
  const std::string wav = std::string("RIFF\x2c\0\0\0WAVEfmt \x10\0\0\0\x01\0\x01\0\x40\x1f\0\0\x80\x3e\0\0\x02\0\x10\0data\x08\0\0\0", 44) + std::string(8, '\0');
  const struct {
    const char *name, *args, *message;
    std::string content;
  } cases[] = {
      {"missing.mkv", "", "missing.mkv: cannot open: No such file or directory", ""},
      {"text.mkv", "", "text.mkv: not a media file FFmpeg can read", "just some text\n"},
      {"sound.wav", "", "sound.wav: no video stream", wav},
      {"good.mkv", "--stream 3", "good.mkv: there is no stream 3 \\(the file has 1\\)", good},
      {"unknown.mkv", "", "unknown.mkv: no decoder in this FFmpeg for the video codec \"ZZZ1\"", unknown},
      {"cut.mkv", "", "cut.mkv: damaged stream", good.substr(0, good.size() * 6 / 10)},
      {"damaged.mkv", "", "damaged.mkv: damaged stream", damaged},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.name);
    if (!c.content.empty()) std::ofstream(dir_ + "/" + c.name) << c.content;
    const Played p = Play(dir_ + "/" + c.name + " " + c.args + " --out " + dir_ + "/out");
    EXPECT_EQ(1, p.status) << p.out << p.err;
    EXPECT_TRUE(std::regex_search(p.err, std::regex(c.message))) << p.err;
  }
}

// The top-level window whose title holds `part`, or 0.
Window FindWindow(Display* x, const char* part, std::string& title) {
  Window root, parent, *children = nullptr, found = 0;
  unsigned count = 0;
  XQueryTree(x, DefaultRootWindow(x), &root, &parent, &children, &count);
  for (unsigned i = 0; i < count && !found; ++i) {
    char* name = nullptr;
    if (XFetchName(x, children[i], &name) && strstr(name, part)) {
      found = children[i];
      title = name;
    }
    if (name) XFree(name);
  }
  if (children) XFree(children);
  return found;
}

TEST_F(ScrimPlayAv, WindowShowsTheLastPostedPictureAndClosesCleanly) {
  if (system("command -v Xvfb >/dev/null") != 0) GTEST_SKIP() << "Xvfb is not installed";
  const Clip clip{"ffv1", AV_PIX_FMT_YUV420P, 160, 96, {0, 40, 80}, AVCOL_SPC_BT709, AVCOL_RANGE_MPEG, false};
  Encode(dir_ + "/clip.mkv", clip);
  const std::string display = ":" + std::to_string(100 + getpid() % 800);
  const pid_t xvfb = fork();
  if (xvfb == 0) {
    execlp("Xvfb", "Xvfb", display.c_str(), "-screen", "0", "640x480x24", "-nolisten", "tcp", (char*)nullptr);
    _exit(127);
  }
  Display* x = nullptr;
  for (int i = 0; i < 200 && !(x = XOpenDisplay(display.c_str())); ++i) usleep(50000);
  ASSERT_NE(nullptr, x);
  const pid_t player = fork();
  if (player == 0) {
    setenv("DISPLAY", display.c_str(), 1);
    freopen("/dev/null", "w", stdout);
    execl(SCRIM_PLAY_PATH, "scrim-play", "--quiet", "--window", "--out", (dir_ + "/out").c_str(),
          (dir_ + "/clip.mkv").c_str(), (char*)nullptr);
    _exit(127);
  }
  // At the end the window stays, showing the last picture, until it is closed.
  std::string title;
  Window w = 0;
  for (int i = 0; i < 600 && !(w = FindWindow(x, "(end", title)); ++i) usleep(50000);
  ASSERT_NE(0u, w);
  EXPECT_EQ(0u, title.find("scrim-play: picture 2, 0.080 s")) << title;
  usleep(200000);  // the last drawing reaches the screen
  XImage* shot = XGetImage(x, w, 0, 0, 160, 96, AllPlanes, ZPixmap);
  ASSERT_NE(nullptr, shot);
  int pw = 0, ph = 0;
  const std::vector<uint8_t> posted = ReadPng(dir_ + "/out/frame_00002.png", pw, ph);
  ASSERT_EQ(160 * 96 * 3u, posted.size());
  for (int px : {0, 37, 80, 159}) {
    for (int py : {0, 50, 95}) {
      const unsigned long v = XGetPixel(shot, px, py);
      const uint8_t* want = &posted[(py * 160 + px) * 3];
      EXPECT_EQ(want[0] << 16 | want[1] << 8 | want[2], static_cast<int>(v & 0xFFFFFF)) << px << "," << py;
    }
  }
  XDestroyImage(shot);
  XEvent close{};
  close.xclient.type = ClientMessage;
  close.xclient.window = w;
  close.xclient.message_type = XInternAtom(x, "WM_PROTOCOLS", False);
  close.xclient.format = 32;
  close.xclient.data.l[0] = static_cast<long>(XInternAtom(x, "WM_DELETE_WINDOW", False));
  XSendEvent(x, w, False, NoEventMask, &close);
  XFlush(x);
  int status = -1;
  waitpid(player, &status, 0);
  EXPECT_TRUE(WIFEXITED(status) && WEXITSTATUS(status) == 0) << status;
  XCloseDisplay(x);
  kill(xvfb, SIGTERM);
  waitpid(xvfb, &status, 0);
}
#endif  // SCRIM_PLAY_AV_SKIP

int main(int argc, char** argv) {
#ifdef SCRIM_PLAY_AV_SKIP
  (void)argc;
  (void)argv;
  printf("skipped: %s\n", SCRIM_PLAY_AV_SKIP);
  return 77;
#else
  testing::InitGoogleTest(&argc, argv);
  return RUN_ALL_TESTS();
#endif
}
