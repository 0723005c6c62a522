// Critical sections, interlocked counters, rectangles, the millisecond clock,
// Sleep, GUID comparison, small utilities and inert stubs of the Win32-style
// layer.
#include <errno.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <sys/time.h>
#include <time.h>

#include "compat/win32.h"

// ---- Critical sections --------------------------------------------------------

extern "C" void InitializeCriticalSection(CRITICAL_SECTION* cs) {
  pthread_mutexattr_init(&cs->attr);
  pthread_mutexattr_settype(&cs->attr, PTHREAD_MUTEX_RECURSIVE);
  pthread_mutex_init(&cs->mutex, &cs->attr);
}

extern "C" void EnterCriticalSection(CRITICAL_SECTION* cs) { pthread_mutex_lock(&cs->mutex); }

extern "C" BOOL TryEnterCriticalSection(CRITICAL_SECTION* cs) {
  return pthread_mutex_trylock(&cs->mutex) == 0 ? TRUE : FALSE;
}

extern "C" void LeaveCriticalSection(CRITICAL_SECTION* cs) { pthread_mutex_unlock(&cs->mutex); }

extern "C" void DeleteCriticalSection(CRITICAL_SECTION* cs) {
  pthread_mutex_destroy(&cs->mutex);
  pthread_mutexattr_destroy(&cs->attr);
}

CCRITCALSECTION::CCRITCALSECTION() { InitializeCriticalSection(&m_cs); }

CCRITCALSECTION::~CCRITCALSECTION() { DeleteCriticalSection(&m_cs); }

// ---- Interlocked counters -----------------------------------------------------

// Built by the library's static initialiser when it is loaded, torn down at exit.
static CCRITCALSECTION g_interlockedLock;

// Under the lock, an atomic add, then the value read again: concurrent callers
// never lose a count and each sees the value its own operation produced.
static LONG lockedAdd(LONG* p, LONG delta) {
  EnterCriticalSection(&g_interlockedLock.m_cs);
  __atomic_add_fetch(p, delta, __ATOMIC_ACQ_REL);
  LONG value = __atomic_load_n(p, __ATOMIC_ACQUIRE);
  LeaveCriticalSection(&g_interlockedLock.m_cs);
  return value;
}

extern "C" LONG InterlockedIncrement(LONG* p) { return lockedAdd(p, 1); }

extern "C" LONG InterlockedDecrement(LONG* p) { return lockedAdd(p, -1); }

// Neither of these two is atomic, and ExchangeAdd answers the sum rather than
// the old value: callers written against this layer rely on both.
extern "C" LONG InterlockedExchange(LONG* p, LONG value) {
  LONG old = *p;
  *p = value;
  return old;
}

extern "C" LONG InterlockedExchangeAdd(LONG* p, LONG value) {
  LONG sum = *p + value;
  *p = sum;
  return sum;
}

// ---- Rectangles ---------------------------------------------------------------

extern "C" BOOL SetRect(RECT* r, int left, int top, int right, int bottom) {
  if (!r) return FALSE;
  r->left = left;
  r->top = top;
  r->right = right;
  r->bottom = bottom;
  return TRUE;
}

extern "C" BOOL OffsetRect(RECT* r, int dx, int dy) {
  if (!r) return FALSE;
  r->left += dx;
  r->right += dx;
  r->top += dy;
  r->bottom += dy;
  return TRUE;
}

extern "C" BOOL IsRectEmpty(const RECT* r) {
  return (!r || r->right <= r->left || r->bottom <= r->top) ? TRUE : FALSE;
}

extern "C" BOOL EqualRect(const RECT* a, const RECT* b) {
  return (a->left == b->left && a->right == b->right && a->top == b->top && a->bottom == b->bottom) ? TRUE
                                                                                                    : FALSE;
}

extern "C" BOOL PtInRect(const RECT* r, POINT pt) {
  if (!r || r->right <= r->left || r->bottom <= r->top) return FALSE;
  return (pt.x >= r->left && pt.x < r->right && pt.y >= r->top && pt.y < r->bottom) ? TRUE : FALSE;
}

// Stores the result before testing it; a non-empty result answers 1.
static BOOL storeOrClear(RECT* dst, LONG left, LONG top, LONG right, LONG bottom) {
  dst->left = left;
  dst->top = top;
  dst->right = right;
  dst->bottom = bottom;
  if (bottom > top && left < right) return TRUE;
  SetRect(dst, 0, 0, 0, 0);
  return FALSE;
}

extern "C" BOOL IntersectRect(RECT* dst, const RECT* a, const RECT* b) {
  return storeOrClear(dst, a->left > b->left ? a->left : b->left, a->top > b->top ? a->top : b->top,
                      a->right < b->right ? a->right : b->right,
                      a->bottom < b->bottom ? a->bottom : b->bottom);
}

