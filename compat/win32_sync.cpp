// The handle base class: the signalled flag with its lock and condition
// variable, the single-object wait and the waits on several objects.
#include <errno.h>
#include <sched.h>
#include <sys/time.h>
#include <time.h>
#include <unistd.h>

#include "compat/win32.h"

const char g_scrimSyncObjectType[1] = {0};

CLinuxSyncObject::CLinuxSyncObject() : signaled(false) {
  pthread_mutexattr_t attr;
  pthread_mutexattr_init(&attr);
  pthread_mutexattr_settype(&attr, PTHREAD_MUTEX_RECURSIVE);
  pthread_mutex_init(&m_lock, &attr);
  pthread_mutexattr_destroy(&attr);
  pthread_cond_init(&m_cond, nullptr);
}

CLinuxSyncObject::~CLinuxSyncObject() {
  pthread_cond_destroy(&m_cond);
  pthread_mutex_destroy(&m_lock);
}

bool CLinuxSyncObject::isSignaled() { return signaled; }

int CLinuxSyncObject::Release() { return 0; }

int CLinuxSyncObject::SetSignaled(bool value, bool lock) {
  if (lock) {
    int rc = pthread_mutex_lock(&m_lock);
    if (rc != 0) return rc;
  }
  bool wasSignaled = signaled;
  signaled = value;
  if (!wasSignaled && value) {
    int rc = pthread_cond_broadcast(&m_cond);
    if (rc != 0) {
      if (lock) pthread_mutex_unlock(&m_lock);
      return rc;
    }
  }
  return lock ? pthread_mutex_unlock(&m_lock) : 0;
}

unsigned long CLinuxSyncObject::WaitForSignal(unsigned long timeoutMs) {
  struct timespec deadline = {0, 0};
  if (timeoutMs != INFINITE) {
    struct timeval now;
    if (gettimeofday(&now, nullptr) != 0) return WAIT_FAILED;
    deadline.tv_sec = now.tv_sec + static_cast<time_t>(timeoutMs / 1000);
    long ns = static_cast<long>(timeoutMs % 1000) * 1000000 + now.tv_usec * 1000;
    // A sum of exactly one second is left as it is: the timed wait then
    // refuses the deadline and the wait fails. Callers have always seen that.
    if (ns > 1000000000L) {
      deadline.tv_sec += ns / 1000000000L;
      ns %= 1000000000L;
    }
    deadline.tv_nsec = ns;
  }
  if (pthread_mutex_lock(&m_lock) != 0) return WAIT_FAILED;
  int interruptedPasses = 0;
  while (!isSignaled()) {
    errno = 0;
    if (timeoutMs == 0) {
      if (isSignaled()) break;
      pthread_mutex_unlock(&m_lock);
      return WAIT_TIMEOUT;
    }
    int rc = timeoutMs == INFINITE ? pthread_cond_wait(&m_cond, &m_lock)
                                   : pthread_cond_timedwait(&m_cond, &m_lock, &deadline);
    if (rc == 0 && errno != EINTR) continue;  // the loop test looks again
    if (rc == 0 || rc == EINTR) {
      if (++interruptedPasses % 25 == 0) {
        pthread_mutex_unlock(&m_lock);
        sched_yield();
        pthread_mutex_lock(&m_lock);
      }
      continue;
    }
    if (isSignaled()) break;
    pthread_mutex_unlock(&m_lock);
    return rc == ETIMEDOUT ? WAIT_TIMEOUT : WAIT_FAILED;
  }
  int acquired = WaitAction();
  if (pthread_mutex_unlock(&m_lock) != 0) return WAIT_FAILED;
  return acquired == 0 ? WAIT_OBJECT_0 : WAIT_FAILED;
}

// ---- Waits on several objects ---------------------------------------------------

pthread_mutex_t CLinuxMultiWait::m_mutex = PTHREAD_MUTEX_INITIALIZER;
int CLinuxMultiWait::m_waitcount = 0;
CLinuxMultiWait* CLinuxMultiWait::m_waiters[20] = {};

CLinuxMultiWait::CLinuxMultiWait(unsigned long n, void* const* handles)
    : count(n), objects(handles), signaledIndex(0) {}

CLinuxMultiWait::~CLinuxMultiWait() { unregister(); }

const void* CLinuxMultiWait::getType() const { return g_scrimSyncObjectType; }

