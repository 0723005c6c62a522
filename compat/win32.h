// The Win32-style programming interface on POSIX threads: types and functions
// under their Win32 names, exported unmangled so that code written against that
// interface links unchanged on Linux and Android.
#pragma once

#include <pthread.h>
#include <semaphore.h>
#include <stddef.h>
#include <stdint.h>

#ifndef SCRIM_API
#define SCRIM_API __attribute__((visibility("default")))
#endif

// Integer widths of the interface on this 64-bit target; part of every exported signature.
typedef unsigned long DWORD;
typedef long LONG;
typedef int BOOL;
typedef unsigned int UINT;
typedef void* LPVOID;
typedef void* HWND;
typedef void* HINSTANCE;
typedef void* HMODULE;
typedef long LRESULT;
typedef unsigned long WPARAM;
typedef long LPARAM;
typedef long HRESULT;

class CLinuxSyncObject;
typedef CLinuxSyncObject* HANDLE;

#ifndef TRUE
#define TRUE 1
#endif
#ifndef FALSE
#define FALSE 0
#endif

// Data1 is 64 bits wide here (the platform's unsigned long); only its low 32
// bits are ever used. 20 bytes of content in 24 bytes of storage.
struct _GUID {
  unsigned long Data1;
  unsigned short Data2;
  unsigned short Data3;
  unsigned char Data4[8];
};
typedef _GUID GUID;
typedef _GUID IID;

struct RECT {
  LONG left;
  LONG top;
  LONG right;   // exclusive
  LONG bottom;  // exclusive
};
typedef RECT* LPRECT;

struct POINT {
  LONG x;
  LONG y;
};

// A recursive mutex and the attribute object it was made with, kept alive together.
struct CRITICAL_SECTION {
  pthread_mutex_t mutex;
  pthread_mutexattr_t attr;
};
typedef CRITICAL_SECTION* LPCRITICAL_SECTION;

extern "C" {
SCRIM_API void InitializeCriticalSection(CRITICAL_SECTION* cs);
SCRIM_API void EnterCriticalSection(CRITICAL_SECTION* cs);
SCRIM_API BOOL TryEnterCriticalSection(CRITICAL_SECTION* cs);
SCRIM_API void LeaveCriticalSection(CRITICAL_SECTION* cs);
SCRIM_API void DeleteCriticalSection(CRITICAL_SECTION* cs);

SCRIM_API LONG InterlockedIncrement(LONG* p);
SCRIM_API LONG InterlockedDecrement(LONG* p);
SCRIM_API LONG InterlockedExchange(LONG* p, LONG value);
SCRIM_API LONG InterlockedExchangeAdd(LONG* p, LONG value);

SCRIM_API BOOL SetRect(RECT* r, int left, int top, int right, int bottom);
SCRIM_API BOOL OffsetRect(RECT* r, int dx, int dy);
SCRIM_API BOOL IsRectEmpty(const RECT* r);
SCRIM_API BOOL EqualRect(const RECT* a, const RECT* b);
SCRIM_API BOOL PtInRect(const RECT* r, POINT pt);
SCRIM_API BOOL IntersectRect(RECT* dst, const RECT* a, const RECT* b);
SCRIM_API BOOL UnionRect(RECT* dst, const RECT* a, const RECT* b);

SCRIM_API DWORD timeGetTime(void);
SCRIM_API DWORD GetTickCount(void);
SCRIM_API void Sleep(DWORD ms);

SCRIM_API void ZeroMemory(void* dst, UINT len);
SCRIM_API DWORD GetLastError(void);
SCRIM_API BOOL IsEqualGUID(const _GUID& a, const _GUID& b);
SCRIM_API void* LocalAlloc(UINT flags, UINT bytes);
SCRIM_API void* LocalFree(void* p);
SCRIM_API char* itoa(int value, char* buf, UINT radix);

// Inert stubs: they exist so that code written for Win32 links.
SCRIM_API void OutputDebugString(const char* text);
SCRIM_API void PostQuitMessage(int exitCode);
SCRIM_API LRESULT SendMessage(HWND hwnd, UINT msg, WPARAM wParam, LPARAM lParam);
SCRIM_API LONG GetWindowLong(HWND hwnd, int index);
SCRIM_API LONG SetWindowLong(HWND hwnd, int index, LONG value);
SCRIM_API LRESULT DefWindowProc(HWND hwnd, UINT msg, WPARAM wParam, LPARAM lParam);
SCRIM_API void* LoadCursor(HINSTANCE instance, const char* name);
SCRIM_API HMODULE GetModuleHandle(const char* name);
SCRIM_API void* GetStockObject(int object);
SCRIM_API UINT RegisterClass(const void* wndClass);
SCRIM_API BOOL GetWindowRect(HWND hwnd, RECT* rect);
SCRIM_API int GetSystemMetrics(int index);
SCRIM_API BOOL GetProcessTimes(HANDLE process, void* creation, void* exit, void* kernel, void* user);
SCRIM_API BOOL GetThreadTimes(HANDLE thread, void* creation, void* exit, void* kernel, void* user);
SCRIM_API int WideCharToMultiByte(UINT codePage, DWORD flags, const wchar_t* wide, int wideCount, char* multi,
                                  int multiCount, const char* defaultChar, BOOL* usedDefault);
SCRIM_API int MultiByteToWideChar(UINT codePage, DWORD flags, const char* multi, int multiCount,
                                  wchar_t* wide, int wideCount);
SCRIM_API HRESULT CoInitialize(void* reserved);
SCRIM_API HRESULT CoInitializeEx(void* reserved, DWORD coInit);
SCRIM_API void CoUninitialize(void);
SCRIM_API BOOL ShowWindow(HWND hwnd, int cmdShow);
SCRIM_API BOOL TranslateMessage(const void* msg);
SCRIM_API LRESULT DispatchMessage(const void* msg);
SCRIM_API BOOL SetWindowPos(HWND hwnd, HWND after, int x, int y, int cx, int cy, UINT flags);
SCRIM_API BOOL PostMessage(HWND hwnd, UINT msg, WPARAM wParam, LPARAM lParam);
SCRIM_API BOOL GetVolumeInformation(const char* root, char* name, DWORD nameSize, DWORD* serial,
                                    DWORD* maxComponent, DWORD* flags, char* fsName, DWORD fsNameSize);
SCRIM_API HWND CreateWindow(const char* className, const char* windowName, DWORD style, int x, int y,
                            int width, int height, HWND parent, void* menu, HINSTANCE instance, void* param);
}

