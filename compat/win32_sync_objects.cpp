// Events, mutexes (with the registry of named mutexes), semaphores and the
// Win32-named functions that create, signal, wait on and close handles.
#include <errno.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>

#include "compat/thread_table.h"
#include "compat/win32.h"

static bool isValidHandle(HANDLE h) { return h != nullptr && h != INVALID_HANDLE_VALUE; }

// ---- Events -------------------------------------------------------------------

CLinuxEvent::CLinuxEvent() : manualReset(false) {}

CLinuxEvent::~CLinuxEvent() {}

const void* CLinuxEvent::getType() const { return g_scrimSyncObjectType; }

int CLinuxEvent::Init(bool manual, bool initialState) {
  manualReset = manual;
  SetSignaled(initialState, true);
  return 0;
}

int CLinuxEvent::Set() { return SetSignaled(true, true); }

int CLinuxEvent::Reset() { return SetSignaled(false, true); }

int CLinuxEvent::WaitAction() {
  if (!manualReset) signaled = false;
  return 0;
}

// Gives back the signal an auto-reset wait consumed.
int CLinuxEvent::Release() { return manualReset ? 0 : Set(); }

// ---- Mutexes ------------------------------------------------------------------

static const pthread_t kNoOwner = static_cast<pthread_t>(0xDEADBEEF);

CLinuxMutex::CLinuxMutex() : valid(false), count(0), owner(kNoOwner) {}

CLinuxMutex::~CLinuxMutex() {
  if (valid) Delete();
}

const void* CLinuxMutex::getType() const { return g_scrimSyncObjectType; }

int CLinuxMutex::Init() {
  pthread_mutexattr_t attr;
  pthread_mutexattr_init(&attr);
  pthread_mutexattr_settype(&attr, PTHREAD_MUTEX_RECURSIVE);
  int rc = pthread_mutex_init(&ownership, &attr);
  pthread_mutexattr_destroy(&attr);
  if (rc != 0) return rc;
  valid = true;
  return SetSignaled(true, true);
}

int CLinuxMutex::Delete() {
  int rc = pthread_mutex_destroy(&ownership);
  valid = false;
  return rc;
}

int CLinuxMutex::WaitAction() {
  if (pthread_mutex_trylock(&ownership) != 0) return -1;
  count++;
  signaled = false;
  owner = pthread_self();
  return 0;
}

unsigned long CLinuxMutex::WaitForSignal(unsigned long timeoutMs) {
  return valid ? CLinuxSyncObject::WaitForSignal(timeoutMs) : WAIT_FAILED;
}

// Free, or held by the caller (which may acquire it again).
bool CLinuxMutex::isSignaled() { return signaled || (count >= 1 && pthread_equal(owner, pthread_self())); }

int CLinuxMutex::Release() {
  if (!valid) return -1;
  int rc = pthread_mutex_lock(&m_lock);
  if (rc != 0) return rc;
  // Only the owner may release. The recursive mutex would refuse a stranger's
  // unlock by itself; asking first gives the same EPERM without handing a
  // foreign thread's unlock to the mutex at all.
  rc = count >= 1 && pthread_equal(owner, pthread_self()) ? pthread_mutex_unlock(&ownership) : EPERM;
  if (rc != 0 || --count != 0) {
    pthread_mutex_unlock(&m_lock);
    return rc;
  }
  owner = kNoOwner;
  rc = SetSignaled(true, false);
  pthread_mutex_unlock(&m_lock);
  return rc;
}

// ---- Semaphores ---------------------------------------------------------------

CLinuxSemaphore::CLinuxSemaphore() {}

CLinuxSemaphore::~CLinuxSemaphore() { sem_destroy(&semaphore); }

const void* CLinuxSemaphore::getType() const { return g_scrimSyncObjectType; }

// The maximum is neither stored nor enforced: callers release more than it.
int CLinuxSemaphore::Init(long initial, long /*maximum*/) {
  if (sem_init(&semaphore, 0, static_cast<unsigned>(initial)) != 0) return errno;
  SetSignaled(initial >= 1, true);
  return 0;
}

int CLinuxSemaphore::WaitAction() {
  if (sem_trywait(&semaphore) != 0) return -1;
  int value = 0;
  sem_getvalue(&semaphore, &value);
  if (value == 0) signaled = false;
  return 0;
}

int CLinuxSemaphore::Release() { return Release(1, nullptr); }

int CLinuxSemaphore::Release(long n, long* previous) {
  int rc = pthread_mutex_lock(&m_lock);
  if (rc != 0) return rc;
  if (previous) {
    int value = 0;
    sem_getvalue(&semaphore, &value);
    *previous = value;
  }
  long posted = 0;
  rc = 0;
  for (long i = 0; i < n; i++) {
    if (sem_post(&semaphore) != 0) {
      rc = errno;
      break;
    }
    posted++;
  }
  if (posted > 0) rc = SetSignaled(true, false);
  pthread_mutex_unlock(&m_lock);
  return rc;
}

