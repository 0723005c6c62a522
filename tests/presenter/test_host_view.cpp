// The presenter as a player sees it: libscrimpresent.so through dlopen/dlsym,
// driven only through the interface classes (their slot order is the ABI).
#include <dlfcn.h>
#include <gtest/gtest.h>
#include <string.h>

#include <algorithm>
#include <array>
#include <sstream>
#include <string>
#include <vector>

#include "presenter/picture_testing.h"
#include "presenter/scrim_presenter.h"

using namespace scrim_testing;

namespace {

void* Lib() {
  static void* handle = dlopen(SCRIM_LIBRARY_PATH, RTLD_NOW | RTLD_LOCAL);
  return handle;
}
const _GUID& Iid(const char* name) { return *static_cast<const _GUID*>(dlsym(Lib(), name)); }

class HostView : public LoggedTest {
 protected:
  void SetUp() override {
    LoggedTest::SetUp();
    ASSERT_NE(nullptr, Lib()) << dlerror();
    auto create = reinterpret_cast<PFN_CreateVideoPresenterAdv>(dlsym(Lib(), "CreateVideoPresenterAdv"));
    ASSERT_NE(nullptr, create);
    ASSERT_NE(nullptr, p_ = create());
  }

  // Every test ends without a line written that it did not expect.
  void TearDown() override {
    EXPECT_EQ(0u, HostLog_count());
    VP_OpenOptionsAdv options{};
    if (p_ != nullptr && !streams_.empty()) p_->Open(&options, sizeof options);  // streams go back while open
    for (IKvVideoPresenterStream* s : streams_) EXPECT_EQ(KV_S_OK, p_->DestroyStream(s));
    EXPECT_EQ(0, p_ ? p_->Release() : 0);
    LoggedTest::TearDown();
  }

  void Open() {
    VP_OpenOptionsAdv options{};
    for (size_t i = 0; i < sizeof options.bytes; ++i) options.bytes[i] = static_cast<unsigned char>(i + 1);
    ASSERT_EQ(KV_S_OK, p_->Open(&options, sizeof options));
  }

  KVRESULT SetSurface(ANativeWindow* window, unsigned long prop = KV_PROPID_VP_ANDROID_SURFACE) {
    KV_ANDROID_SURFACE surface{nullptr, window};
    return p_->Set(Iid("IID_IKvVideoPresenterAdv"), prop, nullptr, 0, &surface, sizeof surface);
  }

  template <typename T>
  KVRESULT Set(unsigned long prop, T value) {
    return p_->Set(Iid("IID_IKvVideoPresenterAdv"), prop, nullptr, 0, &value, sizeof value);
  }

  KVRESULT Get(unsigned long prop, void* data, unsigned long bytes, unsigned long* size) {
    return p_->Get(Iid("IID_IKvVideoPresenterAdv"), prop, nullptr, 0, data, bytes, size);
  }

  template <typename T>
  T Value(unsigned long prop) {
    T value{};
    EXPECT_EQ(KV_S_OK, Get(prop, &value, sizeof value, nullptr)) << prop;
    return value;
  }

  static std::vector<long> Edges(const RECT& r) { return {r.left, r.top, r.right, r.bottom}; }

  // A stream, opened and (unless told otherwise) shown; destroyed by TearDown.
  IKvVideoPresenterStream* Stream(unsigned width, unsigned height, uint32_t colourFormat, bool show = true) {
    VP_OPEN_STREAM_PARAMS params{KV_STREAM_KIND_VIDEO, width, height, colourFormat, {}};
    IKvVideoPresenterStream* s = nullptr;
    EXPECT_EQ(KV_S_OK, p_->CreateStream(&params, 1, &s));  // the size is not checked
    if (s == nullptr) return nullptr;
    streams_.push_back(s);
    EXPECT_EQ(KV_S_OK, s->Open());
    uint8_t flag = 1;
    EXPECT_EQ(KV_S_OK,
              show ? s->Set(Iid("IID_IKvVideoPresenterStream"), KV_PROPID_VP_SHOW, nullptr, 0, &flag, 1) : 0);
    return s;
  }