// GUIDs compare as four 32-bit words: the last four bytes of Data4 never take part.
SCRIM_API bool operator==(const _GUID& a, const _GUID& b);
SCRIM_API bool operator!=(const _GUID& a, const _GUID& b);

// A critical section with the lifetime of the object.
class SCRIM_API CCRITCALSECTION {
 public:
  CCRITCALSECTION();
  virtual ~CCRITCALSECTION();
  CCRITCALSECTION(const CCRITCALSECTION&) = delete;
  CCRITCALSECTION& operator=(const CCRITCALSECTION&) = delete;

  CRITICAL_SECTION m_cs;
};

// ==== Handles and synchronisation objects ======================================

#define WAIT_OBJECT_0 0UL
#define WAIT_TIMEOUT 0x102UL
#define WAIT_FAILED 0xFFFFFFFFUL
#define INFINITE 0xFFFFFFFFUL
#define INVALID_HANDLE_VALUE (reinterpret_cast<HANDLE>(-1L))

// Every handle points at one of these. The waitable state is one flag guarded
// by the object's recursive lock; the condition variable is broadcast when the
// flag goes up, and waiters re-check after every wake-up. The virtual slots
// keep this order in every subclass: hosts call through the vtable.
class SCRIM_API CLinuxSyncObject {
 public:
  CLinuxSyncObject();
  virtual ~CLinuxSyncObject();
  CLinuxSyncObject(const CLinuxSyncObject&) = delete;
  CLinuxSyncObject& operator=(const CLinuxSyncObject&) = delete;

  virtual const void* getType() const = 0;
  // The acquire step, run under the object lock once the object is seen
  // signalled: 0 on success.
  virtual int WaitAction() = 0;
  virtual unsigned long WaitForSignal(unsigned long timeoutMs);
  virtual bool isSignaled();
  // Undoes one acquisition where the object can be acquired; 0 on success.
  virtual int Release();

  int SetSignaled(bool signaled, bool lock);
  static unsigned long WaitForMultipleObjects(unsigned long count, void* const* handles, int waitAll,
                                              unsigned long timeoutMs);

