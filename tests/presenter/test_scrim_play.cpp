// The demo player's parts: the Y4M reader on good and damaged files, the
// command line, and the built-in clip.
#include <gtest/gtest.h>
#include <stdio.h>
#include <unistd.h>

#include <string>
#include <vector>

#include "options.h"
#include "test_clip.h"
#include "y4m_reader.h"

namespace {

// A file in the temporary folder, removed at the end.
struct TempFile {
  std::string path;
  explicit TempFile(const std::string& content) {
    char name[] = "/tmp/scrim_play_testXXXXXX";
    int fd = mkstemp(name);
    path = name;
    EXPECT_EQ(static_cast<ssize_t>(content.size()), write(fd, content.data(), content.size()));
    close(fd);
  }
  ~TempFile() { unlink(path.c_str()); }
};

// Parses the command line "scrim-play args...".
bool Parse(const std::vector<const char*>& args, Options& o, std::string& error) {
  std::vector<char*> argv = {const_cast<char*>("scrim-play")};
  for (const char* a : args) argv.push_back(const_cast<char*>(a));
  return ParseOptions(static_cast<int>(argv.size()), argv.data(), o, error);
}

std::string PictureBytes(int w, int h, char base) {
  const int cw = (w + 1) / 2, ch = (h + 1) / 2;
  std::string s;
  for (int i = 0; i < w * h; ++i) s += static_cast<char>(base + i % 7);
  for (int i = 0; i < cw * ch; ++i) s += static_cast<char>(base + 40 + i % 5);
  for (int i = 0; i < cw * ch; ++i) s += static_cast<char>(base + 80 + i % 3);
  return s;
}

}  // namespace

TEST(Y4mReader, ReadsPicturesAndHeaderFields) {
  TempFile f("YUV4MPEG2 W6 H3 F30000:1001 It A1:1 C420mpeg2 XYSCSS=420MPEG2\nFRAME\n" +
             PictureBytes(6, 3, 'A') + "FRAME Ixyz\n" + PictureBytes(6, 3, 'a'));
  Y4mReader r;
  ASSERT_TRUE(r.open(f.path)) << r.error();
  EXPECT_EQ(6, r.width());
  EXPECT_EQ(3, r.height());
  EXPECT_EQ(30000, r.rate().num);
  EXPECT_EQ(1001, r.rate().den);
  EXPECT_EQ(33367, r.rate().frameUs());
  EXPECT_TRUE(r.interlaced());
  EXPECT_EQ(2, r.pictureCountHint());
  Picture p;
  ASSERT_TRUE(r.read(p)) << r.error();
  ASSERT_EQ(18u, p.y.size());
  ASSERT_EQ(6u, p.cb.size());  // odd heights round the chroma up
  EXPECT_EQ('A', p.y[0]);
  EXPECT_EQ('A' + 17 % 7, p.y[17]);
  EXPECT_EQ('A' + 40, p.cb[0]);
  EXPECT_EQ('A' + 80 + 5 % 3, p.cr[5]);
  ASSERT_TRUE(r.read(p)) << r.error();
  EXPECT_EQ('a', p.y[0]);
  EXPECT_FALSE(r.read(p));
  EXPECT_EQ("", r.error());

  // Without F and I fields: 25 progressive pictures a second. Lines may end
  // in CR LF.
  TempFile bare("YUV4MPEG2 W2 H2\r\nFRAME\r\n" + PictureBytes(2, 2, 'B'));
  Y4mReader d;
  ASSERT_TRUE(d.open(bare.path)) << d.error();
  EXPECT_EQ(40000, d.rate().frameUs());
  EXPECT_FALSE(d.interlaced());
  ASSERT_TRUE(d.read(p)) << d.error();
  EXPECT_EQ('B', p.y[0]);
  EXPECT_FALSE(d.read(p));
  EXPECT_EQ("", d.error());
}