  KVRESULT Destroy(IKvVideoPresenterStream* s) {
    KVRESULT r = p_->DestroyStream(s);
    if (r == KV_S_OK) streams_.erase(std::find(streams_.begin(), streams_.end(), s));
    return r;
  }

  static KVRESULT Present(IKvVideoPresenterStream* s, Picture& p) {
    VP_PRESENT_STREAM_PARAMS params{0x1111, 0x2222, 0};
    return s->Present(p.planes, p.strides, &params);
  }

  IKvVideoPresenterAdv* p_ = nullptr;
  std::vector<IKvVideoPresenterStream*> streams_;
};

}  // namespace

TEST(HostViewLibrary, ExportsTheEntryPointsOnly) {
  ASSERT_NE(nullptr, Lib()) << dlerror();
  auto version = reinterpret_cast<PFN_getVersion>(dlsym(Lib(), "getVersion"));
  ASSERT_NE(nullptr, version);
  EXPECT_TRUE(std::regex_match(version(), std::regex("[^\n]*ScrimPresent Version:1\\.0\\.10461\\.1")))
      << version();
  std::istringstream exported(
      "IID_IUnknown IID_IKvVideoPresenter IID_IKvVideoPresenterAdv IID_IKvVideoPresenterStream "
      "IID_IKvVideoPresenterAnimation IID_IKvFont IID_IOruvmVideoMixer IID_IOruvmVideoContext "
      "GetAndroidSurface ReleaseAndroidSurface GetAndroidIomxSurface GetAndroidJEnv FreeAndroidJEnv "
      "g_SoftRenderer oru_nativewindow_determin oru_nativewindow_init oru_nativewindow_render "
      "oru_nativewindow_dorender oru_nativewindow_uninit CreateConverter ReleaseConverter render_this_frame");
  for (std::string name; exported >> name;) EXPECT_NE(nullptr, dlsym(Lib(), name.c_str())) << name;
  for (const char* name : {"ScrimLogWrite", "_Z13ScrimLogWriteiPKcP13__va_list_tag", "scrim_malloc",
                           "_Z12scrim_mallocjj", "_Z13timeval_GetUsv", "g_pJvm"})
    EXPECT_EQ(nullptr, dlsym(Lib(), name)) << name;
}

TEST_F(HostView, LifecycleRenderAndLookup) {
  VP_OpenOptionsAdv o{};
  // Set needs the open state; Render answers 0 only while open and shown.
  EXPECT_EQ((std::vector<KVRESULT>{1, KV_E_INVALIDARG, KV_E_INVALIDARG, KV_E_INVALIDARG, KV_E_FAIL, KV_S_OK,
                                   0, KV_E_FAIL}),
            (std::vector<KVRESULT>{p_->Render(0), p_->Open(nullptr, 80), p_->Open(&o, 79), p_->Open(&o, 81),
                                   Set(KV_PROPID_VP_SHOW, int32_t(1)), p_->Open(&o, 80), p_->Render(0),
                                   p_->Open(&o, 80)}));
  EXPECT_LINES({"[Open N] Invalid call. Video Presenter is opened already "});
  // Closing a closed presenter is fine, and it may be opened again.
  EXPECT_EQ((std::vector<KVRESULT>{KV_S_OK, 1, KV_S_OK, 0, KV_S_OK, 1, KV_S_OK, KV_S_OK, 0}),
            (std::vector<KVRESULT>{Set(KV_PROPID_VP_SHOW, int32_t(0)), p_->Render(0),
                                   Set(KV_PROPID_VP_SHOW, int32_t(1)), p_->Render(0xFFFF), p_->Close(),
                                   p_->Render(0), p_->Close(), p_->Open(&o, 80), p_->Render(0)}));
  // Lookup itself is CKvUnknown's (test_presenter_stream): here, that the
  // presenter forwards to it and where the reference-counting part sits.
  void* out = nullptr;
  EXPECT_EQ(KV_E_NOINTERFACE, p_->QueryInterface(Iid("IID_IKvVideoPresenterAdv"), &out));
  EXPECT_EQ(KV_S_OK, p_->QueryInterface(Iid("IID_IUnknown"), &out));
  EXPECT_EQ(reinterpret_cast<char*>(p_) + sizeof(void*), out);  // right behind the table pointer
  IKvNonDelegatingUnknown* unknown = static_cast<IKvNonDelegatingUnknown*>(out);
  EXPECT_EQ((std::vector<long>{3, 4, 3, 2, 1}),
            (std::vector<long>{p_->AddRef(), unknown->NonDelegatingAddRef(), unknown->NonDelegatingRelease(),
                               p_->Release(), unknown->NonDelegatingRelease()}));
}