 protected:
  pthread_mutex_t m_lock;
  pthread_cond_t m_cond;
  bool signaled;
};

// The value every subclass's getType() answers: it carries no information.
extern const char g_scrimSyncObjectType[1];

// An event: signalled by Set, cleared by Reset and, when not manual-reset, by
// the one waiter that acquires it.
class SCRIM_API CLinuxEvent : public CLinuxSyncObject {
 public:
  CLinuxEvent();
  ~CLinuxEvent() override;
  const void* getType() const override;
  int WaitAction() override;
  int Release() override;
  int Init(bool manualReset, bool initialState);
  int Set();
  int Reset();

 protected:
  bool manualReset;
};

// A mutex that its owner may acquire again; free (signalled) when the
// recursion count falls back to 0.
class SCRIM_API CLinuxMutex : public CLinuxSyncObject {
 public:
  CLinuxMutex();
  ~CLinuxMutex() override;
  const void* getType() const override;
  int WaitAction() override;
  unsigned long WaitForSignal(unsigned long timeoutMs) override;
  bool isSignaled() override;
  int Release() override;
  int Init();
  int Delete();

 protected:
  bool valid;
  pthread_mutex_t ownership;
  int count;
  pthread_t owner;
};

class SCRIM_API CLinuxSemaphore : public CLinuxSyncObject {
 public:
  CLinuxSemaphore();
  ~CLinuxSemaphore() override;
  const void* getType() const override;
  int WaitAction() override;
  int Release() override;
  int Init(long initial, long maximum);
  int Release(long count, long* previous);

 protected:
  sem_t semaphore;
};

// One wait for any of several objects, registered in a process-wide table of
// 20 waiters while it runs.
class SCRIM_API CLinuxMultiWait : public CLinuxSyncObject {
 public:
  CLinuxMultiWait(unsigned long count, void* const* objects);
  ~CLinuxMultiWait() override;
  const void* getType() const override;
  int WaitAction() override;
  unsigned long WaitForSignal(unsigned long timeoutMs) override;
  bool isSignaled() override;
  int Init();
  unsigned long getSignaled() const;
  static int Signal(CLinuxSyncObject* object);

  static pthread_mutex_t m_mutex;
  static int m_waitcount;
  static CLinuxMultiWait* m_waiters[20];

 protected:
  bool unregister();

  unsigned long count;
  void* const* objects;
  unsigned long signaledIndex;
};

extern "C" {
SCRIM_API HANDLE CreateEvent(void* security, BOOL manualReset, BOOL initialState, const char* name);
SCRIM_API BOOL SetEvent(HANDLE h);
SCRIM_API BOOL ResetEvent(HANDLE h);
SCRIM_API HANDLE CreateMutex(void* security, BOOL initialOwner, const char* name);
SCRIM_API HANDLE OpenMutex(DWORD access, BOOL inherit, const char* name);
SCRIM_API BOOL ReleaseMutex(HANDLE h);
SCRIM_API HANDLE CreateSemaphore(void* security, LONG initial, LONG maximum, const char* name);
SCRIM_API BOOL ReleaseSemaphore(HANDLE h, LONG count, LONG* previous);
SCRIM_API DWORD WaitForSingleObject(HANDLE h, DWORD timeoutMs);
SCRIM_API DWORD WaitForMultipleObjects(DWORD count, const HANDLE* handles, BOOL waitAll, DWORD timeoutMs);
SCRIM_API BOOL CloseHandle(HANDLE h);
}

// ==== Bounded ring queue ========================================================

// What SearchItem looks for: Match answers true for the item sought.
class SCRIM_API ISearchCriteria {
 public:
  virtual ~ISearchCriteria() {}
  virtual bool Match(const void* item) = 0;
};

// A blocking multi-producer multi-consumer queue of fixed-size items stored by
// value in one ring, built on a mutex and two counting semaphores. Waits take
// the mutex and one semaphore unit together, so nobody sleeps holding the
// mutex.
class SCRIM_API CLNrwqueue {
 public:
  CLNrwqueue(unsigned long capacity, unsigned long itemSize);
  ~CLNrwqueue();
  CLNrwqueue(const CLNrwqueue&) = delete;
  CLNrwqueue& operator=(const CLNrwqueue&) = delete;

