// Timers: WM_TIMER messages in due-time order from one timer thread, skipped
// periods after a late wake-up, kill and validity, stopping and relaunching.
#include <gtest/gtest.h>
#include <sys/time.h>

#include <map>
#include <vector>

#include "compat/win32.h"
#include "compat_test_util.h"

using namespace compat_test;

namespace {

long wallMs() {
  struct timeval tv;
  gettimeofday(&tv, nullptr);
  return tv.tv_sec * 1000L + tv.tv_usec / 1000;
}

// Timers post to the creator's current thread, which is the thread it made
// last: the timer thread is launched first, then an idle owner thread whose
// queue this test reads with GetMessage.
struct TimerFixture : ::testing::Test {
  CLinuxTimerMgr mgr;
  HANDLE go = CreateEvent(nullptr, TRUE, FALSE, nullptr);
  HANDLE owner = nullptr;
  void SetUp() override {
    ASSERT_EQ(mgr.LaunchTimerThread(), 0u);
    owner = CreateThread(
        nullptr, 0, [](void* ev) { return unsigned(WaitForSingleObject(static_cast<HANDLE>(ev), INFINITE)); },
        go, 0, nullptr);
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
};

TEST_F(TimerFixture, PeriodsFireInDueTimeOrder) {
  CLinuxTimer* slow = mgr.SetTimer(50, nullptr);
  CLinuxTimer* mid = mgr.SetTimer(30, nullptr);
  CLinuxTimer* fast = mgr.SetTimer(0, nullptr);
  EXPECT_EQ(fast->periodMs, 15u) << "0 means 15 ms";
  EXPECT_EQ(mid->sequence, slow->sequence + 1);
  std::vector<CLinuxTimer*> order;
  std::map<CLinuxTimer*, int> fired;
  const long t0 = wallMs();
  while (fired[slow] < 4) {
    CLinuxTimer* t = next();
    if (!fired[t]++) order.push_back(t);
  }
  const long elapsed = wallMs() - t0;
  EXPECT_EQ(order, (std::vector<CLinuxTimer*>{fast, mid, slow})) << "first firings follow the due times";
  EXPECT_GE(elapsed, 4 * 50 - 5);
  // Late wake-ups skip periods, so counts are at most what the time allows.
  EXPECT_LE(fired[fast], elapsed / 15 + 1);
  EXPECT_LE(fired[mid], elapsed / 30 + 1);
  EXPECT_GE(fired[fast], fired[mid]);
}

TEST_F(TimerFixture, EqualDueTimesFireTheLaterInsertedFirst) {
  CLinuxTimer* first = new CLinuxTimer;
  CLinuxTimer* second = new CLinuxTimer;
  first->Init(40);
  second->Init(40);
  second->dueSeconds = first->dueSeconds;
  second->dueNanoseconds = first->dueNanoseconds;
  mgr.AddTimer(first);
  mgr.AddTimer(second);
  EXPECT_EQ(next(), second);
  EXPECT_EQ(next(), first);
}

TEST_F(TimerFixture, LateThreadFiresOnceAndSkipsMissedPeriods) {
  CLinuxTimer* t = mgr.SetTimer(50, nullptr);
  next();
  pthread_mutex_lock(&mgr.lock);  // holds the timer thread back for six periods
  const long due = t->dueSeconds * 1000 + t->dueNanoseconds / 1000000;
  std::this_thread::sleep_for(std::chrono::milliseconds(300));
  const long unlockedAt = wallMs();
  pthread_mutex_unlock(&mgr.lock);
  EXPECT_EQ(next(), t);
  const long readAt = wallMs();
  pthread_mutex_lock(&mgr.lock);  // nothing is posted while it is held
  const long nextDue = t->dueSeconds * 1000 + t->dueNanoseconds / 1000000;
  MSG burst;
  if (wallMs() < nextDue) {
    EXPECT_EQ(PeekMessage(&burst, nullptr, 0, 0, PM_NOREMOVE), FALSE) << "missed periods are not fired";
  }
  pthread_mutex_unlock(&mgr.lock);
  EXPECT_GT(nextDue, unlockedAt);
  EXPECT_LE(nextDue, readAt + 50);
  EXPECT_EQ((nextDue - due) % 50, 0) << "the schedule keeps its phase";
  EXPECT_GE(__atomic_load_n(&TR_max_expire_delay, __ATOMIC_RELAXED), unlockedAt - due);
}

TEST_F(TimerFixture, KillValidityAndRelaunch) {
  EXPECT_EQ(mgr.KillTimer(nullptr), 0xFFFFFFFFUL);
  CLinuxTimer* t = mgr.SetTimer(15, nullptr);
  const unsigned long seq = t->sequence;
  EXPECT_EQ(next(), t);
  EXPECT_EQ(mgr.IsValid(t, seq), 1);
  EXPECT_EQ(mgr.IsValid(t, seq + 1), 0);
  EXPECT_EQ(mgr.KillTimer(t), 0u);
  EXPECT_EQ(mgr.IsValid(t, seq), 0);
  MSG msg;
  while (PeekMessage(&msg, nullptr, 0, 0, PM_REMOVE)) {
  }
  std::this_thread::sleep_for(std::chrono::milliseconds(60));
  EXPECT_EQ(PeekMessage(&msg, nullptr, 0, 0, PM_NOREMOVE), FALSE) << "no WM_TIMER after the kill";

  EXPECT_EQ(mgr.LaunchTimerThread(), 0xFFFFFFFFUL) << "already running";
  EXPECT_EQ(mgr.KillTimerThread(), 0u);
  EXPECT_EQ(mgr.KillTimerThread(), 0xFFFFFFFFUL);
  CLinuxTimer* again = mgr.SetTimer(20, nullptr);
  ASSERT_NE(mgr.thread, nullptr) << "the next timer starts a new thread";
  // Starting it made the new timer thread the creator's current thread; the
  // timer, made just before, still posts to the owner.
  EXPECT_EQ(GetCurrentThread(), mgr.thread);
  unsigned int message = 0, wParam = 0;
  long lParam = 0;
  static_cast<CLinuxThread*>(owner)->GetMessage(&message, &wParam, &lParam);
  EXPECT_EQ(lParam, reinterpret_cast<long>(again));
}

TEST(TimerFreeFunctions, AreInert) {
  EXPECT_EQ(SetTimer(nullptr, 1, 10, nullptr), 1u);
  EXPECT_EQ(KillTimer(nullptr, 1), TRUE);
  WEX_KillTimerThread();
  EXPECT_EQ(WEX_IsValidTimer(), 1);
  CLinuxTimerMgr idle;
  EXPECT_EQ(idle.KillTimerThread(), 0xFFFFFFFFUL);
}

}  // namespace