TEST_F(HostView, Properties) {
  EXPECT_EQ(16u, Value<uint32_t>(1033));  // before Open
  Open();
  // Every readable id: its size report and its null-data check.
  // {id, bytes, size reported (0: none written)}
  const unsigned long table[][3] = {{0, 8, 8},    {1, 4, 0},    {2, 32, 32},  {3, 32, 32},  {771, 8, 8},
                                    {784, 16, 0}, {1025, 8, 8}, {1026, 8, 8}, {1033, 4, 4}, {1539, 80, 0}};
  for (const auto& [id, bytes, reported] : table) {
    SCOPED_TRACE(id);
    std::vector<unsigned char> data(bytes, 0xEE);
    unsigned long size = 0x77;
    EXPECT_EQ(KV_S_OK, Get(id, data.data(), bytes, &size));
    EXPECT_EQ(reported ? reported : 0x77ul, size);
    EXPECT_EQ(KV_S_OK, Get(id, data.data(), bytes, nullptr));
    EXPECT_EQ(KV_E_POINTER, Get(id, nullptr, bytes, &size));
  }
  long data = 0;
  for (unsigned long id : {4ul, 1027ul, 787ul}) EXPECT_EQ(KV_E_NOTIMPL, Get(id, &data, 8, nullptr)) << id;
  EXPECT_EQ(0, Value<long>(0));
  EXPECT_EQ(1, Value<int32_t>(1));
  // The open options come back whole, and bytes 32-47 as property 784.
  const auto options = Value<std::array<unsigned char, 80>>(1539);
  const auto part = Value<std::array<unsigned char, 16>>(784);
  for (int i = 0; i < 80; ++i) EXPECT_EQ(i + 1, options[i]);
  for (int i = 0; i < 16; ++i) EXPECT_EQ(33 + i, part[i]);

  const RECT dst = {1, 2, 300, 200}, src = {-4, -3, 64, 48};
  EXPECT_EQ(KV_S_OK, Set(KV_PROPID_VP_DST_RECT, dst));
  EXPECT_EQ(KV_S_OK, Set(KV_PROPID_VP_SRC_RECT, src));
  EXPECT_EQ(Edges(dst), Edges(Value<RECT>(2)));
  EXPECT_EQ(Edges(src), Edges(Value<RECT>(3)));
  for (unsigned long id : {771ul, 1025ul, 1026ul}) {
    const long value = -1234567890123L - static_cast<long>(id);
    EXPECT_EQ(KV_S_OK, Set(id, value));
    EXPECT_EQ(value, Value<long>(id)) << id;
  }
  EXPECT_EQ(KV_S_OK, Set(KV_PROPID_VP_DEINTERLACE, uint32_t(2)));
  // Null data where it is checked; ids the presenter does not set, including those only Get answers.
  for (unsigned long id : {1ul, 2ul, 4ul})
    EXPECT_EQ(KV_E_POINTER, p_->Set(Iid("IID_IKvVideoPresenterAdv"), id, nullptr, 0, nullptr, 0)) << id;
  for (unsigned long id : {0ul, 5ul, 784ul, 1033ul, 1539ul, 0xFFFFFFFFul})
    EXPECT_EQ(KV_E_NOTIMPL, Set(id, int32_t(0))) << id;

  // Open clears the destination rectangle, not the source one.
  EXPECT_EQ(KV_S_OK, p_->Close());
  Open();
  EXPECT_EQ(Edges(RECT{}), Edges(Value<RECT>(2)));
  EXPECT_EQ(Edges(src), Edges(Value<RECT>(3)));
}

