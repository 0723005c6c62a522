#include "presenter/stream_clock.h"

#include <sys/time.h>
#include <unistd.h>

int64_t timeval_GetUs() {
  struct timeval tv;
  gettimeofday(&tv, nullptr);
  return static_cast<int64_t>(tv.tv_sec) * 1000000 + tv.tv_usec;
}

uint32_t ORUGetTime() {
  struct timeval tv;
  gettimeofday(&tv, nullptr);
  return static_cast<uint32_t>(static_cast<int64_t>(tv.tv_sec) * 1000 + tv.tv_usec / 1000);
}

void vsync_sleep(long us, long) {
  if (us < 1) return;
  usleep(static_cast<useconds_t>(static_cast<uint32_t>(us)));
}
