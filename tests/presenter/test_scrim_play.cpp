// The demo player's parts: the Y4M reader on good and damaged files, the
// command line, and the built-in clip.
#include <gtest/gtest.h>
#include <stdio.h>
#include <unistd.h>

#include <fstream>
#include <string>
#include <vector>

#include "options.h"
#include "test_clip.h"
#include "y4m_reader.h"

namespace {

// A file in the temporary folder, removed at the end.
struct TempFile {
  static inline int made = 0;
  std::string path = "/tmp/scrim_play_test_" + std::to_string(getpid()) + "_" + std::to_string(made++);
  explicit TempFile(const std::string& content) { std::ofstream(path) << content; }
  ~TempFile() { unlink(path.c_str()); }
};

bool Parse(const std::vector<const char*>& args, Options& o, std::string& error) {
  std::vector<char*> argv = {const_cast<char*>("scrim-play")};
  for (const char* a : args) argv.push_back(const_cast<char*>(a));
  return ParseOptions(static_cast<int>(argv.size()), argv.data(), o, error);
}

// Y, then Cb, then Cr, each plane counting up from its own base.
std::string PictureBytes(int w, int h, char base) {
  const int chroma = (w + 1) / 2 * ((h + 1) / 2);
  std::string s;
  for (int i = 0; i < w * h; ++i) s += static_cast<char>(base + i % 7);
  for (int i = 0; i < chroma; ++i) s += static_cast<char>(base + 40 + i % 5);
  for (int i = 0; i < chroma; ++i) s += static_cast<char>(base + 80 + i % 3);
  return s;
}

}  // namespace

TEST(Y4mReader, ReadsPicturesAndHeaderFields) {
  TempFile f("YUV4MPEG2 W6 H3 F30000:1001 It A1:1 C420mpeg2 XYSCSS=420MPEG2\nFRAME\n" +
             PictureBytes(6, 3, 'A') + "FRAME Ixyz\n" + PictureBytes(6, 3, 'a'));
  Y4mReader r;
  ASSERT_TRUE(r.open(f.path)) << r.error();
  EXPECT_EQ((std::vector<long>{6, 3, 30000, 1001, 33367, 1, 2}),
            (std::vector<long>{r.width(), r.height(), r.rate().num, r.rate().den, r.rate().frameUs(),
                               r.interlaced(), r.pictureCountHint()}));
  Picture p;
  ASSERT_TRUE(r.read(p)) << r.error();
  ASSERT_EQ(18u, p.y.size());
  ASSERT_EQ(6u, p.cb.size());  // odd heights round the chroma up
  EXPECT_EQ((std::vector<int>{'A', 'A' + 17 % 7, 'A' + 40, 'A' + 80 + 5 % 3}),
            (std::vector<int>{p.y[0], p.y[17], p.cb[0], p.cr[5]}));
  ASSERT_TRUE(r.read(p)) << r.error();
  EXPECT_EQ((std::vector<long>{'a', false}), (std::vector<long>{p.y[0], r.read(p)}));

  // Without F and I fields: 25 progressive pictures a second. Lines may end in CR LF.
  TempFile bare("YUV4MPEG2 W2 H2\r\nFRAME\r\n" + PictureBytes(2, 2, 'B'));
  Y4mReader d;
  ASSERT_TRUE(d.open(bare.path) && d.read(p)) << d.error();
  EXPECT_EQ((std::vector<long>{40000, false, 'B', false}),
            (std::vector<long>{d.rate().frameUs(), d.interlaced(), p.y[0], d.read(p)}));
}