TEST_F(HostView, FourStreamSlotsAndTheStreamsStates) {
  VP_OPEN_STREAM_PARAMS params{KV_STREAM_KIND_VIDEO, 32, 16, 0, {}}, wrong = params;
  wrong.dwStreamKind = 4097;
  IKvVideoPresenterStream* const marker = reinterpret_cast<IKvVideoPresenterStream*>(&params);
  IKvVideoPresenterStream* s = marker;
  EXPECT_EQ(KV_E_FAIL, p_->CreateStream(&params, sizeof params, &s));  // closed
  Open();
  EXPECT_EQ((std::vector<KVRESULT>{KV_E_INVALIDARG, KV_E_INVALIDARG, KV_E_FAIL}),
            (std::vector<KVRESULT>{p_->CreateStream(nullptr, sizeof params, &s),
                                   p_->CreateStream(&params, sizeof params, nullptr),
                                   p_->CreateStream(&wrong, sizeof wrong, &s)}));
  EXPECT_EQ(nullptr, s);
  IKvVideoPresenterStream* slots[4] = {};
  for (auto& slot : slots) ASSERT_NE(nullptr, slot = Stream(32, 16, 0, false));
  s = marker;
  EXPECT_EQ(KV_E_UNEXPECTED, p_->CreateStream(&params, sizeof params, &s));
  EXPECT_EQ(KV_E_UNEXPECTED, p_->CreateStream(&wrong, sizeof wrong, &s));  // no slot is checked first
  EXPECT_EQ(marker, s);
  EXPECT_EQ(
      (std::vector<KVRESULT>{KV_E_FAIL, KV_E_FAIL, KV_S_OK}),
      (std::vector<KVRESULT>{p_->DestroyStream(nullptr), p_->DestroyStream(marker), Destroy(slots[2])}));
  ASSERT_NE(nullptr, Stream(32, 16, 0, false));  // the freed slot
  EXPECT_EQ(KV_E_UNEXPECTED, p_->CreateStream(&params, sizeof params, &s));
  EXPECT_EQ(KV_S_OK, p_->Close());
  EXPECT_EQ(KV_E_FAIL, p_->DestroyStream(slots[0]));  // only while open

  // A stream's own states and properties (it is opened and hidden).
  s = slots[0];
  const _GUID& iid = Iid("IID_IKvVideoPresenterStream");
  auto set = [&](unsigned long id, void* data, unsigned long bytes) {
    return s->Set(iid, id, nullptr, 0, data, bytes);
  };
  auto get = [&](unsigned long id, void* data, unsigned long bytes, unsigned long* size) {
    return s->Get(iid, id, nullptr, 0, data, bytes, size);
  };
  unsigned long fourcc = KV_FOURCC_YV12, size = 0, showSize = 0, modeSize = 0;
  uint32_t mode = 5, before = 9, after = 9, reopened = 9;
  uint8_t flag = 1, shown = 7;
  RECT r = {1, 2, 3, 4};
  // Closed: only the FOURCC may be set; Get checks its data pointer first.
  EXPECT_EQ((std::vector<KVRESULT>{KV_S_OK, KV_E_UNEXPECTED, KV_E_UNEXPECTED, KV_E_UNEXPECTED, KV_E_POINTER,
                                   KV_S_OK, KV_E_UNEXPECTED, KV_E_POINTER, KV_E_UNEXPECTED}),
            (std::vector<KVRESULT>{s->Close(), s->Close(), s->LockSurface(nullptr, nullptr),
                                   s->UnlockSurface(), set(4, nullptr, 8), set(4, &fourcc, 8),
                                   set(1, &flag, 1), get(1, nullptr, 1, &size), get(1, &flag, 1, &size)}));
  // Show reads back with a size of 32 although one byte is written; the
  // deinterlace mode has no size, and closing and opening again clears it.
  EXPECT_EQ((std::vector<KVRESULT>{KV_S_OK, KV_E_UNEXPECTED, KV_S_OK, KV_S_OK, KV_E_NOTIMPL, KV_E_NOTIMPL,
                                   KV_S_OK, KV_S_OK, KV_E_NOTIMPL, KV_S_OK, KV_S_OK, KV_S_OK, KV_S_OK,
                                   KV_E_NOTIMPL, KV_S_OK, KV_S_OK, KV_S_OK}),
            (std::vector<KVRESULT>{s->Open(), s->Open(), s->LockSurface(nullptr, nullptr), s->UnlockSurface(),
                                   s->StartAnimation(nullptr), s->StopAnimation(), set(1, &flag, 1),
                                   set(2, &r, sizeof r), set(778, nullptr, 8), get(1, &shown, 1, &showSize),
                                   get(1027, &before, 4, &modeSize), set(1027, &mode, 4),
                                   get(1027, &after, 4, &modeSize), get(2, &after, 4, &modeSize), s->Close(),
                                   s->Open(), get(1027, &reopened, 4, &modeSize)}));
  EXPECT_EQ((std::vector<unsigned long>{1, 32, 0, 5, 0, 0}),
            (std::vector<unsigned long>{shown, showSize, before, after, modeSize, reopened}));
}

