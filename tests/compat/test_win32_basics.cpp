// Critical sections, interlocked counters, rectangles, time, GUIDs and the
// small utilities of the Win32-style layer.
#include <gtest/gtest.h>

#include <errno.h>
#include <string.h>
#include <sys/time.h>

#include <atomic>
#include <thread>
#include <vector>

#include "compat/win32.h"

namespace {

RECT R(LONG l, LONG t, LONG r, LONG b) { return RECT{l, t, r, b}; }

void expectRect(const RECT& r, LONG l, LONG t, LONG rr, LONG b) {
  EXPECT_EQ(r.left, l);
  EXPECT_EQ(r.top, t);
  EXPECT_EQ(r.right, rr);
  EXPECT_EQ(r.bottom, b);
}

int64_t wallMs() {
  struct timeval tv;
  gettimeofday(&tv, nullptr);
  return static_cast<int64_t>(tv.tv_sec) * 1000 + tv.tv_usec / 1000;
}

// ---- Critical sections ----

TEST(CriticalSection, RecursiveEntryByOwnerWhileOthersTryAndFail) {
  CRITICAL_SECTION cs;
  InitializeCriticalSection(&cs);
  EnterCriticalSection(&cs);
  EnterCriticalSection(&cs);  // the owner may enter again without blocking

  auto otherThreadTry = [&cs] {
    BOOL got = 2;
    std::thread t([&] {
      got = TryEnterCriticalSection(&cs);
      if (got) LeaveCriticalSection(&cs);
    });
    t.join();
    return got;
  };
  EXPECT_EQ(otherThreadTry(), FALSE);
  LeaveCriticalSection(&cs);
  EXPECT_EQ(otherThreadTry(), FALSE) << "still held once";
  LeaveCriticalSection(&cs);
  EXPECT_EQ(otherThreadTry(), TRUE) << "free after as many leaves as enters";
  DeleteCriticalSection(&cs);
}

TEST(CriticalSection, TryEnterFromOwnerSucceeds) {
  CRITICAL_SECTION cs;
  InitializeCriticalSection(&cs);
  EXPECT_EQ(TryEnterCriticalSection(&cs), TRUE);
  EXPECT_EQ(TryEnterCriticalSection(&cs), TRUE);
  LeaveCriticalSection(&cs);
  LeaveCriticalSection(&cs);
  DeleteCriticalSection(&cs);
}

TEST(CriticalSection, ClassGuardsLikeThePlainRecord) {
  CCRITCALSECTION lock;
  EnterCriticalSection(&lock.m_cs);
  BOOL got = 2;
  std::thread t([&] { got = TryEnterCriticalSection(&lock.m_cs); });
  t.join();
  EXPECT_EQ(got, FALSE);
  LeaveCriticalSection(&lock.m_cs);
}

// ---- Interlocked ----

TEST(Interlocked, IncrementAndDecrementReturnTheNewValue) {
  LONG v = -1;
  EXPECT_EQ(InterlockedIncrement(&v), 0);
  EXPECT_EQ(v, 0);
  EXPECT_EQ(InterlockedDecrement(&v), -1);
  v = 0x7fffffffL;
  EXPECT_EQ(InterlockedIncrement(&v), 0x80000000L) << "counters are 64-bit";
}

TEST(Interlocked, ExchangeReturnsOldValue) {
  LONG v = 5;
  EXPECT_EQ(InterlockedExchange(&v, 9), 5);
  EXPECT_EQ(v, 9);
}

TEST(Interlocked, ExchangeAddReturnsTheSumNotTheOldValue) {
  LONG v = 5;
  EXPECT_EQ(InterlockedExchangeAdd(&v, 3), 8);
  EXPECT_EQ(v, 8);
  EXPECT_EQ(InterlockedExchangeAdd(&v, -10), -2);
}

TEST(Interlocked, ConcurrentIncrementsAndDecrementsLoseNoCount) {
  LONG counter = 0;
  constexpr int kThreads = 4, kRounds = 20000;
  std::atomic<int> mismatches{0};
  std::vector<std::thread> threads;
  for (int t = 0; t < kThreads; ++t) {
    threads.emplace_back([&, t] {
      for (int i = 0; i < kRounds; ++i) {
        LONG after = InterlockedIncrement(&counter);
        if (after < 1) ++mismatches;  // every caller sees at least its own increment
        if (t % 2) InterlockedDecrement(&counter);
      }
    });
  }
  for (auto& th : threads) th.join();
  EXPECT_EQ(mismatches.load(), 0);
  EXPECT_EQ(counter, static_cast<LONG>(kThreads / 2) * kRounds);
}

TEST(Interlocked, ConcurrentIncrementsEachSeeADistinctValue) {
  LONG counter = 0;
  constexpr int kThreads = 4, kRounds = 5000;
  std::vector<std::vector<LONG>> seen(kThreads);
  std::vector<std::thread> threads;
  for (int t = 0; t < kThreads; ++t) {
    threads.emplace_back([&, t] {
      for (int i = 0; i < kRounds; ++i) seen[t].push_back(InterlockedIncrement(&counter));
    });
  }
  for (auto& th : threads) th.join();
  std::vector<char> hit(kThreads * kRounds + 1, 0);
  for (auto& v : seen)
    for (LONG x : v) {
      ASSERT_GE(x, 1);
      ASSERT_LE(x, kThreads * kRounds);
      EXPECT_EQ(hit[x]++, 0) << "value " << x << " returned twice";
    }
}

// ---- Rectangles ----

TEST(Rect, SetAndOffsetSignExtendAndRefuseNull) {
  RECT r = R(9, 9, 9, 9);
  EXPECT_EQ(SetRect(&r, -1, -2, 3, 4), TRUE);
  expectRect(r, -1, -2, 3, 4);
  EXPECT_EQ(OffsetRect(&r, -10, 20), TRUE);
  expectRect(r, -11, 18, -7, 24);
  EXPECT_EQ(SetRect(nullptr, 1, 2, 3, 4), FALSE);
  EXPECT_EQ(OffsetRect(nullptr, 1, 2), FALSE);
}

TEST(Rect, IsRectEmpty) {
  RECT a = R(0, 0, 1, 1), b = R(5, 0, 5, 10), c = R(0, 5, 10, 4);
  EXPECT_EQ(IsRectEmpty(nullptr), TRUE);
  EXPECT_EQ(IsRectEmpty(&a), FALSE);
  EXPECT_EQ(IsRectEmpty(&b), TRUE);
  EXPECT_EQ(IsRectEmpty(&c), TRUE);
}

TEST(Rect, EqualRectComparesAllFourEdges) {
  RECT a = R(1, 2, 3, 4);
  const RECT variants[] = {R(1, 2, 3, 4), R(0, 2, 3, 4), R(1, 0, 3, 4), R(1, 2, 0, 4), R(1, 2, 3, 0)};
  const BOOL expected[] = {TRUE, FALSE, FALSE, FALSE, FALSE};
  for (int i = 0; i < 5; ++i) EXPECT_EQ(EqualRect(&a, &variants[i]), expected[i]) << i;
}

TEST(Rect, PtInRectEdges) {
  RECT r = R(10, 20, 30, 40);
  struct Case {
    LONG x, y;
    BOOL in;
  } cases[] = {{10, 20, TRUE},  {29, 39, TRUE}, {30, 25, FALSE},
               {15, 40, FALSE}, {9, 25, FALSE}, {15, 19, FALSE}};
  for (const Case& c : cases) EXPECT_EQ(PtInRect(&r, POINT{c.x, c.y}), c.in) << c.x << "," << c.y;
  EXPECT_EQ(PtInRect(nullptr, POINT{0, 0}), FALSE);
  RECT empty = R(10, 10, 10, 20);
  EXPECT_EQ(PtInRect(&empty, POINT{10, 15}), FALSE);
}

TEST(Rect, IntersectRect) {
  RECT d;
  RECT a = R(0, 0, 10, 10), b = R(5, 5, 15, 15);
  EXPECT_EQ(IntersectRect(&d, &a, &b), TRUE);
  expectRect(d, 5, 5, 10, 10);
  RECT touching = R(10, 0, 20, 10);  // a.right == b.left
  d = R(1, 1, 1, 1);
  EXPECT_EQ(IntersectRect(&d, &a, &touching), FALSE);
  expectRect(d, 0, 0, 0, 0);
  RECT below = R(0, 10, 10, 20);
  EXPECT_EQ(IntersectRect(&d, &a, &below), FALSE);
  expectRect(d, 0, 0, 0, 0);
}

TEST(Rect, IntersectRectMayWriteIntoASource) {
  RECT a = R(0, 0, 10, 10), b = R(5, -5, 20, 8);
  EXPECT_EQ(IntersectRect(&a, &a, &b), TRUE);
  expectRect(a, 5, 0, 10, 8);
}

TEST(Rect, UnionRectDoesNotSkipEmptySources) {
  RECT d;
  RECT a = R(5, 5, 10, 10), zero = R(0, 0, 0, 0);
  EXPECT_EQ(UnionRect(&d, &a, &zero), TRUE);
  expectRect(d, 0, 0, 10, 10);
  RECT e1 = R(3, 3, 3, 8), e2 = R(3, 1, 3, 2);  // bounding box has zero width
  d = R(1, 1, 1, 1);
  EXPECT_EQ(UnionRect(&d, &e1, &e2), FALSE);
  expectRect(d, 0, 0, 0, 0);
  RECT b = R(-4, 2, 7, 30);
  EXPECT_EQ(UnionRect(&d, &a, &b), TRUE);
  expectRect(d, -4, 2, 10, 30);
}

// ---- Time ----

TEST(Time, TimeGetTimeIsWallClockMilliseconds) {
  int64_t before = wallMs();
  DWORD t = timeGetTime();
  DWORD tick = GetTickCount();
  int64_t after = wallMs();
  EXPECT_GE(static_cast<int64_t>(t), before);
  EXPECT_LE(static_cast<int64_t>(t), after);
  EXPECT_GE(tick, t);
  EXPECT_GT(t, 0xFFFFFFFFul) << "milliseconds since the epoch do not wrap at 32 bits";
}

TEST(Time, SleepWaitsAtLeastTheTime) {
  int64_t before = wallMs();
  Sleep(30);
  int64_t elapsed = wallMs() - before;
  EXPECT_GE(elapsed, 29);  // millisecond truncation of the two clock reads
  EXPECT_LT(elapsed, 1000);
  before = wallMs();
  Sleep(0);
  EXPECT_LT(wallMs() - before, 50);
}

// ---- GUIDs ----

TEST(Guid, ComparesOnlyTheFirstSixteenBytes) {
  _GUID a{0x17A12BC8, 0xDF53, 0x4AC7, {0xBA, 0xCF, 0xE8, 0x54, 0x74, 0x24, 0x27, 0xAE}};
  _GUID b = a;
  EXPECT_EQ(IsEqualGUID(a, b), TRUE);
  EXPECT_TRUE(a == b);
  EXPECT_FALSE(a != b);
  for (int i = 4; i < 8; ++i) {  // the last four bytes of Data4 never take part
    _GUID c = a;
    c.Data4[i] ^= 0xFF;
    EXPECT_EQ(IsEqualGUID(a, c), TRUE) << i;
  }
  _GUID d1 = a, d2 = a, d3 = a, d4 = a;
  d1.Data1 ^= 1;
  d2.Data2 ^= 0x100;
  d3.Data3 ^= 1;
  d4.Data4[3] ^= 0x80;
  for (const _GUID* g : {&d1, &d2, &d3, &d4}) {
    EXPECT_EQ(IsEqualGUID(a, *g), FALSE);
    EXPECT_TRUE(a != *g);
  }
}

// ---- Utilities ----

TEST(Utilities, ZeroMemoryClearsExactlyLen) {
  unsigned char buf[8];
  memset(buf, 0xAB, sizeof buf);
  ZeroMemory(buf + 1, 5);
  const unsigned char expected[8] = {0xAB, 0, 0, 0, 0, 0, 0xAB, 0xAB};
  EXPECT_EQ(memcmp(buf, expected, 8), 0);
}

TEST(Utilities, GetLastErrorIsErrnoSignExtended) {
  errno = ENOENT;
  EXPECT_EQ(GetLastError(), static_cast<DWORD>(ENOENT));
  errno = -3;
  EXPECT_EQ(GetLastError(), static_cast<DWORD>(-3L));
  EXPECT_EQ(GetLastError(), 0xFFFFFFFFFFFFFFFDul);
}

TEST(Utilities, LocalAllocAndFree) {
  void* p = LocalAlloc(0x40 /* zero-init flag is ignored */, 32);
  ASSERT_NE(p, nullptr);
  memset(p, 1, 32);
  EXPECT_EQ(LocalFree(p), nullptr);
}

TEST(Utilities, ItoaRadix) {
  char buf[16];
  EXPECT_EQ(itoa(255, buf, 16), buf);
  EXPECT_STREQ(buf, "ff");
  EXPECT_EQ(itoa(-42, buf, 10), buf);
  EXPECT_STREQ(buf, "-42");
  strcpy(buf, "keep");
  EXPECT_EQ(itoa(7, buf, 8), buf);
  EXPECT_STREQ(buf, "keep");
}

TEST(Utilities, InertStubsAnswerTheirFixedValues) {
  EXPECT_EQ(SendMessage(nullptr, 0, 0, 0), 0);
  EXPECT_EQ(GetModuleHandle("x"), nullptr);
  EXPECT_EQ(GetSystemMetrics(0), 0);
  EXPECT_EQ(CoInitializeEx(nullptr, 0), 0);
  EXPECT_EQ(ShowWindow(nullptr, 0), 1);
  EXPECT_EQ(PostMessage(nullptr, 0, 0, 0), 1);
  EXPECT_EQ(CreateWindow("c", "w", 0, 0, 0, 1, 1, nullptr, nullptr, nullptr, nullptr),
            reinterpret_cast<HWND>(0x12345678));
}

}  // namespace
