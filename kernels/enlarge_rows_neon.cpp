// The enlargement rows (RGB565 stretch, vertical blend, over 64- and 32-bit entries) for NEON.
#if defined(__aarch64__)
#define ENLARGE_VECTOR_BYTES 16
#define HLERP565_VECTOR_ROW hlerp565_neon
#define VLERP_VECTOR_ROW vlerp_neon
#define HLERP565_32_VECTOR_ROW hlerp565_32_neon
#define VLERP32_VECTOR_ROW vlerp32_neon
#define HLERP565_23_VECTOR_ROW hlerp565_23_neon
#define HLERP565_25_VECTOR_ROW hlerp565_25_neon
#define BLEND_DOWN_VECTOR_ROW blend_down_neon
#include "kernels/enlarge_rows_vector.h"
#endif
