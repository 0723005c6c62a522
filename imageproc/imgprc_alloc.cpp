#include "imageproc/imgprc_alloc.h"

#include <stdlib.h>

namespace {
unsigned g_failCountdown = 0;  // 0: no failure armed
unsigned long g_allocationCount = 0;
long g_liveBlocks = 0;

void* Track(void* block) {
  if (block) ++g_liveBlocks;
  return block;
}

bool FailThisOne() {
  ++g_allocationCount;
  if (g_failCountdown == 0) return false;
  return --g_failCountdown == 0;
}
}  // namespace

void* ImgPrcMalloc(size_t size) { return FailThisOne() ? nullptr : Track(malloc(size)); }

void* ImgPrcCalloc(size_t size) { return FailThisOne() ? nullptr : Track(calloc(1, size)); }

void ImgPrcFree(void* block) {
  if (!block) return;
  --g_liveBlocks;
  free(block);
}

void ImgPrcFailAllocation(unsigned n) { g_failCountdown = n; }

unsigned long ImgPrcAllocationCount(void) { return g_allocationCount; }

long ImgPrcLiveBlockCount(void) { return g_liveBlocks; }
