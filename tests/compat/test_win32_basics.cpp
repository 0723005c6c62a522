// Critical sections, interlocked counters, rectangles, time, GUIDs, small
// utilities, modules, the environment, the process id, and files, pipes,
// mappings and directories (in a fresh temporary folder) of the Win32-style layer.
#include <gtest/gtest.h>

#include <dlfcn.h>
#include <errno.h>
#include <fcntl.h>
#include <limits.h>
#include <string.h>
#include <sys/mman.h>
#include <sys/stat.h>

#include <filesystem>

#include "compat/win32.h"
#include "compat_test_util.h"

using namespace compat_test;

namespace {

// Run as a child (see Process.IdWalksUp...): report what the walk answers and the parent.
const bool g_reportOnly = [] {
  if (!getenv("SCRIM_PID_REPORT")) return false;
  printf("%lu %d\n", GetCurrentProcessId(), static_cast<int>(getppid()));
  fflush(stdout);
  _exit(0);
}();

std::vector<LONG> edges(const RECT& r) { return {r.left, r.top, r.right, r.bottom}; }

TEST(CriticalSection, RecursiveForTheOwnerWhileOthersTryAndFail) {
  CCRITCALSECTION lock;  // the class initialises its plain record
  CRITICAL_SECTION* cs = &lock.m_cs;
  auto otherThreadGets = [cs] {
    BOOL got = 2;
    std::thread([&] {
      if ((got = TryEnterCriticalSection(cs))) LeaveCriticalSection(cs);
    }).join();
    return got;
  };
  EnterCriticalSection(cs);
  EnterCriticalSection(cs);
  EXPECT_EQ(TryEnterCriticalSection(cs), TRUE) << "the owner may enter again without blocking";
  LeaveCriticalSection(cs);
  LeaveCriticalSection(cs);
  EXPECT_EQ(otherThreadGets(), FALSE) << "still held once";
  LeaveCriticalSection(cs);
  EXPECT_EQ(otherThreadGets(), TRUE) << "free after as many leaves as enters";
}

TEST(Interlocked, ResultsAndWidth) {
  LONG v = 0x7fffffffL;
  EXPECT_EQ(InterlockedIncrement(&v), 0x80000000L) << "counters are 64-bit";
  v = 5;
  EXPECT_EQ(InterlockedExchange(&v, 9), 5) << "the old value";
  EXPECT_EQ(InterlockedExchangeAdd(&v, -1), 8) << "the sum, not the old value";
  EXPECT_EQ(v, 8);
}

// Each of four concurrent callers sees the value its own step produced: every
// value between the start and the end is answered exactly once.
TEST(Interlocked, ConcurrentStepsLoseNoCountAndAnswerDistinctValues) {
  constexpr int kThreads = 4, kRounds = 100000, kAll = kThreads * kRounds;
  LONG counter = 0;
  for (auto step : {InterlockedIncrement, InterlockedDecrement}) {
    std::vector<std::atomic<int>> hits(kAll + 1);
    std::atomic<int> started{0};
    Background(kThreads, [&] {
      for (started++; started < kThreads;) continue;  // all at once, so that the steps overlap
      for (int i = 0; i < kRounds; ++i)
        if (const LONG x = step(&counter); x >= 0 && x <= kAll) hits[x]++;
      return 0;
    });  // joined here
    const bool up = step == InterlockedIncrement;
    EXPECT_EQ(counter, up ? kAll : 0);
    for (int x = up; x < kAll + up; ++x) ASSERT_EQ(hits[x], 1) << x;
  }
}

TEST(Rect, SetOffsetEmptyEqualPointInsideIntersectAndUnion) {
  RECT r = {9, 9, 9, 9};
  EXPECT_EQ(SetRect(&r, -1, -2, 3, 4) + OffsetRect(&r, -10, 20), 2);
  EXPECT_EQ(edges(r), (std::vector<LONG>{-11, 18, -7, 24})) << "sign-extended";
  EXPECT_EQ(SetRect(nullptr, 1, 2, 3, 4) + OffsetRect(nullptr, 1, 2) + IsRectEmpty(nullptr), TRUE);
  EXPECT_EQ(PtInRect(nullptr, POINT{0, 0}), FALSE);
  const RECT empties[] = {{0, 0, 1, 1}, {5, 0, 5, 10}, {0, 5, 10, 4}};
  for (int i = 0; i < 3; ++i) EXPECT_EQ(IsRectEmpty(&empties[i]), i > 0) << i;
  const RECT a = {1, 2, 3, 4},
             variants[] = {{1, 2, 3, 4}, {0, 2, 3, 4}, {1, 0, 3, 4}, {1, 2, 0, 4}, {1, 2, 3, 0}};
  for (int i = 0; i < 5; ++i) EXPECT_EQ(EqualRect(&a, &variants[i]), i == 0) << i;
  // Left and top edges are inside, right and bottom edges outside.
  const RECT box = {10, 20, 30, 40};
  const struct {
    LONG x, y;
    BOOL in;
  } points[] = {{10, 20, TRUE},  {29, 39, TRUE}, {30, 25, FALSE},
                {15, 40, FALSE}, {9, 25, FALSE}, {15, 19, FALSE}};
  for (const auto& p : points) EXPECT_EQ(PtInRect(&box, POINT{p.x, p.y}), p.in) << p.x << "," << p.y;
  // Intersections and unions: each row also runs with the destination being the first source.
  const struct {
    BOOL (*op)(RECT*, const RECT*, const RECT*);
    RECT a, b;
    BOOL ok;
    RECT d;
  } rows[] = {
      {IntersectRect, {0, 0, 10, 10}, {5, 5, 15, 15}, TRUE, {5, 5, 10, 10}},
      {IntersectRect, {0, 0, 10, 10}, {10, 0, 20, 10}, FALSE, {0, 0, 0, 0}},  // touching edges
      {IntersectRect, {0, 0, 10, 10}, {0, 10, 10, 20}, FALSE, {0, 0, 0, 0}},
      {IntersectRect, {0, 0, 10, 10}, {5, -5, 20, 8}, TRUE, {5, 0, 10, 8}},
      {UnionRect, {5, 5, 10, 10}, {0, 0, 0, 0}, TRUE, {0, 0, 10, 10}},  // an empty source still counts
      {UnionRect, {3, 3, 3, 8}, {3, 1, 3, 2}, FALSE, {0, 0, 0, 0}},     // the bounding box has no width
      {UnionRect, {5, 5, 10, 10}, {-4, 2, 7, 30}, TRUE, {-4, 2, 10, 30}},
  };
  for (const auto& row : rows) {
    RECT d = {1, 1, 1, 1}, first = row.a;
    EXPECT_EQ(row.op(&d, &row.a, &row.b), row.ok);
    EXPECT_EQ(edges(d), edges(row.d)) << edges(row.a)[0] << " " << edges(row.b)[0];
    EXPECT_EQ(row.op(&first, &first, &row.b), row.ok);
    EXPECT_EQ(edges(first), edges(row.d)) << "in place";
  }
}

TEST(Time, WallClockMillisecondsAndSleep) {
  long before = wallMs();
  DWORD t = timeGetTime(), tick = GetTickCount();
  EXPECT_TRUE(static_cast<long>(t) >= before && static_cast<long>(t) <= wallMs());
  EXPECT_GE(tick, t);
  EXPECT_GT(t, 0xFFFFFFFFul) << "milliseconds since the epoch do not wrap at 32 bits";
  for (int ms : {30, 0}) {
    before = wallMs();
    Sleep(ms);
    const long took = wallMs() - before;  // one off: millisecond truncation of the two reads
    EXPECT_TRUE(took >= ms - 1 && took < (ms ? 1000 : 50)) << ms << " took " << took;
  }
}

// Data1 is 64-bit here: the first sixteen bytes end within Data4.
TEST(Guid, ComparesOnlyTheFirstSixteenBytes) {
  const _GUID a{0x17A12BC8, 0xDF53, 0x4AC7, {0xBA, 0xCF, 0xE8, 0x54, 0x74, 0x24, 0x27, 0xAE}};
  _GUID b = a;
  EXPECT_TRUE(IsEqualGUID(a, b) == TRUE && a == b && !(a != b));
  for (int i = 0; i < 8; ++i) {
    b = a;
    b.Data4[i] ^= 0x80;
    EXPECT_EQ(IsEqualGUID(a, b), i >= 4) << i;
    EXPECT_EQ(a != b, i < 4) << i;
  }
  _GUID d1 = a, d2 = a, d3 = a;
  d1.Data1 ^= 1, d2.Data2 ^= 0x100, d3.Data3 ^= 1;
  for (const _GUID* g : {&d1, &d2, &d3}) EXPECT_TRUE(IsEqualGUID(a, *g) == FALSE && !(a == *g));
}

TEST(Utilities, MemoryErrorsItoaAndInertStubs) {
  unsigned char buf[8] = {0xAB, 0xAB, 0xAB, 0xAB, 0xAB, 0xAB, 0xAB, 0xAB};
  ZeroMemory(buf + 1, 5);
  const unsigned char zeroed[8] = {0xAB, 0, 0, 0, 0, 0, 0xAB, 0xAB};
  EXPECT_EQ(memcmp(buf, zeroed, 8), 0);
  errno = ENOENT;
  EXPECT_EQ(GetLastError(), static_cast<DWORD>(ENOENT));
  errno = -3;
  EXPECT_EQ(GetLastError(), 0xFFFFFFFFFFFFFFFDul) << "sign-extended";
  void* p = LocalAlloc(0x40 /* zero-init flag is ignored */, 32);
  ASSERT_NE(p, nullptr);
  memset(p, 1, 32);
  EXPECT_EQ(LocalFree(p), nullptr);

  char text[16];
  for (auto [value, radix, out] : {std::tuple{255, 16, "ff"}, {-42, 10, "-42"}, {7, 8, "-42"}}) {
    EXPECT_EQ(itoa(value, text, radix), text);
    EXPECT_STREQ(text, out) << "radix 8 leaves the buffer alone";
  }

  EXPECT_EQ(SendMessage(nullptr, 0, 0, 0) + GetSystemMetrics(0) + CoInitializeEx(nullptr, 0), 0);
  EXPECT_EQ(GetModuleHandle("x"), nullptr);
  EXPECT_EQ(ShowWindow(nullptr, 0) + PostMessage(nullptr, 0, 0, 0), 2);
  EXPECT_EQ(CreateWindow("c", "w", 0, 0, 0, 1, 1, nullptr, nullptr, nullptr, nullptr),
            reinterpret_cast<HWND>(0x12345678));
}

TEST(Modules, LoadFindCallAndFreeAndTheFileNameIsTheProgramsPath) {
  EXPECT_EQ(LoadLibrary("/no/such/module.so"), nullptr);
  HMODULE module = LoadLibrary(SCRIM_TEST_MODULE);
  ASSERT_NE(module, nullptr) << dlerror();
  auto triple = reinterpret_cast<int (*)(int)>(GetProcAddress(module, "scrim_test_module_triple"));
  ASSERT_TRUE(triple && triple(14) == 42);
  EXPECT_TRUE(GetProcAddress(module, "no_such_function") == nullptr && FreeLibrary(module) == TRUE);

  char expected[PATH_MAX], buf[PATH_MAX];
  ASSERT_NE(realpath(program_invocation_name, expected), nullptr);
  EXPECT_EQ(GetModuleFileName(reinterpret_cast<HMODULE>(0x1234), buf, sizeof buf), strlen(expected));
  EXPECT_STREQ(buf, expected) << "whatever the module";
  EXPECT_EQ(GetModuleFileName(nullptr, buf, 5), 4u) << "at most size - 1 characters";
  EXPECT_EQ(std::string(buf), std::string(expected, 4));
}

TEST(Environment, DllDirectoryVariablesAndSystemDirectory) {
  char buf[8] = "-------";
  unsetenv("ORU_DLL_PATH");
  EXPECT_EQ(GetDllDirectory(sizeof buf, buf), 0u);
  EXPECT_EQ(SetDllDirectory("ab"), 0) << "setenv's own result";
  EXPECT_EQ(GetDllDirectory(2, buf), 0u);
  EXPECT_STREQ(buf, "-------") << "nothing copied when the size is short";
  EXPECT_EQ(GetDllDirectory(3, buf), 2u);
  EXPECT_STREQ(buf, "ab");

  EXPECT_EQ(SetEnvironmentVariable("SCRIM_TEST_VAR", "v") + SetEnvironmentVariable("BAD=NAME", "v"), TRUE);
  EXPECT_STREQ(getenv("SCRIM_TEST_VAR"), "v");
  EXPECT_EQ(SetEnvironmentVariable("SCRIM_TEST_VAR", nullptr), FALSE) << "a removal answers 0";
  EXPECT_EQ(getenv("SCRIM_TEST_VAR"), nullptr);

  EXPECT_EQ(GetSystemDirectory(buf, 4), 5u);
  EXPECT_STREQ(buf, "ab") << "untouched";
  EXPECT_EQ(GetSystemDirectory(buf, 5), 4u);
  EXPECT_STREQ(buf, "/usr");
}

// Runs this program again through `sh -c command` with the report switch on;
// answers {walk result, child's parent}.
std::pair<long, long> childReport(const std::string& shellCommand) {
  FILE* p = popen(("SCRIM_PID_REPORT=1; export SCRIM_PID_REPORT; " + shellCommand).c_str(), "r");
  long result = -1, parent = -1;
  if (p && fscanf(p, "%ld %ld", &result, &parent) != 2) result = parent = -1;
  if (p) pclose(p);
  return {result, parent};
}

TEST(Process, IdWalksUpPastAncestorsRunningTheSameProgram) {
  // This program was started by another one (the test runner): its parent.
  EXPECT_EQ(GetCurrentProcessId(), static_cast<DWORD>(getppid()));
  std::string self = std::string(SCRIM_TEST_EMULATOR) + " " + program_invocation_name;
  // `exec`: the child replaces the shell, so its parent is this process.
  auto [sameResult, sameParent] = childReport("exec " + self);
  EXPECT_EQ(sameParent, getpid());
  // Under an emulator this process's executable is the emulator itself, so
  // the child sees a parent that runs another program.
  EXPECT_EQ(sameResult, SCRIM_TEST_EMULATOR[0] != 0 ? getpid() : getppid());
  // Started by the shell, which runs another program: the shell's id.
  auto [otherResult, otherParent] = childReport(self + "; true");
  EXPECT_NE(otherParent, getpid());
  EXPECT_EQ(otherResult, otherParent);
}

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
  EXPECT_FALSE(ReadFile(r, buf, 1, nullptr, nullptr) || ReadFile(INVALID_HANDLE_VALUE, buf, 1, &done, 0));
  close(fd(r));
  EXPECT_TRUE(ReadFile(r, buf, 1, &done, nullptr) == TRUE && done == 0xFFFFFFFFFFFFFFFFul);
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
  EXPECT_TRUE(SetFilePointer(nullptr, 0, nullptr, SEEK_SET) == ~0UL && errno == EBADF);
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
  EXPECT_TRUE(CreateFileMapping(INVALID_HANDLE_VALUE, nullptr, MAP_SHARED, 0, 0, nullptr) ==
                  INVALID_HANDLE_VALUE &&
              !MapViewOfFile(nullptr, PROT_READ, 0, 0, 0));
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
  EXPECT_EQ(GetDiskFreeSpaceEx("", &avail, &total, nullptr), FALSE);
  EXPECT_TRUE(GetDiskFreeSpaceEx(dir.c_str(), &avail, &total, nullptr) && avail < total);
}

}  // namespace
