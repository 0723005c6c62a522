// Files, pipes and file mappings behind handles. The flag arguments are the
// POSIX ones (open flags, modes, mmap protections and flags), passed in the
// Win32 parameter positions untranslated.
#include <errno.h>
#include <fcntl.h>
#include <sys/mman.h>
#include <sys/stat.h>
#include <unistd.h>

#include "compat/win32.h"
#include "compat/win32_path.h"

namespace {

bool validHandle(HANDLE h) { return h != nullptr && h != INVALID_HANDLE_VALUE; }

CLinuxFile* asFile(HANDLE h) { return static_cast<CLinuxFile*>(h); }

}  // namespace

// ---- CLinuxFile ---------------------------------------------------------------

CLinuxFile::CLinuxFile() : fd(-1), windowStart(0), windowLength(0), windowed(0) {}

CLinuxFile::~CLinuxFile() {
  if (fd != -1) close(fd);
}

const void* CLinuxFile::getType() const { return g_scrimSyncObjectType; }

// Files are always signalled: a wait on one returns at once.
int CLinuxFile::WaitAction() { return 0; }

unsigned long CLinuxFile::WaitForSignal(unsigned long) { return 0; }

int CLinuxFile::Init(const char* path, int oflag, int mode) {
  fd = open(path, oflag, mode);
  return fd != -1 ? 0 : static_cast<int>(0xFFFFFFFF);
}

void CLinuxFile::Attach(int descriptor) { fd = descriptor; }

int CLinuxFile::InitWindow(int descriptor, long start, long length) {
  if (descriptor < 0 || start < 0 || length < 0) return -1;
  if (lseek64(descriptor, start, SEEK_SET) != start) return -1;
  fd = descriptor;
  windowStart = start;
  windowLength = length;
  windowed = 1;
  return 0;
}

int CLinuxFile::GetFD() const { return fd; }

long CLinuxFile::GetFileSize(unsigned long* high) const {
  long size = windowLength;
  if (!windowed) {
    struct stat st;
    if (fstat(fd, &st) != 0) return -1;
    size = st.st_size;
  }
  if (high) *high = static_cast<unsigned long>(size) >> 32;
  return size;
}

int CLinuxFile::Read(void* buf, int n) {
  if (!windowed) return static_cast<int>(read(fd, buf, n));
  off64_t pos = lseek64(fd, 0, SEEK_CUR);
  off64_t end = windowStart + windowLength;
  if (pos < 0 || pos >= end) return 0;
  if (n > end - pos) n = static_cast<int>(end - pos);
  return static_cast<int>(read(fd, buf, n));
}

int CLinuxFile::Write(const void* buf, int n) { return static_cast<int>(write(fd, buf, n)); }

long CLinuxFile::SetFilePointer(long low, long* high, int method) {
  errno = 0;
  long offset = high ? (low | static_cast<long>(static_cast<unsigned long>(*high) << 32)) : low;
  long pos;
  if (!windowed) {
    pos = lseek64(fd, offset, method);
    if (pos < 0) return 0xFFFFFFFF;
  } else if (method == SEEK_CUR) {
    // A relative seek that lands outside the window is refused, but the
    // descriptor stays where it landed.
    pos = lseek64(fd, offset, SEEK_CUR) - windowStart;
    if (pos < 0 || pos > windowLength) return 0xFFFFFFFF;
  } else if (method == SEEK_SET || method == SEEK_END) {
    if (method == SEEK_SET ? offset < 0 : offset > 0) return 0xFFFFFFFF;
    long target = method == SEEK_SET ? offset : windowLength + offset;
    if (target < 0) return 0xFFFFFFFF;
    off64_t saved = lseek64(fd, 0, SEEK_CUR);
    pos = lseek64(fd, windowStart + target, SEEK_SET) - windowStart;
    if (pos < 0 || pos > windowLength) {
      lseek64(fd, saved, SEEK_SET);
      return 0xFFFFFFFF;
    }
  } else {
    return 0xFFFFFFFF;
  }
  if (high) *high = pos >> 32;
  return pos;
}

// ---- CLinuxFileMapping --------------------------------------------------------

CLinuxFileMapping::CLinuxFileMapping() : fd(-1), size(0), viewLength(0), mapFlags(0) {}

CLinuxFileMapping::~CLinuxFileMapping() {
  if (fd != -1) close(fd);
}

const void* CLinuxFileMapping::getType() const { return g_scrimSyncObjectType; }

int CLinuxFileMapping::WaitAction() { return 0; }

unsigned long CLinuxFileMapping::WaitForSignal(unsigned long) { return 0; }

int CLinuxFileMapping::Init(CLinuxFile* file, unsigned long mappingSize, int flags) {
  if (!file) return static_cast<int>(0xFFFFFFFF);
  long fileSize = file->GetFileSize(nullptr);
  if (fileSize == -1) return static_cast<int>(0xFFFFFFFF);
  size = mappingSize != 0 ? mappingSize : static_cast<unsigned long>(fileSize);
  fd = dup(file->GetFD());
  if (fd == -1) return static_cast<int>(0xFFFFFFFF);
  mapFlags = flags;
  return 0;
}

