// The wide-character functions of the Win32-style layer, which carry C library
// names. This program is linked against libscrimpresent.so: its own calls and
// the C and C++ runtimes must still reach the C library, while dlsym on the
// library's handle reaches the layer's versions.
#include <gtest/gtest.h>

#include <dlfcn.h>
#include <errno.h>
#include <locale.h>
#include <stdarg.h>
#include <stdio.h>
#include <wchar.h>
#include <wctype.h>

#include <fstream>
#include <locale>
#include <sstream>
#include <string>

#include "compat/win32.h"

namespace {

const char kUtf8[] = "C.UTF-8";

TEST(Win32Wide, TheProgramAndItsRuntimesKeepTheCLibrarysFunctions) {
  ASSERT_NE(setlocale(LC_ALL, kUtf8), nullptr);
  wchar_t w[8];
  EXPECT_EQ(mbstowcs(w, "h\xc3\xa9", 8), 2u);
  EXPECT_EQ(w[1], 0xE9);
  char b[8] = {};
  mbstate_t state = {};
  EXPECT_EQ(wcrtomb(b, 0xE9, &state), 2u);
  EXPECT_STREQ(b, "\xc3\xa9");
  EXPECT_TRUE(iswalpha(0xE9));
  EXPECT_EQ(towupper(0xE9), 0xC9u);
  EXPECT_EQ(swprintf(w, 8, L"%d-%ls", 7, L"x"), 3);
  EXPECT_EQ(std::wstring(w), L"7-x");
  EXPECT_EQ(std::to_wstring(12), L"12");
  Dl_info info;
  ASSERT_NE(dladdr(dlsym(RTLD_DEFAULT, "wcrtomb"), &info), 0);
  EXPECT_EQ(strstr(info.dli_fname, "scrimpresent"), nullptr) << info.dli_fname;

  std::locale loc(kUtf8);
  EXPECT_TRUE(std::isalpha(L'\u00e9', loc));
  EXPECT_EQ(std::toupper(L'\u00e9', loc), L'\u00c9');
  std::wostringstream os;
  os << L"n=" << 42 << L' ' << 1.5;
  EXPECT_EQ(os.str(), L"n=42 1.5");
  std::string path = testing::TempDir() + "scrim_wide_stream.txt";
  {
    std::wofstream out(path);
    out.imbue(loc);
    out << L"\u00e9\u20ac!";
  }
  std::ifstream in(path, std::ios::binary);
  EXPECT_EQ(std::string(std::istreambuf_iterator<char>(in), {}), "\xc3\xa9\xe2\x82\xac!");
  std::wifstream win(path);
  win.imbue(loc);
  std::wstring back;
  std::getline(win, back);
  EXPECT_EQ(back, L"\u00e9\u20ac!");
  remove(path.c_str());
  setlocale(LC_ALL, "C");
}

// The layer's versions, reached by name through the library's handle.
class LayerWide : public ::testing::Test {
 protected:
  void SetUp() override { ASSERT_NE(lib, nullptr) << dlerror(); }
  void TearDown() override { dlclose(lib); }
  // GCC's shared sanitizer runtimes put themselves first among every
  // instrumented object's dependencies, so in those builds the library's
  // handle finds the runtime's interceptor; the wide object's own handle is
  // then asked instead.
  template <typename F>
  F* fn(const char* name) {
    void* p = dlsym(lib, name);
    Dl_info info;
    if (p && dladdr(p, &info) && strstr(info.dli_fname, "/libtsan")) {
      void* wide = dlopen("libscrimpresent_wide.so", RTLD_NOW | RTLD_NOLOAD);
      p = dlsym(wide, name);
      dlclose(wide);
    }
    EXPECT_NE(p, nullptr) << name;
    return reinterpret_cast<F*>(p);
  }
  void* lib = dlopen(SCRIM_LIBRARY, RTLD_NOW);
};

const char* narrowAsWide(const char* s) { return s; }
#define AS_WIDE(s) reinterpret_cast<const wchar_t*>(narrowAsWide(s))

TEST_F(LayerWide, WcrtombStoresOneAndTheFunctionComesFromTheWideObject) {
  auto layerWcrtomb = fn<size_t(char*, wchar_t, mbstate_t*)>("wcrtomb");
  char buf[2] = {'x', 'y'};
  EXPECT_EQ(layerWcrtomb(buf, L'A', nullptr), 1u);
  EXPECT_EQ(buf[0], 1);
  EXPECT_EQ(layerWcrtomb(nullptr, L'A', nullptr), 1u);
  Dl_info info;
  ASSERT_NE(dladdr(reinterpret_cast<void*>(layerWcrtomb), &info), 0);
  EXPECT_NE(strstr(info.dli_fname, "libscrimpresent_wide.so"), nullptr) << info.dli_fname;
}

TEST_F(LayerWide, ClassesAreTheNarrowOnesOfOneByte) {
  auto wctypeOf = fn<wctype_t(const char*)>("wctype");
  auto iswctypeOf = fn<int(wint_t, wctype_t)>("iswctype");
  const char* names[] = {"alnum", "alpha", "blank", "cntrl", "digit", "graph",
                         "lower", "print", "punct", "space", "upper", "xdigit"};
  const int member[] = {'7', 'q', '\t', '\n', '3', '~', 'q', ' ', '!', '\v', 'Q', 'f'};
  for (unsigned long i = 0; i < 12; ++i) {
    EXPECT_EQ(wctypeOf(names[i]), i + 1) << names[i];
    EXPECT_NE(iswctypeOf(member[i], i + 1), 0) << names[i];
    EXPECT_EQ(iswctypeOf(0xE9, i + 1), 0) << names[i] << ": bytes above 0x7F belong to no class";
  }
  EXPECT_EQ(wctypeOf("<invalid>"), 0u);
  EXPECT_EQ(iswctypeOf('a', 0), 0);
  EXPECT_EQ(iswctypeOf('a', 13), 0);
  auto digit = fn<int(wint_t)>("iswdigit");
  EXPECT_EQ(digit('0') + digit('9') * 2 + digit('/') * 4 + digit(':') * 8 + digit(0x660) * 16, 3);
  EXPECT_EQ(fn<int(wint_t)>("iswalpha")(0xE9), 0);
  EXPECT_EQ(fn<wint_t(wint_t)>("towupper")('a'), static_cast<wint_t>('A'));
  EXPECT_EQ(fn<wint_t(wint_t)>("towlower")(0xC9), 0xC9u);
}

TEST_F(LayerWide, ConversionsWidenAndNarrowByteByByte) {
  wchar_t wc = 0;
  auto mbrtowcOf = fn<size_t(wchar_t*, const char*, size_t, mbstate_t*)>("mbrtowc");
  EXPECT_EQ(mbrtowcOf(&wc, "\xe9", 1, nullptr), 1u);
  EXPECT_EQ(wc, 0xE9);
  EXPECT_EQ(mbrtowcOf(&wc, "", 1, nullptr), 0u);
  EXPECT_EQ(fn<size_t(const char*, size_t, mbstate_t*)>("mbrlen")(nullptr, 4, nullptr), 0u);
  EXPECT_EQ(fn<size_t(const char*, size_t, mbstate_t*)>("mbrlen")("\xc3\xa9", 2, nullptr), 1u);
  wchar_t w[8];
  EXPECT_EQ(fn<size_t(wchar_t*, const char*, size_t)>("mbstowcs")(w, "h\xc3\xa9", 8), 3u);
  EXPECT_EQ(std::wstring(w), std::wstring({L'h', 0xC3, 0xA9}));
  char b[8];
  EXPECT_EQ(fn<size_t(char*, const wchar_t*, size_t)>("wcstombs")(b, L"h\u00e9\u20ac", 8), 3u);
  EXPECT_STREQ(b, "h\xe9\xac");
  EXPECT_EQ(fn<size_t(char*, const wchar_t*, size_t)>("wcstombs")(nullptr, L"abcd", 1), 4u);
  EXPECT_EQ(fn<wint_t(int)>("btowc")(0x1FF), 0x1FFu);
  EXPECT_EQ(fn<int(wint_t)>("wctob")(0x1FF), 0x1FF);
  EXPECT_EQ(fn<int(wchar_t)>("wcwidth")(0x3000) * 2 + fn<int(wchar_t)>("wcwidth")(0), 2);
  EXPECT_EQ(fn<int(FILE*, int)>("fwide")(stdout, -7), -7);
  EXPECT_EQ(fn<int(const mbstate_t*)>("mbsinit")(nullptr), 1);
  wchar_t dst[2] = {7, 7};
  EXPECT_EQ(fn<size_t(wchar_t*, const wchar_t*, size_t)>("wcsxfrm")(dst, L"zz", 2), 2u);
  EXPECT_EQ(dst[0] & 0xFFFF, L'z' & 0xFFFF) << "two bytes copied";
  EXPECT_EQ(dst[1], 7);
  wchar_t* end = nullptr;
  EXPECT_EQ(fn<long(const wchar_t*, wchar_t**, int)>("wcstol")(AS_WIDE(" 42x"), &end, 10), 42);
  EXPECT_EQ(reinterpret_cast<const char*>(end), narrowAsWide(" 42x") + 3);
  EXPECT_EQ(_wtoi(AS_WIDE("-17")), -17);
}

TEST_F(LayerWide, StreamsTakeTheLowByteAndFormattedCallsAreRefused) {
  FILE* f = tmpfile();
  ASSERT_NE(f, nullptr);
  fn<wint_t(wchar_t, FILE*)>("fputwc")(0x141, f);
  fn<int(const wchar_t*, FILE*)>("fputws")(AS_WIDE("bc"), f);
  rewind(f);
  EXPECT_EQ(fn<wint_t(FILE*)>("fgetwc")(f), static_cast<wint_t>('A'));
  fn<wint_t(wint_t, FILE*)>("ungetwc")(0x15A, f);
  EXPECT_EQ(fn<wint_t(FILE*)>("getwc")(f), static_cast<wint_t>('Z'));
  char rest[4] = {};
  fn<wchar_t*(wchar_t*, int, FILE*)>("fgetws")(reinterpret_cast<wchar_t*>(rest), sizeof rest, f);
  EXPECT_STREQ(rest, "bc");
  fclose(f);

  wchar_t buf[8];
  auto refused = [](int rc) { return rc == -1 && errno == EOPNOTSUPP; };
  errno = 0;
  EXPECT_TRUE(refused(fn<int(wchar_t*, size_t, const wchar_t*, ...)>("swprintf")(buf, 8, L"%d", 1)));
  errno = 0;
  EXPECT_TRUE(refused(fn<int(FILE*, const wchar_t*, ...)>("fwprintf")(stdout, L"x")));
  errno = 0;
  EXPECT_TRUE(refused(fn<int(const wchar_t*, const wchar_t*, ...)>("swscanf")(L"1", L"%d", &buf)));
  errno = 0;
  EXPECT_TRUE(refused(_swprintf(buf, L"%d", 1)));

  std::string path = testing::TempDir() + "scrim_wfopen.txt";
  std::wstring widePath(path.begin(), path.end());
  FILE* opened = _wfopen(widePath.c_str(), L"w");
  ASSERT_NE(opened, nullptr);
  fclose(opened);
  EXPECT_EQ(remove(path.c_str()), 0);
}

}  // namespace
