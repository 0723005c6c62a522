// Mode 7's interior blocks for NEON, two blocks a step.
#if defined(__aarch64__)
#define X_VECTOR_BYTES 16
#define X_VECTOR_ROW x_interior_blocks_neon
#include "deinterlace/filter_x_vector.h"
#endif
