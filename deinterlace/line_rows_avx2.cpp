// The five-tap filter's rows for AVX2 (built with -mavx2).
#if defined(__x86_64__)
#define TAPS_BYTES 32
#define TAPS_ROW deint_taps_avx2
#define TAPS_INPLACE deint_taps_inplace_avx2
#include "deinterlace/line_rows_vector.h"
#endif
