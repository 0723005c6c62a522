// Clocks, polling, background threads and child processes for the portability-layer tests.
#pragma once

#include <gtest/gtest.h>
#include <stdio.h>
#include <sys/time.h>
#include <sys/wait.h>
#include <unistd.h>

#include <atomic>
#include <chrono>
#include <functional>
#include <string>
#include <thread>
#include <vector>

namespace compat_test {

// The layer's clock and timers count wall-clock milliseconds since the epoch.
inline long wallMs() {
  struct timeval tv;
  gettimeofday(&tv, nullptr);
  return tv.tv_sec * 1000L + tv.tv_usec / 1000;
}

inline void sleepMs(int ms) { std::this_thread::sleep_for(std::chrono::milliseconds(ms)); }

// Polls every millisecond; false when the condition did not come true in time.
inline bool waitUntil(const std::function<bool()>& done, long timeoutMs = 10000) {
  for (const long t0 = wallMs(); !done(); sleepMs(1))
    if (wallMs() - t0 > timeoutMs) return false;
  return true;
}

// Runs fn on n threads; counts those that have returned and adds up their results.
struct Background {
  std::atomic<int> done{0}, sum{0};
  std::vector<std::thread> threads;
  Background(int n, const std::function<int()>& fn) {
    for (int i = 0; i < n; i++) threads.emplace_back([this, fn] { sum += fn(), done++; });
  }
  ~Background() {
    for (auto& t : threads) t.join();
  }
  bool blockedAfter(int ms) { return sleepMs(ms), done == 0; }
  bool finished(int n, long timeoutMs = 10000) {
    return waitUntil([&] { return done == n; }, timeoutMs);
  }
};

// Starts fn on n threads, checks that none returns within ms, then calls
// release; answers the sum of their results once all have returned.
inline int sumAfterRelease(int n, const std::function<int()>& fn, const std::function<void()>& release,
                           int ms = 20) {
  Background b(n, fn);
  EXPECT_TRUE(b.blockedAfter(ms)) << "a thread returned before the release";
  release();
  EXPECT_TRUE(b.finished(n)) << "a thread was not released";
  return b.sum;
}

struct ChildResult {
  int status;  // exit status, or -1 when the child did not exit normally
  std::string out;
};

// The body's return value is the child's exit status unless it exits itself.
inline ChildResult runInChild(const std::function<int()>& body) {
  int fds[2];
  if (pipe(fds) != 0) return {-1, "pipe failed"};
  fflush(stdout);
  pid_t pid = fork();
  if (pid == 0) {
    dup2(fds[1], 1);
    close(fds[0]);
    int code = body();
    fflush(stdout);
    _exit(code);
  }
  close(fds[1]);
  std::string out;
  char buf[256];
  for (ssize_t n; (n = read(fds[0], buf, sizeof buf)) > 0;) out.append(buf, static_cast<size_t>(n));
  close(fds[0]);
  int status = 0;
  waitpid(pid, &status, 0);
  return {WIFEXITED(status) ? WEXITSTATUS(status) : -1, out};
}

}  // namespace compat_test
