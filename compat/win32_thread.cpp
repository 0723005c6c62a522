// Threads of the Win32-style layer: creation and the 128-slot table, exit
// codes, suspension by SIGUSR1/SIGUSR2, priorities, waits, the thread-specific
// current thread and the per-thread message queue.
#include <errno.h>
#include <sched.h>
#include <signal.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <sys/syscall.h>
#include <time.h>
#include <unistd.h>

#include "compat/thread_table.h"
#include "compat/win32.h"

namespace {

struct Message {
  unsigned int message;
  unsigned int wParam;
  long lParam;
};
static_assert(sizeof(Message) == 16, "queue records are 16 bytes");

struct StartRecord {
  CLinuxThread* object;
  LPTHREAD_START_ROUTINE fn;
  void* arg;
  bool suspendOnCreate;
  // Points into the creator's frame: the new thread frees the record itself
  // before the creator has seen the flag.
  bool* started;
};

pthread_key_t g_currentThreadKey;
pthread_once_t g_once = PTHREAD_ONCE_INIT;
bool g_keyMade = false;
CLinuxThread* mainthread = nullptr;

// Straight to descriptor 2: the stderr stream object only exists on Android
// from API 23 on.
void toStderr(const char* text) {
  ssize_t written = write(2, text, strlen(text));
  (void)written;
}

// The kernel's signal set is 64 bits wide, whatever the C library's sigset_t is.
const long kKernelSigsetBytes = 8;

void onSuspend(int) {
  const int saved = errno;  // sigsuspend always ends in EINTR
  sigset_t wake;
  sigfillset(&wake);
  sigdelset(&wake, SIGUSR2);
  sigsuspend(&wake);
  // Suspensions are not counted: a second SIGUSR1 that arrived while this one
  // held the thread would suspend it again once the handler returns, so a
  // single resume must discard it. (No sigtimedwait before API 23: the system
  // call is made directly, with a zero time-out.)
  sigset_t again;
  sigemptyset(&again);
  sigaddset(&again, SIGUSR1);
  struct timespec zero = {0, 0};
  while (syscall(SYS_rt_sigtimedwait, &again, nullptr, &zero, kKernelSigsetBytes) == SIGUSR1) {
  }
  errno = saved;
}

void onResume(int) {}

void installHandler(int signo, void (*handler)(int), const char* failure) {
  struct sigaction action = {};
  action.sa_handler = handler;
  sigemptyset(&action.sa_mask);
  action.sa_flags = 0;
  if (sigaction(signo, &action, nullptr) != 0) toStderr(failure);
}

// Runs once, when the first thread is started through the layer: a host that
// never starts one keeps SIGUSR1 and SIGUSR2 for itself.
void initThreading() {
  if (pthread_key_create(&g_currentThreadKey, nullptr) != 0) {
    toStderr("Unable to create thread-specific-data key.\n");
  } else {
    __atomic_store_n(&g_keyMade, true, __ATOMIC_RELEASE);
  }
  if (!mainthread) {
    mainthread = new CLinuxThread;
    if (mainthread->Init(nullptr, nullptr, 2) == -1) puts("Unable to create handle for main thread.");
  }
  installHandler(SIGUSR1, onSuspend, "Unable to set suspend signal handler.\n");
  installHandler(SIGUSR2, onResume, "Unable to set resume signal handler.\n");
}

// The record is freed before the thread function runs, so that a thread
// leaving through ExitThread does not leak it.
void* threadStart(void* param) {
  const StartRecord start = *static_cast<StartRecord*>(param);
  free(param);
  start.object->SetExitCode(STILL_ACTIVE);
  __atomic_store_n(start.started, true, __ATOMIC_RELEASE);
  // The creator may not have stored the thread id yet: signal by our own.
  if (start.suspendOnCreate) pthread_kill(pthread_self(), SIGUSR1);
  unsigned int result = start.fn(start.arg);
  start.object->SetExitCode(static_cast<int>(result));
  return nullptr;
}

CLinuxThread* tableThread(HANDLE h) {
  if (h == nullptr || h == INVALID_HANDLE_VALUE || !scrimIsThreadTableHandle(h)) return nullptr;
  return static_cast<CLinuxThread*>(h);
}

}  // namespace

CLinuxThread::CLinuxThread()
    : thread(0), queue(nullptr), reserved(nullptr), exitCode(0), suspendOnCreate(false) {}

CLinuxThread::~CLinuxThread() { delete queue; }

const void* CLinuxThread::getType() const { return g_scrimSyncObjectType; }

