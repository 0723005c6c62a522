// The table of thread handles made by CreateThread and the lock guarding it.
#include "compat/thread_table.h"

CLinuxThread* gAllThreads[kThreadTableSlots] = {};
CRITICAL_SECTION gCSAllThread;
bool gCSInited = false;

void scrimInitThreadTableLock() {
  if (!gCSInited) {
    gCSInited = true;
    InitializeCriticalSection(&gCSAllThread);
  }
}

bool scrimIsThreadTableHandle(HANDLE h) {
  for (CLinuxThread* slot : gAllThreads) {
    if (static_cast<void*>(slot) == static_cast<void*>(h)) return true;
  }
  return false;
}