  int WriteItem(void* src);
  int ReadItem(void* dst);
  // Zero-copy access: the slot is named by the shared index, so only one
  // reader and one writer may use these at a time.
  void* GetWriteItem();
  int CommitWriteItem();
  int CancelWriteItem();
  void* GetReadItem();
  int CommitReadItem();
  int CancelReadItem();
  int EndOfFile();
  int Flush(void (*callback)(void*));
  bool SearchItem(void* dst, ISearchCriteria* criteria, bool remove);
  void* PeekItem(unsigned long n);
  unsigned long GetCount();
  unsigned long GetMax();

 private:
  void* slot(unsigned long index) const;
  unsigned long next(unsigned long index) const;
  void waitFor(HANDLE semaphore);
  void announceWrite();

  HANDLE mutex;
  HANDLE itemsAvailable;
  HANDLE spaceAvailable;
  unsigned char* buffer;
  unsigned long capacity;
  unsigned long itemSize;
  unsigned long count;
  unsigned long readIndex;
  unsigned long writeIndex;
  int endOfFile;
};

// ==== Threads and thread message queues =========================================

#define STILL_ACTIVE 259
#define CREATE_SUSPENDED 4
#define WM_QUIT 0x12
#define WM_TIMER 0x113
#define PM_NOREMOVE 0
#define PM_REMOVE 1

typedef unsigned int (*LPTHREAD_START_ROUTINE)(void* arg);

// What GetMessage and PeekMessage fill: no time or point fields are written.
struct MSG {
  HWND hwnd;
  unsigned int message;
  unsigned int wParam;
  long lParam;
};
typedef MSG* LPMSG;

// One POSIX thread with its message queue (1024 records of 16 bytes) and its
// exit code: 259 while the thread function runs, then its result.
class SCRIM_API CLinuxThread : public CLinuxSyncObject {
 public:
  CLinuxThread();
  ~CLinuxThread() override;
  const void* getType() const override;
  int WaitAction() override;
  unsigned long WaitForSignal(unsigned long timeoutMs) override;

  // Starts fn(arg) on a new thread; without fn, adopts the calling thread.
  // Answers the thread id, or -1.
  long Init(LPTHREAD_START_ROUTINE fn, void* arg, int unused);
  static CLinuxThread* GetCurrentThread();
  int Suspend();
  int Resume();
  int SetPriority(int priority);
  int GetPriority();
  int Cancel();
  __attribute__((noreturn)) static void Exit(unsigned int code);
  void SetExitCode(int code);
  int GetExitCode();
  void EnableSuspendOnCreate(bool enable);
  int WaitForExit();
  int GetMessage(unsigned int* msg, unsigned int* wParam, long* lParam);
  int PeekMessage(unsigned int* msg, unsigned int* wParam, long* lParam, unsigned int filterMin,
                  unsigned int filterMax, bool remove);
  int PostMessage(unsigned int msg, unsigned int wParam, long lParam);

 protected:
  pthread_t thread;
  CLNrwqueue* queue;
  void* reserved;
  int exitCode;
  bool suspendOnCreate;
};

extern "C" {
SCRIM_API HANDLE CreateThread(void* security, DWORD stackSize, LPTHREAD_START_ROUTINE fn, void* arg,
                              DWORD flags, DWORD* id);
SCRIM_API HANDLE _beginthread(LPTHREAD_START_ROUTINE fn, unsigned int stackSize, void* arg);
SCRIM_API HANDLE _beginthreadex(void* security, unsigned int stackSize, LPTHREAD_START_ROUTINE fn, void* arg,
                                unsigned int initFlag, unsigned int* id);
SCRIM_API __attribute__((noreturn)) void ExitThread(DWORD code);
SCRIM_API __attribute__((noreturn)) void _endthread(void);
SCRIM_API __attribute__((noreturn)) void _endthreadex(unsigned int code);
SCRIM_API BOOL TerminateThread(HANDLE h, DWORD code);
SCRIM_API BOOL GetExitCodeThread(HANDLE h, DWORD* code);
SCRIM_API DWORD SuspendThread(HANDLE h);
SCRIM_API DWORD ResumeThread(HANDLE h);
SCRIM_API BOOL SetThreadPriority(HANDLE h, int priority);
SCRIM_API int GetThreadPriority(HANDLE h);
SCRIM_API HANDLE GetCurrentThread(void);
SCRIM_API DWORD GetCurrentThreadId(void);
SCRIM_API BOOL GetMessage(MSG* msg, HWND hwnd, UINT filterMin, UINT filterMax);
SCRIM_API BOOL PeekMessage(MSG* msg, HWND hwnd, UINT filterMin, UINT filterMax, UINT removeFlag);
SCRIM_API BOOL PostThreadMessage(HANDLE h, UINT msg, UINT wParam, LONG lParam);
// Called by GetMessage for every WM_TIMER: 0 drops the message.
SCRIM_API int WEX_IsValidTimer(void);
}

