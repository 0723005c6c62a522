// The process-wide software renderer driven directly.
#include <gtest/gtest.h>
#include <stdio.h>
#include <string.h>

#include <string>
#include <vector>

#include "android/soft_renderer.h"
#include "imageproc/imgprc_context.h"
#include "presenter/picture_testing.h"

using namespace scrim_testing;

namespace {

// The five lines of a picture the renderer does not convert.
std::vector<std::string> NotConvertedLines(const void *handler, const void *converter, int inWidth,
                                           int inHeight) {
  char pointers[2][32];
  snprintf(pointers[0], sizeof pointers[0], "%p", handler);
  snprintf(pointers[1], sizeof pointers[1], "%p", converter);
  return {"[render_this_frame N]:render_this_frame fail",
          std::string("[render_this_frame N]:pRender->Handler =") + pointers[0],
          std::string("[render_this_frame N]:pRender->Converter =") + pointers[1],
          "[render_this_frame N]:pRender->InWidth = " + std::to_string(inWidth),
          "[render_this_frame N]:pRender->InHeight = " + std::to_string(inHeight)};
}

class SoftRenderer : public LoggedTest {
 protected:
  void TearDown() override {
    oru_nativewindow_uninit(&g_SoftRenderer);
    LoggedTest::TearDown();
  }

  static void Init(const Window &w, unsigned width, unsigned height, uint32_t word, uint32_t mode) {
    ASSERT_EQ(&g_SoftRenderer, oru_nativewindow_init(w.get(), width, height, word, mode));
  }

  static int Render(Picture &p, unsigned deinterlace = 0) {
    return oru_nativewindow_render(&g_SoftRenderer, reinterpret_cast<void **>(p.planes), p.strides, p.width,
                                   p.height, 0, deinterlace);
  }

  static void Show(Picture &p) {
    ASSERT_EQ(0, Render(p));
    ASSERT_EQ(0, oru_nativewindow_dorender(&g_SoftRenderer));
  }

  static const ImgPrcContext *Converter() {
    return static_cast<const ImgPrcContext *>(g_SoftRenderer.Converter);
  }
};

}  // namespace

TEST_F(SoftRenderer, DeterminRefusesOnlyFourccs) {
  for (uint32_t word : {0x00000000u, 0x00000001u, 0x00010100u, 0x00FFFFFFu, 0x00040000u})
    EXPECT_TRUE(oru_nativewindow_determin(nullptr, nullptr, 0, 0, word)) << std::hex << word;
  for (uint32_t word : {0x01000000u, 0x32315659u, 0x3231564Eu, 0xFF000000u})
    EXPECT_FALSE(oru_nativewindow_determin(nullptr, nullptr, 0, 0, word)) << std::hex << word;
}

TEST_F(SoftRenderer, RefusesBadWindowsOtherHandlesAndAnEmptiedRenderer) {
  EXPECT_EQ(nullptr, oru_nativewindow_init(nullptr, 64, 48, 0, 0));
  EXPECT_LINES({"[oru_nativewindow_init N]:invalid window "});
  ANDROID_SOFTRENDER other{};
  Picture p = Picture::I420(16, 16, 1);
  void **planes = reinterpret_cast<void **>(p.planes);
  EXPECT_EQ(-1, oru_nativewindow_render(&other, planes, p.strides, 16, 16, 0, 0));
  EXPECT_EQ(-1, oru_nativewindow_render(nullptr, planes, p.strides, 16, 16, 0, 0));
  EXPECT_EQ(-1, oru_nativewindow_dorender(&other));
  oru_nativewindow_uninit(nullptr);
  oru_nativewindow_uninit(&other);
  EXPECT_LINES({"[oru_nativewindow_render N]:render, invalid handler",
                "[oru_nativewindow_render N]:render, invalid handler",
                "[oru_nativewindow_dorender N]:render, invalid handler",
                "[oru_nativewindow_uninit N]:uninit invalid surface",
                "[oru_nativewindow_uninit N]:uninit invalid surface"});

  Window w;
  Init(w, 16, 16, 0, 0);
  EXPECT_EQ(2, w.refs());
  oru_nativewindow_uninit(&g_SoftRenderer);
  EXPECT_EQ(-1, Render(p));
  EXPECT_EQ(-1, oru_nativewindow_dorender(&g_SoftRenderer));
  EXPECT_EQ(0u, HostWindow_lockCount(w.get()));
}

