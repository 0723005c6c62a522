// Mode 7's interior blocks for AVX2, four blocks a step (built with -mavx2).
#if defined(__x86_64__)
#define X_VECTOR_BYTES 32
#define X_VECTOR_ROW x_interior_blocks_avx2
#include "deinterlace/filter_x_vector.h"
#endif
