// Threads: exit codes and waits, the 128-slot table, suspension, priorities,
// the creator's current thread and the message queue.
#include <gtest/gtest.h>
#include <signal.h>

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

// Runs first: nothing is claimed before a thread is started through the layer.
TEST(Thread, SignalsAreLeftAloneUntilTheFirstThreadStarts) {
  struct sigaction usr1, usr2;
  sigaction(SIGUSR1, nullptr, &usr1);
  sigaction(SIGUSR2, nullptr, &usr2);
  EXPECT_TRUE(usr1.sa_handler == SIG_DFL && usr2.sa_handler == SIG_DFL);
  HANDLE h = CreateThread(
      nullptr, 0, [](void*) { return 0u; }, nullptr, 0, nullptr);
  WaitForSingleObject(h, INFINITE);
  sigaction(SIGUSR1, nullptr, &usr1);
  EXPECT_NE(usr1.sa_handler, SIG_DFL);
  CloseHandle(h);
}

TEST(Thread, ExitCodesPrioritiesAndWaits) {
  g_go = CreateEvent(nullptr, TRUE, FALSE, nullptr);
  DWORD id = 0, code = 0;
  HANDLE h = CreateThread(nullptr, 0, returnSevenWhenLetGo, nullptr, 0, &id);
  EXPECT_EQ(id, reinterpret_cast<DWORD>(h)) << "the id is the handle value";
  ASSERT_TRUE(GetExitCodeThread(h, &code));
  EXPECT_EQ(code, 259u);
  // Real-time priorities may be refused to this process; a refusal changes nothing.
  for (int asked : {150, 20, -5}) {
    const int expected = SetThreadPriority(h, asked) ? (asked > 99 ? 99 : asked < 0 ? 0 : asked) : 0;
    EXPECT_EQ(GetThreadPriority(h), expected) << asked;
    SetThreadPriority(h, 0);
  }
  const auto t0 = Clock::now();
  EXPECT_EQ(WaitForSingleObject(h, 30), WAIT_TIMEOUT);
  EXPECT_GE(msSince(t0), 29);
  EXPECT_EQ(TerminateThread(h, 1), TRUE) << "and the thread keeps running";
  SetEvent(g_go);
  EXPECT_EQ(WaitForSingleObject(h, 5000), WAIT_OBJECT_0);
  EXPECT_EQ(WaitForSingleObject(h, 0), WAIT_OBJECT_0) << "a finished thread is reported at once";
  EXPECT_TRUE(GetExitCodeThread(h, &code) && code == 7u);
  EXPECT_EQ(GetExitCodeThread(h, nullptr), FALSE);
  EXPECT_EQ(WaitForSingleObject(h, INFINITE), WAIT_OBJECT_0);
  EXPECT_EQ(WaitForSingleObject(h, INFINITE), WAIT_FAILED) << "a second join fails";
  CloseHandle(h);

  h = CreateThread(
      nullptr, 0, [](void*) -> unsigned { ExitThread(3); }, nullptr, 0, nullptr);
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

TEST(Thread, SuspendAndResumeKeepNoCount) {
  for (DWORD flags : {DWORD(CREATE_SUSPENDED), DWORD(0)}) {
    g_quit = false;
    HANDLE h = CreateThread(nullptr, 0, count, nullptr, flags, nullptr);
    if (flags == CREATE_SUSPENDED) {
      EXPECT_FALSE(ticking());
      // A resume sent before the suspension takes hold is lost: repeat it.
      EXPECT_TRUE(waitUntil([&] { return ResumeThread(h) == 1 && ticking(); }));
    }
    ASSERT_TRUE(waitUntil(ticking));
    EXPECT_EQ(SuspendThread(h), 1u);
    ASSERT_TRUE(waitUntil([] { return !ticking(); }));
    EXPECT_FALSE(ticking());
    EXPECT_EQ(SuspendThread(h), 1u) << "a second suspension while suspended";
    EXPECT_EQ(ResumeThread(h), 1u);
    EXPECT_TRUE(waitUntil(ticking, 5000)) << "one resume ends two suspensions";
    g_quit = true;
    WaitForSingleObject(h, INFINITE);
    CloseHandle(h);
  }
}

// The creator reads the queue of the thread it made last; that thread itself
// has no current thread.
TEST(Thread, MessagesKeepOrderAndStopAt1005Queued) {
  g_go = CreateEvent(nullptr, TRUE, FALSE, nullptr);
  HANDLE h = CreateThread(nullptr, 0, returnSevenWhenLetGo, nullptr, 0, nullptr);
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
  SetEvent(g_go);
  WaitForSingleObject(h, INFINITE);
  EXPECT_EQ(g_current.load(), nullptr);
  CloseHandle(h);
  CloseHandle(g_go);
}

TEST(Thread, ChildProcessTableLimitAndQuitMessage) {
  ChildResult full = runInChild([] {
    int made = 0;
    for (CLinuxThread* slot : gAllThreads) made += slot != nullptr;
    for (HANDLE h;
         (h = CreateThread(
              nullptr, 0, [](void*) { return pause(), 0u; }, nullptr, 0, nullptr)) != INVALID_HANDLE_VALUE;)
      if (!h || ++made > 200) return 1;
    return made == 128 ? 0 : 2;
  });
  EXPECT_EQ(full.status, 0);
  EXPECT_EQ(full.out, "thread full \n");

  ChildResult quit = runInChild([] {
    HANDLE h = CreateThread(
        nullptr, 0, [](void*) { return 0u; }, nullptr, 0, nullptr);
    WaitForSingleObject(h, INFINITE);
    PostThreadMessage(h, 0x400, 0, 0);
    PostThreadMessage(h, WM_QUIT, 0, 0);
    MSG msg;
    GetMessage(&msg, nullptr, 0, 0);
    if (msg.message != 0x400) return 1;
    GetMessage(&msg, nullptr, 0, 0);
    return 3;  // not reached: WM_QUIT ends the process with status 2
  });
  EXPECT_EQ(quit.status, 2);
}

}  // namespace
