// The presentation stream on its own: states, properties, Present's checks in
// their order, the renderer's life across surface changes, the virtual IsGles
// and the pacing rule. usleep is interposed (and still sleeps) so that the
// pacing tests see exactly which sleeps Present asked for.
#include <dlfcn.h>
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
  using UsleepFn = int (*)(useconds_t);
  static UsleepFn real = reinterpret_cast<UsleepFn>(dlsym(RTLD_NEXT, "usleep"));
  if (real != nullptr) return real(us);
  struct timespec ts = {static_cast<time_t>(us / 1000000), static_cast<long>(us % 1000000) * 1000};
  return nanosleep(&ts, nullptr);
}

namespace {

const _GUID& kIid = IID_IKvVideoPresenterStream;

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
    g_recordSleeps = false;
  }
  void TearDown() override {
    g_recordSleeps = false;
    LoggedTest::TearDown();
  }

  // A stream on surface (not opened), made from parameters that live as long as the test.
  template <typename T = CScrimPresentStream>
  T* Make(unsigned width, unsigned height, uint32_t colourFormat, void* surface) {
    params_ = VP_OPEN_STREAM_PARAMS{};
    params_.dwStreamKind = KV_STREAM_KIND_VIDEO;
    params_.dwWidth = width;
    params_.dwHeight = height;
    params_.dwColorFormat = colourFormat;
    return new T(&params_, surface, nullptr);
  }

  static void Show(IKvVideoPresenterStream* s) {
    uint8_t show = 1;
    EXPECT_EQ(KV_S_OK, s->Set(kIid, KV_PROPID_VP_SHOW, nullptr, 0, &show, 1));
  }

  // A stream opened and shown, as a host has it before its first picture.
  CScrimPresentStream* Shown(unsigned width, unsigned height, void* surface) {
    CScrimPresentStream* s = Make(width, height, 0, surface);
    EXPECT_EQ(KV_S_OK, s->Open());
    Show(s);
    return s;
  }

  static KVRESULT Present(IKvVideoPresenterStream* s, Picture& p, long delayMs = 0) {
    VP_PRESENT_STREAM_PARAMS params{};
    params.lDisplayDelay = delayMs;
    return s->Present(p.planes, p.strides, &params);
  }

  VP_OPEN_STREAM_PARAMS params_{};
};

}  // namespace

