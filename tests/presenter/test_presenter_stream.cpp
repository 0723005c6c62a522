// The presentation stream on its own, where a host cannot reach it: its
// constructor, the virtual IsGles and the pacing rule. usleep is interposed
// (and still sleeps) so that the pacing tests see exactly which sleeps Present
// asked for. States, properties, Present's checks and surfaces are followed
// through the presenter in test_host_view.
#include <gtest/gtest.h>
#include <unistd.h>

#include <vector>

#include "android/soft_renderer.h"
#include "presenter/picture_testing.h"
#include "presenter/scrim_present_stream.h"
#include "presenter/stream_clock.h"

using namespace scrim_testing;

namespace {
std::vector<unsigned> g_sleeps;
bool g_recordSleeps = false;
}  // namespace

extern "C" int usleep(useconds_t us) {
  if (g_recordSleeps) g_sleeps.push_back(static_cast<unsigned>(us));
  struct timespec ts = {static_cast<time_t>(us / 1000000), static_cast<long>(us % 1000000) * 1000};
  return nanosleep(&ts, nullptr);
}

namespace {

class GlesStream : public CScrimPresentStream {
 public:
  using CScrimPresentStream::CScrimPresentStream;
  bool IsGles() override { return true; }
};

class Stream : public LoggedTest {
 protected:
  void SetUp() override {
    LoggedTest::SetUp();
    g_sleeps.clear();
  }
  void TearDown() override {
    g_recordSleeps = false;
    EXPECT_EQ(0u, HostLog_count());
    LoggedTest::TearDown();
  }

  // An open, shown stream on surface, made from parameters that live as long as the test.
  template <typename T = CScrimPresentStream>
  T* Make(void* surface, uint32_t colourFormat = 0, unsigned width = 32, unsigned height = 16) {
    params_ = VP_OPEN_STREAM_PARAMS{KV_STREAM_KIND_VIDEO, width, height, colourFormat, {}};
    T* s = new T(&params_, surface, nullptr);
    uint8_t show = 1;
    EXPECT_EQ(KV_S_OK, s->Open());
    EXPECT_EQ(KV_S_OK, s->Set(IID_IKvVideoPresenterStream, KV_PROPID_VP_SHOW, nullptr, 0, &show, 1));
    return s;
  }

  static KVRESULT Present(IKvVideoPresenterStream* s, Picture& p, long delayMs = 0) {
    VP_PRESENT_STREAM_PARAMS params{0, 0, delayMs};
    return s->Present(p.planes, p.strides, &params);
  }

  VP_OPEN_STREAM_PARAMS params_{};
};

}  // namespace

TEST_F(Stream, FourccGlesAndParameterlessStreamsNeverTouchTheWindow) {
  Window w;
  Picture p = Picture::I420(32, 16, 1);
  IKvVideoPresenterStream* fourcc = Make(w.get(), KV_FOURCC_YV12);
  IKvVideoPresenterStream* gles = Make<GlesStream>(w.get());  // IsGles asked through the table
  for (IKvVideoPresenterStream* s : {fourcc, gles}) {
    EXPECT_EQ(KV_S_OK, Present(s, p, 40));
    EXPECT_EQ(KV_S_OK, Present(s, p));
  }
  EXPECT_EQ(0u, HostWindow_lockCount(w.get()));
  EXPECT_EQ(1, w.refs());
  EXPECT_EQ(nullptr, g_SoftRenderer.Handler);
  fourcc->Release();
  gles->Release();

  IKvVideoPresenterStream* none = new CScrimPresentStream(nullptr, nullptr, nullptr);
  EXPECT_LINES({"CScrimPresentStream::CScrimPresentStream invalid pOpenParams!!!"});
  none->Release();
}

TEST_F(Stream, DelayCountsFromTheEntryOfPresent) {
  Window w;
  Picture p = Picture::I420(64, 48, 1);
  CScrimPresentStream* s = Make(w.get(), 0, 64, 48);
  ASSERT_EQ(KV_S_OK, Present(s, p));  // set-up outside the measured calls
  g_recordSleeps = true;
  for (int i = 0; i < 3; ++i) {
    g_sleeps.clear();
    const int64_t entry = NowUs();
    ASSERT_EQ(KV_S_OK, Present(s, p, 40));
    const int64_t exit = NowUs();
    ASSERT_EQ(1u, g_sleeps.size());
    // The sleep is what the conversion left of the 40 ms.
    EXPECT_LE(g_sleeps[0], 40000u);
    EXPECT_GE(static_cast<int64_t>(g_sleeps[0]), 40000 - (exit - entry));
    const int64_t posted = w.last()->postedUs - entry;
    EXPECT_TRUE(posted >= 40000 && posted < 40000 + 100000) << posted;  // a shared, noisy machine
  }
  // No sleep for zero, negative or spent delays.
  g_sleeps.clear();
  for (long delay : {0L, -1L, -40L, -1000000L}) ASSERT_EQ(KV_S_OK, Present(s, p, delay));
  EXPECT_TRUE(g_sleeps.empty());
  g_recordSleeps = false;
  EXPECT_EQ(8u, w.posted());
  s->Release();
}

TEST_F(Stream, VsyncSleepAndClocks) {
  g_recordSleeps = true;
  vsync_sleep(0, 0);
  vsync_sleep(-5, 0);
  vsync_sleep(1, 123);
  vsync_sleep(0x100000001L, 0);  // only the low 32 bits reach usleep
  g_recordSleeps = false;
  EXPECT_EQ((std::vector<unsigned>{1u, 1u}), g_sleeps);

  const int64_t before = NowUs();
  const int64_t us = timeval_GetUs();
  const uint32_t ms = ORUGetTime();
  const int64_t after = NowUs();
  EXPECT_TRUE(us >= before && us <= after) << us;
  const uint32_t lo = static_cast<uint32_t>(before / 1000), hi = static_cast<uint32_t>(after / 1000);
  EXPECT_TRUE(static_cast<uint32_t>(ms - lo) <= static_cast<uint32_t>(hi - lo));
}
