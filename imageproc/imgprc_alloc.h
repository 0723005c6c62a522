// Every block the image processor owns is allocated and freed through these
// functions, so that tests can count allocations (a frame call must make none),
// see that every failure path frees what it took, and make a chosen allocation
// fail to reach the out-of-memory paths.
#pragma once

#include <stddef.h>

// malloc, or null when an injected failure is due.
void* ImgPrcMalloc(size_t size);
// Zero-filled; null on failure as above.
void* ImgPrcCalloc(size_t size);
void ImgPrcFree(void* block);

// Test hooks (not thread-safe; tests use one thread).
// The n-th allocation from now fails (1: the next one), the others succeed; 0 disarms.
void ImgPrcFailAllocation(unsigned n);
// Allocations attempted since the process started.
unsigned long ImgPrcAllocationCount(void);
// Blocks allocated and not yet freed.
long ImgPrcLiveBlockCount(void);
