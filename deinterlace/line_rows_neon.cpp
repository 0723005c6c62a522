// The five-tap filter's rows for NEON.
#if defined(__aarch64__)
#define TAPS_BYTES 16
#define TAPS_ROW deint_taps_neon
#define TAPS_INPLACE deint_taps_inplace_neon
#include "deinterlace/line_rows_vector.h"
#endif
