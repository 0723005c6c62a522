// What a host cannot reach: the component base, interface identifiers, aligned
// allocator, logger, and the stream's constructor, IsGles and pacing (usleep is
// interposed, and still sleeps, to see which sleeps Present asks for). The rest
// of the stream is followed through the presenter in test_host_view.
#include <gtest/gtest.h>
#include <stdarg.h>
#include <unistd.h>

#include "presenter/kv_unknown.h"
#include "presenter/picture_testing.h"
#include "presenter/scrim_log.h"
#include "presenter/scrim_memory.h"
#include "presenter/scrim_present_stream.h"
#include "presenter/stream_clock.h"

using namespace scrim_testing;

namespace {

std::vector<unsigned> g_sleeps;
bool g_recordSleeps = false;

class Counted : public CKvUnknown {
 public:
  explicit Counted(int* destroyed) : destroyed_(destroyed) {}
  ~Counted() override { ++*destroyed_; }
  long Count() const { return m_cRef; }

 private:
  int* destroyed_;
};

void Log(int level, const char* format, ...) {
  va_list args;
  va_start(args, format);
  ScrimLogWrite(level, format, args);
  va_end(args);
}

class GlesStream : public CScrimPresentStream {
 public:
  using CScrimPresentStream::CScrimPresentStream;
  bool IsGles() override { return true; }
};

class Stream : public LoggedTest {
 protected:
  void TearDown() override {
    g_recordSleeps = false;
    EXPECT_EQ(0u, HostLog_count());
    LoggedTest::TearDown();
  }

  // An open, shown stream on surface (it keeps a copy of its parameters).
  template <typename T = CScrimPresentStream>
  T* Make(void* surface, uint32_t colourFormat = 0, unsigned width = 32, unsigned height = 16) {
    VP_OPEN_STREAM_PARAMS params{KV_STREAM_KIND_VIDEO, width, height, colourFormat, {}};
    T* s = new T(&params, surface, nullptr);
    uint8_t show = 1;
    EXPECT_EQ(KV_S_OK, s->Open());
    EXPECT_EQ(KV_S_OK, s->Set(IID_IKvVideoPresenterStream, KV_PROPID_VP_SHOW, nullptr, 0, &show, 1));
    return s;
  }

  static KVRESULT Present(IKvVideoPresenterStream* s, Picture& p, long delayMs = 0) {
    VP_PRESENT_STREAM_PARAMS params{0, 0, delayMs};
    return s->Present(p.planes, p.strides, &params);
  }
};

}  // namespace

extern "C" int usleep(useconds_t us) {
  if (g_recordSleeps) g_sleeps.push_back(static_cast<unsigned>(us));
  struct timespec ts = {static_cast<time_t>(us / 1000000), static_cast<long>(us % 1000000) * 1000};
  return nanosleep(&ts, nullptr);
}

TEST(KvUnknown, CountsReferencesAndAnswersOnlyItsOwnUnknown) {
  int destroyed = 0;
  Counted* c = new Counted(&destroyed);
  EXPECT_EQ(1, c->Count());
  EXPECT_EQ(KV_E_POINTER, c->NonDelegatingQueryInterface(IID_IUnknown, nullptr));

  void* sentinel = reinterpret_cast<void*>(0x5a5a);
  void* out = sentinel;
  _GUID nearly = IID_IUnknown;  // differs within the 16 bytes that are compared
  nearly.Data4[3] ^= 0x01;
  for (const _GUID* other :
       {&IID_IKvVideoPresenter, &IID_IKvVideoPresenterAdv, &IID_IKvVideoPresenterStream,
        &IID_IKvVideoPresenterAnimation, &IID_IKvFont, static_cast<const _GUID*>(&nearly)})
    EXPECT_EQ(KV_E_NOINTERFACE, c->NonDelegatingQueryInterface(*other, &out));
  EXPECT_EQ(sentinel, out);
  EXPECT_EQ(1, c->Count());

  // Only the first 16 bytes of an identifier are compared.
  _GUID id = IID_IUnknown;
  id.Data4[4] ^= 0xFF;
  id.Data4[7] ^= 0x01;
  EXPECT_EQ(KV_S_OK, c->NonDelegatingQueryInterface(id, &out));
  EXPECT_EQ(static_cast<void*>(static_cast<IKvNonDelegatingUnknown*>(c)), out);

  // The lookup above went through GetInterface, which added a reference.
  EXPECT_EQ(KV_E_POINTER, c->GetInterface(reinterpret_cast<IUnknown*>(c), nullptr));
  EXPECT_EQ(2, c->Count());
  EXPECT_EQ(1, c->NonDelegatingRelease());
  EXPECT_EQ(0, destroyed);
  EXPECT_EQ(0, c->NonDelegatingRelease());
  EXPECT_EQ(1, destroyed);
}

