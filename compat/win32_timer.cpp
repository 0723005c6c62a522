// Periodic timers delivered as WM_TIMER messages by one timer thread per
// manager, which sleeps until the earliest due time or a change of the list.
#include <errno.h>
#include <sys/time.h>
#include <time.h>

#include "compat/win32.h"

long TR_max_expire_delay = 0;

unsigned long CLinuxTimer::_sequence_count = 0;

namespace {

const long kNsPerSec = 1000000000L;

long nowMs() {
  struct timeval tv;
  if (gettimeofday(&tv, nullptr) != 0) return 0;
  return tv.tv_sec * 1000L + tv.tv_usec / 1000;
}

long dueMs(const CLinuxTimer* t) { return t->dueSeconds * 1000L + t->dueNanoseconds / 1000000L; }

bool dueBefore(const CLinuxTimer* a, const CLinuxTimer* b) {
  return a->dueSeconds < b->dueSeconds ||
         (a->dueSeconds == b->dueSeconds && a->dueNanoseconds <= b->dueNanoseconds);
}

void addPeriod(CLinuxTimer* t) {
  t->dueSeconds += static_cast<long>(t->periodMs / 1000);
  t->dueNanoseconds += static_cast<long>(t->periodMs % 1000) * 1000000L;
  if (t->dueNanoseconds > kNsPerSec - 1) {
    t->dueSeconds += t->dueNanoseconds / kNsPerSec;
    t->dueNanoseconds %= kNsPerSec;
  }
}

}  // namespace

// The sequence counter is not locked: timers are made by their owner threads.
CLinuxTimer::CLinuxTimer()
    : ownerThread(reinterpret_cast<CLinuxThread*>(GetCurrentThreadId())),
      sequence(++_sequence_count),
      periodMs(0),
      dueSeconds(0),
      dueNanoseconds(0),
      next(nullptr) {}

CLinuxTimer::~CLinuxTimer() {}

int CLinuxTimer::Init(unsigned long period) {
  periodMs = period == 0 ? 15 : period;
  struct timeval tv = {0, 0};
  if (gettimeofday(&tv, nullptr) != 0) tv = {0, 0};
  dueSeconds = tv.tv_sec;
  dueNanoseconds = tv.tv_usec * 1000L;
  addPeriod(this);
  return 0;
}

bool CLinuxTimer::IsValid(unsigned long s) const { return sequence == s; }

CLinuxTimerMgr::CLinuxTimerMgr()
    : thread(nullptr), alarmList(nullptr), waitSeconds(0), waitNanoseconds(0), stop(0) {
  pthread_mutex_init(&lock, nullptr);
  pthread_cond_init(&wakeup, nullptr);
}

CLinuxTimerMgr::~CLinuxTimerMgr() {
  KillTimerThread();
  pthread_cond_destroy(&wakeup);
  pthread_mutex_destroy(&lock);
}

// The callback is accepted and not used: timers are delivered by message only.
CLinuxTimer* CLinuxTimerMgr::SetTimer(unsigned int periodMs,
                                      void (*)(void*, unsigned int, unsigned int, unsigned long)) {
  CLinuxTimer* timer = new CLinuxTimer;
  if (timer->Init(periodMs) != 0 || AddTimer(timer) != 0) {
    delete timer;
    return nullptr;
  }
  return timer;
}

unsigned long CLinuxTimerMgr::KillTimer(CLinuxTimer* timer) {
  if (!timer) return 0xFFFFFFFFUL;
  if (RemoveTimer(timer) != 0) return 0xFFFFFFFEUL;
  delete timer;
  return 0;
}

int CLinuxTimerMgr::AddTimer(CLinuxTimer* timer) {
  if (!timer) return 1;
  LaunchTimerThread();
  if (pthread_mutex_lock(&lock) != 0) return 1;
  int rc = static_cast<int>(addToAlarmList(timer));
  pthread_cond_signal(&wakeup);
  pthread_mutex_unlock(&lock);
  return rc;
}

int CLinuxTimerMgr::RemoveTimer(CLinuxTimer* timer) {
  if (!timer || pthread_mutex_lock(&lock) != 0) return 1;
  int rc = static_cast<int>(removeFromAlarmList(timer));
  pthread_cond_signal(&wakeup);
  pthread_mutex_unlock(&lock);
  return rc;
}

int CLinuxTimerMgr::IsValid(const CLinuxTimer* timer, unsigned long sequence) {
  if (pthread_mutex_lock(&lock) != 0) return 0;
  const CLinuxTimer* t = alarmList;
  while (t && t != timer) t = t->next;
  int valid = t && t->IsValid(sequence) ? 1 : 0;
  pthread_cond_signal(&wakeup);
  pthread_mutex_unlock(&lock);
  return valid;
}

