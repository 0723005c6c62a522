// The RGB565 stretch row for AVX2, 4 output entries a step.
#if defined(__x86_64__)
#define HLERP565_VECTOR_BYTES 32
#define HLERP565_VECTOR_ROW hlerp565_avx2
#include "kernels/hlerp565_vector.h"
#endif