// ---- Named-mutex registry -----------------------------------------------------

// No lock guards the registry or its counter. Registration pre-increments the
// counter, so slot 0 stays empty and at most 127 names are held; only the most
// recent registration is ever looked at.
namespace {
struct NamedMutex {
  HANDLE mutex;
  char* name;
};
int g_namedCount = 0;
NamedMutex* g_namedMutexes[128] = {};
}  // namespace

// ---- Win32 functions ----------------------------------------------------------

extern "C" HANDLE CreateEvent(void*, BOOL manualReset, BOOL initialState, const char*) {
  CLinuxEvent* event = new CLinuxEvent;
  event->Init(manualReset != 0, initialState != 0);
  return event;
}

extern "C" BOOL SetEvent(HANDLE h) {
  if (!isValidHandle(h)) return FALSE;
  return static_cast<CLinuxEvent*>(h)->Set() == 0 ? TRUE : FALSE;
}

extern "C" BOOL ResetEvent(HANDLE h) {
  if (!isValidHandle(h)) return FALSE;
  return static_cast<CLinuxEvent*>(h)->Reset() == 0 ? TRUE : FALSE;
}

// The initial-owner flag is ignored: the mutex is always created free.
extern "C" HANDLE CreateMutex(void*, BOOL, const char* name) {
  CLinuxMutex* mutex = new CLinuxMutex;
  if (mutex->Init() != 0) {
    delete mutex;
    return nullptr;
  }
  if (!name) return mutex;
  NamedMutex* record = static_cast<NamedMutex*>(malloc(sizeof(NamedMutex)));
  record->mutex = mutex;
  record->name = strdup(name);
  if (++g_namedCount > 127) {
    // The record is left behind, as it always was.
    g_namedCount = 0;
    puts("CreateMutex exceed the limit");
    return mutex;
  }
  g_namedMutexes[g_namedCount] = record;
  return mutex;
}

extern "C" HANDLE OpenMutex(DWORD, BOOL, const char* name) {
  if (g_namedCount == 0) return nullptr;
  NamedMutex* newest = g_namedMutexes[g_namedCount];
  if (newest && strcmp(newest->name, name) == 0) return newest->mutex;
  return nullptr;
}

// Releasing the most recently named mutex also takes its name off the registry.
extern "C" BOOL ReleaseMutex(HANDLE h) {
  if (g_namedCount != 0) {
    NamedMutex* newest = g_namedMutexes[g_namedCount];
    if (newest && newest->mutex == h) {
      free(newest->name);
      free(newest);
      g_namedMutexes[g_namedCount] = nullptr;
      g_namedCount--;
    }
  }
  if (!isValidHandle(h)) return FALSE;
  return h->Release() == 0 ? TRUE : FALSE;
}

extern "C" HANDLE CreateSemaphore(void*, LONG initial, LONG maximum, const char*) {
  CLinuxSemaphore* semaphore = new CLinuxSemaphore;
  if (semaphore->Init(initial, maximum) != 0) {
    delete semaphore;
    return nullptr;
  }
  return semaphore;
}

extern "C" BOOL ReleaseSemaphore(HANDLE h, LONG count, LONG* previous) {
  if (!isValidHandle(h)) return FALSE;
  return static_cast<CLinuxSemaphore*>(h)->Release(count, previous) == 0 ? TRUE : FALSE;
}

extern "C" DWORD WaitForSingleObject(HANDLE h, DWORD timeoutMs) {
  if (!isValidHandle(h)) return WAIT_FAILED;
  return h->WaitForSignal(timeoutMs);
}

extern "C" DWORD WaitForMultipleObjects(DWORD count, const HANDLE* handles, BOOL waitAll, DWORD timeoutMs) {
  return CLinuxSyncObject::WaitForMultipleObjects(count, reinterpret_cast<void* const*>(handles), waitAll,
                                                  timeoutMs);
}

// Destroys the object at once, whoever still holds or waits on it; a thread
// whose handle is closed is neither joined nor stopped.
extern "C" BOOL CloseHandle(HANDLE h) {
  if (!isValidHandle(h)) return FALSE;
  scrimInitThreadTableLock();
  EnterCriticalSection(&gCSAllThread);
  for (CLinuxThread*& slot : gAllThreads) {
    if (static_cast<void*>(slot) == static_cast<void*>(h)) slot = nullptr;
  }
  LeaveCriticalSection(&gCSAllThread);
  delete h;
  return TRUE;
}
