// The presenter as a media player drives it, through the exported factory and
// the host window: random stream sizes, colour-format words, strides,
// properties (show, deinterlace mode, YV12 preference, rectangles), surface
// swaps, stream close and reopen, and window lock, geometry and post faults.
// The player's picture planes are heap blocks of exactly what the conversion
// may read (imageproc_extents.h, for the RGB565 and YV12 windows, with and
// without deinterlacing); result codes the presenter fixes are checked, and
// every window reference it took is given back by the end.
#include <algorithm>

#include "fuzz_support.h"
#include "host/host_log.h"
#include "host/host_window.h"
#include "imageproc_extents.h"
#include "presenter/scrim_presenter.h"

using namespace scrimfuzz;

namespace {

constexpr uint32_t kFormats[] = {0x00000000, 0x00000001, 0x00000004, 0x00000007, 0x00000100, 0x00000101,
                                 0x00010000, 0x00040000, 0x00000200, 0x00020000, 0x32315659, 0x01000000};

ANativeWindow* NewWindow(FuzzedDataProvider& in) {
  HostWindowConfig config{};
  config.width = in.ConsumeIntegralInRange<int32_t>(0, 64);
  config.height = in.ConsumeIntegralInRange<int32_t>(0, 64);
  config.strideAlign = in.PickValueInArray({16, 32, 64, 112});
  config.bufferCount = in.ConsumeIntegralInRange<int32_t>(1, 4);
  config.keepPixels = 0;
  return HostWindow_create(&config);
}

// The bytes a frame may read from the player's planes: the widest of the
// RGB565 and YV12 windows' conversions, with and without a deinterlace mode.
void SourceSpansOf(uint32_t width, uint32_t height, const uint32_t strides[3], Span out[3]) {
  for (int i = 0; i < 3; ++i) out[i] = {};
  for (uint32_t code : {0x003u, 0x000u}) {
    for (uint32_t mode : {0u, 2u}) {
      Conversion c;
      c.code = code;
      c.sw = c.dw = width, c.sh = c.dh = height;
      c.Classify();
      c.deintMode = mode;
      Span s[3];
      SourceSpans(c, strides, s);
      for (int i = 0; i < 3; ++i) out[i].hi = std::max(out[i].hi, s[i].hi);
    }
  }
}

struct Session {
  IKvVideoPresenterAdv* presenter = nullptr;
  IKvVideoPresenterStream* stream = nullptr;
  std::vector<ANativeWindow*> windows;
  bool hadWindow = false;  // a window was ever handed over
  uint32_t width = 0, height = 0, format = 0;
  bool open = false, shown = false;
};

void Present(FuzzedDataProvider& in, Session& s) {
  const bool fourcc = (s.format >> 24) != 0;
  uint32_t strides32[3];
  for (int i = 0; i < 3; ++i) strides32[i] = PickStride(in, i == 0 ? s.width : s.width / 2);
  Span spans[3];
  SourceSpansOf(s.width, s.height, strides32, spans);
  Block planes[3];
  unsigned char* p[3];
  unsigned long strides[3];
  const uint32_t seed = in.ConsumeIntegral<uint32_t>();
  for (int i = 0; i < 3; ++i) {
    planes[i] = Block(static_cast<size_t>(spans[i].hi));
    Fill(planes[i].data(), planes[i].size(), seed + i);
    p[i] = planes[i].data();
    // Only the low 32 bits of a stride are used.
    strides[i] = strides32[i] | (in.ConsumeIntegralInRange<int>(0, 15) == 0 ? 0x500000000ul : 0);
  }
  const int missing = in.ConsumeIntegralInRange<int>(0, 15);
  if (missing < 3) p[missing] = nullptr;
  if (missing == 3) strides[1] = 0;
  VP_PRESENT_STREAM_PARAMS params{};
  params.lDisplayDelay = in.ConsumeIntegralInRange<long>(-5, 1);
  const uint32_t r = s.stream->Present(p, strides, &params);
  if (!s.open || !s.shown) {
    Expect("Present on a closed or hidden stream", r, KV_E_FAIL);
  } else if (p[0] == nullptr) {
    Expect("Present without a luma plane", r, KV_E_INVALIDARG);
  } else if (!s.hadWindow) {
    Expect("Present without a window", r, KV_E_HANDLE);
  } else if (r == KV_E_HANDLE) {
    // A window handed over while the stream was closed, or taken away, is
    // not the stream's: it answers as it does without one.
  } else if (fourcc) {
    Expect("Present of a FOURCC stream", r, KV_S_OK);
  } else if (r != KV_S_OK && r != KV_E_FAIL) {
    WrongAnswer("Present", r, KV_S_OK);
  }
}

void SwapSurface(FuzzedDataProvider& in, Session& s) {
  ANativeWindow* w = in.ConsumeIntegralInRange<int>(0, 3) == 0 ? nullptr : NewWindow(in);
  if (w != nullptr) s.windows.push_back(w);
  const bool throughPresenter = in.ConsumeBool();
  if (Verbose())
    fprintf(stderr, "surface %p through the %s\n", static_cast<void*>(w),
            throughPresenter ? "presenter" : "stream");
  if (throughPresenter) {
    // Through the presenter, as a player hands over a new Surface.
    KV_ANDROID_SURFACE surface{nullptr, w};
    s.presenter->Set(IID_IKvVideoPresenterAdv, KV_PROPID_VP_ANDROID_SURFACE, nullptr, 0, &surface,
                     sizeof surface);
  } else {
    const uint32_t r =
        s.stream->Set(IID_IKvVideoPresenterStream, KV_PROPID_VP_ANDROID_SURFACE, nullptr, 0, w, 0);
    if (s.open) Expect("stream surface", r, KV_S_OK);
  }
  s.hadWindow = s.hadWindow || w != nullptr;
}

void Step(FuzzedDataProvider& in, Session& s) {
  const _GUID& iid = IID_IKvVideoPresenterStream;
  const int op = in.ConsumeIntegralInRange<int>(0, 9);
  if (Verbose()) fprintf(stderr, "step %d (open %d, shown %d)\n", op, s.open, s.shown);
  switch (op) {
    case 0: {
      uint32_t mode = in.ConsumeIntegralInRange<uint32_t>(0, 10);
      const uint32_t r = s.stream->Set(iid, KV_PROPID_VP_DEINTERLACE, nullptr, 0, &mode, sizeof mode);
      Expect("deinterlace mode", r, s.open ? KV_S_OK : KV_E_UNEXPECTED);
      break;
    }
    case 1: {
      int32_t show = in.ConsumeBool();
      if (in.ConsumeBool()) {
        s.presenter->Set(IID_IKvVideoPresenterAdv, KV_PROPID_VP_SHOW, nullptr, 0, &show, sizeof show);
        if (s.open) s.shown = show != 0;
      } else {
        const uint32_t r = s.stream->Set(iid, KV_PROPID_VP_SHOW, nullptr, 0, &show, sizeof show);
        Expect("show", r, s.open ? KV_S_OK : KV_E_UNEXPECTED);
        if (s.open) s.shown = show != 0;
      }
      break;
    }
    case 2: {
      const int fault = in.ConsumeIntegralInRange<int>(0, 2);
      if (!s.windows.empty())
        HostWindow_failNext(s.windows[in.ConsumeIntegralInRange<size_t>(0, s.windows.size() - 1)],
                            static_cast<HostWindowFault>(fault), -22, in.ConsumeIntegralInRange<int>(1, 2));
      break;
    }
    case 3:
      SwapSurface(in, s);
      break;
    case 4:
      Expect("Close", s.stream->Close(), s.open ? KV_S_OK : KV_E_UNEXPECTED);
      s.open = false;
      break;
    case 5:
      Expect("Open", s.stream->Open(), s.open ? KV_E_UNEXPECTED : KV_S_OK);
      s.open = true;
      break;
    case 6: {
      RECT rect{in.ConsumeIntegral<int16_t>(), in.ConsumeIntegral<int16_t>(), in.ConsumeIntegral<int16_t>(),
                in.ConsumeIntegral<int16_t>()};
      const uint32_t r = s.stream->Set(iid, KV_PROPID_VP_DST_RECT, nullptr, 0, &rect, sizeof rect);
      Expect("stream rectangle", r, s.open ? KV_S_OK : KV_E_UNEXPECTED);
      s.presenter->Set(IID_IKvVideoPresenterAdv, KV_PROPID_VP_DST_RECT, nullptr, 0, &rect, sizeof rect);
      break;
    }
    default:
      Present(in, s);
      break;
  }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  static const bool quiet = (HostLog_setEcho(0), true);
  (void)quiet;
  FuzzedDataProvider in(data, size);
  const int32_t windowsBefore = HostWindow_liveCount();
  Session s;
  s.presenter = CreateVideoPresenterAdv();
  if (s.presenter == nullptr) WrongAnswer("the factory gave no presenter", 0, 1);
  VP_OpenOptionsAdv options{};
  Expect("presenter Open", s.presenter->Open(&options, sizeof options), KV_S_OK);
  if (in.ConsumeBool()) {
    unsigned long fourcc = in.ConsumeBool() ? KV_FOURCC_YV12 : in.ConsumeIntegral<uint32_t>();
    s.presenter->Set(IID_IKvVideoPresenterAdv, KV_PROPID_VP_PREFER_OUTPUT_FORMAT, nullptr, 0, &fourcc,
                     sizeof fourcc);
  }
  if (in.ConsumeIntegralInRange<int>(0, 7) != 0) {
    s.windows.push_back(NewWindow(in));
    s.hadWindow = true;
    KV_ANDROID_SURFACE surface{nullptr, s.windows.back()};
    s.presenter->Set(IID_IKvVideoPresenterAdv, KV_PROPID_VP_ANDROID_SURFACE, nullptr, 0, &surface,
                     sizeof surface);
  }

  VP_OPEN_STREAM_PARAMS params{};
  params.dwStreamKind =
      in.ConsumeIntegralInRange<int>(0, 15) == 0 ? in.ConsumeIntegral<uint32_t>() : KV_STREAM_KIND_VIDEO;
  s.width = in.ConsumeIntegralInRange<uint32_t>(0, 160);
  s.height = in.ConsumeIntegralInRange<uint32_t>(0, 160);
  params.dwWidth = s.width | (in.ConsumeBool() ? 0x100000000ul : 0);  // only the low 32 bits count
  params.dwHeight = s.height;
  s.format = in.ConsumeIntegralInRange<int>(0, 7) == 0 ? in.ConsumeIntegral<uint32_t>()
                                                       : in.PickValueInArray(kFormats);
  params.dwColorFormat = s.format;
  const uint32_t created = s.presenter->CreateStream(&params, sizeof params, &s.stream);
  if (params.dwStreamKind != KV_STREAM_KIND_VIDEO) {
    if (created == KV_S_OK) WrongAnswer("a stream of another kind was created", created, KV_E_FAIL);
  } else {
    Expect("CreateStream", created, KV_S_OK);
  }
  if (created == KV_S_OK && s.stream != nullptr) {
    Expect("stream Open", s.stream->Open(), KV_S_OK);
    s.open = true;
    const int steps = in.ConsumeIntegralInRange<int>(1, 12);
    for (int i = 0; i < steps; ++i) Step(in, s);
    s.stream->Close();
    Expect("DestroyStream", s.presenter->DestroyStream(s.stream), KV_S_OK);
  }
  s.presenter->Close();
  s.presenter->Release();
  // Every window reference the presenter took must be back, except the one a
  // renderer keeps when its window refuses the geometry (it has no Handler to
  // give it back through, and says so in its log): drop those, or the run
  // would pile up windows.
  bool geometryRefused = false;
  for (const std::string& line : HostLog_lines())
    geometryRefused =
        geometryRefused || line.find("native_window_set_buffers_geometry err") != std::string::npos;
  for (ANativeWindow* w : s.windows) {
    const int32_t extra = HostWindow_refCount(w) - 1;
    if (Verbose())
      fprintf(stderr, "window %p: %d references besides the host's\n", static_cast<void*>(w), extra);
    if (extra != 0 && !geometryRefused) WrongAnswer("window references left taken", extra, 0);
    for (int32_t i = 0; i < extra; ++i) ANativeWindow_release(w);
    ANativeWindow_release(w);
  }
  Expect("windows left alive", static_cast<unsigned long>(HostWindow_liveCount()), windowsBefore);
  HostLog_clear();
  return 0;
}