TEST(InterfaceIds, HaveTheDocumentedValues) {
  const std::pair<const _GUID*, const char*> table[] = {
      {&IID_IUnknown, "2CB59F1F-85A5-43ED-C000-000000000046"},
      {&IID_IKvVideoPresenter, "9ECCFCCA-EB44-11D4-B365-0001022A4A87"},
      {&IID_IKvVideoPresenterAdv, "022CF5CC-85A3-43AA-9471-675B6658A27B"},
      {&IID_IKvVideoPresenterStream, "B1D629AA-D7AA-4EFD-BA6B-7A54C899C5BF"},
      {&IID_IKvVideoPresenterAnimation, "8B931611-377A-4B2A-BC27-923ABCF375CF"},
      {&IID_IKvFont, "C540BF80-6776-4097-9A98-7174D6E7169B"},
      {&IID_IOruvmVideoMixer, "6C889F37-336B-4FDA-854E-203D2236311E"},
      {&IID_IOruvmVideoContext, "51BC25C8-51A2-4E0A-9467-31FBE8FFCC4F"},
  };
  for (const auto& [id, expected] : table) {
    const _GUID& g = *id;
    char text[40];
    snprintf(text, sizeof text, "%08lX-%04X-%04X-%02X%02X-%02X%02X%02X%02X%02X%02X", g.Data1, g.Data2,
             g.Data3, g.Data4[0], g.Data4[1], g.Data4[2], g.Data4[3], g.Data4[4], g.Data4[5], g.Data4[6],
             g.Data4[7]);
    EXPECT_STREQ(expected, text);
  }
  EXPECT_EQ(24u, sizeof(_GUID));
}

TEST(ScrimMalloc, AlignsZeroesAndRecordsTheShift) {
  const unsigned cases[][3] = {{1, 16, 16}, {100, 16, 16},    {37, 0, 4}, {64, 4, 4},
                               {5, 8, 8},   {1000, 128, 128}, {0, 32, 32}};
  for (const auto& [size, align, expectAlign] : cases) {
    SCOPED_TRACE(testing::Message() << "size " << size << " align " << align);
    // Several allocations, so that at least one of them starts already aligned.
    for (int n = 0; n < 8; ++n) {
      unsigned char* p = static_cast<unsigned char*>(scrim_malloc(size, align));
      ASSERT_NE(nullptr, p);
      EXPECT_EQ(0u, reinterpret_cast<uintptr_t>(p) % expectAlign);
      EXPECT_TRUE(p[-1] >= 1 && p[-1] <= expectAlign) << int(p[-1]);
      for (unsigned i = 0; i < size; ++i) ASSERT_EQ(0, p[i]) << "byte " << i;
      memset(p, 0xAB, size);  // the whole block is usable (ASan checks the bounds)
      scrim_free(p);
    }
  }
}

// Trace lines are dropped in every test that expects an empty log.
TEST_F(LoggedTest, ScrimLogWritesOnlyErrorsAndCutsTo254Characters) {
  Log(1, "[%s %d]:level one", "f", 2);
  EXPECT_EQ(0u, HostLog_count());
  std::string text;
  for (int i = 0; i < 300; ++i) text += static_cast<char>('a' + i % 26);
  Log(SCRIM_LOG_ERROR, "%s", "100% literal %d");
  Log(SCRIM_LOG_ERROR, "[%s %d]:%s", "f", 9, text.c_str());
  EXPECT_EQ((std::vector<std::string>{"E/OruScrimPresent: 100% literal %d",
                                      "E/OruScrimPresent: " + ("[f 9]:" + text).substr(0, 254)}),
            HostLog_lines());
}

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
  for (IKvVideoPresenterStream* s : {fourcc, gles}) s->Release();

  IKvVideoPresenterStream* none = new CScrimPresentStream(nullptr, nullptr, nullptr);
  EXPECT_LINES({"CScrimPresentStream::CScrimPresentStream invalid pOpenParams!!!"});
  none->Release();
}

TEST_F(Stream, DelayCountsFromTheEntryOfPresentVsyncSleepAndClocks) {
  Window w;
  Picture p = Picture::I420(64, 48, 1);
  CScrimPresentStream* s = Make(w.get(), 0, 64, 48);
  ASSERT_EQ(KV_S_OK, Present(s, p));  // set-up outside the measured calls
  g_recordSleeps = true;
  const int64_t entry = NowUs();
  ASSERT_EQ(KV_S_OK, Present(s, p, 40));
  const int64_t exit = NowUs();
  ASSERT_EQ(1u, g_sleeps.size());
  // The sleep is what the conversion left of the 40 ms.
  EXPECT_LE(g_sleeps[0], 40000u);
  EXPECT_GE(static_cast<int64_t>(g_sleeps[0]), 40000 - (exit - entry));
  const int64_t posted = w.last()->postedUs - entry;
  EXPECT_TRUE(posted >= 40000 && posted < 40000 + 100000) << posted;  // a shared, noisy machine
  // No sleep for zero, negative or spent delays.
  g_sleeps.clear();
  for (long delay : {0L, -1L, -40L, -1000000L}) ASSERT_EQ(KV_S_OK, Present(s, p, delay));
  EXPECT_TRUE(g_sleeps.empty());
  EXPECT_EQ(6u, w.posted());
  s->Release();
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
