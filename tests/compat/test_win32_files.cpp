// Files, pipes, mappings and directories of the Win32-style layer, in a fresh
// temporary folder.
#include <gtest/gtest.h>

#include <errno.h>
#include <fcntl.h>
#include <sys/mman.h>
#include <sys/stat.h>
#include <unistd.h>

#include <filesystem>
#include <string>

#include "compat/win32.h"

namespace {

struct Win32Files : ::testing::Test {
  std::string dir = [] {
    char tmpl[] = "/tmp/scrim_files_XXXXXX";
    umask(022);
    return std::string(mkdtemp(tmpl) ? tmpl : "");
  }();
  void TearDown() override { std::filesystem::remove_all(dir); }
  // A file holding bytes 0, 1, 2, ... (mod 256); size < 0 only names it.
  std::string file(const char* name, int size = -1) {
    std::string p = dir + "/" + name;
    FILE* f = size < 0 ? nullptr : fopen(p.c_str(), "wb");
    for (int i = 0; f && i < size; ++i) fputc(i & 0xFF, f);
    if (f) fclose(f);
    return p;
  }
  static int fd(HANDLE h) { return static_cast<CLinuxFile*>(h)->GetFD(); }
};

// All bits set opens as it is (O_EXCL would refuse an O_CREAT open of an
// existing file, O_TRUNC would empty it) and creates with mode -1 only if that fails.
TEST_F(Win32Files, CreateFileAttributeCases) {
  const struct {
    int access, creation, existingSize;
    DWORD attributes;
    int mode, size;
  } cases[] = {{O_RDWR, O_CREAT, -1, 0, 0644, 0},
               {O_RDWR, O_CREAT, -1, 0600, 0600, 0},
               {O_RDWR | O_EXCL, O_TRUNC, 5, ~0UL, 0644, 5},
               {O_RDWR, 0, -1, ~0UL, 07755, 0},
               {O_RDWR, O_CREAT | O_TRUNC, 5, 0, 0644, 0}};
  for (const auto& c : cases) {
    const std::string p = file(std::to_string(&c - cases).c_str(), c.existingSize);
    HANDLE h = CreateFile(p.c_str(), c.access, 0, nullptr, c.creation, c.attributes);
    ASSERT_NE(h, INVALID_HANDLE_VALUE) << p;
    struct stat st = {};
    stat(p.c_str(), &st);
    EXPECT_EQ(st.st_mode & 0777, c.mode & 0777u) << p;
    EXPECT_EQ(GetFileSize(h, nullptr), static_cast<DWORD>(c.size)) << p;
    CloseHandle(h);
  }
  EXPECT_EQ(CreateFile(file("no/such").c_str(), O_RDWR, 0, nullptr, O_CREAT, 0), INVALID_HANDLE_VALUE);
  EXPECT_EQ(GetLastError(), static_cast<DWORD>(ENOENT));
}

TEST_F(Win32Files, PipeCarriesBytesAndAFailedReadStillAnswersOne) {
  HANDLE r = nullptr, w = nullptr;
  EXPECT_EQ(CreatePipe(&r, nullptr, nullptr, 0), FALSE);
  ASSERT_EQ(CreatePipe(&r, &w, nullptr, 0), TRUE);
  DWORD written = 0, done = 0;
  char buf[8] = {};
  EXPECT_EQ(WriteFile(w, "hello", 5, &written, nullptr) + ReadFile(r, buf, sizeof buf, &done, nullptr), 2);
  EXPECT_EQ(written + done, 10u);
  EXPECT_STREQ(buf, "hello");
  EXPECT_EQ(ReadFile(r, buf, 1, nullptr, nullptr) + ReadFile(INVALID_HANDLE_VALUE, buf, 1, &done, nullptr),
            0);
  close(fd(r));
  EXPECT_EQ(ReadFile(r, buf, 1, &done, nullptr), TRUE);
  EXPECT_EQ(done, 0xFFFFFFFFFFFFFFFFul);
  static_cast<CLinuxFile*>(r)->Attach(-1);
  CloseHandle(r);
  CloseHandle(w);
}

TEST_F(Win32Files, SeeksAcrossThe32BitBoundaryOfASparseFile) {
  HANDLE h = CreateFile(file("sparse").c_str(), O_RDWR, 0, nullptr, O_CREAT, 0);
  LONG high = 1;
  DWORD done = 0, sizeHigh = 0;
  EXPECT_EQ(SetFilePointer(h, 0x10, &high, SEEK_SET) + WriteFile(h, "x", 1, &done, nullptr), 0x11u);
  EXPECT_EQ(GetFileSize(h, &sizeHigh) + SetFilePointer(h, 0, nullptr, SEEK_CUR), 0x22u);  // 0x1'00000011
  EXPECT_EQ(high + sizeHigh, 2u);
  EXPECT_EQ(SetFilePointer(h, -1, nullptr, SEEK_SET), 0xFFFFFFFFu);
  EXPECT_EQ(FlushFileBuffers(h) + CloseHandle(h), 2);
  EXPECT_EQ(SetFilePointer(nullptr, 0, nullptr, SEEK_SET), ~0UL);
  EXPECT_EQ(errno, EBADF);
  EXPECT_EQ(GetFileSize(INVALID_HANDLE_VALUE, nullptr), 0xFFFFFFFFu);
}

TEST_F(Win32Files, WindowedFileReadsAndSeeksOnlyInsideItsWindow) {
  CLinuxFile f;
  ASSERT_EQ(f.InitWindow(open(file("data", 100).c_str(), O_RDONLY), 10, 20), 0);  // bytes 10 .. 29
  unsigned long high = 7;
  EXPECT_EQ(f.GetFileSize(&high) + high, 20u);
  unsigned char buf[16] = {};
  auto readFirst = [&](int n) { return f.Read(buf, n) > 0 ? buf[0] : -1; };
  EXPECT_EQ(readFirst(8), 10);
  // {offset, method, result, first byte a read gives afterwards (-1: none)};
  // a refusal keeps the position, even when it is before the window.
  const long no = 0xFFFFFFFF,
             seeks[][4] = {{5, SEEK_SET, 5, 15},   {21, SEEK_SET, no, 16},  {-1, SEEK_SET, no, 17},
                           {1, SEEK_END, no, 18},  {-25, SEEK_END, no, 19}, {0, SEEK_END, 20, -1},
                           {-5, SEEK_END, 15, 25}, {-16, SEEK_CUR, 0, 10},  {-2, SEEK_CUR, no, 9},
                           {3, 7, no, 10}};
  for (const auto& s : seeks) {
    EXPECT_EQ(f.SetFilePointer(s[0], nullptr, static_cast<int>(s[1])), s[2]) << s[0] << " " << s[1];
    EXPECT_EQ(readFirst(1), s[3]) << s[0] << " " << s[1];
  }
  f.SetFilePointer(-5, nullptr, SEEK_END);
  EXPECT_EQ(f.Read(buf, 16), 5) << "a read stops at the window's end";
}

TEST_F(Win32Files, SharedViewsWriteThroughPrivateOnesDoNotAndUnmapViewOfFileUnmapsNothing) {
  HANDLE h = CreateFile(file("mapped", 8192).c_str(), O_RDWR, 0, nullptr, 0, 0);
  EXPECT_EQ(CreateFileMapping(INVALID_HANDLE_VALUE, nullptr, MAP_SHARED, 0, 0, nullptr),
            INVALID_HANDLE_VALUE);
  EXPECT_EQ(MapViewOfFile(nullptr, PROT_READ, 0, 0, 0), nullptr);
  for (int flags : {MAP_SHARED, MAP_PRIVATE}) {
    HANDLE m = CreateFileMapping(h, nullptr, flags, 0, 0, nullptr);
    char* whole = static_cast<char*>(MapViewOfFile(m, PROT_READ | PROT_WRITE, 0, 0, 0));
    char* second = static_cast<char*>(MapViewOfFile(m, PROT_READ, 0, 4096, 4096));
    ASSERT_TRUE(whole && second);
    EXPECT_EQ(second[1], 1);  // byte 4097
    const char mark = flags == MAP_SHARED ? 'S' : 'P';
    whole[8191] = mark;
    char onDisk = 0;
    pread(fd(h), &onDisk, 1, 8191);
    EXPECT_EQ(onDisk, 'S') << "the private view's mark never reaches the file";
    EXPECT_EQ(UnmapViewOfFile(whole) + UnmapViewOfFileEx(whole, 0), FALSE);
    EXPECT_EQ(whole[8191], mark) << "still mapped";
    EXPECT_EQ(UnmapViewOfFileEx(whole, 8192) + UnmapViewOfFileEx(second, 4096), 2);
    CloseHandle(m);
  }
  CloseHandle(h);
}

TEST_F(Win32Files, DirectoriesAndTheirAttributes) {
  std::string sub = file("sub");
  EXPECT_EQ(CreateDirectory(sub.c_str(), nullptr) * 2 + CreateDirectory(sub.c_str(), nullptr), 2);
  EXPECT_EQ(GetFileAttributes(sub.c_str()), static_cast<DWORD>(S_IFDIR | 0755)) << "st_mode, not Win32 bits";
  EXPECT_EQ(RemoveDirectory(sub.c_str()) * 2 + RemoveDirectory(sub.c_str()), 2);
  EXPECT_EQ(GetFileAttributes(sub.c_str()), 0xFFFFFFFFu);
  std::string f = file("f", 1), g = file("g");
  EXPECT_EQ(MoveFile(f.c_str(), g.c_str()) + DeleteFile(g.c_str()) * 2 + DeleteFile(g.c_str()), 3);
  uint64_t avail = 0, total = 0;
  EXPECT_EQ(GetDiskFreeSpaceEx("", &avail, &total, nullptr) +
                GetDiskFreeSpaceEx(sub.c_str(), &avail, &total, nullptr),
            0);
  EXPECT_TRUE(GetDiskFreeSpaceEx(dir.c_str(), &avail, &total, nullptr) && avail < total);
}

}  // namespace
