#include "presenter/scrim_memory.h"

#include <stdint.h>
#include <stdlib.h>

void* scrim_malloc(unsigned int size, unsigned int align) {
  if (align == 0) align = 4;
  unsigned char* p = static_cast<unsigned char*>(calloc(static_cast<size_t>(size) + align, 1));
  if (p == nullptr) return nullptr;
  // A block that is already aligned still moves by a full `align`, so there is
  // always a byte below the result to hold the shift.
  unsigned int shift = align - static_cast<unsigned int>(reinterpret_cast<uintptr_t>(p) & (align - 1));
  p[shift - 1] = static_cast<unsigned char>(shift);
  return p + shift;
}

void scrim_free(void* p) {
  unsigned char* q = static_cast<unsigned char*>(p);
  free(q - q[-1]);
}
