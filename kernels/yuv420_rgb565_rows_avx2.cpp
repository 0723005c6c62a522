// The RGB565 block row for AVX2, 8 blocks a step.
#if defined(__x86_64__)
#define RGB565_VECTOR_BYTES 32
#define RGB565_VECTOR_ROW rgb565_blocks_avx2
#include "kernels/yuv420_rgb565_vector.h"
#endif
