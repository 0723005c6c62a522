// Events, mutexes and their registry, semaphores, waits on one or several
// handles, and the bounded ring queue built on them.
#include <gtest/gtest.h>
#include <pthread.h>

#include <algorithm>

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
  EXPECT_EQ(ReleaseMutex(m), TRUE);
  auto waitAndRelease = [m] { return acquired(WaitForSingleObject(m, INFINITE)) + ReleaseMutex(m); };
  EXPECT_EQ(sumAfterRelease(1, waitAndRelease, [m] { EXPECT_EQ(ReleaseMutex(m), TRUE) << "held once"; }), 2);
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
  LONG previous = -1;
  EXPECT_EQ(WaitForSingleObject(s, 0), WAIT_TIMEOUT);
  EXPECT_TRUE(ReleaseSemaphore(s, 10, &previous) && previous == 0);
  for (int i = 0; i <= 10; i++)
    EXPECT_EQ(WaitForSingleObject(s, 0), i < 10 ? WAIT_OBJECT_0 : WAIT_TIMEOUT) << i;
  EXPECT_EQ(ReleaseSemaphore(s, 0, &previous), TRUE) << "posting nothing is no failure";
  auto wait = [s] { return acquired(WaitForSingleObject(s, INFINITE)); };
  EXPECT_EQ(sumAfterRelease(2, wait, [s] { ReleaseSemaphore(s, 2, nullptr); }), 2);
  CloseHandle(s);
}

TEST(WaitForAny, LowestSignalledIndexWinsAndATimeoutAnswersAllOnes) {
  HANDLE a = CreateEvent(nullptr, FALSE, FALSE, nullptr), b = CreateEvent(nullptr, FALSE, FALSE, nullptr);
  HANDLE both[2] = {a, b}, withNull[2] = {nullptr, a};
  EXPECT_EQ(WaitForMultipleObjects(2, both, FALSE, 50), 0xFFFFFFFFUL);
  SetEvent(a);
  SetEvent(b);
  EXPECT_EQ(WaitForMultipleObjects(2, both, FALSE, 0), 0xFFFFFFFFUL) << "a zero time-out polls nothing";
  EXPECT_EQ(WaitForMultipleObjects(2, both, FALSE, 50), WAIT_OBJECT_0);
  EXPECT_EQ(WaitForSingleObject(a, 0), WAIT_TIMEOUT) << "only a was acquired";
  EXPECT_EQ(WaitForMultipleObjects(2, both, FALSE, INFINITE), WAIT_OBJECT_0 + 1);
  auto waitWithNull = [&] { return int(WaitForMultipleObjects(2, withNull, FALSE, 5000)); };
  EXPECT_EQ(sumAfterRelease(1, waitWithNull, [a] { SetEvent(a); }), int(WAIT_OBJECT_0 + 1));
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
    const long t0 = wallMs();
    EXPECT_EQ(WaitForMultipleObjects(1, list, FALSE, 1000), WAIT_FAILED);
    EXPECT_LT(wallMs() - t0, 500);
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
  const long t0 = wallMs();
  EXPECT_EQ(WaitForMultipleObjects(3, all, TRUE, 60), WAIT_TIMEOUT);
  EXPECT_GE(wallMs() - t0, 55);
  EXPECT_EQ(waitOnOtherThread(m, 0, true), WAIT_OBJECT_0) << "the mutex was given back";
  EXPECT_EQ(waitOnOtherThread(s, 0), WAIT_OBJECT_0) << "the semaphore unit was given back";
  ReleaseSemaphore(s, 1, nullptr);
  {
    Background setter(1, [ev] { return sleepMs(20), SetEvent(ev); });  // this thread must own the mutex
    EXPECT_EQ(WaitForMultipleObjects(3, all, TRUE, INFINITE), WAIT_OBJECT_0);
  }
  EXPECT_EQ(waitOnOtherThread(m, 0), WAIT_TIMEOUT) << "all three are held";
  EXPECT_EQ(WaitForSingleObject(s, 0) + WaitForSingleObject(ev, 0), 2 * WAIT_TIMEOUT);
  ReleaseMutex(m);
  for (HANDLE h : all) CloseHandle(h);
}

int readOne(CLNrwqueue& q) {
  int v = -1;
  return q.ReadItem(&v) ? v : -1;
}

int writeOne(CLNrwqueue& q, int v) { return q.WriteItem(&v); }

struct Equals : ISearchCriteria {
  int value;
  explicit Equals(int v) : value(v) {}
  bool Match(const void* item) override { return *static_cast<const int*>(item) == value; }
};

TEST(RwQueue, BlockingEndOfFileAndTheNullSourceRule) {
  CLNrwqueue q(2, sizeof(int));
  auto read = [&] { return readOne(q); };
  int sum = sumAfterRelease(3, read, [&] { EXPECT_EQ(q.EndOfFile(), 0); });
  EXPECT_EQ(sum, -3) << "every blocked reader wakes";
  EXPECT_EQ(q.GetReadItem(), nullptr) << "still at end of file";
  writeOne(q, 7);
  EXPECT_EQ(readOne(q), 7);
  // The write cleared the end of file; a null source wakes a reader, which
  // finds the queue empty, and keeps its space unit.
  sum = sumAfterRelease(1, read, [&] { EXPECT_EQ(q.WriteItem(nullptr), 1); });
  EXPECT_EQ(sum, -1);
  writeOne(q, 8);
  sum = sumAfterRelease(
      1, [&] { return writeOne(q, 9); }, [&] { EXPECT_EQ(readOne(q), 8); });
  EXPECT_EQ(sum, 1) << "the space unit was kept";
}

