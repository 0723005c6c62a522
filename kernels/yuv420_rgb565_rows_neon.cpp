// The RGB565 block row for NEON, 4 blocks a step.
#if defined(__aarch64__)
#define RGB565_VECTOR_BYTES 16
#define RGB565_VECTOR_ROW rgb565_blocks_neon
#include "kernels/yuv420_rgb565_vector.h"
#endif