int CLinuxMultiWait::Init() {
  pthread_mutex_lock(&m_mutex);
  for (CLinuxMultiWait*& slot : m_waiters) {
    if (!slot) {
      slot = this;
      m_waitcount++;
      pthread_mutex_unlock(&m_mutex);
      return 0;
    }
  }
  pthread_mutex_unlock(&m_mutex);
  return -1;
}

bool CLinuxMultiWait::unregister() {
  bool found = false;
  pthread_mutex_lock(&m_mutex);
  for (CLinuxMultiWait*& slot : m_waiters) {
    if (slot == this) {
      slot = nullptr;
      m_waitcount--;
      found = true;
      break;
    }
  }
  pthread_mutex_unlock(&m_mutex);
  return found;
}

int CLinuxMultiWait::WaitAction() { return unregister() ? 0 : -1; }

unsigned long CLinuxMultiWait::getSignaled() const { return signaledIndex; }

// The lowest index whose object can be acquired right now wins.
bool CLinuxMultiWait::isSignaled() {
  for (unsigned long i = 0; i < count; i++) {
    CLinuxSyncObject* object = static_cast<CLinuxSyncObject*>(objects[i]);
    if (object && object->WaitForSignal(0) == WAIT_OBJECT_0) {
      signaledIndex = i;
      return true;
    }
  }
  return false;
}

// Polls the members every 10 ms. The time test comes before each poll, so a
// time-out of 0 looks at nothing; a time-out answers 0xFFFFFFFF.
unsigned long CLinuxMultiWait::WaitForSignal(unsigned long timeoutMs) {
  const DWORD start = timeGetTime();
  if (timeoutMs == INFINITE) {
    while (!isSignaled()) usleep(10000);
    return 0;
  }
  while (start + timeoutMs > timeGetTime()) {
    if (isSignaled()) return 0;
    usleep(10000);
  }
  return 0xFFFFFFFFUL;
}

int CLinuxMultiWait::Signal(CLinuxSyncObject* object) {
  if (m_waitcount == 0) return 1;  // unlocked fast exit
  int rc = pthread_mutex_lock(&m_mutex);
  if (rc != 0) return rc;
  bool matched = false;
  for (CLinuxMultiWait* waiter : m_waiters) {
    if (!waiter || waiter->count == 0) continue;
    for (unsigned long i = 0; i < waiter->count; i++) {
      if (waiter->objects[i] == object) {
        waiter->SetSignaled(true, true);
        matched = true;
      }
    }
  }
  pthread_mutex_unlock(&m_mutex);
  return matched ? 0 : 2;
}

static unsigned long waitForAny(unsigned long count, void* const* handles, unsigned long timeoutMs) {
  CLinuxMultiWait waiter(count, handles);
  if (waiter.Init() != 0) return WAIT_FAILED;  // all 20 waiter slots are taken
  unsigned long rc = waiter.WaitForSignal(timeoutMs);
  return rc == 0 ? WAIT_OBJECT_0 + waiter.getSignaled() : rc;
}

// Blocks on one object (the pivot), then tries the others without waiting;
// on the first refusal everything taken is given back and the refusing object
// becomes the pivot, so all objects are acquired together or none stays held.
static unsigned long waitForAll(unsigned long count, void* const* handles, unsigned long timeoutMs) {
  if (count == 0) return WAIT_FAILED;
  auto object = [handles](unsigned long i) { return static_cast<CLinuxSyncObject*>(handles[i]); };
  unsigned long pivot = 0;
  unsigned long remaining = timeoutMs;
  for (;;) {
    const DWORD t0 = timeGetTime();
    unsigned long rc = object(pivot)->WaitForSignal(remaining);
    if (rc != 0) return rc;
    unsigned long failed = count;
    for (unsigned long j = 0; j < count; j++) {
      if (j != pivot && object(j)->WaitForSignal(0) != 0) {
        failed = j;
        break;
      }
    }
    if (failed == count) return WAIT_OBJECT_0;
    for (unsigned long j = 0; j < failed; j++) {
      if (j != pivot) object(j)->Release();
    }
    object(pivot)->Release();
    pivot = failed;
    if (timeoutMs != INFINITE) {
      const DWORD elapsed = timeGetTime() - t0;
      if (elapsed >= remaining) return WAIT_TIMEOUT;
      remaining -= elapsed;
    }
  }
}

unsigned long CLinuxSyncObject::WaitForMultipleObjects(unsigned long count, void* const* handles, int waitAll,
                                                       unsigned long timeoutMs) {
  return waitAll ? waitForAll(count, handles, timeoutMs) : waitForAny(count, handles, timeoutMs);
}