TEST(Y4mReader, RefusesWhatItCannotPlay) {
  const struct {
    std::string content, message;
  } cases[] = {
      {"", "not a Y4M file"},
      {"YUV4MPEG W2 H2\n", "not a Y4M file"},
      {"YUV4MPEG2W2 H2\n", "odd header: \"YUV4MPEG2\" is not followed by a space"},
      {"YUV4MPEG2 W2 H2 C422\n", "not 8-bit 4:2:0 (colour space \"422\")"},
      {"YUV4MPEG2 W2 H2 C420p10\n", "not 8-bit 4:2:0"},
      {"YUV4MPEG2 W2 H2 Cmono\n", "not 8-bit 4:2:0"},
      {"YUV4MPEG2 H2\n", "odd header: the picture size (W and H) is missing"},
      {"YUV4MPEG2\n", "odd header: the picture size"},
      {"YUV4MPEG2 W0 H2\n", "odd header: bad picture width \"W0\""},
      {"YUV4MPEG2 W2 Hx\n", "odd header: bad picture height \"Hx\""},
      {"YUV4MPEG2 W99999 H2\n", "odd header: bad picture width"},
      {"YUV4MPEG2 W2 H2 F25:0\n", "odd header: bad frame rate \"F25:0\""},
      {"YUV4MPEG2 W2 H2 Iq\n", "odd header: bad interlacing"},
      {"YUV4MPEG2 W2 H2 Z7\n", "odd header: unknown field \"Z7\""},
      {"YUV4MPEG2 W2 H2", "odd header: no end of line"},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.content);
    TempFile f(c.content);
    Y4mReader r;
    EXPECT_FALSE(r.open(f.path));
    EXPECT_NE(std::string::npos, r.error().find(c.message)) << r.error();
    EXPECT_EQ(0u, r.error().find(f.path + ": "));
  }
  Y4mReader missing;
  EXPECT_FALSE(missing.open("/nonexistent/scrim.y4m"));
  EXPECT_NE(std::string::npos, missing.error().find("cannot open"));
}

TEST(Y4mReader, ReportsDamagedPictures) {
  const struct {
    std::string body, message;
  } cases[] = {
      {"FRAME\n" + PictureBytes(4, 2, 'A').substr(0, 10), "picture 0 is cut short"},
      {"FRAME\n" + PictureBytes(4, 2, 'A') + "FRAMEX\n", "picture 1: expected \"FRAME\""},
      {"JUNK\n", "picture 0: expected \"FRAME\", found \"JUNK\""},
      {"FRAME", "picture 0: damaged FRAME line"},
      {"FRAME\v\n", "picture 0: expected \"FRAME\", found \"FRAME\\x0B\""},
      {"", "no pictures: the file ends after its header"},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.message);
    TempFile f("YUV4MPEG2 W4 H2\n" + c.body);
    Y4mReader r;
    ASSERT_TRUE(r.open(f.path));
    Picture p;
    while (r.read(p)) {
    }
    EXPECT_NE(std::string::npos, r.error().find(c.message)) << r.error();
  }
}

TEST(Y4mReader, RefusesAPictureTheFileCannotHoldBeforeAllocatingIt) {
  // 16384 x 16384 claims 384 MiB a picture; the file holds 6 bytes of it.
  TempFile f("YUV4MPEG2 W16384 H16384\nFRAME\nabcdef");
  Y4mReader r;
  ASSERT_TRUE(r.open(f.path));
  Picture p;
  EXPECT_FALSE(r.read(p));
  EXPECT_NE(std::string::npos,
            r.error().find("picture 0 is cut short: 6 bytes left, a picture takes 402653184"))
      << r.error();
  EXPECT_TRUE(p.y.empty());
}

TEST(Options, BuildTheColourFormatWord) {
  const struct {
    std::vector<const char*> args;
    uint32_t word;
    bool yv12;
  } cases[] = {
      {{}, 0x00000006, false},
      {{"--matrix", "bt709"}, 0x00000001, false},
      {{"--matrix", "fcc", "--range", "full"}, 0x00000104, false},
      {{"--matrix", "smpte240m", "--mode", "yv12"}, 0x00000007, true},
      {{"--matrix", "2", "--range", "video"}, 0x00000002, false},
  };
  for (const auto& c : cases) {
    Options o;
    std::string error;
    ASSERT_TRUE(Parse(c.args, o, error)) << error;
    EXPECT_EQ(c.word, o.colourFormat());
    EXPECT_EQ(c.yv12, o.yv12);
  }
}

