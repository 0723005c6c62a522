#include "contact_sheet.h"

#include <algorithm>

#include "png_writer.h"

namespace {
const int kThumbWidth = 160;
const int kColumns = 4;
const int kGap = 4;
const uint8_t kBackground = 40;
}  // namespace

ContactSheet::ContactSheet(int slots, long expected)
    : slots_(slots), step_(expected > slots ? expected / slots : 1) {}

void ContactSheet::offer(long postedIndex, const HostPostedFrame* frame) {
  if (static_cast<int>(thumbs_.size()) >= slots_ || postedIndex % step_ != 0) return;
  if (frame == nullptr || frame->pixels == nullptr || frame->width <= 0 || frame->height <= 0) return;
  std::vector<uint8_t> rgb(static_cast<size_t>(frame->width) * frame->height * 3);
  if (HostPng_postedToRgb(frame, rgb.data()) != 0) return;
  // Box filter by a whole factor, so that the thumbnail is at most kThumbWidth wide.
  const int factor = (frame->width + kThumbWidth - 1) / kThumbWidth;
  Thumb t;
  t.width = frame->width / factor;
  t.height = frame->height / factor;
  if (t.width == 0 || t.height == 0) return;
  t.rgb.resize(static_cast<size_t>(t.width) * t.height * 3);
  for (int ty = 0; ty < t.height; ++ty)
    for (int tx = 0; tx < t.width; ++tx)
      for (int c = 0; c < 3; ++c) {
        int sum = 0;
        for (int dy = 0; dy < factor; ++dy)
          for (int dx = 0; dx < factor; ++dx)
            sum += rgb[((static_cast<size_t>(ty) * factor + dy) * frame->width + tx * factor + dx) * 3 + c];
        t.rgb[(static_cast<size_t>(ty) * t.width + tx) * 3 + c] =
            static_cast<uint8_t>(sum / (factor * factor));
      }
  thumbs_.push_back(std::move(t));
}

bool ContactSheet::write(const std::string& path, std::string& error) const {
  if (thumbs_.empty()) {
    error = "no pictures were posted";
    return false;
  }
  int cellW = 0, cellH = 0;
  for (const Thumb& t : thumbs_) {
    cellW = t.width > cellW ? t.width : cellW;
    cellH = t.height > cellH ? t.height : cellH;
  }
  const int n = static_cast<int>(thumbs_.size());
  const int cols = n < kColumns ? n : kColumns, rows = (n + kColumns - 1) / kColumns;
  const int width = kGap + cols * (cellW + kGap), height = kGap + rows * (cellH + kGap);
  std::vector<uint8_t> sheet(static_cast<size_t>(width) * height * 3, kBackground);
  for (int i = 0; i < n; ++i) {
    const Thumb& t = thumbs_[i];
    const int left = kGap + (i % kColumns) * (cellW + kGap), top = kGap + (i / kColumns) * (cellH + kGap);
    for (int y = 0; y < t.height; ++y)
      std::copy(t.rgb.begin() + static_cast<size_t>(y) * t.width * 3,
                t.rgb.begin() + static_cast<size_t>(y + 1) * t.width * 3,
                sheet.begin() + (static_cast<size_t>(top + y) * width + left) * 3);
  }
  char err[256] = {0};
  if (HostPng_writeRgb(path.c_str(), sheet.data(), width, height, err, sizeof err) != 0) {
    error = err;
    return false;
  }
  return true;
}
