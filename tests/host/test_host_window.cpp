// The host native window and log stand-ins behave as a device's do; every
// presenter test relies on that.
#include <errno.h>
#include <gtest/gtest.h>
#include <string.h>
#include <unistd.h>

#include <android/log.h>
#include <android/native_window.h>

#include <fstream>
#include <string>
#include <vector>

#include "host_log.h"
#include "host_window.h"
#include "png_writer.h"

namespace {

struct WindowRef {
  ANativeWindow* w;
  explicit WindowRef(const HostWindowConfig* c = nullptr) : w(HostWindow_create(c)) {}
  ~WindowRef() {
    if (w) ANativeWindow_release(w);
  }
};

TEST(HostWindow, ReferenceCountStartsAtOneAndFreesAtZero) {
  int live = HostWindow_liveCount();
  ANativeWindow* w = HostWindow_create(nullptr);
  EXPECT_EQ(HostWindow_liveCount(), live + 1);
  for (int i = 0; i < 2; ++i) ANativeWindow_acquire(w);
  EXPECT_EQ(HostWindow_refCount(w), 3);
  for (int i = 0; i < 2; ++i) ANativeWindow_release(w);
  EXPECT_EQ((std::vector<int>{1, live + 1}),
            (std::vector<int>{HostWindow_refCount(w), HostWindow_liveCount()}));
  ANativeWindow_release(w);
  EXPECT_EQ(HostWindow_liveCount(), live);
}

// Lock and post faults are driven through the presenter (test_host_view); misuse is not.
TEST(HostWindow, GeometryDefaultsStrideMisuseAndSetBuffersGeometryRules) {
  WindowRef r;
  ANativeWindow_Buffer b;
  EXPECT_EQ(ANativeWindow_unlockAndPost(r.w), -ENOSYS) << "post while unlocked";
  ASSERT_EQ(ANativeWindow_lock(r.w, &b, nullptr), 0);
  EXPECT_EQ(ANativeWindow_lock(r.w, &b, nullptr), -ENOSYS) << "lock while locked";
  EXPECT_EQ((std::vector<int>{320, 240, WINDOW_FORMAT_RGB_565, 1}),
            (std::vector<int>{ANativeWindow_getWidth(r.w), ANativeWindow_getHeight(r.w),
                              ANativeWindow_getFormat(r.w), HostWindow_isLocked(r.w)}));
  // 320 aligned up to 112: wider than the width.
  EXPECT_EQ((std::vector<int>{320, 240, 336, WINDOW_FORMAT_RGB_565}),
            (std::vector<int>{b.width, b.height, b.stride, b.format}));
  EXPECT_EQ(HostWindow_bufferSize(r.w), 336u * 240 * 2);
  ASSERT_EQ(ANativeWindow_unlockAndPost(r.w), 0);
  EXPECT_EQ(HostWindow_isLocked(r.w), 0);
  EXPECT_EQ(HostWindow_lockCount(r.w), 2u);

  EXPECT_EQ(ANativeWindow_setBuffersGeometry(r.w, 100, 50, WINDOW_FORMAT_RGB_565), 0);
  EXPECT_EQ(ANativeWindow_getWidth(r.w), 100);
  const int refused[][3] = {{-1, 50, 0}, {100, -5, 0}, {100, 50, -4}, {0, 50, 0}, {100, 0, 0}};
  for (const auto& a : refused) EXPECT_EQ(ANativeWindow_setBuffersGeometry(r.w, a[0], a[1], a[2]), -EINVAL);
  EXPECT_EQ(ANativeWindow_getWidth(r.w), 100) << "a refused call changes nothing";
  EXPECT_EQ(ANativeWindow_setBuffersGeometry(r.w, 0, 0, HOST_WINDOW_FORMAT_YV12), 0);
  EXPECT_EQ(ANativeWindow_getWidth(r.w), 320) << "0 x 0 restores the default size";
  EXPECT_EQ(ANativeWindow_getFormat(r.w), HOST_WINDOW_FORMAT_YV12);
  EXPECT_EQ(ANativeWindow_setBuffersGeometry(r.w, 64, 64, 0), 0);
  EXPECT_EQ(ANativeWindow_getFormat(r.w), WINDOW_FORMAT_RGB_565) << "format 0 restores the default format";
}

TEST(HostWindow, Yv12LayoutFollowsAndroid) {
  HostWindowConfig c{};
  c.strideAlign = 10;
  WindowRef r(&c);
  ASSERT_EQ(ANativeWindow_setBuffersGeometry(r.w, 100, 50, HOST_WINDOW_FORMAT_YV12), 0);
  EXPECT_EQ(HostWindow_bufferSize(r.w), 112u * 50 + 2 * 64 * 25);  // Y stride 100 to 112, chroma 56 to 64
}

// Only the first of four posts draws (one red pixel at the end of line 2):
// three buffers rotate, so the fourth post shows that picture again.
TEST(HostWindow, PostedFramesRecordGeometryPixelsAndTimeOfRotatingBuffers) {
  WindowRef r;
  ASSERT_EQ(ANativeWindow_setBuffersGeometry(r.w, 4, 3, 0), 0);
  std::vector<void*> bits;
  ANativeWindow_Buffer b;
  for (int i = 0; i < 4; ++i) {
    ASSERT_EQ(ANativeWindow_lock(r.w, &b, nullptr), 0);
    bits.push_back(b.bits);
    if (i == 0) static_cast<uint16_t*>(b.bits)[b.stride * 2 + 3] = 0xF800;
    ASSERT_EQ(ANativeWindow_unlockAndPost(r.w), 0);
  }
  EXPECT_NE(bits[0], bits[1]);
  EXPECT_NE(bits[1], bits[2]);
  EXPECT_EQ(bits[3], bits[0]);
  ASSERT_EQ(HostWindow_postedCount(r.w), 4u);
  for (size_t i : {0u, 1u, 3u}) {
    const HostPostedFrame* f = HostWindow_posted(r.w, i);
    ASSERT_NE(f, nullptr);
    EXPECT_EQ((std::vector<int64_t>{int(i % 3), 4, 3, b.stride, WINDOW_FORMAT_RGB_565, b.stride * 3 * 2}),
              (std::vector<int64_t>{f->bufferIndex, f->width, f->height, f->stride, f->format,
                                    static_cast<int64_t>(f->size)}));
    EXPECT_EQ(reinterpret_cast<const uint16_t*>(f->pixels)[b.stride * 2 + 3], i == 1 ? 0 : 0xF800);
    EXPECT_GT(f->postedUs, 1600000000LL * 1000000);
  }
  HostWindow_clearPosted(r.w);
  EXPECT_EQ(HostWindow_postedCount(r.w), 0u);
}

TEST(HostLog, KeepsLinesWithPriorityAndTag) {
  HostLog_setEcho(0);
  HostLog_clear();
  // Error lines under the library's tag are read by every presenter test.
  __android_log_print(ANDROID_LOG_INFO, "T", "n=%d", 7);
  EXPECT_EQ(HostLog_lines(), std::vector<std::string>{"I/T: n=7"});
  HostLog_clear();
  HostLog_setEcho(1);
}

TEST(HostPng, WritesRgb565AndYv12FramesAndRefusesBadPaths) {
  WindowRef r;
  ASSERT_EQ(ANativeWindow_setBuffersGeometry(r.w, 6, 4, 0), 0);
  ANativeWindow_Buffer b;
  ASSERT_EQ(ANativeWindow_lock(r.w, &b, nullptr), 0);
  static_cast<uint16_t*>(b.bits)[0] = 0xFFFF;
  static_cast<uint16_t*>(b.bits)[1] = 0xF800;
  ASSERT_EQ(ANativeWindow_unlockAndPost(r.w), 0);
  const HostPostedFrame* f = HostWindow_posted(r.w, 0);
  std::vector<uint8_t> rgb(6 * 4 * 3);
  ASSERT_EQ(HostPng_postedToRgb(f, rgb.data()), 0);
  // White, then red widened by replication.
  EXPECT_EQ((std::vector<uint8_t>{255, 255, 255, 255, 0, 0}),
            std::vector<uint8_t>(rgb.begin(), rgb.begin() + 6));

  const std::string path = testing::TempDir() + "scrim_host_window_test.png";
  char err[256] = "", sig[8] = {};
  EXPECT_EQ(HostPng_writePostedFrame(f, path.c_str(), err, sizeof err), 0) << err;
  std::ifstream(path, std::ios::binary).read(sig, 8);
  EXPECT_EQ(std::string(sig, 8), std::string("\x89PNG\r\n\x1a\n", 8));
  unlink(path.c_str());
  EXPECT_EQ(HostPng_writePostedFrame(f, "/nonexistent-dir/x.png", err, sizeof err), -1);
  EXPECT_NE(strstr(err, "/nonexistent-dir/x.png"), nullptr);

  ASSERT_EQ(ANativeWindow_setBuffersGeometry(r.w, 4, 2, HOST_WINDOW_FORMAT_YV12), 0);
  ASSERT_EQ(ANativeWindow_lock(r.w, &b, nullptr), 0);
  memset(b.bits, 128, HostWindow_bufferSize(r.w));
  ASSERT_EQ(ANativeWindow_unlockAndPost(r.w), 0);
  std::vector<uint8_t> grey(4 * 2 * 3);
  ASSERT_EQ(HostPng_postedToRgb(HostWindow_posted(r.w, 1), grey.data()), 0);
  for (uint8_t v : grey) EXPECT_NEAR(v, 130, 1);  // 1.164 x (128 - 16)
}

}  // namespace
