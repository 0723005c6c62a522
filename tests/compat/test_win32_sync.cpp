// Events, mutexes, the named-mutex registry, semaphores and the waits on one
// or several handles, with real threads where a wake-up is what is checked.
#include <gtest/gtest.h>

#include <atomic>
#include <string>
#include <thread>
#include <vector>

#include "compat/win32.h"
#include "compat_test_util.h"

using namespace compat_test;

namespace {

// Runs `fn` on n threads and counts those that have returned.
struct Waiters {
  std::vector<std::thread> threads;
  std::atomic<int> done{0};
  std::atomic<int> acquired{0};
  Waiters(int n, std::function<DWORD()> fn) {
    for (int i = 0; i < n; i++)
      threads.emplace_back([this, fn] {
        if (fn() == WAIT_OBJECT_0) acquired++;
        done++;
      });
  }
  ~Waiters() {
    for (auto& t : threads) t.join();
  }
};

// A mutex acquired there is released again before the thread ends.
DWORD waitOnOtherThread(HANDLE h, DWORD timeoutMs, bool releaseMutex = false) {
  DWORD rc = 0x1234;
  std::thread([&] {
    rc = WaitForSingleObject(h, timeoutMs);
    if (rc == WAIT_OBJECT_0 && releaseMutex) ReleaseMutex(h);
  }).join();
  return rc;
}

TEST(SyncHandles, InvalidHandlesAreRefusedEverywhere) {
  for (HANDLE h : {HANDLE(nullptr), INVALID_HANDLE_VALUE}) {
    EXPECT_EQ(CloseHandle(h), FALSE);
    EXPECT_EQ(WaitForSingleObject(h, 0), WAIT_FAILED);
    EXPECT_EQ(SetEvent(h), FALSE);
    EXPECT_EQ(ResetEvent(h), FALSE);
    EXPECT_EQ(ReleaseMutex(h), FALSE);
    EXPECT_EQ(ReleaseSemaphore(h, 1, nullptr), FALSE);
  }
}

TEST(Event, ZeroTimeoutPollsAndAutoResetConsumesTheSignal) {
  HANDLE automatic = CreateEvent(nullptr, FALSE, TRUE, nullptr);
  HANDLE manual = CreateEvent(nullptr, TRUE, TRUE, nullptr);
  EXPECT_EQ(WaitForSingleObject(automatic, 0), WAIT_OBJECT_0);
  EXPECT_EQ(WaitForSingleObject(automatic, 0), WAIT_TIMEOUT) << "the wait cleared it";
  EXPECT_EQ(WaitForSingleObject(manual, 0), WAIT_OBJECT_0);
  EXPECT_EQ(WaitForSingleObject(manual, 0), WAIT_OBJECT_0) << "manual reset stays signalled";
  EXPECT_EQ(ResetEvent(manual), TRUE);
  const auto t0 = Clock::now();
  EXPECT_EQ(WaitForSingleObject(manual, 40), WAIT_TIMEOUT);
  EXPECT_GE(msSince(t0), 39);
  EXPECT_EQ(CloseHandle(automatic), TRUE);
  EXPECT_EQ(CloseHandle(manual), TRUE);
}

TEST(Event, AutoResetWakesExactlyOneWaiterAndManualResetAll) {
  for (BOOL manual : {FALSE, TRUE}) {
    HANDLE ev = CreateEvent(nullptr, manual, FALSE, nullptr);
    {
      Waiters w(3, [ev] { return WaitForSingleObject(ev, INFINITE); });
      std::this_thread::sleep_for(std::chrono::milliseconds(20));  // let them block
      EXPECT_EQ(w.done.load(), 0);
      SetEvent(ev);
      ASSERT_TRUE(waitUntil([&] { return w.done >= (manual ? 3 : 1); }));
      if (!manual) {
        std::this_thread::sleep_for(std::chrono::milliseconds(30));
        EXPECT_EQ(w.done.load(), 1) << "an auto-reset event released a second waiter";
        SetEvent(ev);
        SetEvent(ev);  // a waiter may consume one before the other is set
        ASSERT_TRUE(waitUntil([&] { return w.done == 3 || (SetEvent(ev), false); }));
      }
      EXPECT_EQ(w.acquired.load(), 3);
    }
    CloseHandle(ev);
  }
}

TEST(Mutex, RecursiveHoldNeedsAsManyReleasesAndBlocksOthers) {
  HANDLE m = CreateMutex(nullptr, TRUE, nullptr);
  EXPECT_EQ(waitOnOtherThread(m, 0, true), WAIT_OBJECT_0) << "the initial owner flag is ignored";
  CloseHandle(m);
  m = CreateMutex(nullptr, FALSE, nullptr);
  ASSERT_EQ(WaitForSingleObject(m, 0), WAIT_OBJECT_0);
  ASSERT_EQ(WaitForSingleObject(m, 0), WAIT_OBJECT_0) << "the owner acquires again at once";
  EXPECT_EQ(waitOnOtherThread(m, 0), WAIT_TIMEOUT);
  BOOL foreignRelease = TRUE;
  std::thread([&] { foreignRelease = ReleaseMutex(m); }).join();
  EXPECT_EQ(foreignRelease, FALSE) << "a thread that does not own it cannot release it";

  Waiters w(1, [m] {
    DWORD rc = WaitForSingleObject(m, INFINITE);
    ReleaseMutex(m);
    return rc;
  });
  EXPECT_EQ(ReleaseMutex(m), TRUE);
  std::this_thread::sleep_for(std::chrono::milliseconds(20));
  EXPECT_EQ(w.done.load(), 0) << "still held once";
  EXPECT_EQ(ReleaseMutex(m), TRUE);
  ASSERT_TRUE(waitUntil([&] { return w.done == 1; }));
  EXPECT_EQ(w.acquired.load(), 1);
  for (auto& t : w.threads) t.join();
  w.threads.clear();
  CloseHandle(m);
}

TEST(Mutex, RegistryFindsOnlyTheNewestNameAndReleaseUnregistersIt) {
  EXPECT_EQ(OpenMutex(0, FALSE, "a"), nullptr) << "nothing registered";
  HANDLE a = CreateMutex(nullptr, FALSE, "a");
  HANDLE b = CreateMutex(nullptr, FALSE, "b");
  HANDLE plain = CreateMutex(nullptr, FALSE, nullptr);
  EXPECT_EQ(OpenMutex(0, FALSE, "a"), nullptr) << "older names are never found";
  EXPECT_EQ(OpenMutex(0, FALSE, "b"), b);
  ASSERT_EQ(WaitForSingleObject(b, 0), WAIT_OBJECT_0);
  EXPECT_EQ(ReleaseMutex(b), TRUE);
  EXPECT_EQ(OpenMutex(0, FALSE, "b"), nullptr);
  EXPECT_EQ(OpenMutex(0, FALSE, "a"), a) << "the previous registration is the newest again";
  EXPECT_EQ(ReleaseMutex(a), FALSE) << "unregistered, but not owned";
  EXPECT_EQ(OpenMutex(0, FALSE, "a"), nullptr);
  CloseHandle(a);
  CloseHandle(b);
  CloseHandle(plain);
}

TEST(Mutex, The128thNameOverflowsTheRegistryAndRestartsIt) {
  ChildResult r = runInChild([] {
    std::vector<HANDLE> handles;
    for (int i = 1; i <= 128; i++) handles.push_back(CreateMutex(nullptr, FALSE, std::to_string(i).c_str()));
    if (OpenMutex(0, FALSE, "127") != nullptr) return 10;  // the counter restarted at 0
    if (WaitForSingleObject(handles[127], 0) != WAIT_OBJECT_0) return 11;
    HANDLE again = CreateMutex(nullptr, FALSE, "again");
    if (OpenMutex(0, FALSE, "again") != again) return 12;  // registered in slot 1
    CloseHandle(again);
    if (OpenMutex(0, FALSE, "again") != again) return 13;  // closing leaves the registry alone
    return 0;
  });
  EXPECT_EQ(r.status, 0);
  EXPECT_EQ(r.out, "CreateMutex exceed the limit\n");
}

TEST(Semaphore, MaximumIsNeverEnforced) {
  HANDLE s = CreateSemaphore(nullptr, 0, 5, nullptr);
  EXPECT_EQ(WaitForSingleObject(s, 0), WAIT_TIMEOUT);
  LONG previous = -1;
  EXPECT_EQ(ReleaseSemaphore(s, 10, &previous), TRUE);
  EXPECT_EQ(previous, 0);
  for (int i = 0; i < 10; i++) EXPECT_EQ(WaitForSingleObject(s, 0), WAIT_OBJECT_0) << i;
  EXPECT_EQ(WaitForSingleObject(s, 0), WAIT_TIMEOUT);
  EXPECT_EQ(ReleaseSemaphore(s, 0, &previous), TRUE) << "posting nothing is no failure";
  Waiters w(2, [s] { return WaitForSingleObject(s, INFINITE); });
  ReleaseSemaphore(s, 2, nullptr);
  ASSERT_TRUE(waitUntil([&] { return w.done == 2; }));
  EXPECT_EQ(w.acquired.load(), 2);
  for (auto& t : w.threads) t.join();
  w.threads.clear();
  CloseHandle(s);
}

TEST(WaitForAny, LowestSignalledIndexWinsAndATimeoutAnswersAllOnes) {
  HANDLE a = CreateEvent(nullptr, FALSE, FALSE, nullptr);
  HANDLE b = CreateEvent(nullptr, FALSE, FALSE, nullptr);
  HANDLE both[2] = {a, b};
  const auto t0 = Clock::now();
  EXPECT_EQ(WaitForMultipleObjects(2, both, FALSE, 50), 0xFFFFFFFFUL);
  EXPECT_GE(msSince(t0), 49);
  SetEvent(a);
  SetEvent(b);
  EXPECT_EQ(WaitForMultipleObjects(2, both, FALSE, 0), 0xFFFFFFFFUL) << "a zero time-out polls nothing";
  EXPECT_EQ(WaitForMultipleObjects(2, both, FALSE, 50), WAIT_OBJECT_0);
  EXPECT_EQ(WaitForSingleObject(a, 0), WAIT_TIMEOUT) << "a was acquired";
  EXPECT_EQ(WaitForMultipleObjects(2, both, FALSE, INFINITE), WAIT_OBJECT_0 + 1);
  HANDLE withNull[2] = {nullptr, a};
  std::thread setter([a] {
    std::this_thread::sleep_for(std::chrono::milliseconds(20));
    SetEvent(a);
  });
  EXPECT_EQ(WaitForMultipleObjects(2, withNull, FALSE, 5000), WAIT_OBJECT_0 + 1);
  setter.join();
  CloseHandle(a);
  CloseHandle(b);
}

TEST(WaitForAny, The21stConcurrentWaitFailsAtOnce) {
  HANDLE ev = CreateEvent(nullptr, TRUE, FALSE, nullptr);
  HANDLE list[1] = {ev};
  {
    Waiters w(20, [&list] { return WaitForMultipleObjects(1, list, FALSE, INFINITE); });
    auto registered = [] {
      pthread_mutex_lock(&CLinuxMultiWait::m_mutex);
      int n = CLinuxMultiWait::m_waitcount;
      pthread_mutex_unlock(&CLinuxMultiWait::m_mutex);
      return n;
    };
    ASSERT_TRUE(waitUntil([&] { return registered() == 20; }));
    const auto t0 = Clock::now();
    EXPECT_EQ(WaitForMultipleObjects(1, list, FALSE, 1000), WAIT_FAILED);
    EXPECT_LT(msSince(t0), 500);
    SetEvent(ev);
    ASSERT_TRUE(waitUntil([&] { return w.done == 20; }));
    EXPECT_EQ(w.acquired.load(), 20);
  }
  EXPECT_EQ(CLinuxMultiWait::m_waitcount, 0) << "every waiter left the table";
  CloseHandle(ev);
}

TEST(WaitForAll, AcquiresAllOrNone) {
  HANDLE m = CreateMutex(nullptr, FALSE, nullptr);
  HANDLE ev = CreateEvent(nullptr, FALSE, FALSE, nullptr);
  HANDLE s = CreateSemaphore(nullptr, 1, 1, nullptr);
  HANDLE all[3] = {m, s, ev};
  EXPECT_EQ(WaitForMultipleObjects(0, all, TRUE, 10), WAIT_FAILED);
  const auto t0 = Clock::now();
  EXPECT_EQ(WaitForMultipleObjects(3, all, TRUE, 60), WAIT_TIMEOUT);
  EXPECT_GE(msSince(t0), 55);
  EXPECT_EQ(waitOnOtherThread(m, 0, true), WAIT_OBJECT_0) << "the mutex was given back";
  EXPECT_EQ(WaitForSingleObject(s, 0), WAIT_OBJECT_0) << "the semaphore unit was given back";
  ReleaseSemaphore(s, 1, nullptr);

  std::thread setter([ev] {
    std::this_thread::sleep_for(std::chrono::milliseconds(20));
    SetEvent(ev);
  });
  EXPECT_EQ(WaitForMultipleObjects(3, all, TRUE, INFINITE), WAIT_OBJECT_0);
  setter.join();
  EXPECT_EQ(waitOnOtherThread(m, 0), WAIT_TIMEOUT) << "the mutex is held";
  EXPECT_EQ(WaitForSingleObject(s, 0), WAIT_TIMEOUT);
  EXPECT_EQ(WaitForSingleObject(ev, 0), WAIT_TIMEOUT);
  ReleaseMutex(m);
  for (HANDLE h : all) CloseHandle(h);
}

}  // namespace
