// The RGB565, keyed RGB555 and spread-line block rows for AVX2, 8 blocks a step.
#if defined(__x86_64__)
#define RGB565_VECTOR_BYTES 32
#define RGB565_VECTOR_ROW rgb565_blocks_avx2
#define RGB555_VECTOR_ROW rgb555_key_blocks_avx2
#define SPREAD_VECTOR_ROW spread_blocks_avx2
#define SPREAD32_VECTOR_ROW spread32_blocks_avx2
#define ARGB_VECTOR_ROW argb_blocks_avx2
#define ABGR_VECTOR_ROW abgr_blocks_avx2
#include "kernels/yuv420_rgb565_vector.h"
#endif
