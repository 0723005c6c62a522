// The 16.16 step of the resizing kernels.
#pragma once

#include <stdint.h>

namespace scrim {

// ((source - 1) << 16) / (destination - 1) as a signed 32-bit division: a
// destination of 1 gives 0 (every sample from position 0) and a divisor of -1
// gives the negated dividend.
inline int32_t ResizeStep(int32_t source, int32_t destination) {
  const uint32_t num = static_cast<uint32_t>(source - 1) << 16;
  const int32_t den = destination - 1;
  if (den == 0) return 0;
  if (den == -1) return static_cast<int32_t>(0u - num);
  return static_cast<int32_t>(num) / den;
}

}  // namespace scrim