// A timer goes before every timer due at the same time or later, so of equal
// due times the one inserted last fires first.
unsigned long CLinuxTimerMgr::addToAlarmList(CLinuxTimer* timer) {
  if (!timer) return 0xFFFFFFFFUL;
  removeFromAlarmList(timer);
  CLinuxTimer** link = &alarmList;
  while (*link && !dueBefore(timer, *link)) link = &(*link)->next;
  timer->next = *link;
  *link = timer;
  if (alarmList != timer) return 0;
  waitSeconds = timer->dueSeconds;
  waitNanoseconds = timer->dueNanoseconds;
  return pthread_cond_signal(&wakeup) != 0 ? 1 : 0;
}

unsigned long CLinuxTimerMgr::removeFromAlarmList(CLinuxTimer* timer) {
  if (!timer) return 0xFFFFFFFFUL;
  for (CLinuxTimer** link = &alarmList; *link; link = &(*link)->next) {
    if (*link == timer) {
      *link = timer->next;
      timer->next = nullptr;
      if (link == &alarmList) pthread_cond_signal(&wakeup);
      break;
    }
  }
  return 0;
}

unsigned long CLinuxTimerMgr::LaunchTimerThread() {
  if (thread) return 0xFFFFFFFFUL;
  stop = 0;
  thread = _beginthreadex(nullptr, 0, ThreadFn, this, 0, nullptr);
  return 0;
}

unsigned long CLinuxTimerMgr::KillTimerThread() {
  if (!thread) return 0xFFFFFFFFUL;
  pthread_mutex_lock(&lock);
  stop = 1;
  pthread_cond_signal(&wakeup);
  pthread_mutex_unlock(&lock);
  WaitForSingleObject(thread, INFINITE);
  CloseHandle(thread);
  pthread_mutex_lock(&lock);
  while (alarmList) {
    CLinuxTimer* t = alarmList;
    alarmList = t->next;
    delete t;
  }
  thread = nullptr;
  pthread_cond_signal(&wakeup);
  pthread_mutex_unlock(&lock);
  return 0;
}

unsigned int CLinuxTimerMgr::ThreadFn(void* manager) {
  return manager ? static_cast<CLinuxTimerMgr*>(manager)->Thread() : 0xFFFFFFFFu;
}

void CLinuxTimerMgr::PrintAlarmList(const char*) const {
  for (const CLinuxTimer* t = alarmList; t; t = t->next) {
  }
}

unsigned int CLinuxTimerMgr::Thread() {
  if (pthread_mutex_lock(&lock) != 0) return 1;
  for (;;) {
    waitSeconds = 0;
    waitNanoseconds = 0;
    // stop is also looked at before sleeping: a kill that came before this
    // thread first took the lock has no waiter to wake.
    while (!alarmList || stop) {
      int rc = stop ? 0 : pthread_cond_wait(&wakeup, &lock);
      if (rc != 0 || stop) {
        pthread_cond_signal(&wakeup);
        pthread_mutex_unlock(&lock);
        return static_cast<unsigned int>(rc);
      }
    }
    CLinuxTimer* t = alarmList;
    if (dueMs(t) > nowMs()) {
      waitSeconds = t->dueSeconds;
      waitNanoseconds = t->dueNanoseconds;
      bool due = false;
      while (alarmList == t && t->dueSeconds == waitSeconds && t->dueNanoseconds == waitNanoseconds) {
        struct timespec deadline = {t->dueSeconds, t->dueNanoseconds};
        int rc = pthread_cond_timedwait(&wakeup, &lock, &deadline);
        if (stop) {
          pthread_cond_signal(&wakeup);
          pthread_mutex_unlock(&lock);
          return 0;
        }
        if (rc == 0 || rc == EINTR) continue;
        if (rc != ETIMEDOUT) {
          pthread_cond_signal(&wakeup);
          pthread_mutex_unlock(&lock);
          return 2;
        }
        due = alarmList == t && t->dueSeconds == waitSeconds && t->dueNanoseconds == waitNanoseconds &&
              nowMs() >= dueMs(t);
        break;
      }
      if (!due) continue;
    }
    PostThreadMessage(reinterpret_cast<HANDLE>(t->ownerThread), WM_TIMER, static_cast<UINT>(t->sequence),
                      reinterpret_cast<LONG>(t));
    long lateness = nowMs() - dueMs(t);
    if (lateness > 0 && lateness > TR_max_expire_delay) TR_max_expire_delay = lateness;
    // Periods missed while this thread was late are skipped, not fired in a burst.
    do {
      addPeriod(t);
    } while (dueMs(t) <= nowMs());
    if (addToAlarmList(t) != 0) {
      pthread_cond_signal(&wakeup);
      pthread_mutex_unlock(&lock);
      return 3;
    }
  }
}

// ---- Inert free functions -----------------------------------------------------

extern "C" UINT SetTimer(HWND, UINT, UINT, void*) { return 1; }

extern "C" BOOL KillTimer(HWND, UINT) { return 1; }

extern "C" void WEX_KillTimerThread(void) {}

extern "C" int WEX_IsValidTimer(void) { return 1; }