// Pictures without a converter, or of another size, post the locked buffer as
// it was.
TEST_F(SoftRenderer, ConverterRefusesUnknownLayoutsAndRangesAndOtherSizes) {
  const struct {
    uint32_t word;
    const char *line;  // null: no line
    bool converter;
    int width = 32, height = 16;
  } cases[] = {
      {0x00010000, ": fail to create image processor", false},  // NV12 asks for 0x803
      {0x00020000, ": unsupport input color format = 2", false},
      {0x00030200, ": unsupport input color format = 3", false},  // the layout is checked first
      {0x00000200, ": unsupport input yuv range = 2", false},
      {0x0000FF07, ": unsupport input yuv range = 255", false},
      {0x00040000, nullptr, false},  // no converter is made, silently
      {0x00040200, nullptr, false},
      {0x00000107, nullptr, true},
      {0, nullptr, true, 30, 16},
      {0, nullptr, true, 32, 14},
  };
  for (const auto &c : cases) {
    SCOPED_TRACE(testing::Message() << std::hex << c.word);
    Window w(0, 1);
    Init(w, 32, 16, c.word, 0);
    EXPECT_EQ(w.get(), g_SoftRenderer.Handler);
    EXPECT_EQ(c.converter, g_SoftRenderer.Converter != nullptr);
    if (c.line) {
      EXPECT_LINES({std::string("[CreateConverter N]") + c.line});
    } else {
      EXPECT_EQ(0u, HostLog_count());
    }
    if (!c.converter || c.width != 32 || c.height != 16) {
      // One buffer: every lock hands out the same one.
      uint8_t *bits = HostWindow_bufferBits(w.get(), 0);
      for (size_t i = 0; i < HostWindow_bufferSize(w.get()); ++i) bits[i] = static_cast<uint8_t>(i * 7);
      const std::vector<uint8_t> before(bits, bits + HostWindow_bufferSize(w.get()));
      Picture p = Picture::I420(c.width, c.height, 2);
      ASSERT_EQ(0, Render(p));
      EXPECT_LINES(NotConvertedLines(w.get(), g_SoftRenderer.Converter, 32, 16));
      ASSERT_EQ(0, oru_nativewindow_dorender(&g_SoftRenderer));
      EXPECT_EQ(before, w.lastPixels());
    }
    oru_nativewindow_uninit(&g_SoftRenderer);
  }

  // A new set-up replaces the old converter, even when it fails.
  Window w;
  Init(w, 32, 16, 0, 0);
  ASSERT_NE(nullptr, g_SoftRenderer.Converter);
  g_SoftRenderer.InputFormat = 0x00000200;
  CreateConverter(&g_SoftRenderer);
  EXPECT_EQ(nullptr, g_SoftRenderer.Converter);
  g_SoftRenderer.InputFormat = 0;
  CreateConverter(&g_SoftRenderer);
  CreateConverter(&g_SoftRenderer);  // leak-checked: the first one is destroyed
  EXPECT_NE(nullptr, g_SoftRenderer.Converter);
  ReleaseConverter(nullptr);
  HostLog_clear();
}

