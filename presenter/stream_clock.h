// Wall-clock helpers of the stream's pacing.
#pragma once

#include <stdint.h>

// gettimeofday as microseconds since the epoch.
int64_t timeval_GetUs();
// gettimeofday as milliseconds since the epoch, cut to 32 bits.
uint32_t ORUGetTime();
// Sleeps us microseconds (the low 32 bits handed to usleep); nothing below 1.
// The second argument is not used.
void vsync_sleep(long us, long unused);