void* CLinuxFileMapping::MapView(int prot, long offset, unsigned long length) {
  if (fd == -1) return nullptr;
  viewLength = length != 0 ? length : size;
  void* view = mmap(nullptr, viewLength, prot, mapFlags, fd, offset);
  return view == MAP_FAILED ? nullptr : view;
}

int CLinuxFileMapping::UnmapViewByAddress(void* address, unsigned long length) {
  return munmap(address, length);
}

// ---- Files and pipes ----------------------------------------------------------

// The last argument is a permission mode, with two special values: 0 for 0644,
// and all bits set for "open as it is, create only if that fails".
extern "C" HANDLE CreateFile(const char* path, DWORD access, DWORD, void*, DWORD creation, DWORD attributes) {
  ScrimPath p(path);
  CLinuxFile* file = new CLinuxFile;
  int oflag = static_cast<int>(access | creation);
  int rc;
  if (attributes == 0) {
    rc = file->Init(p.s, oflag, 0644);
  } else if (attributes == static_cast<DWORD>(-1)) {
    rc = file->Init(p.s, static_cast<int>(access), -1);
    if (rc != 0) rc = file->Init(p.s, static_cast<int>(access) | O_CREAT, -1);
  } else {
    rc = file->Init(p.s, oflag, static_cast<int>(attributes));
  }
  if (rc != 0) {
    delete file;
    return INVALID_HANDLE_VALUE;
  }
  return file;
}

// The count is the system call's own result, sign-extended; the result is 1
// even when the call failed: callers look at the count.
extern "C" BOOL ReadFile(HANDLE h, void* buf, DWORD n, DWORD* done, void*) {
  if (!validHandle(h) || !done) return FALSE;
  *done = static_cast<DWORD>(static_cast<long>(asFile(h)->Read(buf, static_cast<int>(n))));
  return TRUE;
}

extern "C" BOOL WriteFile(HANDLE h, const void* buf, DWORD n, DWORD* done, void*) {
  if (!validHandle(h) || !done) return FALSE;
  *done = static_cast<DWORD>(static_cast<long>(asFile(h)->Write(buf, static_cast<int>(n))));
  return TRUE;
}

extern "C" DWORD SetFilePointer(HANDLE h, LONG low, LONG* high, DWORD method) {
  errno = 0;
  if (!validHandle(h)) {
    errno = EBADF;
    return static_cast<DWORD>(-1L);
  }
  return static_cast<uint32_t>(asFile(h)->SetFilePointer(low, high, static_cast<int>(method)));
}

extern "C" DWORD GetFileSize(HANDLE h, DWORD* high) {
  if (!validHandle(h)) return 0xFFFFFFFF;
  return static_cast<uint32_t>(asFile(h)->GetFileSize(high));
}

// The handle is not checked.
extern "C" BOOL FlushFileBuffers(HANDLE h) { return fsync(asFile(h)->GetFD()) == 0 ? TRUE : FALSE; }

extern "C" BOOL CreatePipe(HANDLE* readEnd, HANDLE* writeEnd, void*, DWORD) {
  int fds[2];
  if (!readEnd || !writeEnd || pipe(fds) != 0) return FALSE;
  CLinuxFile* r = new CLinuxFile;
  CLinuxFile* w = new CLinuxFile;
  r->Attach(fds[0]);
  w->Attach(fds[1]);
  *readEnd = r;
  *writeEnd = w;
  return TRUE;
}

// ---- File mappings ------------------------------------------------------------

// `protect` is taken as the mmap flags (MAP_SHARED, MAP_PRIVATE); the high
// size word and the name are not used.
extern "C" HANDLE CreateFileMapping(HANDLE file, void*, DWORD protect, DWORD, DWORD sizeLow, const char*) {
  if (!validHandle(file)) return INVALID_HANDLE_VALUE;
  CLinuxFileMapping* mapping = new CLinuxFileMapping;
  if (mapping->Init(asFile(file), sizeLow, static_cast<int>(protect)) != 0) {
    delete mapping;
    return INVALID_HANDLE_VALUE;
  }
  return mapping;
}

// `access` is the mmap protection.
extern "C" void* MapViewOfFile(HANDLE mapping, DWORD access, DWORD, DWORD offsetLow, DWORD size) {
  if (!validHandle(mapping)) return nullptr;
  return static_cast<CLinuxFileMapping*>(mapping)->MapView(static_cast<int>(access),
                                                           static_cast<long>(offsetLow), size);
}

extern "C" BOOL UnmapViewOfFileEx(void* address, DWORD length) {
  return CLinuxFileMapping::UnmapViewByAddress(address, length) == 0 ? TRUE : FALSE;
}

// Asks for a length of 0, which munmap refuses: the view stays mapped and the
// result is always 0. Callers that mean to unmap use UnmapViewOfFileEx.
extern "C" BOOL UnmapViewOfFile(void* address) { return UnmapViewOfFileEx(address, 0); }