TEST_F(Stream, StatesAndProperties) {
  CScrimPresentStream* s = Make(32, 16, 0, nullptr);
  EXPECT_EQ(KV_E_UNEXPECTED, s->Close());
  EXPECT_EQ(KV_E_UNEXPECTED, s->LockSurface(nullptr, nullptr));
  EXPECT_EQ(KV_E_UNEXPECTED, s->UnlockSurface());
  unsigned long fourcc = KV_FOURCC_YV12, size = 0;
  uint32_t mode = 5, readMode = 9;
  uint8_t flag = 1;
  EXPECT_EQ(KV_E_POINTER, s->Set(kIid, 4, nullptr, 0, nullptr, 8));
  EXPECT_EQ(KV_S_OK, s->Set(kIid, 4, nullptr, 0, &fourcc, 8));  // any state
  EXPECT_EQ(KV_E_UNEXPECTED, s->Set(kIid, 1, nullptr, 0, &flag, 1));
  EXPECT_EQ(KV_E_UNEXPECTED, s->Set(kIid, 1027, nullptr, 0, &mode, 4));
  EXPECT_EQ(KV_E_UNEXPECTED, s->Set(kIid, 999, nullptr, 0, &mode, 4));
  EXPECT_EQ(KV_E_POINTER, s->Get(kIid, 1, nullptr, 0, nullptr, 1, &size));
  EXPECT_EQ(KV_E_UNEXPECTED, s->Get(kIid, 1, nullptr, 0, &flag, 1, &size));

  EXPECT_EQ(KV_S_OK, s->Open());
  EXPECT_EQ(KV_E_UNEXPECTED, s->Open());
  EXPECT_EQ(KV_S_OK, s->LockSurface(nullptr, nullptr));
  EXPECT_EQ(KV_S_OK, s->UnlockSurface());
  EXPECT_EQ(KV_E_NOTIMPL, s->StartAnimation(nullptr));
  EXPECT_EQ(KV_E_NOTIMPL, s->StopAnimation());
  EXPECT_EQ(KV_S_OK, s->Set(kIid, 1, nullptr, 0, &flag, 1));
  flag = 7;
  EXPECT_EQ(KV_S_OK, s->Get(kIid, 1, nullptr, 0, &flag, 1, &size));
  EXPECT_EQ(1, flag);
  EXPECT_EQ(32u, size);  // 32 although one byte was written
  size = 0;
  EXPECT_EQ(KV_S_OK, s->Get(kIid, 1027, nullptr, 0, &readMode, 4, &size));
  EXPECT_EQ(0u, readMode);
  EXPECT_EQ(KV_S_OK, s->Set(kIid, 1027, nullptr, 0, &mode, 4));
  EXPECT_EQ(KV_S_OK, s->Get(kIid, 1027, nullptr, 0, &readMode, 4, &size));
  EXPECT_EQ(5u, readMode);
  EXPECT_EQ(0u, size);  // no size for 1027
  EXPECT_EQ(KV_E_NOTIMPL, s->Get(kIid, 2, nullptr, 0, &readMode, 4, &size));
  RECT r = {1, 2, 3, 4};
  EXPECT_EQ(KV_S_OK, s->Set(kIid, 2, nullptr, 0, &r, sizeof r));
  EXPECT_EQ(KV_E_NOTIMPL, s->Set(kIid, 778, nullptr, 0, nullptr, 8));
  EXPECT_EQ(KV_E_NOTIMPL, s->Set(kIid, 3, nullptr, 0, &r, sizeof r));

  // Closing and opening again clears the deinterlace mode.
  EXPECT_EQ(KV_S_OK, s->Close());
  EXPECT_EQ(KV_E_UNEXPECTED, s->Close());
  EXPECT_EQ(KV_S_OK, s->Open());
  EXPECT_EQ(KV_S_OK, s->Get(kIid, 1027, nullptr, 0, &readMode, 4, &size));
  EXPECT_EQ(0u, readMode);
  void* out = nullptr;
  EXPECT_EQ(KV_E_NOINTERFACE, s->QueryInterface(kIid, &out));
  EXPECT_EQ(0, s->Release());
  EXPECT_EQ(0u, HostLog_count());

  s = new CScrimPresentStream(nullptr, nullptr, nullptr);
  auto lines = HostLog_lines();
  ASSERT_EQ(1u, lines.size());
  EXPECT_EQ("E/OruScrimPresent: CScrimPresentStream::CScrimPresentStream invalid pOpenParams!!!", lines[0]);
  s->Release();
}

TEST_F(Stream, PresentChecksInOrder) {
  Window w;
  Picture p = Picture::I420(32, 16, 1);
  CScrimPresentStream* s = Make(32, 16, 0, w.get());
  EXPECT_EQ(KV_E_FAIL, Present(s, p));  // closed
  ASSERT_EQ(KV_S_OK, s->Open());
  EXPECT_EQ(KV_E_FAIL, Present(s, p));  // hidden
  Show(s);
  unsigned char* noPlane = p.planes[0];
  p.planes[0] = nullptr;
  EXPECT_EQ(KV_E_INVALIDARG, Present(s, p));
  p.planes[0] = noPlane;
  EXPECT_EQ(0u, HostWindow_lockCount(w.get()));
  EXPECT_EQ(KV_S_OK, Present(s, p));
  EXPECT_EQ(1u, w.posted());
  EXPECT_EQ(0u, HostLog_count());
  s->Release();
  EXPECT_EQ(1, w.refs());  // the destructor closed the stream and its renderer

  s = Shown(32, 16, nullptr);
  EXPECT_EQ(KV_E_HANDLE, Present(s, p));  // no surface
  s->Release();
}

TEST_F(Stream, YV12IsChosenOnlyByTheFourccProperty) {
  const struct {
    unsigned long fourcc;
    int32_t windowFormat;
  } cases[] = {{0, WINDOW_FORMAT_RGB_565},
               {KV_FOURCC_YV12, HOST_WINDOW_FORMAT_YV12},
               {0x3231564E, WINDOW_FORMAT_RGB_565}};
  for (const auto& c : cases) {
    Window w;
    Picture p = Picture::I420(32, 16, 1);
    CScrimPresentStream* s = Make(32, 16, 0, w.get());
    unsigned long fourcc = c.fourcc;
    ASSERT_EQ(KV_S_OK, s->Set(kIid, 4, nullptr, 0, &fourcc, 8));
    ASSERT_EQ(KV_S_OK, s->Open());
    Show(s);
    ASSERT_EQ(KV_S_OK, Present(s, p));
    EXPECT_EQ(c.windowFormat, w.last()->format) << std::hex << c.fourcc;
    // Another FOURCC afterwards does not undo YV12, even for a renderer set up anew.
    fourcc = 0;
    ASSERT_EQ(KV_S_OK, s->Set(kIid, 4, nullptr, 0, &fourcc, 8));
    ASSERT_EQ(KV_S_OK, s->Set(kIid, KV_PROPID_VP_ANDROID_SURFACE, nullptr, 0, w.get(), 8));
    ASSERT_EQ(KV_S_OK, Present(s, p));
    EXPECT_EQ(c.windowFormat, w.last()->format);
    s->Release();
  }
}

