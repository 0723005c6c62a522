// The enlargement rows (RGB565 stretch, vertical blend, over 64- and 32-bit entries) for SSE4.1.
#if defined(__x86_64__)
#define ENLARGE_VECTOR_BYTES 16
#define HLERP565_VECTOR_ROW hlerp565_sse41
#define VLERP_VECTOR_ROW vlerp_sse41
#define HLERP565_32_VECTOR_ROW hlerp565_32_sse41
#define VLERP32_VECTOR_ROW vlerp32_sse41
#define HLERP565_23_VECTOR_ROW hlerp565_23_sse41
#define HLERP565_25_VECTOR_ROW hlerp565_25_sse41
#define BLEND_DOWN_VECTOR_ROW blend_down_sse41
#include "kernels/enlarge_rows_vector.h"
#endif