TEST_F(HostView, SurfacesAndShowReachTheStreamsAndAreGivenBack) {
  Window a, b, c;
  // References held on windows a, b and c, then the pictures posted to each.
  auto windows = [&] {
    return std::vector<long>{a.refs(),         b.refs(),         c.refs(),
                             long(a.posted()), long(b.posted()), long(c.posted())};
  };
  Open();
  IKvVideoPresenterStream* s = Stream(32, 16, 0, /*show=*/false);  // made before any surface
  Picture p = Picture::I420(32, 16, 1);
  // Present's checks in their order: closed, hidden (then shown through the
  // presenter), no plane, no surface.
  unsigned char* y = p.planes[0];
  EXPECT_EQ((std::vector<KVRESULT>{KV_S_OK, KV_E_FAIL, KV_S_OK, KV_E_FAIL, KV_S_OK, KV_E_HANDLE}),
            (std::vector<KVRESULT>{s->Close(), Present(s, p), s->Open(), Present(s, p),
                                   Set(KV_PROPID_VP_SHOW, int32_t(1)), Present(s, p)}));
  ASSERT_EQ(KV_S_OK, SetSurface(a.get()));
  EXPECT_EQ(KV_S_OK, SetSurface(a.get()));  // the same surface: no new reference
  p.planes[0] = nullptr;
  EXPECT_EQ(KV_E_INVALIDARG, Present(s, p));
  p.planes[0] = y;
  EXPECT_EQ((std::vector<long>{2, 1, 1, 0, 0, 0}), windows());
  ASSERT_EQ(KV_S_OK, Present(s, p));
  EXPECT_EQ((std::vector<long>{3, 1, 1, 1, 0, 0}), windows());  // the renderer holds one too
  EXPECT_EQ((std::vector<KVRESULT>{KV_S_OK, KV_E_FAIL, KV_S_OK}),
            (std::vector<KVRESULT>{Set(KV_PROPID_VP_SHOW, int32_t(0)), Present(s, p),
                                   Set(KV_PROPID_VP_SHOW, int32_t(1))}));

  EXPECT_EQ(KV_S_OK, SetSurface(b.get()));
  EXPECT_EQ((std::vector<long>{1, 2, 1, 1, 0, 0}), windows());
  ASSERT_EQ(KV_S_OK, Present(s, p));
  EXPECT_EQ((std::vector<long>{1, 3, 1, 1, 1, 0}), windows());
  EXPECT_EQ(KV_S_OK, p_->Close());
  EXPECT_EQ(2, b.refs());  // the stream's renderer keeps its own until the stream closes
  Open();

  // 778 is accepted by the presenter but not understood by the streams: they
  // keep drawing into the window they had.
  ASSERT_EQ(KV_S_OK, SetSurface(c.get(), KV_PROPID_VP_ANDROID_SURFACE_OLD));
  ASSERT_EQ(KV_S_OK, Present(s, p));
  EXPECT_EQ((std::vector<long>{1, 2, 2, 1, 2, 0}), windows());

  // A record without a window: streams lose theirs.
  ASSERT_EQ(KV_S_OK, SetSurface(nullptr));
  EXPECT_EQ((std::vector<long>{1, 1, 1, 1, 2, 0}), windows());
  EXPECT_EQ(KV_E_HANDLE, Present(s, p));
  EXPECT_EQ(KV_S_OK, Destroy(s));
}

