// The five-tap filter's rows for SSE4.1 (built with -msse4.1).
#if defined(__x86_64__)
#define TAPS_BYTES 16
#define TAPS_ROW deint_taps_sse41
#define TAPS_INPLACE deint_taps_inplace_sse41
#include "deinterlace/line_rows_vector.h"
#endif