// ==== Timer manager =============================================================

// A periodic timer: every period a WM_TIMER (wParam = sequence, lParam = the
// timer's address) is posted to the thread that was current at its creation.
class SCRIM_API CLinuxTimer {
 public:
  CLinuxTimer();
  virtual ~CLinuxTimer();
  int Init(unsigned long periodMs);
  bool IsValid(unsigned long sequence) const;

  static unsigned long _sequence_count;

  CLinuxThread* ownerThread;
  unsigned long sequence;
  unsigned long periodMs;
  long dueSeconds;
  long dueNanoseconds;
  CLinuxTimer* next;
};

// Keeps timers in a list sorted by due time; one timer thread sleeps until the
// earliest is due or the list changes, and never polls.
class SCRIM_API CLinuxTimerMgr {
 public:
  CLinuxTimerMgr();
  ~CLinuxTimerMgr();
  CLinuxTimerMgr(const CLinuxTimerMgr&) = delete;
  CLinuxTimerMgr& operator=(const CLinuxTimerMgr&) = delete;

  CLinuxTimer* SetTimer(unsigned int periodMs,
                        void (*callback)(void*, unsigned int, unsigned int, unsigned long));
  unsigned long KillTimer(CLinuxTimer* timer);
  int AddTimer(CLinuxTimer* timer);
  int RemoveTimer(CLinuxTimer* timer);
  int IsValid(const CLinuxTimer* timer, unsigned long sequence);
  unsigned long LaunchTimerThread();
  unsigned long KillTimerThread();
  static unsigned int ThreadFn(void* manager);
  void PrintAlarmList(const char* title) const;

  HANDLE thread;
  CLinuxTimer* alarmList;
  pthread_mutex_t lock;
  pthread_cond_t wakeup;
  long waitSeconds;
  long waitNanoseconds;
  int stop;

 private:
  unsigned long addToAlarmList(CLinuxTimer* timer);
  unsigned long removeFromAlarmList(CLinuxTimer* timer);
  unsigned int Thread();
};

extern "C" {
// The largest lateness (ms) ever seen between a timer's due time and its firing.
SCRIM_API extern long TR_max_expire_delay;
// Inert: the layer's timers are reached through CLinuxTimerMgr only.
SCRIM_API UINT SetTimer(HWND window, UINT id, UINT ms, void* callback);
SCRIM_API BOOL KillTimer(HWND window, UINT id);
SCRIM_API void WEX_KillTimerThread(void);
}

// ==== Files, pipes, mappings, directories, modules and environment ==============
//
// Flag arguments are not translated from Win32 values: callers pass open(2)
// flags, permission modes, mmap protections and mmap flags in the Win32
// parameter positions.

#include <stdio.h>

struct MEMORYSTATUS {
  DWORD dwLength;
  DWORD dwMemoryLoad;
  DWORD dwTotalPhys;
  DWORD dwAvailPhys;
  DWORD dwTotalPageFile;
  DWORD dwAvailPageFile;
  DWORD dwTotalVirtual;
  DWORD dwAvailVirtual;
};

// A file or pipe end behind a handle; always signalled. A windowed file shows
// only [windowStart, windowStart + windowLength) of its descriptor: sizes,
// reads and seeks stay inside that range and positions count from its start.
class SCRIM_API CLinuxFile : public CLinuxSyncObject {
 public:
  CLinuxFile();
  ~CLinuxFile() override;

  const void* getType() const override;
  int WaitAction() override;
  unsigned long WaitForSignal(unsigned long timeoutMs) override;