TEST_F(Stream, NewSurfaceReplacesTheRenderer) {
  Window first, second;
  Picture p = Picture::I420(32, 16, 1);
  CScrimPresentStream* s = Shown(32, 16, first.get());
  ASSERT_EQ(KV_S_OK, Present(s, p));
  EXPECT_EQ(2, first.refs());
  ASSERT_EQ(KV_S_OK, s->Set(kIid, KV_PROPID_VP_ANDROID_SURFACE, nullptr, 0, second.get(), 8));
  EXPECT_EQ(1, first.refs());
  EXPECT_EQ(nullptr, g_SoftRenderer.Handler);
  ASSERT_EQ(KV_S_OK, Present(s, p));
  EXPECT_EQ(2, second.refs());
  EXPECT_EQ(1u, first.posted());
  EXPECT_EQ(1u, second.posted());
  // A null window: the renderer goes, and Present has nowhere to draw.
  ASSERT_EQ(KV_S_OK, s->Set(kIid, KV_PROPID_VP_ANDROID_SURFACE, nullptr, 0, nullptr, 8));
  EXPECT_EQ(1, second.refs());
  EXPECT_EQ(KV_E_HANDLE, Present(s, p));
  ASSERT_EQ(KV_S_OK, s->Close());
  s->Release();
}

TEST_F(Stream, FourccAndGlesStreamsNeverTouchTheWindow) {
  Window w;
  Picture p = Picture::I420(32, 16, 1);
  IKvVideoPresenterStream* fourcc = Make(32, 16, KV_FOURCC_YV12, w.get());
  IKvVideoPresenterStream* gles = Make<GlesStream>(32, 16, 0, w.get());  // IsGles asked through the table
  for (IKvVideoPresenterStream* s : {fourcc, gles}) {
    ASSERT_EQ(KV_S_OK, s->Open());
    Show(s);
    EXPECT_EQ(KV_S_OK, Present(s, p, 40));
    EXPECT_EQ(KV_S_OK, Present(s, p));
  }
  EXPECT_EQ(0u, HostWindow_lockCount(w.get()));
  EXPECT_EQ(1, w.refs());
  EXPECT_EQ(nullptr, g_SoftRenderer.Handler);
  EXPECT_EQ(0u, HostLog_count());
  fourcc->Release();
  gles->Release();
}

TEST_F(Stream, DelayCountsFromTheEntryOfPresent) {
  Window w;
  Picture p = Picture::I420(64, 48, 1);
  CScrimPresentStream* s = Shown(64, 48, w.get());
  ASSERT_EQ(KV_S_OK, Present(s, p));  // set-up outside the measured calls
  for (int i = 0; i < 3; ++i) {
    g_sleeps.clear();
    g_recordSleeps = true;
    const int64_t entry = NowUs();
    ASSERT_EQ(KV_S_OK, Present(s, p, 40));
    const int64_t exit = NowUs();
    g_recordSleeps = false;
    ASSERT_EQ(1u, g_sleeps.size());
    // The sleep is what the conversion left of the 40 ms.
    EXPECT_LE(g_sleeps[0], 40000u);
    EXPECT_GE(static_cast<int64_t>(g_sleeps[0]), 40000 - (exit - entry));
    const int64_t posted = w.last()->postedUs;
    EXPECT_GE(posted - entry, 40000);
    EXPECT_LT(posted - entry, 40000 + 100000);  // a shared, noisy machine
  }
  // No sleep for zero, negative or spent delays.
  g_sleeps.clear();
  g_recordSleeps = true;
  for (long delay : {0L, -1L, -40L, -1000000L}) {
    ASSERT_EQ(KV_S_OK, Present(s, p, delay));
    EXPECT_TRUE(g_sleeps.empty()) << delay;
  }
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
  EXPECT_GE(us, before);
  EXPECT_LE(us, after);
  const uint32_t lo = static_cast<uint32_t>(before / 1000), hi = static_cast<uint32_t>(after / 1000);
  EXPECT_TRUE(static_cast<uint32_t>(ms - lo) <= static_cast<uint32_t>(hi - lo));
}
