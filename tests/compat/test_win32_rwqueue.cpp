// The bounded ring queue: blocking, end of file, zero-copy access, flush,
// search with removal from anywhere in the ring, peeking, and a stress run of
// four producers and four consumers through a queue of four slots.
#include <gtest/gtest.h>
#include <pthread.h>

#include <algorithm>

#include "compat/win32.h"
#include "compat_test_util.h"

using namespace compat_test;

namespace {

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
  writeOne(q, 1);
  writeOne(q, 2);
  {
    Background writer(1, [&] { return writeOne(q, 3); });
    EXPECT_TRUE(writer.blockedAfter(30)) << "full";
    EXPECT_EQ(readOne(q), 1);
    ASSERT_TRUE(writer.finished(1));
  }
  EXPECT_EQ(readOne(q) + readOne(q), 5);
  {
    Background readers(3, [&] { return readOne(q); });
    EXPECT_TRUE(readers.blockedAfter(20));
    EXPECT_EQ(q.EndOfFile(), 0);
    ASSERT_TRUE(readers.finished(3)) << "end of file releases every blocked reader";
    EXPECT_EQ(readers.sum, -3);
  }
  EXPECT_EQ(q.GetReadItem(), nullptr) << "still at end of file";
  writeOne(q, 7);
  EXPECT_EQ(readOne(q), 7);
  {
    Background reader(1, [&] { return readOne(q); });
    EXPECT_TRUE(reader.blockedAfter(20)) << "the write cleared the end of file";
    EXPECT_EQ(q.WriteItem(nullptr), 1);
    ASSERT_TRUE(reader.finished(1)) << "a null source wakes a reader";
    EXPECT_EQ(reader.sum, -1) << "which finds the queue empty";
  }
  writeOne(q, 8);
  Background writer(1, [&] { return writeOne(q, 9); });
  EXPECT_TRUE(writer.blockedAfter(20)) << "the null write kept its space unit";
  EXPECT_EQ(readOne(q), 8);
  ASSERT_TRUE(writer.finished(1));
}

TEST(RwQueue, ZeroCopyCommitAndCancel) {
  CLNrwqueue q(2, sizeof(int));
  *static_cast<int*>(q.GetWriteItem()) = 5;
  q.CancelWriteItem();
  *static_cast<int*>(q.GetWriteItem()) = 6;
  q.CommitWriteItem();
  writeOne(q, 7);
  EXPECT_EQ(*static_cast<int*>(q.GetReadItem()), 6);
  q.CancelReadItem();
  EXPECT_EQ(q.GetCount(), 2u) << "a cancelled read leaves the item";
  EXPECT_EQ(*static_cast<int*>(q.GetReadItem()), 6);
  q.CommitReadItem();
  EXPECT_EQ(readOne(q), 7);
}

// A, B, C at every position of a ring of four (straddling its end or not):
// removing any one leaves the other two in order.
TEST(RwQueue, SearchRemovesFromAnywhereInTheRingKeepingOrder) {
  for (int offset = 0; offset < 4; offset++) {
    for (int k = 0; k < 3; k++) {
      CLNrwqueue q(4, sizeof(int));
      for (int i = 0; i < offset; i++) writeOne(q, -1), readOne(q);
      for (int v : {10, 11, 12}) writeOne(q, v);
      Equals sought(10 + k);
      int found = 0;
      ASSERT_TRUE(q.SearchItem(&found, &sought, true));
      EXPECT_EQ(found, 10 + k);
      writeOne(q, 13);  // the semaphores still agree with the count
      std::vector<int> rest, expected;
      while (q.GetCount() > 0) rest.push_back(readOne(q));
      for (int v : {10, 11, 12, 13})
        if (v != 10 + k) expected.push_back(v);
      EXPECT_EQ(rest, expected) << "offset " << offset << ", removed " << k;
    }
  }
}

std::vector<int> g_flushed;

TEST(RwQueue, SearchPeekAndFlush) {
  CLNrwqueue q(4, sizeof(int));
  int out = 0;
  EXPECT_FALSE(q.SearchItem(&out, nullptr, false)) << "empty";
  writeOne(q, 0);
  void* slot0 = q.PeekItem(0);
  readOne(q);
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
  for (auto& l : side) pthread_rwlock_destroy(&l);
}

}  // namespace
