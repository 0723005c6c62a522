// The enlargement rows (RGB565 stretch, vertical blend) for AVX2.
#if defined(__x86_64__)
#define ENLARGE_VECTOR_BYTES 32
#define HLERP565_VECTOR_ROW hlerp565_avx2
#define VLERP_VECTOR_ROW vlerp_avx2
#include "kernels/enlarge_rows_vector.h"
#endif
