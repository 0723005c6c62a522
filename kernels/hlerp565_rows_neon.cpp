// The RGB565 stretch row for NEON, 2 output entries a step.
#if defined(__aarch64__)
#define HLERP565_VECTOR_BYTES 16
#define HLERP565_VECTOR_ROW hlerp565_neon
#include "kernels/hlerp565_vector.h"
#endif
