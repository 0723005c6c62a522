// The enlargement rows (RGB565 stretch, vertical blend, over 64- and 32-bit entries) for AVX2.
#if defined(__x86_64__)
#define ENLARGE_VECTOR_BYTES 32
#define HLERP565_VECTOR_ROW hlerp565_avx2
#define VLERP_VECTOR_ROW vlerp_avx2
#define HLERP565_32_VECTOR_ROW hlerp565_32_avx2
#define VLERP32_VECTOR_ROW vlerp32_avx2
#define HLERP565_23_VECTOR_ROW hlerp565_23_avx2
#define HLERP565_25_VECTOR_ROW hlerp565_25_avx2
#define BLEND_DOWN_VECTOR_ROW blend_down_avx2
#include "kernels/enlarge_rows_vector.h"
#endif
