// The RGB565 block row for SSE41, 4 blocks a step.
#if defined(__x86_64__)
#define RGB565_VECTOR_BYTES 16
#define RGB565_VECTOR_ROW rgb565_blocks_sse41
#include "kernels/yuv420_rgb565_vector.h"
#endif
