// Threads: exit codes, waits, the 128-slot table, suspension, priorities, the
// creator's current thread, message queues; and timers posting WM_TIMER.
#include <gtest/gtest.h>
#include <signal.h>

#include <map>

#include "compat/thread_table.h"
#include "compat/win32.h"
#include "compat_test_util.h"

using namespace compat_test;

namespace {

HANDLE g_go;  // threads below block on it until the test lets them go
std::atomic<long> g_ticks{0};
std::atomic<bool> g_quit{false};
std::atomic<pthread_t> g_self{};
std::atomic<HANDLE> g_current{INVALID_HANDLE_VALUE};

unsigned int returnSevenWhenLetGo(void*) {
  g_self = pthread_self();
  g_current = GetCurrentThread();
  WaitForSingleObject(g_go, INFINITE);
  return 7;
}

unsigned int count(void*) {
  while (!g_quit) g_ticks++, usleep(200);
  return 0;
}

bool ticking() {
  const long before = g_ticks;
  return sleepMs(30), g_ticks != before;
}

HANDLE startThread(LPTHREAD_START_ROUTINE fn, DWORD flags = 0) {
  return CreateThread(nullptr, 0, fn, nullptr, flags, nullptr);
}

sighandler_t handler(int sig) {
  struct sigaction a;
  return sigaction(sig, nullptr, &a), a.sa_handler;
}

// Runs first: no signal is claimed before a thread is started through the layer.
// The creator reads the queue of the thread it made last; that thread itself
// has no current thread.
TEST(Thread, SignalsExitCodesPrioritiesWaitsAndMessages) {
  EXPECT_TRUE(handler(SIGUSR1) == SIG_DFL && handler(SIGUSR2) == SIG_DFL);
  g_go = CreateEvent(nullptr, TRUE, FALSE, nullptr);
  DWORD id = 0, code = 0;
  HANDLE h = CreateThread(nullptr, 0, returnSevenWhenLetGo, nullptr, 0, &id);
  EXPECT_NE(handler(SIGUSR1), SIG_DFL);
  EXPECT_EQ(id, reinterpret_cast<DWORD>(h)) << "the id is the handle value";
  EXPECT_TRUE(GetExitCodeThread(h, &code) && code == 259u);
  // Real-time priorities may be refused to this process; a refusal changes nothing.
  for (int asked : {150, 20, -5}) {
    const int expected = SetThreadPriority(h, asked) ? (asked > 99 ? 99 : asked < 0 ? 0 : asked) : 0;
    EXPECT_EQ(GetThreadPriority(h), expected) << asked;
    SetThreadPriority(h, 0);
  }
  EXPECT_EQ(GetCurrentThread(), h);
  MSG msg = {};
  EXPECT_EQ(PeekMessage(&msg, nullptr, 0, 0, PM_REMOVE), FALSE) << "empty queue";
  for (UINT i = 0; i < 1005; i++)
    ASSERT_EQ(PostThreadMessage(h, WM_TIMER + (i == 0), i, -long(i)), TRUE) << i;
  EXPECT_EQ(PostThreadMessage(h, 1, 0, 0) | PostThreadMessage(nullptr, 1, 0, 0), FALSE) << "1005 queued";
  ASSERT_EQ(PeekMessage(&msg, nullptr, 0, 0, PM_NOREMOVE), TRUE);
  EXPECT_EQ(msg.message, UINT(WM_TIMER + 1));
  for (UINT i = 0; i < 1005; i++) {
    ASSERT_EQ(i % 2 ? GetMessage(&msg, nullptr, 0, 0) : PeekMessage(&msg, nullptr, 0, 0, PM_REMOVE), TRUE);
    ASSERT_TRUE(msg.message == UINT(WM_TIMER + (i == 0)) && msg.wParam == i && msg.lParam == -long(i)) << i;
  }
  const long t0 = wallMs();
  EXPECT_EQ(WaitForSingleObject(h, 30), WAIT_TIMEOUT);
  EXPECT_GE(wallMs() - t0, 29);
  EXPECT_EQ(TerminateThread(h, 1), TRUE) << "and the thread keeps running";
  SetEvent(g_go);
  EXPECT_EQ(WaitForSingleObject(h, 5000), WAIT_OBJECT_0);
  EXPECT_EQ(WaitForSingleObject(h, 0), WAIT_OBJECT_0) << "a finished thread is reported at once";
  EXPECT_EQ(g_current.load(), nullptr);
  EXPECT_TRUE(GetExitCodeThread(h, &code) && code == 7u);
  EXPECT_EQ(GetExitCodeThread(h, nullptr), FALSE);
  EXPECT_EQ(WaitForSingleObject(h, INFINITE), WAIT_OBJECT_0);
  EXPECT_EQ(WaitForSingleObject(h, INFINITE), WAIT_FAILED) << "a second join fails";
  CloseHandle(h);

  h = startThread([](void*) -> unsigned { ExitThread(3); });
  EXPECT_EQ(WaitForSingleObject(h, INFINITE), WAIT_OBJECT_0);
  EXPECT_TRUE(GetExitCodeThread(h, &code) && code == 259u) << "ExitThread stores no exit code";
  CloseHandle(h);

  unsigned long tid[2] = {0, 0};
  HANDLE outside[2] = {
      _beginthread(returnSevenWhenLetGo, 0, nullptr),
      _beginthreadex(nullptr, 0, returnSevenWhenLetGo, nullptr, 0, reinterpret_cast<unsigned*>(tid))};
  for (HANDLE o : outside) {
    EXPECT_EQ(GetExitCodeThread(o, &code) | TerminateThread(o, 0) | SetThreadPriority(o, 0), FALSE)
        << "not in the table";
    EXPECT_EQ(SuspendThread(o), 0xFFFFFFFFUL);
    EXPECT_EQ(WaitForSingleObject(o, INFINITE), WAIT_OBJECT_0);
    CloseHandle(o);
  }
  EXPECT_TRUE(pthread_equal(static_cast<pthread_t>(tid[0]), g_self)) << "_beginthreadex stores the thread id";
  CloseHandle(g_go);
}

// Started suspended; a thread started running is what every other test uses.
TEST(Thread, SuspendAndResumeKeepNoCount) {
  HANDLE h = startThread(count, CREATE_SUSPENDED);
  EXPECT_FALSE(ticking());
  // A resume sent before the suspension takes hold is lost: repeat it.
  EXPECT_TRUE(waitUntil([&] { return ResumeThread(h) == 1 && ticking(); }));
  EXPECT_EQ(SuspendThread(h), 1u);
  ASSERT_TRUE(waitUntil([] { return !ticking(); }));
  EXPECT_EQ(SuspendThread(h), 1u) << "a second suspension while suspended";
  EXPECT_EQ(ResumeThread(h), 1u);
  EXPECT_TRUE(waitUntil(ticking, 5000)) << "one resume ends two suspensions";
  g_quit = true;
  WaitForSingleObject(h, INFINITE);
  CloseHandle(h);
}

// One child fills the table, then has the last thread it made (its current
// thread) read a posted message and WM_QUIT, which ends the process with status 2.
TEST(Thread, ChildProcessTableLimitAndQuitMessage) {
  ChildResult r = runInChild([] {
    int made = 0;
    for (CLinuxThread* slot : gAllThreads) made += slot != nullptr;
    HANDLE last = nullptr;
    for (HANDLE h; (h = startThread([](void*) { return pause(), 0u; })) != INVALID_HANDLE_VALUE; last = h)
      if (!h || ++made > 200) return 1;
    if (made != 128) return 3;
    PostThreadMessage(last, 0x400, 0, 0);
    PostThreadMessage(last, WM_QUIT, 0, 0);
    MSG msg;
    GetMessage(&msg, nullptr, 0, 0);
    if (msg.message != 0x400) return 4;
    GetMessage(&msg, nullptr, 0, 0);
    return 5;
  });
  EXPECT_EQ(r.status, 2);
  EXPECT_EQ(r.out, "thread full \n");
}

// Timers post to the creator's current thread, the thread it made last: an
// idle owner thread started after the timer thread. The test reads its queue.
struct Timers : ::testing::Test {
  CLinuxTimerMgr mgr;
  HANDLE go = CreateEvent(nullptr, TRUE, FALSE, nullptr);
  HANDLE owner = nullptr;
  static unsigned waitFor(void* ev) { return WaitForSingleObject(static_cast<HANDLE>(ev), INFINITE); }
  void SetUp() override {
    ASSERT_EQ(mgr.LaunchTimerThread(), 0u);
    owner = CreateThread(nullptr, 0, waitFor, go, 0, nullptr);
  }
  void TearDown() override {
    mgr.KillTimerThread();
    SetEvent(go);
    WaitForSingleObject(owner, INFINITE);
    CloseHandle(owner);
    CloseHandle(go);
  }
  CLinuxTimer* next() {
    MSG msg;
    GetMessage(&msg, nullptr, 0, 0);
    EXPECT_EQ(msg.message, UINT(WM_TIMER));
    CLinuxTimer* t = reinterpret_cast<CLinuxTimer*>(msg.lParam);
    EXPECT_EQ(msg.wParam, UINT(t->sequence));
    return t;
  }
  static long dueMs(const CLinuxTimer* t) { return t->dueSeconds * 1000 + t->dueNanoseconds / 1000000; }
};

TEST_F(Timers, PeriodsFireInDueTimeOrderAndEqualDueTimesTheLaterInsertedFirst) {
  CLinuxTimer* slow = mgr.SetTimer(50, nullptr);
  CLinuxTimer* mid = mgr.SetTimer(30, nullptr);
  CLinuxTimer* fast = mgr.SetTimer(0, nullptr);
  EXPECT_EQ(fast->periodMs, 15u) << "0 means 15 ms";
  EXPECT_EQ(mid->sequence, slow->sequence + 1);
  std::vector<CLinuxTimer*> order;
  std::map<CLinuxTimer*, int> fired;
  const long t0 = wallMs();
  while (fired[slow] < 4)
    if (CLinuxTimer* t = next(); !fired[t]++) order.push_back(t);
  const long elapsed = wallMs() - t0;
  EXPECT_EQ(order, (std::vector<CLinuxTimer*>{fast, mid, slow})) << "first firings follow the due times";
  EXPECT_GE(elapsed, 4 * 50 - 5);
  // Late wake-ups skip periods, so counts are at most what the time allows.
  EXPECT_LE(fired[fast], elapsed / 15 + 1);
  for (CLinuxTimer* t : {slow, mid, fast}) mgr.KillTimer(t);

  CLinuxTimer *first = new CLinuxTimer, *second = new CLinuxTimer;
  EXPECT_EQ(first->Init(40) + second->Init(40), 0);
  second->dueSeconds = first->dueSeconds;
  second->dueNanoseconds = first->dueNanoseconds;
  mgr.AddTimer(first);
  mgr.AddTimer(second);
  for (MSG msg; PeekMessage(&msg, nullptr, 0, 0, PM_REMOVE);) continue;
  EXPECT_EQ(next(), second);
  EXPECT_EQ(next(), first);
}

TEST_F(Timers, LateThreadFiresOnceAndSkipsMissedPeriods) {
  CLinuxTimer* t = mgr.SetTimer(50, nullptr);
  next();
  pthread_mutex_lock(&mgr.lock);  // holds the timer thread back for six periods
  const long due = dueMs(t);
  sleepMs(300);
  const long unlockedAt = wallMs();
  pthread_mutex_unlock(&mgr.lock);
  EXPECT_EQ(next(), t);
  const long readAt = wallMs();
  pthread_mutex_lock(&mgr.lock);  // nothing is posted while it is held
  const long nextDue = dueMs(t);
  MSG msg;
  EXPECT_TRUE(wallMs() >= nextDue || !PeekMessage(&msg, nullptr, 0, 0, PM_NOREMOVE))
      << "missed periods are not fired";
  pthread_mutex_unlock(&mgr.lock);
  EXPECT_GT(nextDue, unlockedAt);
  EXPECT_LE(nextDue, readAt + 50);
  EXPECT_EQ((nextDue - due) % 50, 0) << "the schedule keeps its phase";
  EXPECT_GE(__atomic_load_n(&TR_max_expire_delay, __ATOMIC_RELAXED), unlockedAt - due);
}

TEST_F(Timers, KillValidityAndRelaunch) {
  EXPECT_EQ(mgr.KillTimer(nullptr), 0xFFFFFFFFUL);
  CLinuxTimer* t = mgr.SetTimer(15, nullptr);
  const unsigned long seq = t->sequence;
  EXPECT_EQ(next(), t);
  EXPECT_EQ(mgr.IsValid(t, seq) * 2 + mgr.IsValid(t, seq + 1), 2);
  EXPECT_EQ(mgr.KillTimer(t), 0u);
  EXPECT_EQ(mgr.IsValid(t, seq), 0) << "and it fires no more (see the first timer test)";

  EXPECT_EQ(mgr.LaunchTimerThread(), 0xFFFFFFFFUL) << "already running";
  EXPECT_EQ(mgr.KillTimerThread(), 0u);
  EXPECT_EQ(mgr.KillTimerThread(), 0xFFFFFFFFUL);
  CLinuxTimer* again = mgr.SetTimer(20, nullptr);
  // The next timer starts a new timer thread, which becomes the creator's
  // current thread; the timer, made just before, still posts to the owner.
  EXPECT_EQ(GetCurrentThread(), mgr.thread);
  unsigned int message = 0, wParam = 0;
  long lParam = 0;
  static_cast<CLinuxThread*>(owner)->GetMessage(&message, &wParam, &lParam);
  EXPECT_EQ(lParam, reinterpret_cast<long>(again));

  EXPECT_EQ(SetTimer(nullptr, 1, 10, nullptr) + KillTimer(nullptr, 1), 2u) << "the free functions are inert";
  WEX_KillTimerThread();
  EXPECT_EQ(WEX_IsValidTimer(), 1);
}

}  // namespace
