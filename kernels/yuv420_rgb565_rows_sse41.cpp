// The RGB565, keyed RGB555 and spread-line block rows for SSE41, 4 blocks a step.
#if defined(__x86_64__)
#define RGB565_VECTOR_BYTES 16
#define RGB565_VECTOR_ROW rgb565_blocks_sse41
#define RGB555_VECTOR_ROW rgb555_key_blocks_sse41
#define SPREAD_VECTOR_ROW spread_blocks_sse41
#define SPREAD32_VECTOR_ROW spread32_blocks_sse41
#define ARGB_VECTOR_ROW argb_blocks_sse41
#define ABGR_VECTOR_ROW abgr_blocks_sse41
#include "kernels/yuv420_rgb565_vector.h"
#endif
