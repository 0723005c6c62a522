#include "test_clip.h"

#include <math.h>
#include <stdint.h>

namespace {

struct Ycc {
  uint8_t y, cb, cr;
};

uint8_t Clamp(double v) { return static_cast<uint8_t>(v < 0 ? 0 : v > 255 ? 255 : lround(v)); }

// BT.601 video range, the clip's own colour space.
Ycc FromRgb(double r, double g, double b) {
  return {Clamp(16 + 65.481 * r + 128.553 * g + 24.966 * b), Clamp(128 - 37.797 * r - 74.203 * g + 112.0 * b),
          Clamp(128 + 112.0 * r - 93.786 * g - 18.214 * b)};
}

// A hue wheel: h in [0, 1).
Ycc Hue(double h, double light) {
  double r = fabs(h * 6 - 3) - 1, g = 2 - fabs(h * 6 - 2), b = 2 - fabs(h * 6 - 4);
  auto sat = [&](double v) { return (v < 0 ? 0 : v > 1 ? 1 : v) * light; };
  return FromRgb(sat(r), sat(g), sat(b));
}

// 5x7 digits, one row per byte, bit 4 the leftmost column.
const uint8_t kDigits[10][7] = {
    {0x0E, 0x11, 0x13, 0x15, 0x19, 0x11, 0x0E}, {0x04, 0x0C, 0x04, 0x04, 0x04, 0x04, 0x0E},
    {0x0E, 0x11, 0x01, 0x02, 0x04, 0x08, 0x1F}, {0x1F, 0x02, 0x04, 0x02, 0x01, 0x11, 0x0E},
    {0x02, 0x06, 0x0A, 0x12, 0x1F, 0x02, 0x02}, {0x1F, 0x10, 0x1E, 0x01, 0x01, 0x11, 0x0E},
    {0x06, 0x08, 0x10, 0x1E, 0x11, 0x11, 0x0E}, {0x1F, 0x01, 0x02, 0x04, 0x08, 0x08, 0x08},
    {0x0E, 0x11, 0x11, 0x0E, 0x11, 0x11, 0x0E}, {0x0E, 0x11, 0x11, 0x0F, 0x01, 0x02, 0x0C},
};

// What the scene shows at time t (in pictures) at (x, row).
Ycc Scene(const TestClip& clip, double t, int x, int row) {
  // Moving colour bars over a vertical brightness ramp.
  double h = fmod((x + t * 4.0) / clip.width + 1.0, 1.0);
  Ycc c = Hue(h, 0.35 + 0.6 * row / clip.height);
  // A white box bouncing across the picture.
  const int box = clip.height / 5;
  double span = clip.width - box, phase = fmod(t * 6.0, 2 * span);
  int bx = static_cast<int>(phase < span ? phase : 2 * span - phase);
  int by = clip.height / 2 - box / 2 + static_cast<int>(clip.height / 4 * sin(t * 0.15));
  if (x >= bx && x < bx + box && row >= by && row < by + box) c = {235, 128, 128};
  return c;
}

// Draws the picture number, scaled up, on a dark plate in the top-left corner.
void DrawCounter(int index, Picture& p) {
  const int scale = p.height >= 120 ? 4 : 2, digits = 4, margin = scale * 2;
  const int plateW = digits * 6 * scale + margin * 2 - scale, plateH = 7 * scale + margin * 2;
  for (int row = 0; row < plateH && row < p.height; ++row)
    for (int x = 0; x < plateW && x < p.width; ++x) p.y[row * p.width + x] = 16;
  for (int row = 0; row < plateH / 2 && row < p.chromaHeight(); ++row)
    for (int x = 0; x < plateW / 2 && x < p.chromaWidth(); ++x) {
      p.cb[row * p.chromaWidth() + x] = 128;
      p.cr[row * p.chromaWidth() + x] = 128;
    }
  int value = index;
  for (int d = digits - 1; d >= 0; --d, value /= 10) {
    const uint8_t* glyph = kDigits[value % 10];
    const int left = margin + d * 6 * scale;
    for (int gy = 0; gy < 7 * scale; ++gy)
      for (int gx = 0; gx < 5 * scale; ++gx) {
        int x = left + gx, row = margin + gy;
        if (x >= p.width || row >= p.height) continue;
        if (glyph[gy / scale] & (0x10 >> (gx / scale))) p.y[row * p.width + x] = 235;
      }
  }
}

}  // namespace

void TestClip::render(int index, Picture& p) const {
  p.resize(width, height);
  for (int row = 0; row < height; ++row) {
    // Odd lines of an interlaced picture belong to the later field.
    const double t = index + ((interlaced && (row & 1)) ? 0.5 : 0.0);
    for (int x = 0; x < width; ++x) {
      Ycc c = Scene(*this, t, x, row);
      p.y[row * width + x] = c.y;
      if (!(row & 1) && !(x & 1)) {  // chroma sited at the top-left sample of each 2x2 block
        p.cb[(row / 2) * p.chromaWidth() + x / 2] = c.cb;
        p.cr[(row / 2) * p.chromaWidth() + x / 2] = c.cr;
      }
    }
  }
  DrawCounter(index, p);
}
