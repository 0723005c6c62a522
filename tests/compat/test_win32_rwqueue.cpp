// The bounded ring queue: blocking, end of file, zero-copy access, flush,
// search with removal from anywhere in the ring, peeking, and a stress run of
// four producers and four consumers through a queue of four slots.
#include <gtest/gtest.h>
#include <pthread.h>

#include <atomic>
#include <deque>
#include <thread>
#include <vector>

#include "compat/win32.h"
#include "compat_test_util.h"

using namespace compat_test;

namespace {

int readOne(CLNrwqueue& q) {
  int v = -1;
  return q.ReadItem(&v) ? v : -1;
}

void writeOne(CLNrwqueue& q, int v) { q.WriteItem(&v); }

// Runs fn on its own thread; `done` tells whether it has returned.
struct Background {
  std::atomic<bool> done{false};
  std::atomic<int> result{0};
  std::thread thread;
  explicit Background(std::function<int()> fn)
      : thread([this, fn] {
          result = fn();
          done = true;
        }) {}
  ~Background() { thread.join(); }
  bool stillBlockedAfter(int ms) {
    std::this_thread::sleep_for(std::chrono::milliseconds(ms));
    return !done;
  }
};

struct Equals : ISearchCriteria {
  int value;
  explicit Equals(int v) : value(v) {}
  bool Match(const void* item) override { return *static_cast<const int*>(item) == value; }
};

TEST(RwQueue, WriterBlocksWhenFullUntilAReaderFreesASlot) {
  CLNrwqueue q(2, sizeof(int));
  EXPECT_EQ(q.GetMax(), 2u);
  writeOne(q, 1);
  writeOne(q, 2);
  Background writer([&] { return q.WriteItem(&q) /* any 4 bytes */; });
  EXPECT_TRUE(writer.stillBlockedAfter(30));
  EXPECT_EQ(readOne(q), 1);
  ASSERT_TRUE(waitUntil([&] { return writer.done.load(); }));
  EXPECT_EQ(writer.result.load(), 1);
  EXPECT_EQ(q.GetCount(), 2u);
}

TEST(RwQueue, EndOfFileReleasesEveryBlockedReaderAndTheNextWriteClearsIt) {
  CLNrwqueue q(4, sizeof(int));
  {
    std::vector<std::unique_ptr<Background>> readers;
    for (int i = 0; i < 3; i++) readers.emplace_back(new Background([&] { return readOne(q); }));
    EXPECT_TRUE(readers[0]->stillBlockedAfter(20));
    EXPECT_EQ(q.EndOfFile(), 0);
    for (auto& r : readers) {
      ASSERT_TRUE(waitUntil([&] { return r->done.load(); }));
      EXPECT_EQ(r->result.load(), -1) << "ReadItem returned 0";
    }
  }
  EXPECT_EQ(q.GetReadItem(), nullptr) << "still at end of file";
  writeOne(q, 7);
  EXPECT_EQ(readOne(q), 7);
  Background reader([&] { return readOne(q); });
  EXPECT_TRUE(reader.stillBlockedAfter(30)) << "the write cleared the end of file";
  writeOne(q, 8);
  ASSERT_TRUE(waitUntil([&] { return reader.done.load(); }));
  EXPECT_EQ(reader.result.load(), 8);
}

TEST(RwQueue, NullSourceWakesAReaderAndKeepsTheSpaceUnit) {
  CLNrwqueue q(2, sizeof(int));
  EXPECT_EQ(q.WriteItem(nullptr), 1);
  EXPECT_EQ(q.GetCount(), 0u);
  EXPECT_EQ(readOne(q), -1) << "the reader finds the queue empty";
  writeOne(q, 1);
  Background writer([&] { return q.WriteItem(&q); });
  EXPECT_TRUE(writer.stillBlockedAfter(30)) << "only one slot is left";
  EXPECT_EQ(readOne(q), 1);
  ASSERT_TRUE(waitUntil([&] { return writer.done.load(); }));
}

TEST(RwQueue, ZeroCopyCommitAndCancel) {
  CLNrwqueue q(2, sizeof(int));
  int* slot = static_cast<int*>(q.GetWriteItem());
  *slot = 5;
  q.CancelWriteItem();
  EXPECT_EQ(q.GetCount(), 0u);
  slot = static_cast<int*>(q.GetWriteItem());
  *slot = 6;
  q.CommitWriteItem();
  writeOne(q, 7);
  EXPECT_EQ(*static_cast<int*>(q.GetReadItem()), 6);
  q.CancelReadItem();
  EXPECT_EQ(q.GetCount(), 2u) << "a cancelled read leaves the item";
  EXPECT_EQ(*static_cast<int*>(q.GetReadItem()), 6);
  q.CommitReadItem();
  EXPECT_EQ(readOne(q), 7);
}

// Items A, B, C at every position of a ring of four (straddling its end or
// not); removing any one leaves the other two in order.
TEST(RwQueue, SearchRemovesFromAnywhereInTheRingKeepingOrder) {
  for (int offset = 0; offset < 4; offset++) {
    for (int k = 0; k < 3; k++) {
      CLNrwqueue q(4, sizeof(int));
      for (int i = 0; i < offset; i++) {
        writeOne(q, -1);
        readOne(q);
      }
      for (int v : {10, 11, 12}) writeOne(q, v);
      Equals sought(10 + k);
      int found = 0;
      ASSERT_TRUE(q.SearchItem(&found, &sought, true)) << offset << "/" << k;
      EXPECT_EQ(found, 10 + k);
      std::vector<int> rest;
      while (q.GetCount() > 0) rest.push_back(readOne(q));
      std::vector<int> expected;
      for (int v : {10, 11, 12})
        if (v != 10 + k) expected.push_back(v);
      EXPECT_EQ(rest, expected) << "offset " << offset << ", removed " << k;
      writeOne(q, 13);  // the semaphores still agree with the count
      EXPECT_EQ(readOne(q), 13);
    }
  }
}

TEST(RwQueue, SearchWithoutRemovalPeekAndNoMatch) {
  CLNrwqueue q(4, sizeof(int));
  int out = 0;
  EXPECT_FALSE(q.SearchItem(&out, nullptr, false)) << "empty";
  for (int v : {1, 2, 3}) writeOne(q, v);
  Equals two(2), nine(9);
  EXPECT_TRUE(q.SearchItem(&out, &two, false));
  EXPECT_EQ(out, 2);
  EXPECT_FALSE(q.SearchItem(&out, &nine, true));
  EXPECT_TRUE(q.SearchItem(&out, nullptr, true)) << "no criterion takes the oldest";
  EXPECT_EQ(out, 1);
  EXPECT_EQ(*static_cast<int*>(q.PeekItem(0)), 2);
  EXPECT_EQ(*static_cast<int*>(q.PeekItem(1)), 3);
  EXPECT_EQ(q.PeekItem(2), nullptr) << "PeekItem(count)";
}

std::vector<int> g_flushed;

TEST(RwQueue, FlushVisitsItemsOldestFirstAndRewindsTheRing) {
  CLNrwqueue q(4, sizeof(int));
  writeOne(q, 0);
  void* slot0 = q.PeekItem(0);
  readOne(q);
  writeOne(q, 1);
  writeOne(q, 2);
  EXPECT_EQ(q.Flush([](void* item) { g_flushed.push_back(*static_cast<int*>(item)); }), 0);
  EXPECT_EQ(g_flushed, (std::vector<int>{1, 2}));
  EXPECT_EQ(q.GetCount(), 0u);
  writeOne(q, 3);
  EXPECT_EQ(q.PeekItem(0), slot0) << "both indices are back at 0";
  for (int v : {4, 5, 6}) writeOne(q, v);  // all four slots are free again
  EXPECT_EQ(q.GetCount(), 4u);
  q.Flush(nullptr);
  EXPECT_EQ(q.GetCount(), 0u);
}

// Four producers and four consumers. Zero-copy calls name their slot by the
// shared index, so a zero-copy writer (and a zero-copy reader or a removing
// search) holds its side's lock exclusively while copy calls share it.
// Consumers check each producer's items arrive in order; at the end every item
// has arrived exactly once. Under qemu the run is cut to 20,000 items.
TEST(RwQueue, StressEightThreadsThroughFourSlots) {
#ifdef __aarch64__
  const uint32_t kItems = 20000;
#else
  const uint32_t kItems = 1000000;
#endif
  const int kProducers = 4, kConsumers = 4;
  struct Item {
    uint32_t producer, seq;
  };
  struct SideLock {
    pthread_rwlock_t lock;
    SideLock() {
      pthread_rwlockattr_t attr;
      pthread_rwlockattr_init(&attr);
      pthread_rwlockattr_setkind_np(&attr, PTHREAD_RWLOCK_PREFER_WRITER_NONRECURSIVE_NP);
      pthread_rwlock_init(&lock, &attr);
      pthread_rwlockattr_destroy(&attr);
    }
    ~SideLock() { pthread_rwlock_destroy(&lock); }
  } writers, readers;
  struct OldestOf : ISearchCriteria {
    uint32_t producer = 0;
    bool Match(const void* item) override { return static_cast<const Item*>(item)->producer == producer; }
  };
  CLNrwqueue q(4, sizeof(Item));
  std::vector<std::vector<std::atomic<uint8_t>>> seen;
  for (int p = 0; p < kProducers; p++) seen.emplace_back(kItems / kProducers);
  std::atomic<long> outOfOrder{0}, duplicates{0}, overfull{0};

  std::vector<std::thread> threads;
  for (int p = 0; p < kProducers; p++) {
    threads.emplace_back([&, p] {
      for (uint32_t s = 0; s < kItems / kProducers; s++) {
        Item item{static_cast<uint32_t>(p), s};
        if (s % 8 == 3) {
          pthread_rwlock_wrlock(&writers.lock);
          *static_cast<Item*>(q.GetWriteItem()) = item;
          q.CommitWriteItem();
        } else {
          pthread_rwlock_rdlock(&writers.lock);
          q.WriteItem(&item);
        }
        pthread_rwlock_unlock(&writers.lock);
      }
    });
  }
  for (int c = 0; c < kConsumers; c++) {
    threads.emplace_back([&, c] {
      std::vector<long> last(kProducers, -1);
      OldestOf oldest;
      for (uint32_t n = 0;; n++) {
        Item item;
        bool got;
        if (n % 8 == 5 || n % 1000 == 999) {
          pthread_rwlock_wrlock(&readers.lock);
          if (n % 1000 == 999) {
            oldest.producer = (n / 1000 + c) % kProducers;
            got = q.SearchItem(&item, &oldest, true);
            if (!got) got = q.ReadItem(&item);
          } else {
            Item* slot = static_cast<Item*>(q.GetReadItem());
            got = slot != nullptr;
            if (got) {
              item = *slot;
              q.CommitReadItem();
            }
          }
        } else {
          pthread_rwlock_rdlock(&readers.lock);
          got = q.ReadItem(&item);
        }
        pthread_rwlock_unlock(&readers.lock);
        if (!got) break;
        if (q.GetCount() > 4) overfull++;
        if (static_cast<long>(item.seq) <= last[item.producer]) outOfOrder++;
        last[item.producer] = item.seq;
        if (seen[item.producer][item.seq]++ != 0) duplicates++;
      }
    });
  }
  for (int p = 0; p < kProducers; p++) threads[p].join();
  q.EndOfFile();
  for (size_t t = kProducers; t < threads.size(); t++) threads[t].join();

  long missing = 0;
  for (auto& perProducer : seen)
    for (auto& s : perProducer) missing += s == 0;
  EXPECT_EQ(missing, 0);
  EXPECT_EQ(duplicates.load(), 0);
  EXPECT_EQ(outOfOrder.load(), 0);
  EXPECT_EQ(overfull.load(), 0);
  EXPECT_EQ(q.GetCount(), 0u);
}

}  // namespace
