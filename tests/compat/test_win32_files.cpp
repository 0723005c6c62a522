// Files, pipes, mappings and directories of the Win32-style layer, in a fresh
// temporary folder.
#include <gtest/gtest.h>

#include <errno.h>
#include <fcntl.h>
#include <sys/mman.h>
#include <sys/stat.h>
#include <sys/statvfs.h>
#include <unistd.h>

#include <filesystem>
#include <string>

#include "compat/win32.h"

namespace {

class Win32Files : public ::testing::Test {
 protected:
  void SetUp() override {
    char tmpl[] = "/tmp/scrim_files_XXXXXX";
    ASSERT_NE(mkdtemp(tmpl), nullptr);
    dir = tmpl;
    umask(022);
  }
  void TearDown() override { std::filesystem::remove_all(dir); }
  std::string path(const char* name) const { return dir + "/" + name; }
  // A file holding bytes 0, 1, 2, ... (mod 256).
  std::string patterned(const char* name, int size) {
    std::string p = path(name), bytes;
    for (int i = 0; i < size; ++i) bytes += static_cast<char>(i);
    std::FILE* f = std::fopen(p.c_str(), "wb");
    std::fwrite(bytes.data(), 1, bytes.size(), f);
    std::fclose(f);
    return p;
  }
  static int modeOf(const std::string& p) {
    struct stat st;
    return stat(p.c_str(), &st) == 0 ? static_cast<int>(st.st_mode & 07777) : -1;
  }
  std::string dir;
};

TEST_F(Win32Files, CreateFileAttributeCases) {
  HANDLE h = CreateFile(path("zero").c_str(), O_RDWR, 0, nullptr, O_CREAT, 0);
  ASSERT_NE(h, INVALID_HANDLE_VALUE);
  EXPECT_EQ(modeOf(path("zero")), 0644);
  CloseHandle(h);
  h = CreateFile(path("own").c_str(), O_RDWR, 0, nullptr, O_CREAT, 0600);
  EXPECT_EQ(modeOf(path("own")), 0600);
  CloseHandle(h);

  // All bits set: open as it is (O_EXCL would refuse an O_CREAT open of an
  // existing file, O_TRUNC would empty it), create with mode -1 only if that fails.
  std::string existing = patterned("existing", 5);
  h = CreateFile(existing.c_str(), O_RDWR | O_EXCL, 0, nullptr, O_TRUNC, ~0UL);
  ASSERT_NE(h, INVALID_HANDLE_VALUE);
  EXPECT_EQ(GetFileSize(h, nullptr), 5u);
  CloseHandle(h);
  h = CreateFile(path("made").c_str(), O_RDWR, 0, nullptr, 0, ~0UL);
  ASSERT_NE(h, INVALID_HANDLE_VALUE);
  EXPECT_EQ(modeOf(path("made")) & 0777, 0755);
  CloseHandle(h);

  EXPECT_EQ(CreateFile(path("no/such").c_str(), O_RDWR, 0, nullptr, O_CREAT, 0), INVALID_HANDLE_VALUE);
  EXPECT_EQ(GetLastError(), static_cast<DWORD>(ENOENT));
}

TEST_F(Win32Files, PipeReadsWhatWasWrittenAndReadOnClosedDescriptorCountsMinusOne) {
  HANDLE r = nullptr, w = nullptr;
  EXPECT_EQ(CreatePipe(&r, nullptr, nullptr, 0), FALSE);
  ASSERT_EQ(CreatePipe(&r, &w, nullptr, 0), TRUE);
  DWORD done = 0;
  EXPECT_EQ(WriteFile(w, "hello", 5, &done, nullptr), TRUE);
  EXPECT_EQ(done, 5u);
  char buf[8] = {};
  EXPECT_EQ(ReadFile(r, buf, sizeof buf, &done, nullptr), TRUE);
  EXPECT_EQ(done, 5u);
  EXPECT_STREQ(buf, "hello");
  EXPECT_EQ(ReadFile(r, buf, 1, nullptr, nullptr), FALSE);
  EXPECT_EQ(ReadFile(INVALID_HANDLE_VALUE, buf, 1, &done, nullptr), FALSE);

  close(static_cast<CLinuxFile*>(r)->GetFD());
  EXPECT_EQ(ReadFile(r, buf, 1, &done, nullptr), TRUE);
  EXPECT_EQ(done, 0xFFFFFFFFFFFFFFFFul);
  static_cast<CLinuxFile*>(r)->Attach(-1);
  CloseHandle(r);
  CloseHandle(w);
}

TEST_F(Win32Files, SeeksAcrossThe32BitBoundaryOfASparseFile) {
  HANDLE h = CreateFile(path("sparse").c_str(), O_RDWR, 0, nullptr, O_CREAT, 0);
  LONG high = 1;
  EXPECT_EQ(SetFilePointer(h, 0x10, &high, SEEK_SET), 0x10u);
  EXPECT_EQ(high, 1);
  DWORD done = 0;
  WriteFile(h, "x", 1, &done, nullptr);
  DWORD sizeHigh = 0;
  EXPECT_EQ(GetFileSize(h, &sizeHigh), 0x11u);
  EXPECT_EQ(sizeHigh, 1u);
  EXPECT_EQ(SetFilePointer(h, 0, nullptr, SEEK_CUR), 0x11u);  // low half of 0x1'00000011
  EXPECT_EQ(SetFilePointer(h, -1, nullptr, SEEK_SET), 0xFFFFFFFFu);
  EXPECT_EQ(FlushFileBuffers(h), TRUE);
  CloseHandle(h);
  EXPECT_EQ(SetFilePointer(nullptr, 0, nullptr, SEEK_SET), ~0UL);
  EXPECT_EQ(errno, EBADF);
  EXPECT_EQ(GetFileSize(INVALID_HANDLE_VALUE, nullptr), 0xFFFFFFFFu);
}

TEST_F(Win32Files, WindowedFileReadsAndSeeksOnlyInsideItsWindow) {
  CLinuxFile file;
  int fd = open(patterned("data", 100).c_str(), O_RDONLY);
  ASSERT_EQ(file.InitWindow(fd, 10, 20), 0);  // bytes 10 .. 29
  unsigned long high = 7;
  EXPECT_EQ(file.GetFileSize(&high), 20);
  EXPECT_EQ(high, 0u);
  unsigned char buf[16] = {};
  auto readFirst = [&](int n) { return file.Read(buf, n) > 0 ? buf[0] : -1; };
  EXPECT_EQ(readFirst(8), 10);
  struct Seek {
    long offset;
    int method;
    long result;
    int nextByte;  // first byte a read gives afterwards; -1 for none
  } seeks[] = {
      {5, SEEK_SET, 5, 15},           {21, SEEK_SET, 0xFFFFFFFF, 16},  // refused: the position is kept
      {-1, SEEK_SET, 0xFFFFFFFF, 17}, {1, SEEK_END, 0xFFFFFFFF, 18},  {-25, SEEK_END, 0xFFFFFFFF, 19},
      {0, SEEK_END, 20, -1},          {-5, SEEK_END, 15, 25},         {-16, SEEK_CUR, 0, 10},
      {-2, SEEK_CUR, 0xFFFFFFFF, 9},  // refused, but the descriptor stays before the window
      {3, 7, 0xFFFFFFFF, 10},
  };
  for (const Seek& s : seeks) {
    EXPECT_EQ(file.SetFilePointer(s.offset, nullptr, s.method), s.result) << s.offset << " " << s.method;
    EXPECT_EQ(readFirst(1), s.nextByte) << s.offset << " " << s.method;
  }
  file.SetFilePointer(-5, nullptr, SEEK_END);
  EXPECT_EQ(file.Read(buf, 16), 5) << "a read stops at the window's end";
}

TEST_F(Win32Files, SharedViewsWriteThroughPrivateOnesDoNotAndUnmapViewOfFileUnmapsNothing) {
  std::string p = patterned("mapped", 8192);
  HANDLE h = CreateFile(p.c_str(), O_RDWR, 0, nullptr, 0, 0);
  EXPECT_EQ(CreateFileMapping(INVALID_HANDLE_VALUE, nullptr, MAP_SHARED, 0, 0, nullptr),
            INVALID_HANDLE_VALUE);
  EXPECT_EQ(MapViewOfFile(nullptr, PROT_READ, 0, 0, 0), nullptr);
  for (int flags : {MAP_SHARED, MAP_PRIVATE}) {
    HANDLE m = CreateFileMapping(h, nullptr, flags, 0, 0, nullptr);
    ASSERT_NE(m, INVALID_HANDLE_VALUE);
    char* whole = static_cast<char*>(MapViewOfFile(m, PROT_READ | PROT_WRITE, 0, 0, 0));
    char* second = static_cast<char*>(MapViewOfFile(m, PROT_READ, 0, 4096, 4096));
    ASSERT_NE(whole, nullptr);
    ASSERT_NE(second, nullptr);
    EXPECT_EQ(second[1], 1);  // byte 4097
    const char mark = flags == MAP_SHARED ? 'S' : 'P';
    whole[8191] = mark;
    char onDisk = 0;
    pread(static_cast<CLinuxFile*>(h)->GetFD(), &onDisk, 1, 8191);
    EXPECT_EQ(onDisk, 'S') << "the private view's mark never reaches the file";
    EXPECT_EQ(UnmapViewOfFile(whole), FALSE);
    EXPECT_EQ(whole[8191], mark) << "still mapped";
    EXPECT_EQ(UnmapViewOfFileEx(whole, 0), FALSE);
    EXPECT_EQ(UnmapViewOfFileEx(whole, 8192), TRUE);
    EXPECT_EQ(UnmapViewOfFileEx(second, 4096), TRUE);
    CloseHandle(m);
  }
  CloseHandle(h);
}

TEST_F(Win32Files, DirectoriesMovesDeletesAttributesAndDiskSpace) {
  std::string sub = path("sub"), file = patterned("f", 3), moved = sub + "/g";
  EXPECT_EQ(CreateDirectory(sub.c_str(), nullptr), TRUE);
  EXPECT_EQ(CreateDirectory(sub.c_str(), nullptr), FALSE);
  EXPECT_EQ(GetFileAttributes(sub.c_str()) & S_IFMT, static_cast<DWORD>(S_IFDIR));
  EXPECT_EQ(GetFileAttributes(sub.c_str()) & 07777, 0755u);
  EXPECT_EQ(MoveFile(file.c_str(), moved.c_str()), TRUE);
  EXPECT_EQ(GetFileAttributes(file.c_str()), 0xFFFFFFFFu);
  EXPECT_EQ(GetFileAttributes(moved.c_str()) & S_IFMT, static_cast<DWORD>(S_IFREG));
  EXPECT_EQ(RemoveDirectory(sub.c_str()), FALSE) << "not empty";
  EXPECT_EQ(DeleteFile(moved.c_str()), TRUE);
  EXPECT_EQ(DeleteFile(moved.c_str()), FALSE);
  EXPECT_EQ(RemoveDirectory(sub.c_str()), TRUE);

  uint64_t freeForCaller = 0, total = 0, totalFree = 0;
  EXPECT_EQ(GetDiskFreeSpaceEx("", &freeForCaller, &total, &totalFree), FALSE);
  EXPECT_EQ(GetDiskFreeSpaceEx(nullptr, &freeForCaller, &total, &totalFree), FALSE);
  EXPECT_EQ(GetDiskFreeSpaceEx(path("none").c_str(), &freeForCaller, &total, &totalFree), FALSE);
  ASSERT_EQ(GetDiskFreeSpaceEx(dir.c_str(), &freeForCaller, nullptr, &totalFree), TRUE);
  ASSERT_EQ(GetDiskFreeSpaceEx(dir.c_str(), nullptr, &total, nullptr), TRUE);
  struct statvfs vfs;
  ASSERT_EQ(statvfs(dir.c_str(), &vfs), 0);
  EXPECT_EQ(total, static_cast<uint64_t>(vfs.f_blocks) * vfs.f_frsize);
  EXPECT_LE(freeForCaller, totalFree);
  EXPECT_LE(totalFree, total);
}

}  // namespace
