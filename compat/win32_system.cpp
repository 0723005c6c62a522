// Directories and file attributes, disk space, modules, the environment,
// system information and the process id of the Win32-style layer.
#include <dlfcn.h>
#include <errno.h>
#include <stdarg.h>
#include <stdlib.h>
#include <sys/stat.h>
#include <sys/statfs.h>
#include <unistd.h>

#include <vector>

#include "compat/win32.h"
#include "compat/win32_path.h"

// ---- Directories and attributes -----------------------------------------------

extern "C" BOOL DeleteFile(const char* path) { return unlink(ScrimPath(path).s) == 0 ? TRUE : FALSE; }

extern "C" BOOL MoveFile(const char* from, const char* to) {
  return rename(ScrimPath(from).s, ScrimPath(to).s) == 0 ? TRUE : FALSE;
}

extern "C" BOOL CreateDirectory(const char* path, void*) {
  return mkdir(ScrimPath(path).s, 0777) == 0 ? TRUE : FALSE;
}

extern "C" BOOL RemoveDirectory(const char* path) { return rmdir(ScrimPath(path).s) == 0 ? TRUE : FALSE; }

// The POSIX st_mode bits, not Win32 attribute bits: callers test S_IFDIR.
extern "C" DWORD GetFileAttributes(const char* path) {
  struct stat st;
  if (stat(ScrimPath(path).s, &st) != 0) return 0xFFFFFFFF;
  return st.st_mode;
}

extern "C" BOOL GetDiskFreeSpaceEx(const char* path, uint64_t* freeForCaller, uint64_t* total,
                                   uint64_t* totalFree) {
  if (!path || !*path) return FALSE;
  struct statfs fs;
  if (statfs(ScrimPath(path).s, &fs) != 0) return FALSE;
  uint64_t block = static_cast<uint64_t>(fs.f_bsize);
  if (freeForCaller) *freeForCaller = block * fs.f_bavail;
  if (total) *total = block * fs.f_blocks;
  if (totalFree) *totalFree = block * fs.f_bfree;
  return TRUE;
}

// ---- Modules ------------------------------------------------------------------

extern "C" HMODULE LoadLibrary(const char* path) { return dlopen(path, RTLD_LAZY); }

extern "C" void* GetProcAddress(HMODULE module, const char* name) { return dlsym(module, name); }

extern "C" BOOL FreeLibrary(HMODULE module) { return dlclose(module) == 0 ? TRUE : FALSE; }

// Always the calling program's own path, whatever module is asked about.
extern "C" DWORD GetModuleFileName(HMODULE, char* buf, DWORD size) {
  if (size == 0) return 0;
  char link[64];
  snprintf(link, sizeof link, "/proc/%u/exe", static_cast<unsigned>(getpid()));
  std::vector<char> path(size, 0);
  ssize_t n = readlink(link, path.data(), size - 1);
  if (n < 0) return 0;
  path[n] = 0;
  memcpy(buf, path.data(), static_cast<size_t>(n) + 1);
  return static_cast<DWORD>(n);
}

// ---- Environment --------------------------------------------------------------

static const char kDllPathVariable[] = "ORU_DLL_PATH";

extern "C" DWORD GetDllDirectory(DWORD size, char* buf) {
  const char* value = getenv(kDllPathVariable);
  if (!value) return 0;
  size_t length = strlen(value);
  if (length + 1 > size) return 0;
  memcpy(buf, value, length + 1);
  return length;
}

// Answers setenv's own result, 0 on success: callers written for this layer
// test for 0.
extern "C" BOOL SetDllDirectory(const char* path) { return setenv(kDllPathVariable, path, 1); }

extern "C" BOOL SetEnvironmentVariable(const char* name, const char* value) {
  if (!value) {
    unsetenv(name);
    return FALSE;
  }
  return setenv(name, value, 1) == 0 ? TRUE : FALSE;
}

// ---- System information -------------------------------------------------------

extern "C" UINT GetSystemDirectory(char* buf, UINT size) {
  static const char kDir[] = "/usr";
  if (size <= sizeof kDir - 1) return sizeof kDir;
  memcpy(buf, kDir, sizeof kDir);
  return sizeof kDir - 1;
}

// Fixed figures: callers only check that the call answers.
extern "C" void GlobalMemoryStatus(MEMORYSTATUS* status) {
  status->dwLength = 64;
  status->dwMemoryLoad = 0;
  status->dwTotalPhys = 128;
  status->dwAvailPhys = 32;
  status->dwTotalPageFile = 128;
  status->dwAvailPageFile = 32;
  status->dwTotalVirtual = 0;
  status->dwAvailVirtual = 0;
}

static bool readExe(int pid, char* buf, size_t size) {
  char link[64];
  snprintf(link, sizeof link, "/proc/%d/exe", pid);
  ssize_t n = readlink(link, buf, size);
  if (n < 0) return false;
  memset(buf + n, 0, size + 1 - static_cast<size_t>(n));
  return true;
}

// Walks up past every ancestor that runs the caller's own executable and
// answers the parent of the topmost one: helper processes that a program
// starts of itself report the id of whoever started the program.
extern "C" DWORD GetCurrentProcessId(void) {
  int pid = getpid();
  for (;;) {
    char path[64];
    snprintf(path, sizeof path, "/proc/%d/stat", pid);
    FILE* f = fopen(path, "r");
    if (!f) return 0;
    char fields[4][256] = {};
    int got = fscanf(f, "%255s %255s %255s %255s", fields[0], fields[1], fields[2], fields[3]);
    fclose(f);
    if (got < 1 || atoi(fields[0]) != pid) return 0;
    int parent = atoi(fields[3]);
    char exe[129], parentExe[129];
    if (!readExe(pid, exe, 128) || !readExe(parent, parentExe, 128)) return 0;
    if (strcmp(exe, parentExe) != 0) return static_cast<DWORD>(parent);
    pid = parent;
  }
}

// ---- Wide-character helpers without a C library namesake ----------------------

// Characters are single bytes in this layer: a wide string narrows byte by
// byte, exactly as the layer's wcstombs does it.
static void narrow(char* dst, const wchar_t* src, size_t size) {
  size_t i = 0;
  for (; i + 1 < size && src[i]; ++i) dst[i] = static_cast<char>(src[i]);
  dst[i] = 0;
}

extern "C" FILE* _wfopen(const wchar_t* path, const wchar_t* mode) {
  std::vector<char> narrowPath(4096);
  char narrowMode[10];
  narrow(narrowPath.data(), path, narrowPath.size());
  narrow(narrowMode, mode, sizeof narrowMode);
  return fopen(narrowPath.data(), narrowMode);
}

// The layer's wcstol hands its arguments to strtol as they are.
extern "C" int _wtoi(const wchar_t* s) {
  char* end;
  return static_cast<int>(strtol(reinterpret_cast<const char*>(s), &end, 10));
}

// Formatted wide output is not supported.
extern "C" int _swprintf(wchar_t*, const wchar_t*, ...) {
  errno = EOPNOTSUPP;
  return -1;
}
