// The bounded ring queue on the layer's own mutex and semaphores.
#include <string.h>

#include "compat/win32.h"

CLNrwqueue::CLNrwqueue(unsigned long cap, unsigned long size)
    : mutex(CreateMutex(nullptr, FALSE, nullptr)),
      itemsAvailable(CreateSemaphore(nullptr, 0, static_cast<LONG>(cap) + 1, nullptr)),
      spaceAvailable(CreateSemaphore(nullptr, static_cast<LONG>(cap), static_cast<LONG>(cap), nullptr)),
      buffer(new unsigned char[cap * size]),
      capacity(cap),
      itemSize(size),
      count(0),
      readIndex(0),
      writeIndex(0),
      endOfFile(0) {}

CLNrwqueue::~CLNrwqueue() {
  delete[] buffer;
  CloseHandle(mutex);
  CloseHandle(itemsAvailable);
  CloseHandle(spaceAvailable);
}

void* CLNrwqueue::slot(unsigned long index) const { return buffer + index * itemSize; }

unsigned long CLNrwqueue::next(unsigned long index) const { return index + 1 == capacity ? 0 : index + 1; }

// Returns holding the mutex and one unit of the semaphore.
void CLNrwqueue::waitFor(HANDLE semaphore) {
  HANDLE both[2] = {mutex, semaphore};
  WaitForMultipleObjects(2, both, TRUE, INFINITE);
}

// After an end of file the unit that announced it stands for the next item.
void CLNrwqueue::announceWrite() {
  if (endOfFile) {
    endOfFile = 0;
  } else {
    ReleaseSemaphore(itemsAvailable, 1, nullptr);
  }
}

// A null source stores nothing but still wakes a reader, which finds the queue
// empty as at end of file; the space unit is not given back. Kept so.
int CLNrwqueue::WriteItem(void* src) {
  waitFor(spaceAvailable);
  if (src) {
    memcpy(slot(writeIndex), src, itemSize);
    writeIndex = next(writeIndex);
    count++;
  }
  announceWrite();
  ReleaseMutex(mutex);
  return 1;
}

int CLNrwqueue::ReadItem(void* dst) {
  waitFor(itemsAvailable);
  if (count == 0) {
    // End of file: pass the unit on so the next blocked reader wakes too.
    ReleaseSemaphore(itemsAvailable, 1, nullptr);
    ReleaseMutex(mutex);
    return 0;
  }
  if (dst) memcpy(dst, slot(readIndex), itemSize);
  readIndex = next(readIndex);
  count--;
  ReleaseSemaphore(spaceAvailable, 1, nullptr);
  ReleaseMutex(mutex);
  return 1;
}

void* CLNrwqueue::GetWriteItem() {
  waitFor(spaceAvailable);
  void* item = slot(writeIndex);
  ReleaseMutex(mutex);
  return item;
}

int CLNrwqueue::CommitWriteItem() {
  WaitForSingleObject(mutex, INFINITE);
  writeIndex = next(writeIndex);
  count++;
  announceWrite();
  return ReleaseMutex(mutex);
}

int CLNrwqueue::CancelWriteItem() { return ReleaseSemaphore(spaceAvailable, 1, nullptr); }

void* CLNrwqueue::GetReadItem() {
  waitFor(itemsAvailable);
  void* item = nullptr;
  if (count > 0) {
    item = slot(readIndex);
  } else {
    ReleaseSemaphore(itemsAvailable, 1, nullptr);
  }
  ReleaseMutex(mutex);
  return item;
}

int CLNrwqueue::CommitReadItem() {
  WaitForSingleObject(mutex, INFINITE);
  readIndex = next(readIndex);
  count--;
  ReleaseSemaphore(spaceAvailable, 1, nullptr);
  return ReleaseMutex(mutex);
}

int CLNrwqueue::CancelReadItem() { return ReleaseSemaphore(itemsAvailable, 1, nullptr); }

int CLNrwqueue::EndOfFile() {
  WaitForSingleObject(mutex, INFINITE);
  if (!endOfFile) {
    endOfFile = 1;
    ReleaseSemaphore(itemsAvailable, 1, nullptr);
  }
  ReleaseMutex(mutex);
  return 0;
}

// The end-of-file flag survives a flush.
int CLNrwqueue::Flush(void (*callback)(void*)) {
  WaitForSingleObject(mutex, INFINITE);
  while (count > 0) {
    WaitForSingleObject(itemsAvailable, 0);
    if (callback) {
      callback(slot(readIndex));
      readIndex = next(readIndex);
    }
    count--;
    ReleaseSemaphore(spaceAvailable, 1, nullptr);
  }
  readIndex = 0;
  writeIndex = 0;
  ReleaseMutex(mutex);
  return 0;
}

bool CLNrwqueue::SearchItem(void* dst, ISearchCriteria* criteria, bool remove) {
  WaitForSingleObject(mutex, INFINITE);
  if (count == 0) {
    ReleaseMutex(mutex);
    return false;
  }
  unsigned long chosen = readIndex;
  if (criteria) {
    unsigned long k = 0;
    for (; k < count; k++) {
      chosen = readIndex + k;
      if (chosen >= capacity) chosen -= capacity;
      if (criteria->Match(slot(chosen))) break;
    }
    if (k == count) {
      ReleaseMutex(mutex);
      return false;
    }
  }
  if (dst) memcpy(dst, slot(chosen), itemSize);
  if (remove) {
    WaitForSingleObject(itemsAvailable, 0);
    ReleaseSemaphore(spaceAvailable, 1, nullptr);
    count--;
    // Close the gap by moving the older items one slot on, towards the chosen one.
    if (count > 0 && chosen != readIndex) {
      if (chosen > readIndex) {
        memmove(slot(readIndex + 1), slot(readIndex), (chosen - readIndex) * itemSize);
      } else {
        memmove(slot(1), slot(0), chosen * itemSize);
        memcpy(slot(0), slot(capacity - 1), itemSize);
        if (readIndex < capacity - 1) {
          memmove(slot(readIndex + 1), slot(readIndex), (capacity - 1 - readIndex) * itemSize);
        }
      }
    }
    readIndex = next(readIndex);
  }
  ReleaseMutex(mutex);
  return true;
}

void* CLNrwqueue::PeekItem(unsigned long n) {
  WaitForSingleObject(mutex, INFINITE);
  if (count <= n) {
    ReleaseMutex(mutex);
    return nullptr;
  }
  unsigned long index = readIndex + n;
  if (index >= capacity) index -= capacity;
  ReleaseMutex(mutex);
  return slot(index);
}

// Read without the lock, as callers always have.
unsigned long CLNrwqueue::GetCount() { return count; }

unsigned long CLNrwqueue::GetMax() { return capacity; }
