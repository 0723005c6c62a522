// The handle base class: the signalled flag with its lock and condition
// variable, the single-object wait and the waits on several objects.
#include <errno.h>
#include <sched.h>
#include <sys/time.h>
#include <time.h>

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