TEST(Options, ReadsEveryOptionAndRefusesBadOnes) {
  Options o;
  std::string error;
  ASSERT_TRUE(
      Parse({"--frames",      "12",      "--out", "/tmp/x", "--every", "3",        "--clip", "interlaced",
             "--deinterlace", "2",       "--lib", "/l.so",  "--quiet", "--stream", "1",      "--drop-late",
             "--window",      "--range", "full",  "in.y4m"},
            o, error))
      << error;
  EXPECT_EQ(12, o.frames);
  EXPECT_EQ("/tmp/x", o.outDir);
  EXPECT_EQ(3, o.every);
  EXPECT_TRUE(o.interlacedClip);
  EXPECT_EQ(2, o.deinterlace);
  EXPECT_EQ("/l.so", o.library);
  EXPECT_TRUE(o.quiet);
  EXPECT_EQ("in.y4m", o.input);
  EXPECT_EQ(1, o.stream);
  EXPECT_TRUE(o.dropLate && o.window && o.rangeGiven);
  EXPECT_FALSE(o.matrixGiven);  // the input's own matrix stands

  Options o2;
  ASSERT_TRUE(Parse({"--frames=5", "--mode=yv12", "--out=/tmp/y"}, o2, error)) << error;
  EXPECT_EQ(5, o2.frames);
  EXPECT_TRUE(o2.yv12);
  EXPECT_EQ("/tmp/y", o2.outDir);

  const std::vector<std::vector<const char*>> bad = {
      {"--mode", "rgb888"}, {"--matrix", "bt2020"}, {"--matrix", "256"}, {"--range", "tv"}, {"--frames", "0"},
      {"--frames", "x"},    {"--every", "-1"},      {"--clip", "fast"},  {"--frames"},      {"--bogus"},
      {"a.y4m", "b.y4m"},   {"--quiet=1"},          {"--mode="},         {"--stream", "x"}, {"--window=1"}};
  for (const auto& args : bad) {
    Options fresh;
    error.clear();
    EXPECT_FALSE(Parse(args, fresh, error)) << args[0];
    EXPECT_FALSE(error.empty());
  }
}

TEST(TestClip, DrawsThePictureNumber) {
  TestClip clip;
  Picture p;
  clip.render(1234, p);
  ASSERT_EQ(320, p.width);
  ASSERT_EQ(240, p.height);
  // Digits are 5x7 cells scaled by 4, 6 cells apart, after an 8-pixel margin.
  // Top row of each digit's glyph: 1 -> ..X.., 2 -> .XXX., 3 -> XXXXX, 4 -> ...X.
  auto lit = [&](int digit, int column) {
    return p.y[(8 + 1) * 320 + 8 + digit * 24 + column * 4 + 1] == 235;
  };
  const bool expected[4][5] = {{false, false, true, false, false},
                               {false, true, true, true, false},
                               {true, true, true, true, true},
                               {false, false, false, true, false}};
  for (int d = 0; d < 4; ++d)
    for (int c = 0; c < 5; ++c) EXPECT_EQ(expected[d][c], lit(d, c)) << d << "," << c;
}

TEST(TestClip, MovesAndCombsWhenInterlaced) {
  TestClip progressive, interlaced;
  interlaced.interlaced = true;
  Picture a, b, c;
  progressive.render(10, a);
  progressive.render(11, b);
  interlaced.render(10, c);
  EXPECT_NE(a.y, b.y);
  int evenSame = 0, oddDiffer = 0;
  for (int row = 60; row < 240; ++row) {
    bool same = std::equal(a.y.begin() + row * 320, a.y.begin() + (row + 1) * 320, c.y.begin() + row * 320);
    if (row % 2 == 0)
      evenSame += same;
    else
      oddDiffer += !same;
  }
  EXPECT_EQ(90, evenSame);   // the first field is the progressive picture's
  EXPECT_GT(oddDiffer, 80);  // the second one has moved on
}