// Headers refused by open, then pictures refused by read, each with the file's name in front.
TEST(Y4mReader, RefusesWhatItCannotPlay) {
  const std::string h = "YUV4MPEG2 W4 H2\n";
  const std::pair<std::string, std::string> cases[] = {
      {"YUV4MPEG W2 H2\n", "not a Y4M file"},
      {"YUV4MPEG2W2 H2\n", "odd header: \"YUV4MPEG2\" is not followed by a space"},
      {"YUV4MPEG2 W2 H2 C422\n", "not 8-bit 4:2:0 (colour space \"422\")"},
      {"YUV4MPEG2 H2\n", "odd header: the picture size (W and H) is missing"},
      {"YUV4MPEG2 W0 H2\n", "odd header: bad picture width \"W0\""},
      {"YUV4MPEG2 W2 Hx\n", "odd header: bad picture height \"Hx\""},
      {"YUV4MPEG2 W99999 H2\n", "odd header: bad picture width"},
      {"YUV4MPEG2 W2 H2 F25:0\n", "odd header: bad frame rate \"F25:0\""},
      {"YUV4MPEG2 W2 H2 Iq\n", "odd header: bad interlacing"},
      {"YUV4MPEG2 W2 H2 Z7\n", "odd header: unknown field \"Z7\""},
      {"YUV4MPEG2 W2 H2", "odd header: no end of line"},
      {h + "JUNK\n", "picture 0: expected \"FRAME\", found \"JUNK\""},
      {h + "FRAME", "picture 0: damaged FRAME line"},
      {h + "FRAME\v\n", "picture 0: expected \"FRAME\", found \"FRAME\\x0B\""},
      {h, "no pictures: the file ends after its header"},
      // 384 MiB claimed, 6 bytes there: refused before the picture is allocated.
      {"YUV4MPEG2 W16384 H16384\nFRAME\nabcdef",
       "picture 0 is cut short: 6 bytes left, a picture takes 402653184"},
  };
  for (const auto& [content, message] : cases) {
    SCOPED_TRACE(content.substr(0, 40));
    TempFile f(content);
    Y4mReader r;
    Picture p;
    for (bool ok = r.open(f.path); ok; ok = r.read(p)) {
    }
    EXPECT_NE(std::string::npos, r.error().find(message)) << r.error();
    EXPECT_EQ(0u, r.error().find(f.path + ": "));
    EXPECT_LT(p.y.size(), 100u);
  }
}

TEST(Options, ReadsEveryOptionAndRefusesBadOnes) {
  const std::tuple<std::vector<const char*>, uint32_t, bool> words[] = {
      {{}, 0x00000006, false},
      {{"--matrix", "bt709"}, 0x00000001, false},
      {{"--matrix", "fcc", "--range", "full"}, 0x00000104, false},
      {{"--matrix=smpte240m", "--mode=yv12"}, 0x00000007, true},
      {{"--matrix", "2", "--range", "video"}, 0x00000002, false},
  };
  std::string error;
  for (const auto& [args, word, yv12] : words) {
    Options o;
    ASSERT_TRUE(Parse(args, o, error)) << error;
    EXPECT_EQ(word, o.colourFormat());
    EXPECT_EQ(yv12, o.yv12);
  }

  Options o;
  ASSERT_TRUE(Parse(
      {"--frames=12", "--out=/tmp/x", "--every", "3", "--clip", "interlaced", "--deinterlace", "2", "--lib",
       "/l.so", "--quiet", "--stream", "1", "--drop-late", "--window", "--range", "full", "in.y4m"},
      o, error))
      << error;
  EXPECT_EQ((std::vector<long>{12, 3, 2, 1}),
            (std::vector<long>{o.frames, o.every, o.deinterlace, o.stream}));
  EXPECT_EQ((std::vector<std::string>{"/tmp/x", "/l.so", "in.y4m"}),
            (std::vector<std::string>{o.outDir, o.library, o.input}));
  EXPECT_TRUE(o.interlacedClip && o.quiet && o.dropLate && o.window && o.rangeGiven);
  EXPECT_FALSE(o.matrixGiven);  // the input's own matrix stands

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

TEST(TestClip, DrawsThePictureNumberAndCombsWhenInterlaced) {
  TestClip progressive, interlaced;
  interlaced.interlaced = true;
  Picture a, b, c;
  progressive.render(1234, a);
  ASSERT_EQ((std::vector<int>{320, 240}), (std::vector<int>{a.width, a.height}));
  // Digits are 5x7 cells scaled by 4, 6 cells apart, after an 8-pixel margin.
  // Top row of each digit's glyph: 1 -> ..X.., 2 -> .XXX., 3 -> XXXXX, 4 -> ...X.
  const char* glyphTops[4] = {"..X..", ".XXX.", "XXXXX", "...X."};
  for (int d = 0; d < 4; ++d)
    for (int col = 0; col < 5; ++col)
      EXPECT_EQ(glyphTops[d][col] == 'X', a.y[(8 + 1) * 320 + 8 + d * 24 + col * 4 + 1] == 235)
          << d << "," << col;

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
