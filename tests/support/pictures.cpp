#include "support/pictures.h"

namespace scrimtest {

I420::I420(int w, int h, int pad, int extraRows)
    : y(w, h, w + pad, h + extraRows),
      cb((w + 1) / 2, (h + 1) / 2, (w + 1) / 2 + pad, (h + 1) / 2 + extraRows),
      cr((w + 1) / 2, (h + 1) / 2, (w + 1) / 2 + pad, (h + 1) / 2 + extraRows) {
  planes[0] = y.data.data();
  planes[1] = cb.data.data();
  planes[2] = cr.data.data();
  strides[0] = static_cast<uint32_t>(y.stride);
  strides[1] = static_cast<uint32_t>(cb.stride);
  strides[2] = static_cast<uint32_t>(cr.stride);
}

void I420::randomize(Rng& rng) {
  rng.fill(y.data);
  rng.fill(cb.data);
  rng.fill(cr.data);
}

}  // namespace scrimtest
