// Events, mutexes, the named-mutex registry, semaphores and the waits on one
// or several handles, with real threads where a wake-up is what is checked.
#include <gtest/gtest.h>

#include "compat/win32.h"
#include "compat_test_util.h"

using namespace compat_test;

namespace {

int acquired(DWORD rc) { return rc == WAIT_OBJECT_0; }

// A mutex acquired there is released again before the thread ends.
DWORD waitOnOtherThread(HANDLE h, DWORD timeoutMs, bool releaseMutex = false) {
  DWORD rc = 0x1234;
  std::thread([&] {
    if ((rc = WaitForSingleObject(h, timeoutMs)) == WAIT_OBJECT_0 && releaseMutex) ReleaseMutex(h);
  }).join();
  return rc;
}

TEST(SyncHandles, InvalidHandlesAreRefusedEverywhere) {
  for (HANDLE h : {HANDLE(nullptr), INVALID_HANDLE_VALUE}) {
    EXPECT_EQ(
        CloseHandle(h) | SetEvent(h) | ResetEvent(h) | ReleaseMutex(h) | ReleaseSemaphore(h, 1, nullptr), 0);
    EXPECT_EQ(WaitForSingleObject(h, 0), WAIT_FAILED);
  }
}

TEST(Event, AutoResetWakesExactlyOneWaiterAndManualResetAll) {
  for (BOOL manual : {FALSE, TRUE}) {
    HANDLE ev = CreateEvent(nullptr, manual, TRUE, nullptr);
    EXPECT_EQ(WaitForSingleObject(ev, 0), WAIT_OBJECT_0);
    EXPECT_EQ(WaitForSingleObject(ev, 0), manual ? WAIT_OBJECT_0 : WAIT_TIMEOUT) << "auto reset consumes it";
    ResetEvent(ev);
    const auto t0 = Clock::now();
    EXPECT_EQ(WaitForSingleObject(ev, 40), WAIT_TIMEOUT);
    EXPECT_GE(msSince(t0), 39);
    {
      Background w(3, [ev] { return acquired(WaitForSingleObject(ev, INFINITE)); });
      EXPECT_TRUE(w.blockedAfter(20));
      SetEvent(ev);
      ASSERT_TRUE(waitUntil([&] { return w.done >= (manual ? 3 : 1); }));
      sleepMs(30);
      EXPECT_EQ(w.done, manual ? 3 : 1) << "an auto-reset event released a second waiter";
      EXPECT_TRUE(waitUntil([&] { return SetEvent(ev) && w.done == 3; }));
      EXPECT_EQ(w.sum, 3);
    }
    CloseHandle(ev);
  }
}

TEST(Mutex, RecursiveHoldNeedsAsManyReleasesAndBlocksOthers) {
  HANDLE m = CreateMutex(nullptr, TRUE, nullptr);
  EXPECT_EQ(waitOnOtherThread(m, 0, true), WAIT_OBJECT_0) << "the initial owner flag is ignored";
  ASSERT_EQ(WaitForSingleObject(m, 0), WAIT_OBJECT_0);
  ASSERT_EQ(WaitForSingleObject(m, 0), WAIT_OBJECT_0) << "the owner acquires again at once";
  EXPECT_EQ(waitOnOtherThread(m, 0), WAIT_TIMEOUT);
  BOOL foreign = TRUE;
  std::thread([&] { foreign = ReleaseMutex(m); }).join();
  EXPECT_EQ(foreign, FALSE) << "a thread that does not own it cannot release it";
  {
    Background w(1, [m] { return acquired(WaitForSingleObject(m, INFINITE)) + ReleaseMutex(m); });
    EXPECT_EQ(ReleaseMutex(m), TRUE);
    EXPECT_TRUE(w.blockedAfter(20)) << "still held once";
    EXPECT_EQ(ReleaseMutex(m), TRUE);
    ASSERT_TRUE(w.finished(1));
    EXPECT_EQ(w.sum, 2);
  }
  CloseHandle(m);
}

TEST(Mutex, RegistryFindsOnlyTheNewestNameAndReleaseUnregistersIt) {
  EXPECT_EQ(OpenMutex(0, FALSE, "a"), nullptr) << "nothing registered";
  HANDLE a = CreateMutex(nullptr, FALSE, "a"), b = CreateMutex(nullptr, FALSE, "b");
  EXPECT_EQ(OpenMutex(0, FALSE, "a"), nullptr) << "older names are never found";
  EXPECT_EQ(OpenMutex(0, FALSE, "b"), b);
  WaitForSingleObject(b, 0);
  EXPECT_EQ(ReleaseMutex(b), TRUE);
  EXPECT_EQ(OpenMutex(0, FALSE, "a"), a) << "the previous registration is the newest again";
  EXPECT_EQ(ReleaseMutex(a), FALSE) << "unregistered, but not owned";
  EXPECT_EQ(OpenMutex(0, FALSE, "a"), nullptr);
  CloseHandle(a);
  CloseHandle(b);

  ChildResult r = runInChild([] {
    HANDLE last = nullptr;
    for (int i = 1; i <= 128; i++) last = CreateMutex(nullptr, FALSE, std::to_string(i).c_str());
    if (OpenMutex(0, FALSE, "127") || WaitForSingleObject(last, 0) != WAIT_OBJECT_0) return 10;
    HANDLE again = CreateMutex(nullptr, FALSE, "again");  // registered in slot 1
    CloseHandle(again);
    return OpenMutex(0, FALSE, "again") == again ? 0 : 11;  // closing leaves the registry alone
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
  {
    Background w(2, [s] { return acquired(WaitForSingleObject(s, INFINITE)); });
    ReleaseSemaphore(s, 2, nullptr);
    ASSERT_TRUE(w.finished(2));
    EXPECT_EQ(w.sum, 2);
  }
  CloseHandle(s);
}

TEST(WaitForAny, LowestSignalledIndexWinsAndATimeoutAnswersAllOnes) {
  HANDLE a = CreateEvent(nullptr, FALSE, FALSE, nullptr), b = CreateEvent(nullptr, FALSE, FALSE, nullptr);
  HANDLE both[2] = {a, b}, withNull[2] = {nullptr, a};
  const auto t0 = Clock::now();
  EXPECT_EQ(WaitForMultipleObjects(2, both, FALSE, 50), 0xFFFFFFFFUL);
  EXPECT_GE(msSince(t0), 49);
  SetEvent(a);
  SetEvent(b);
  EXPECT_EQ(WaitForMultipleObjects(2, both, FALSE, 0), 0xFFFFFFFFUL) << "a zero time-out polls nothing";
  EXPECT_EQ(WaitForMultipleObjects(2, both, FALSE, 50), WAIT_OBJECT_0);
  EXPECT_EQ(WaitForSingleObject(a, 0), WAIT_TIMEOUT) << "only a was acquired";
  EXPECT_EQ(WaitForMultipleObjects(2, both, FALSE, INFINITE), WAIT_OBJECT_0 + 1);
  {
    Background setter(1, [a] { return sleepMs(20), SetEvent(a); });
    EXPECT_EQ(WaitForMultipleObjects(2, withNull, FALSE, 5000), WAIT_OBJECT_0 + 1);
  }
  CloseHandle(a);
  CloseHandle(b);
}

TEST(WaitForAny, The21stConcurrentWaitFailsAtOnce) {
  HANDLE ev = CreateEvent(nullptr, TRUE, FALSE, nullptr);
  HANDLE list[1] = {ev};
  {
    Background w(20, [&list] { return acquired(WaitForMultipleObjects(1, list, FALSE, INFINITE)); });
    ASSERT_TRUE(waitUntil([] {
      pthread_mutex_lock(&CLinuxMultiWait::m_mutex);
      int n = CLinuxMultiWait::m_waitcount;
      pthread_mutex_unlock(&CLinuxMultiWait::m_mutex);
      return n == 20;
    }));
    const auto t0 = Clock::now();
    EXPECT_EQ(WaitForMultipleObjects(1, list, FALSE, 1000), WAIT_FAILED);
    EXPECT_LT(msSince(t0), 500);
    SetEvent(ev);
    ASSERT_TRUE(w.finished(20));
    EXPECT_EQ(w.sum, 20);
  }
  EXPECT_EQ(CLinuxMultiWait::m_waitcount, 0) << "every waiter left the table";
  CloseHandle(ev);
}

TEST(WaitForAll, AcquiresAllOrNone) {
  HANDLE m = CreateMutex(nullptr, FALSE, nullptr), ev = CreateEvent(nullptr, FALSE, FALSE, nullptr);
  HANDLE s = CreateSemaphore(nullptr, 1, 1, nullptr);
  HANDLE all[3] = {m, s, ev};
  EXPECT_EQ(WaitForMultipleObjects(0, all, TRUE, 10), WAIT_FAILED);
  const auto t0 = Clock::now();
  EXPECT_EQ(WaitForMultipleObjects(3, all, TRUE, 60), WAIT_TIMEOUT);
  EXPECT_GE(msSince(t0), 55);
  EXPECT_EQ(waitOnOtherThread(m, 0, true), WAIT_OBJECT_0) << "the mutex was given back";
  EXPECT_EQ(waitOnOtherThread(s, 0), WAIT_OBJECT_0) << "the semaphore unit was given back";
  ReleaseSemaphore(s, 1, nullptr);
  {
    Background setter(1, [ev] { return sleepMs(20), SetEvent(ev); });
    EXPECT_EQ(WaitForMultipleObjects(3, all, TRUE, INFINITE), WAIT_OBJECT_0);
  }
  EXPECT_EQ(waitOnOtherThread(m, 0), WAIT_TIMEOUT) << "all three are held";
  EXPECT_EQ(WaitForSingleObject(s, 0) + WaitForSingleObject(ev, 0), 2 * WAIT_TIMEOUT);
  ReleaseMutex(m);
  for (HANDLE h : all) CloseHandle(h);
}

}  // namespace
