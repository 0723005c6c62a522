// The RGB565, keyed RGB555 and spread-line block rows for NEON, 8 blocks a step.
#if defined(__aarch64__)
#define RGB565_VECTOR_BYTES 16
#define RGB565_VECTOR_ROW rgb565_blocks_neon
#define RGB555_VECTOR_ROW rgb555_key_blocks_neon
#define SPREAD_VECTOR_ROW spread_blocks_neon
#define SPREAD32_VECTOR_ROW spread32_blocks_neon
#define ARGB_VECTOR_ROW argb_blocks_neon
#define ABGR_VECTOR_ROW abgr_blocks_neon
#include "kernels/yuv420_rgb565_vector.h"
#endif