std::vector<int> g_flushed;

TEST(RwQueue, ZeroCopyCancelSearchPeekAndFlush) {
  CLNrwqueue q(4, sizeof(int));
  int out = 0;
  EXPECT_FALSE(q.SearchItem(&out, nullptr, false)) << "empty";
  void* slot0 = q.GetWriteItem();
  *static_cast<int*>(slot0) = 5;
  q.CancelWriteItem();
  *static_cast<int*>(q.GetWriteItem()) = 0;
  q.CommitWriteItem();
  EXPECT_EQ(*static_cast<int*>(q.GetReadItem()), 0) << "a cancelled write leaves no item";
  q.CancelReadItem();
  EXPECT_EQ(q.GetCount(), 1u) << "a cancelled read leaves the item";
  EXPECT_EQ(readOne(q), 0);
  for (int v : {1, 2, 3}) writeOne(q, v);
  Equals two(2), nine(9);
  EXPECT_TRUE(q.SearchItem(&out, &two, false));
  EXPECT_EQ(out + q.GetCount(), 2u + 3u) << "found and left in place";
  EXPECT_FALSE(q.SearchItem(&out, &nine, true));
  EXPECT_EQ(*static_cast<int*>(q.PeekItem(2)), 3);
  EXPECT_EQ(q.PeekItem(3), nullptr) << "PeekItem(count)";
  EXPECT_EQ(q.Flush([](void* item) { g_flushed.push_back(*static_cast<int*>(item)); }), 0);
  EXPECT_EQ(g_flushed, (std::vector<int>{1, 2, 3}));
  writeOne(q, 4);
  EXPECT_EQ(q.PeekItem(0), slot0) << "both indices are back at 0";
  for (int v : {5, 6, 7}) writeOne(q, v);  // all four slots are free again
  EXPECT_TRUE(q.SearchItem(&out, nullptr, true));
  EXPECT_EQ(out, 4) << "no criterion takes the oldest";
}

// Zero-copy calls name their slot by the shared index, so a zero-copy writer
// (and a zero-copy reader or a removing search) holds its side's lock
// exclusively while copy calls share it. Each consumer checks every producer's
// items arrive in order; at the end every item has arrived exactly once.
TEST(RwQueue, StressFourProducersFourConsumersFourSlots) {
#ifdef __aarch64__
  const uint32_t kPerProducer = 25000;  // qemu is slow: 100,000 items
#else
  const uint32_t kPerProducer = 250000;  // 1,000,000 items
#endif
  struct Item {
    uint32_t producer, seq;
  };
  struct OldestOf : ISearchCriteria {
    uint32_t producer = 0;
    bool Match(const void* item) override { return static_cast<const Item*>(item)->producer == producer; }
  };
  pthread_rwlock_t side[2];  // writers, readers; writers first so that exclusive holders are not starved
  pthread_rwlockattr_t attr;
  pthread_rwlockattr_init(&attr);
  pthread_rwlockattr_setkind_np(&attr, PTHREAD_RWLOCK_PREFER_WRITER_NONRECURSIVE_NP);
  for (auto& l : side) pthread_rwlock_init(&l, &attr);
  auto lock = [&](int s, bool exclusive) {
    (exclusive ? pthread_rwlock_wrlock : pthread_rwlock_rdlock)(&side[s]);
  };
  CLNrwqueue q(4, sizeof(Item));
  std::vector<std::atomic<uint8_t>> seen(4 * kPerProducer);
  std::atomic<long> faults{0};
  std::atomic<uint32_t> producerIds{0};

  Background producers(4, [&] {
    for (Item item{producerIds++, 0}; item.seq < kPerProducer; item.seq++) {
      const bool zeroCopy = item.seq % 8 == 3;
      lock(0, zeroCopy);
      if (zeroCopy) *static_cast<Item*>(q.GetWriteItem()) = item, q.CommitWriteItem();
      if (!zeroCopy) q.WriteItem(&item);
      pthread_rwlock_unlock(&side[0]);
    }
    return 0;
  });
  Background consumers(4, [&] {
    long last[4] = {-1, -1, -1, -1};
    OldestOf oldest;  // the oldest item of one producer keeps that producer's order
    Item item;
    for (uint32_t n = 0;; n++) {
      const bool zeroCopy = n % 8 == 5, search = n % 1000 == 999;
      lock(1, zeroCopy || search);
      Item* slot = zeroCopy ? static_cast<Item*>(q.GetReadItem()) : nullptr;
      oldest.producer = n / 1000 % 4;
      bool got =
          zeroCopy ? slot != nullptr : (search && q.SearchItem(&item, &oldest, true)) || q.ReadItem(&item);
      if (slot) item = *slot, q.CommitReadItem();
      pthread_rwlock_unlock(&side[1]);
      if (!got) return 0;
      faults += static_cast<long>(item.seq) <= last[item.producer] ||
                seen[item.producer * kPerProducer + item.seq]++ != 0;
      last[item.producer] = item.seq;
    }
  });
  for (auto& t : producers.threads) t.join();
  producers.threads.clear();
  q.EndOfFile();
  EXPECT_TRUE(consumers.finished(4)) << "end of file released every consumer";
  EXPECT_EQ(std::count(seen.begin(), seen.end(), 1), 4 * kPerProducer) << "items lost";
  EXPECT_EQ(faults, 0) << "items out of order or twice";
}

}  // namespace