  // 0 when open(2) gave a descriptor, else 0xFFFFFFFF.
  int Init(const char* path, int oflag, int mode);
  // Takes over an open descriptor (a pipe end, say) as a plain file.
  void Attach(int fd);
  // Makes a windowed file over [start, start + length) of an open descriptor,
  // which it takes over; the position starts at the window's start.
  // 0 on success, else -1 (the descriptor is then left open).
  int InitWindow(int fd, long start, long length);

  int GetFD() const;
  long GetFileSize(unsigned long* high) const;
  int Read(void* buf, int n);
  int Write(const void* buf, int n);
  long SetFilePointer(long low, long* high, int method);

 protected:
  int fd;
  long windowStart;
  long windowLength;
  int windowed;
};

// A file mapping: a duplicate of the file's descriptor, the mapping size and
// the mmap flags that every view uses.
class SCRIM_API CLinuxFileMapping : public CLinuxSyncObject {
 public:
  CLinuxFileMapping();
  ~CLinuxFileMapping() override;

  const void* getType() const override;
  int WaitAction() override;
  unsigned long WaitForSignal(unsigned long timeoutMs) override;

  int Init(CLinuxFile* file, unsigned long size, int flags);
  void* MapView(int prot, long offset, unsigned long size);
  static int UnmapViewByAddress(void* address, unsigned long length);

 protected:
  int fd;
  unsigned long size;
  unsigned long viewLength;
  int mapFlags;
};

extern "C" {
SCRIM_API HANDLE CreateFile(const char* path, DWORD access, DWORD share, void* security, DWORD creation,
                            DWORD attributes);
SCRIM_API BOOL ReadFile(HANDLE h, void* buf, DWORD n, DWORD* done, void* overlapped);
SCRIM_API BOOL WriteFile(HANDLE h, const void* buf, DWORD n, DWORD* done, void* overlapped);
SCRIM_API DWORD SetFilePointer(HANDLE h, LONG low, LONG* high, DWORD method);
SCRIM_API DWORD GetFileSize(HANDLE h, DWORD* high);
SCRIM_API BOOL FlushFileBuffers(HANDLE h);
SCRIM_API BOOL CreatePipe(HANDLE* readEnd, HANDLE* writeEnd, void* security, DWORD size);
SCRIM_API BOOL DeleteFile(const char* path);
SCRIM_API BOOL MoveFile(const char* from, const char* to);
SCRIM_API BOOL CreateDirectory(const char* path, void* security);
SCRIM_API BOOL RemoveDirectory(const char* path);
SCRIM_API DWORD GetFileAttributes(const char* path);
SCRIM_API BOOL GetDiskFreeSpaceEx(const char* path, uint64_t* freeForCaller, uint64_t* total,
                                  uint64_t* totalFree);

SCRIM_API HANDLE CreateFileMapping(HANDLE file, void* security, DWORD protect, DWORD sizeHigh, DWORD sizeLow,
                                   const char* name);
SCRIM_API void* MapViewOfFile(HANDLE mapping, DWORD access, DWORD offsetHigh, DWORD offsetLow, DWORD size);
SCRIM_API BOOL UnmapViewOfFileEx(void* address, DWORD length);
SCRIM_API BOOL UnmapViewOfFile(void* address);

SCRIM_API HMODULE LoadLibrary(const char* path);
SCRIM_API void* GetProcAddress(HMODULE module, const char* name);
SCRIM_API BOOL FreeLibrary(HMODULE module);
SCRIM_API DWORD GetModuleFileName(HMODULE module, char* buf, DWORD size);
SCRIM_API DWORD GetDllDirectory(DWORD size, char* buf);
SCRIM_API BOOL SetDllDirectory(const char* path);
SCRIM_API BOOL SetEnvironmentVariable(const char* name, const char* value);
SCRIM_API UINT GetSystemDirectory(char* buf, UINT size);
SCRIM_API void GlobalMemoryStatus(MEMORYSTATUS* status);
SCRIM_API DWORD GetCurrentProcessId(void);

// The wide-character functions under C library names (iswalpha, wcrtomb, ...)
// live in libscrimpresent_wide.so so that they never stand in for the C
// library's; these three have no C library namesake and stay here.
SCRIM_API FILE* _wfopen(const wchar_t* path, const wchar_t* mode);
SCRIM_API int _wtoi(const wchar_t* s);
SCRIM_API int _swprintf(wchar_t* buf, const wchar_t* format, ...);
}