// The colour-format word selects the matrix and range; a YV12 window (mode 1)
// gets the planes in its order.
TEST_F(SoftRenderer, InitAndPicturesMatchTheImageProcessor) {
  const struct {
    uint32_t word, mode, matrix, range;
  } cases[] = {{0x00000000, 0, 0, 0}, {0x00000001, 0, 1, 0}, {0x00000104, 0, 3, 1}, {0x00000007, 0, 2, 0},
               {0x00000105, 0, 0, 1}, {0x00000002, 0, 0, 0}, {0x00000006, 0, 0, 0}, {0, 1, 0, 0}};
  Picture p = Picture::I420(64, 48, 3);
  const ANDROID_SOFTRENDER &r = g_SoftRenderer;
  for (const auto &c : cases) {
    SCOPED_TRACE(testing::Message() << std::hex << c.word << " mode " << c.mode);
    Window w;
    Init(w, 64, 48, c.word, c.mode);
    EXPECT_EQ(2, w.refs());
    EXPECT_EQ((std::vector<uint32_t>{80, 64, 48, c.word, c.mode}),
              (std::vector<uint32_t>{r.size, r.InWidth, r.InHeight, r.InputFormat, r.OutputMode}));
    EXPECT_EQ(w.get(), r.Handler);
    ASSERT_NE(nullptr, Converter());
    const ImgPrcContext &k = *Converter();
    EXPECT_EQ((std::vector<uint32_t>{c.mode ? 0x000u : 0x003u, 0, 1, 64, 64, 48, 48}),
              (std::vector<uint32_t>{k.format, k.rotation, k.resizeMode, k.srcWidth, k.dstWidth, k.srcHeight,
                                     k.dstHeight}));
    EXPECT_EQ((std::vector<int32_t>{c.mode ? HOST_WINDOW_FORMAT_YV12 : WINDOW_FORMAT_RGB_565, 64, 48}),
              (std::vector<int32_t>{ANativeWindow_getFormat(w.get()), ANativeWindow_getWidth(w.get()),
                                    ANativeWindow_getHeight(w.get())}));
    // The same window again keeps the first set-up.
    const void *converter = r.Converter;
    Init(w, 32, 16, 0x00000101, 1 - c.mode);
    EXPECT_EQ(2, w.refs());
    EXPECT_EQ((std::vector<uint32_t>{64, c.word, c.mode}),
              (std::vector<uint32_t>{r.InWidth, r.InputFormat, r.OutputMode}));
    EXPECT_EQ(converter, r.Converter);

    Show(p);
    ASSERT_EQ(1u, w.posted());
    if (c.mode == 0) ExpectRGB565(p, w.last(), c.matrix, c.range);
    if (c.mode == 1) ExpectYV12(p, w.last());
    // The stream's deinterlace mode reaches the image processor.
    ASSERT_EQ(0, Render(p, 3));
    ASSERT_EQ(0, oru_nativewindow_dorender(&g_SoftRenderer));
    EXPECT_EQ(3u, Converter()->deinterlaceMode);
    EXPECT_EQ(0u, HostLog_count());  // routine progress is never written

    oru_nativewindow_uninit(&g_SoftRenderer);
    EXPECT_EQ(1, w.refs());
    EXPECT_EQ(nullptr, r.Handler);
    EXPECT_EQ(nullptr, r.Converter);
    EXPECT_EQ(64u, r.InWidth);  // the rest of the record stays
  }
  // The matrices do differ on this picture, so the table above tells them
  // apart.
  EXPECT_NE(ReferenceRGB565(p, 0, 0, 128), ReferenceRGB565(p, 1, 0, 128));
  EXPECT_NE(ReferenceRGB565(p, 0, 0, 128), ReferenceRGB565(p, 0, 1, 128));
}

// A buffer stride that is not a multiple of 16: the luma stride is rounded up,
// the chroma planes start from the unrounded one, so the Cr plane overwrites
// the end of the Y plane (the planes are copied Y, Cr, Cb). Nothing outside the
// three planes may be touched.
TEST_F(SoftRenderer, YV12AddressingWithAnUnalignedStride) {
  Window w;
  const int width = 32, height = 50;
  Picture p = Picture::I420(width, height, 9);
  Init(w, width, height, 0, 1);

  const size_t ys = 112, cs = 64, crAt = 5000,
               cbAt = 6600;  // stride 100, height 50
  const size_t end = cbAt + cs * (height / 2 - 1) + width / 2;
  std::vector<uint8_t> memory(end, 0xEE), expected(end, 0xEE);
  for (int r = 0; r < height; ++r)
    for (int x = 0; x < width; ++x) expected[r * ys + x] = p.Y(x, r);
  for (int r = 0; r < height / 2; ++r)
    for (int x = 0; x < width / 2; ++x)
      expected[crAt + r * cs + x] = p.Cr(x, r), expected[cbAt + r * cs + x] = p.Cb(x, r);
  ANativeWindow_Buffer buffer{width, height, 100, HOST_WINDOW_FORMAT_YV12, memory.data(), {}};
  render_this_frame(&g_SoftRenderer, reinterpret_cast<void **>(p.planes), p.strides, width, height, buffer,
                    0);
  EXPECT_EQ(expected, memory);
}