// The bounding box of both, empty sources included: unlike the usual rule, an
// empty rectangle is not skipped.
extern "C" BOOL UnionRect(RECT* dst, const RECT* a, const RECT* b) {
  return storeOrClear(dst, a->left < b->left ? a->left : b->left, a->top < b->top ? a->top : b->top,
                      a->right > b->right ? a->right : b->right,
                      a->bottom > b->bottom ? a->bottom : b->bottom);
}

// ---- Time -----------------------------------------------------------------------

// Milliseconds of the wall clock since the epoch; follows clock changes.
extern "C" DWORD timeGetTime(void) {
  struct timeval tv;
  if (gettimeofday(&tv, nullptr) != 0) return 0;
  return static_cast<DWORD>(tv.tv_sec) * 1000 + static_cast<DWORD>(tv.tv_usec) / 1000;
}

extern "C" DWORD GetTickCount(void) { return timeGetTime(); }

extern "C" void Sleep(DWORD ms) {
  const DWORD deadline = timeGetTime() + ms;
  for (;;) {
    DWORD now = timeGetTime();
    if (deadline <= now) return;
    DWORD remaining = deadline - now;
    struct timespec ts;
    ts.tv_sec = static_cast<time_t>(remaining / 1000);
    ts.tv_nsec = static_cast<long>((remaining % 1000) * 1000000);
    if (nanosleep(&ts, nullptr) == 0) return;
    if (errno != EINTR) return;
  }
}

// ---- GUIDs ----------------------------------------------------------------------

// Four 32-bit words: the first 16 bytes of the record, so the last four bytes of
// Data4 never take part.
extern "C" BOOL IsEqualGUID(const _GUID& a, const _GUID& b) {
  uint32_t wa[4], wb[4];
  memcpy(wa, &a, sizeof wa);
  memcpy(wb, &b, sizeof wb);
  return (wa[0] == wb[0] && wa[1] == wb[1] && wa[2] == wb[2] && wa[3] == wb[3]) ? TRUE : FALSE;
}

bool operator==(const _GUID& a, const _GUID& b) { return IsEqualGUID(a, b) != 0; }

bool operator!=(const _GUID& a, const _GUID& b) { return !(a == b); }

// ---- Memory, errors, strings ----------------------------------------------------

extern "C" void ZeroMemory(void* dst, UINT len) { memset(dst, 0, len); }

extern "C" DWORD GetLastError(void) { return static_cast<DWORD>(static_cast<LONG>(errno)); }

extern "C" void* LocalAlloc(UINT, UINT bytes) { return malloc(bytes); }

extern "C" void* LocalFree(void* p) {
  free(p);
  return nullptr;
}

extern "C" char* itoa(int value, char* buf, UINT radix) {
  if (radix == 10) {
    sprintf(buf, "%d", value);
  } else if (radix == 16) {
    sprintf(buf, "%x", value);
  }
  return buf;
}

// ---- Inert stubs: they exist so that code written for Win32 links, and answer fixed values ----

extern "C" {

void OutputDebugString(const char*) {}
void PostQuitMessage(int) {}
LRESULT SendMessage(HWND, UINT, WPARAM, LPARAM) { return 0; }
LONG GetWindowLong(HWND, int) { return 0; }
LONG SetWindowLong(HWND, int, LONG) { return 0; }
LRESULT DefWindowProc(HWND, UINT, WPARAM, LPARAM) { return 0; }
void* LoadCursor(HINSTANCE, const char*) { return nullptr; }
HMODULE GetModuleHandle(const char*) { return nullptr; }
void* GetStockObject(int) { return nullptr; }
UINT RegisterClass(const void*) { return 0; }
BOOL GetWindowRect(HWND, RECT*) { return 0; }
int GetSystemMetrics(int) { return 0; }
BOOL GetProcessTimes(HANDLE, void*, void*, void*, void*) { return 0; }
BOOL GetThreadTimes(HANDLE, void*, void*, void*, void*) { return 0; }
int WideCharToMultiByte(UINT, DWORD, const wchar_t*, int, char*, int, const char*, BOOL*) { return 0; }
int MultiByteToWideChar(UINT, DWORD, const char*, int, wchar_t*, int) { return 0; }
HRESULT CoInitialize(void*) { return 0; }
HRESULT CoInitializeEx(void*, DWORD) { return 0; }
void CoUninitialize(void) {}
BOOL ShowWindow(HWND, int) { return 1; }
BOOL TranslateMessage(const void*) { return 1; }
LRESULT DispatchMessage(const void*) { return 1; }
BOOL SetWindowPos(HWND, HWND, int, int, int, int, UINT) { return 1; }
BOOL PostMessage(HWND, UINT, WPARAM, LPARAM) { return 1; }
BOOL GetVolumeInformation(const char*, char*, DWORD, DWORD*, DWORD*, DWORD*, char*, DWORD) { return 1; }
HWND CreateWindow(const char*, const char*, DWORD, int, int, int, int, HWND, void*, HINSTANCE, void*) {
  return reinterpret_cast<HWND>(0x12345678);  // never null, never usable
}

}  // extern "C"
