// The wide-character functions of the Win32-style layer, which carry C library
// names. This program is linked against libscrimpresent.so: its own calls and
// the C and C++ runtimes must still reach the C library, while dlsym on the
// library's handle reaches the layer's versions.
#include <gtest/gtest.h>

#include <dlfcn.h>
#include <errno.h>
#include <wchar.h>
#include <wctype.h>

#include <string>

#include "compat/win32.h"

namespace {

TEST(Win32Wide, TheProgramAndItsRuntimesKeepTheCLibrarysFunctions) {
  // This program's own calls and the C++ runtime's wide streams and locales
  // bind these names the way this lookup does.
  for (const char* name :
       {"mbstowcs", "wcstombs", "iswalpha", "swprintf", "btowc", "wctob", "mbrtowc", "wcrtomb", "mbsrtowcs",
        "wcsrtombs", "mbrlen", "wcsftime", "vswprintf", "towupper", "iswctype", "wctype", "wcstol"}) {
    Dl_info info;
    ASSERT_NE(dladdr(dlsym(RTLD_DEFAULT, name), &info), 0) << name;
    EXPECT_EQ(strstr(info.dli_fname, "scrimpresent"), nullptr) << name << " " << info.dli_fname;
  }
}

// The layer's versions, reached by name through the library's handle. GCC's
// shared sanitizer runtimes put themselves first among every instrumented
// object's dependencies, so in those builds the library's handle finds the
// runtime's interceptor; the wide object's own handle is then asked instead.
template <typename F>
F* fn(const char* name) {
  void* lib = dlopen(SCRIM_LIBRARY, RTLD_NOW);
  void* p = dlsym(lib, name);
  Dl_info info;
  if (p && dladdr(p, &info) && strstr(info.dli_fname, "/libtsan")) {
    void* wide = dlopen("libscrimpresent_wide.so", RTLD_NOW | RTLD_NOLOAD);
    p = dlsym(wide, name);
    dlclose(wide);
  }
  EXPECT_NE(p, nullptr) << name << " " << dlerror();
  dlclose(lib);  // the program is linked against it: it stays loaded
  return reinterpret_cast<F*>(p);
}

TEST(LayerWide, ClassesAndConversionsTakeOneByteAndFormattedCallsAreRefused) {
  auto layerWcrtomb = fn<size_t(char*, wchar_t, mbstate_t*)>("wcrtomb");
  char one[2] = {'x', 'y'};
  EXPECT_EQ(layerWcrtomb(one, L'A', nullptr), 1u);
  EXPECT_EQ(one[0], 1) << "it stores one";
  Dl_info info;
  ASSERT_NE(dladdr(reinterpret_cast<void*>(layerWcrtomb), &info), 0);
  EXPECT_NE(strstr(info.dli_fname, "libscrimpresent_wide.so"), nullptr) << info.dli_fname;

  auto wctypeOf = fn<wctype_t(const char*)>("wctype");
  auto iswctypeOf = fn<int(wint_t, wctype_t)>("iswctype");
  const char* names[] = {"alnum", "alpha", "blank", "cntrl", "digit", "graph",
                         "lower", "print", "punct", "space", "upper", "xdigit"};
  const char member[] = "7q\t\n3~q !\vQf";
  for (unsigned long i = 0; i < 12; ++i) {
    EXPECT_EQ(wctypeOf(names[i]), i + 1) << names[i];
    EXPECT_NE(iswctypeOf(member[i], i + 1), 0) << names[i];
    EXPECT_EQ(iswctypeOf(0xE9, i + 1), 0) << names[i] << ": bytes above 0x7F belong to no class";
  }
  EXPECT_EQ(wctypeOf("<invalid>") + iswctypeOf('a', 13), 0u);

  wchar_t w[8];
  EXPECT_EQ(fn<size_t(wchar_t*, const char*, size_t)>("mbstowcs")(w, "h\xc3\xa9", 8), 3u);
  EXPECT_EQ(std::wstring(w), std::wstring({L'h', 0xC3, 0xA9}));
  char b[8];
  EXPECT_EQ(fn<size_t(char*, const wchar_t*, size_t)>("wcstombs")(b, L"h\u00e9\u20ac", 8), 3u);
  EXPECT_STREQ(b, "h\xe9\xac");
  errno = 0;
  EXPECT_EQ(fn<int(wchar_t*, size_t, const wchar_t*, ...)>("swprintf")(w, 8, L"%d", 1), -1);
  EXPECT_EQ(errno, EOPNOTSUPP);
  int n = 0;
  errno = 0;
  EXPECT_EQ(fn<int(FILE*, const wchar_t*, ...)>("fwscanf")(stdin, L"%d", &n), -1);
  EXPECT_EQ(errno, EOPNOTSUPP);
  errno = 0;
  EXPECT_EQ(fn<int(const wchar_t*, const wchar_t*, ...)>("swscanf")(L"1", L"%d", &n), -1);
  EXPECT_EQ(errno + n, EOPNOTSUPP);
}

}  // namespace
