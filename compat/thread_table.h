// The process-wide table of thread handles made by CreateThread, shared by the
// thread functions and CloseHandle (which clears a closed thread's slot).
#pragma once

#include "compat/win32.h"

class CLinuxThread;

enum { kThreadTableSlots = 128 };

extern CLinuxThread* gAllThreads[kThreadTableSlots];
extern CRITICAL_SECTION gCSAllThread;
extern bool gCSInited;

// Initialises gCSAllThread on first use. The flag is not itself guarded: the
// first CreateThread or CloseHandle must not race with another.
void scrimInitThreadTableLock();

// Whether h is one of the table's slots; read without the lock.
bool scrimIsThreadTableHandle(HANDLE h);
