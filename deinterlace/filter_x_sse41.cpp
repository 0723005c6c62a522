// Mode 7's interior blocks for SSE4.1, two blocks a step (built with -msse4.1).
#if defined(__x86_64__)
#define X_VECTOR_BYTES 16
#define X_VECTOR_ROW x_interior_blocks_sse41
#include "deinterlace/filter_x_vector.h"
#endif
