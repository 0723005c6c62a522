// The RGB565 stretch row for SSE41, 2 output entries a step.
#if defined(__x86_64__)
#define HLERP565_VECTOR_BYTES 16
#define HLERP565_VECTOR_ROW hlerp565_sse41
#include "kernels/hlerp565_vector.h"
#endif