// The preferred format is told to streams made after it; only YV12 makes a
// stream post YV12, and another FOURCC told later does not undo it, even for a
// renderer set up anew on another surface.
TEST_F(HostView, PicturesInThePreferredFormatOfTheirTime) {
  Window a, b;
  Open();
  ASSERT_EQ(KV_S_OK, SetSurface(a.get()));
  ASSERT_EQ(KV_S_OK, Set(KV_PROPID_VP_PREFER_OUTPUT_FORMAT, 0x3231564Eul));  // NV12
  IKvVideoPresenterStream* before = Stream(64, 48, 0x00000001);              // BT.709, video range, planar
  ASSERT_EQ(KV_S_OK, Set(KV_PROPID_VP_PREFER_OUTPUT_FORMAT, static_cast<unsigned long>(KV_FOURCC_YV12)));
  Picture p = Picture::I420(64, 48, 0);
  ASSERT_EQ(KV_S_OK, Present(before, p));
  ASSERT_GT(a.last()->stride, 64);  // the window's rows are wider than the picture's
  ExpectRGB565(p, a.last(), 1, 0);
  ASSERT_EQ(KV_S_OK, Destroy(before));
  EXPECT_EQ(2, a.refs());  // the stream's renderer went with it
  IKvVideoPresenterStream* after = Stream(80, 36, 0);
  for (int n = 0; n < 2; ++n) {
    p = Picture::I420(80, 36, 10 + n);
    ASSERT_EQ(KV_S_OK, Present(after, p));
    ExpectYV12(p, (n ? b : a).last());
    unsigned long none = 0;
    ASSERT_EQ(KV_S_OK, after->Set(Iid("IID_IKvVideoPresenterStream"), 4, nullptr, 0, &none, 8));
    ASSERT_EQ(KV_S_OK, SetSurface(b.get()));
  }
  EXPECT_EQ(2u, a.posted());
}

TEST_F(HostView, WindowFaultsAreReportedAndTheNextPictureRecovers) {
  Window a;
  Open();
  ASSERT_EQ(KV_S_OK, SetSurface(a.get()));
  IKvVideoPresenterStream* s = Stream(32, 16, 0);
  Picture p = Picture::I420(32, 16, 3);
  const std::string render = "[Present N]:oru_nativewindow_render fail",
                    lock = "[oru_nativewindow_render N]:ANativeWindow_lock err = 0xfffffff4",
                    geometry =
                        "[oru_nativewindow_init N]:native_window_set_buffers_geometry err = 0xffffffea",
                    post = "[oru_nativewindow_dorender N]:ANativeWindow_unlockAndPost err = 0xffffffe0";
  const std::tuple<HostWindowFault, int32_t, int, std::vector<std::string>> faults[] = {
      {HOST_FAULT_SET_GEOMETRY, -22, 1, {geometry, "[Present N]:oru_nativewindow_init fail"}},
      {HOST_FAULT_LOCK, -12, 2, {lock, render, lock, render}},
      {HOST_FAULT_POST, -32, 1, {post}}};
  size_t posted = 0;
  for (const auto& [fault, error, count, lines] : faults) {
    HostWindow_failNext(a.get(), fault, error, count);
    for (int i = 0; i < count; ++i) EXPECT_EQ(KV_E_FAIL, Present(s, p));
    EXPECT_LINES(lines);
    EXPECT_EQ(KV_S_OK, Present(s, p));
    EXPECT_EQ(++posted, a.posted());
    if (fault == HOST_FAULT_SET_GEOMETRY) {
      // Set-up leaves one reference behind when the geometry fails; give it back.
      EXPECT_EQ(4, a.refs());
      ANativeWindow_release(a.get());
    }
  }
}
