// Zeroed, aligned allocations that remember their own offset: the byte just
// below the returned address holds how far it was moved from the allocation.
#pragma once

// align 0 means 4; align must be a power of two no greater than 128. Null on failure.
void* scrim_malloc(unsigned int size, unsigned int align);
// p must come from scrim_malloc and must not be null.
void scrim_free(void* p);
