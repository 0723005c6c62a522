#include "player.h"

#include <stdio.h>
#include <sys/time.h>

namespace {

int64_t NowUs() {
  struct timeval tv;
  gettimeofday(&tv, nullptr);
  return static_cast<int64_t>(tv.tv_sec) * 1000000 + tv.tv_usec;
}

std::string Hex(uint32_t v) {
  char buf[16];
  snprintf(buf, sizeof buf, "0x%08X", v);
  return buf;
}

}  // namespace

Player::Player(const ScrimLibrary& lib, const Options& options) : lib_(lib), options_(options) {}

Player::~Player() {
  if (presenter_ != nullptr) {
    if (stream_ != nullptr) {
      stream_->Close();
      presenter_->DestroyStream(stream_);
    }
    presenter_->Close();
    presenter_->Release();
  }
  if (window_ != nullptr) ANativeWindow_release(window_);
}

bool Player::start(int width, int height, std::string& error) {
  HostWindowConfig config{};
  config.width = width;
  config.height = height;
  config.keepPixels = 1;
  window_ = HostWindow_create(&config);

  presenter_ = lib_.createPresenter();
  VP_OpenOptionsAdv openOptions{};
  uint32_t r = presenter_->Open(&openOptions, sizeof openOptions);
  if (r != KV_S_OK) return error = "the presenter did not open: " + Hex(r), false;
  const _GUID& iid = *lib_.iidPresenter;
  if (options_.yv12) {
    // Streams created from now on have their windows take YV12.
    unsigned long fourcc = KV_FOURCC_YV12;
    presenter_->Set(iid, KV_PROPID_VP_PREFER_OUTPUT_FORMAT, nullptr, 0, &fourcc, sizeof fourcc);
  }
  KV_ANDROID_SURFACE surface{nullptr, window_};
  r = presenter_->Set(iid, KV_PROPID_VP_ANDROID_SURFACE, nullptr, 0, &surface, sizeof surface);
  if (r != KV_S_OK) return error = "the presenter refused the surface: " + Hex(r), false;

  VP_OPEN_STREAM_PARAMS params{};
  params.dwStreamKind = KV_STREAM_KIND_VIDEO;
  params.dwWidth = static_cast<unsigned long>(width);
  params.dwHeight = static_cast<unsigned long>(height);
  params.dwColorFormat = options_.colourFormat();
  r = presenter_->CreateStream(&params, sizeof params, &stream_);
  if (r != KV_S_OK || stream_ == nullptr) return error = "no stream: " + Hex(r), false;
  r = stream_->Open();
  if (r != KV_S_OK) return error = "the stream did not open: " + Hex(r), false;
  int32_t show = 1;
  presenter_->Set(iid, KV_PROPID_VP_SHOW, nullptr, 0, &show, sizeof show);  // reaches the stream too
  if (options_.deinterlace >= 0) {
    uint32_t mode = static_cast<uint32_t>(options_.deinterlace);
    r = stream_->Set(*lib_.iidStream, KV_PROPID_VP_DEINTERLACE, nullptr, 0, &mode, sizeof mode);
    if (r != KV_S_OK) return error = "the stream refused the deinterlace mode: " + Hex(r), false;
  }
  return true;
}

Player::Shown Player::present(Picture& p, long delayMs) {
  unsigned char* planes[3] = {p.planeData(0), p.planeData(1), p.planeData(2)};
  unsigned long strides[3] = {static_cast<unsigned long>(p.planeStride(0)),
                              static_cast<unsigned long>(p.planeStride(1)),
                              static_cast<unsigned long>(p.planeStride(2))};
  VP_PRESENT_STREAM_PARAMS params{};
  params.lDisplayDelay = delayMs;
  const size_t before = HostWindow_postedCount(window_);
  Shown shown;
  shown.entryUs = NowUs();
  shown.result = stream_->Present(planes, strides, &params);
  if (HostWindow_postedCount(window_) > before) shown.frame = HostWindow_posted(window_, before);
  return shown;
}

void Player::dropPosted() { HostWindow_clearPosted(window_); }