long CLinuxThread::Init(LPTHREAD_START_ROUTINE fn, void* arg, int) {
  queue = new CLNrwqueue(1024, sizeof(Message));
  if (!fn) {
    thread = pthread_self();
    return static_cast<long>(thread);
  }
  if (pthread_once(&g_once, initThreading) != 0) {
    toStderr("Unable to run thread-specific-data initialization.\n");
    return -1;
  }
  StartRecord* start = static_cast<StartRecord*>(malloc(sizeof(StartRecord)));
  bool started = false;
  *start = StartRecord{this, fn, arg, suspendOnCreate, &started};
  // The creator's current thread becomes the thread it created last; the new
  // thread stores nothing for itself. Message functions that use the current
  // thread depend on exactly this.
  if (!g_keyMade || pthread_setspecific(g_currentThreadKey, this) != 0) {
    toStderr("Unable to save thread handle.\n");
  }
  if (pthread_create(&thread, nullptr, threadStart, start) != 0) {
    free(start);
    return -1;
  }
  while (!__atomic_load_n(&started, __ATOMIC_ACQUIRE)) usleep(10);
  return static_cast<long>(thread);
}

CLinuxThread* CLinuxThread::GetCurrentThread() {
  if (!__atomic_load_n(&g_keyMade, __ATOMIC_ACQUIRE)) return nullptr;
  return static_cast<CLinuxThread*>(pthread_getspecific(g_currentThreadKey));
}

// A resume sent before the suspension has taken hold is lost.
int CLinuxThread::Suspend() { return thread == 0 ? -1 : pthread_kill(thread, SIGUSR1); }

int CLinuxThread::Resume() { return thread == 0 ? -1 : pthread_kill(thread, SIGUSR2); }

// Priorities above 0 ask for real-time scheduling, which an unprivileged
// process may be refused: the refusal is the result.
int CLinuxThread::SetPriority(int priority) {
  if (thread == 0) return -1;
  struct sched_param param = {};
  int policy = SCHED_OTHER;
  if (priority > 0) {
    policy = SCHED_FIFO;
    param.sched_priority = priority > 99 ? 99 : priority;
  }
  return pthread_setschedparam(thread, policy, &param);
}

int CLinuxThread::GetPriority() {
  if (thread == 0) return -1;
  int policy;
  struct sched_param param = {};
  pthread_getschedparam(thread, &policy, &param);
  return param.sched_priority;
}

// Android has no pthread_cancel: a terminated thread keeps running.
int CLinuxThread::Cancel() { return 0; }

void CLinuxThread::Exit(unsigned int code) {
  pthread_exit(reinterpret_cast<void*>(static_cast<uintptr_t>(code)));
}

// The exit code is polled by timed waits while the thread writes it.
void CLinuxThread::SetExitCode(int code) { __atomic_store_n(&exitCode, code, __ATOMIC_RELEASE); }

int CLinuxThread::GetExitCode() { return __atomic_load_n(&exitCode, __ATOMIC_ACQUIRE); }

void CLinuxThread::EnableSuspendOnCreate(bool enable) { suspendOnCreate = enable; }

// A joined thread no longer exists: its id is cleared so that a second join
// fails instead of touching a thread the system may have reused.
int CLinuxThread::WaitForExit() {
  if (thread == 0) return ESRCH;
  int rc = pthread_join(thread, nullptr);
  if (rc == 0) thread = 0;
  return rc;
}

int CLinuxThread::WaitAction() { return WaitForExit(); }

unsigned long CLinuxThread::WaitForSignal(unsigned long timeoutMs) {
  if (timeoutMs == INFINITE) return WaitForExit() == 0 ? WAIT_OBJECT_0 : WAIT_FAILED;
  const DWORD start = timeGetTime();
  do {
    if (GetExitCode() != STILL_ACTIVE) return WAIT_OBJECT_0;
    usleep(1000);
  } while (start + timeoutMs > timeGetTime());
  return WAIT_TIMEOUT;
}

// WM_QUIT ends the whole process with status 2: callers rely on it.
int CLinuxThread::GetMessage(unsigned int* msg, unsigned int* wParam, long* lParam) {
  for (;;) {
    Message m;
    queue->ReadItem(&m);
    if (m.message == WM_TIMER && WEX_IsValidTimer() == 0) continue;
    if (m.message == WM_QUIT) exit(2);
    *msg = m.message;
    *wParam = m.wParam;
    *lParam = m.lParam;
    return 1;
  }
}

int CLinuxThread::PeekMessage(unsigned int* msg, unsigned int* wParam, long* lParam, unsigned int,
                              unsigned int, bool remove) {
  Message m;
  if (!queue->SearchItem(&m, nullptr, remove)) return 0;
  *msg = m.message;
  *wParam = m.wParam;
  *lParam = m.lParam;
  return 1;
}

// The margin below the capacity of 1024 is kept as callers have always seen it.
int CLinuxThread::PostMessage(unsigned int msg, unsigned int wParam, long lParam) {
  if (queue->GetCount() > 1004) return 0;
  Message m = {msg, wParam, lParam};
  return queue->WriteItem(&m);
}

// ---- Win32 functions ----------------------------------------------------------

extern "C" HANDLE CreateThread(void*, DWORD, LPTHREAD_START_ROUTINE fn, void* arg, DWORD flags, DWORD* id) {
  scrimInitThreadTableLock();
  EnterCriticalSection(&gCSAllThread);
  int free = 0;
  while (free < kThreadTableSlots && gAllThreads[free]) free++;
  if (free == kThreadTableSlots) {
    puts("thread full ");
    LeaveCriticalSection(&gCSAllThread);
    return INVALID_HANDLE_VALUE;
  }
  CLinuxThread* thread = new CLinuxThread;
  if (flags == CREATE_SUSPENDED) thread->EnableSuspendOnCreate(true);
  if (thread->Init(fn, arg, 2) == -1) {
    delete thread;
    LeaveCriticalSection(&gCSAllThread);
    return nullptr;
  }
  if (id) *id = reinterpret_cast<DWORD>(thread);
  gAllThreads[free] = thread;
  LeaveCriticalSection(&gCSAllThread);
  return thread;
}

extern "C" HANDLE _beginthread(LPTHREAD_START_ROUTINE fn, unsigned int, void* arg) {
  CLinuxThread* thread = new CLinuxThread;
  if (thread->Init(fn, arg, 2) == -1) {
    delete thread;
    return INVALID_HANDLE_VALUE;
  }
  return thread;
}

extern "C" HANDLE _beginthreadex(void*, unsigned int, LPTHREAD_START_ROUTINE fn, void* arg, unsigned int,
                                 unsigned int* id) {
  CLinuxThread* thread = new CLinuxThread;
  long tid = thread->Init(fn, arg, 2);
  if (tid == -1) {
    delete thread;
    return nullptr;
  }
  // The id is stored as a 64-bit value, whatever the pointer's type says.
  if (id) *reinterpret_cast<uint64_t*>(id) = static_cast<uint64_t>(tid);
  return thread;
}

extern "C" void ExitThread(DWORD code) { CLinuxThread::Exit(static_cast<unsigned int>(code)); }

extern "C" void _endthread(void) { CLinuxThread::Exit(0); }

extern "C" void _endthreadex(unsigned int code) { CLinuxThread::Exit(code); }

extern "C" BOOL TerminateThread(HANDLE h, DWORD) {
  CLinuxThread* thread = tableThread(h);
  if (!thread) return FALSE;
  thread->Cancel();
  return TRUE;
}

extern "C" BOOL GetExitCodeThread(HANDLE h, DWORD* code) {
  CLinuxThread* thread = tableThread(h);
  if (!thread || !code) return FALSE;
  *code = static_cast<DWORD>(static_cast<long>(thread->GetExitCode()));
  return TRUE;
}

// No suspend count is kept: any number of suspensions ends with one resume.
extern "C" DWORD SuspendThread(HANDLE h) {
  CLinuxThread* thread = tableThread(h);
  return thread && thread->Suspend() == 0 ? 1 : 0xFFFFFFFFUL;
}

extern "C" DWORD ResumeThread(HANDLE h) {
  CLinuxThread* thread = tableThread(h);
  return thread && thread->Resume() == 0 ? 1 : 0xFFFFFFFFUL;
}

extern "C" BOOL SetThreadPriority(HANDLE h, int priority) {
  CLinuxThread* thread = tableThread(h);
  return thread && thread->SetPriority(priority) == 0 ? TRUE : FALSE;
}

extern "C" int GetThreadPriority(HANDLE h) {
  CLinuxThread* thread = tableThread(h);
  return thread ? thread->GetPriority() : 0;
}

extern "C" HANDLE GetCurrentThread(void) { return CLinuxThread::GetCurrentThread(); }

extern "C" DWORD GetCurrentThreadId(void) {
  return reinterpret_cast<DWORD>(CLinuxThread::GetCurrentThread());
}

extern "C" BOOL GetMessage(MSG* msg, HWND, UINT, UINT) {
  CLinuxThread* current = CLinuxThread::GetCurrentThread();
  if (!current) return FALSE;
  current->GetMessage(&msg->message, &msg->wParam, &msg->lParam);
  return TRUE;
}

extern "C" BOOL PeekMessage(MSG* msg, HWND, UINT filterMin, UINT filterMax, UINT removeFlag) {
  CLinuxThread* current = CLinuxThread::GetCurrentThread();
  if (!current) return FALSE;
  return current->PeekMessage(&msg->message, &msg->wParam, &msg->lParam, filterMin, filterMax,
                              removeFlag == PM_REMOVE)
             ? TRUE
             : FALSE;
}

extern "C" BOOL PostThreadMessage(HANDLE h, UINT msg, UINT wParam, LONG lParam) {
  if (!h) return FALSE;
  return static_cast<CLinuxThread*>(h)->PostMessage(msg, wParam, lParam) == 1 ? TRUE : FALSE;
}
