// The wide-character functions of the Win32-style layer. They carry the names
// of C library functions but treat every wchar_t as one byte and map each call
// onto its narrow counterpart, so they must never stand in for the C
// library's own: they live in their own shared object (libscrimpresent_wide.so,
// a dependency of libscrimpresent.so, so dlsym on the library's handle finds
// them) and are exported under the version node SCRIM_WIDE_1.0 only
// (wide_chars.map). A program linked against libscrimpresent.so binds its
// own calls to the C library, because this object is not on its link line;
// the C and C++ runtimes ask for the C library's versions by name and never
// match ours. Calls among these functions bind inside this object (-Bsymbolic).
//
// Each function is defined under a private name and given its C name as its
// assembler name, so that the C library headers' declarations (and their
// redirections, e.g. wcstol to __isoc23_wcstol) never meet ours.
// Calls stay calls: glibc's optimising header inlines would reach its private
// tables (__ctype_b_loc) and the stdin/stdout objects, which an arm64 build
// must not name since Android lacks them at API 21.
#define __NO_INLINE__ 1
#include <ctype.h>
#include <errno.h>
#include <stdarg.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <time.h>
#include <wchar.h>
#include <wctype.h>

#define WIDE_FN(ret, name, params)                                                         \
  extern "C" __attribute__((visibility("default"))) ret wide_##name params __asm__(#name); \
  ret wide_##name params

// ---- Classification and case --------------------------------------------------

#define NARROW_CLASS(wname, narrowFn) \
  WIDE_FN(int, wname, (wint_t c)) { return narrowFn(static_cast<int>(c)); }

NARROW_CLASS(iswalnum, isalnum)
NARROW_CLASS(iswalpha, isalpha)
NARROW_CLASS(iswcntrl, iscntrl)
NARROW_CLASS(iswgraph, isgraph)
NARROW_CLASS(iswlower, islower)
NARROW_CLASS(iswprint, isprint)
NARROW_CLASS(iswpunct, ispunct)
NARROW_CLASS(iswspace, isspace)
NARROW_CLASS(iswupper, isupper)
NARROW_CLASS(iswxdigit, isxdigit)

WIDE_FN(wint_t, towlower, (wint_t c)) { return static_cast<wint_t>(tolower(static_cast<int>(c))); }

WIDE_FN(wint_t, towupper, (wint_t c)) { return static_cast<wint_t>(toupper(static_cast<int>(c))); }

WIDE_FN(int, iswdigit, (wint_t c)) { return c - '0' <= 9 ? 1 : 0; }

namespace {

int isdigitClass(int c) { return wide_iswdigit(static_cast<wint_t>(c)); }

// Class numbers are positions in this table; 0 is no class.
struct WideClass {
  const char* name;
  int (*narrowFn)(int);
};
const WideClass kClasses[] = {
    {"<invalid>", nullptr},  {"alnum", isalnum}, {"alpha", isalpha},   {"blank", isblank}, {"cntrl", iscntrl},
    {"digit", isdigitClass}, {"graph", isgraph}, {"lower", islower},   {"print", isprint}, {"punct", ispunct},
    {"space", isspace},      {"upper", isupper}, {"xdigit", isxdigit},
};
const size_t kClassCount = sizeof kClasses / sizeof kClasses[0];

}  // namespace

WIDE_FN(wctype_t, wctype, (const char* name)) {
  for (size_t i = 1; i < kClassCount; ++i)
    if (strcmp(name, kClasses[i].name) == 0) return i;
  return 0;
}

WIDE_FN(int, iswctype, (wint_t c, wctype_t type)) {
  size_t index = static_cast<size_t>(type);  // wctype_t is signed on some platforms
  if (index < 1 || index >= kClassCount) return 0;
  return kClasses[index].narrowFn(static_cast<int>(c));
}

WIDE_FN(int, wcwidth, (wchar_t c)) { return c != 0 ? 1 : 0; }

// ---- Streams: the same arguments, or the low byte, to the narrow calls ---------

WIDE_FN(wint_t, fgetwc, (FILE * f)) { return static_cast<wint_t>(fgetc(f)); }
WIDE_FN(wint_t, getwc, (FILE * f)) { return static_cast<wint_t>(getc(f)); }
WIDE_FN(wint_t, getwchar, ()) { return static_cast<wint_t>(getchar()); }

WIDE_FN(wchar_t*, fgetws, (wchar_t * buf, int n, FILE* f)) {
  return reinterpret_cast<wchar_t*>(fgets(reinterpret_cast<char*>(buf), n, f));
}

WIDE_FN(int, fputws, (const wchar_t* s, FILE* f)) { return fputs(reinterpret_cast<const char*>(s), f); }

WIDE_FN(wint_t, fputwc, (wchar_t c, FILE* f)) { return static_cast<wint_t>(fputc(c & 0xFF, f)); }
WIDE_FN(wint_t, putwc, (wchar_t c, FILE* f)) { return static_cast<wint_t>(fputc(c & 0xFF, f)); }
WIDE_FN(wint_t, putwchar, (wchar_t c)) { return static_cast<wint_t>(putchar(c & 0xFF)); }
WIDE_FN(wint_t, ungetwc, (wint_t c, FILE* f)) { return static_cast<wint_t>(ungetc(c & 0xFF, f)); }

WIDE_FN(int, fwide, (FILE*, int mode)) { return mode; }

// ---- Numbers, search and time: the same arguments to the narrow calls ----------

WIDE_FN(double, wcstod, (const wchar_t* s, wchar_t** end)) {
  return strtod(reinterpret_cast<const char*>(s), reinterpret_cast<char**>(end));
}

WIDE_FN(long, wcstol, (const wchar_t* s, wchar_t** end, int base)) {
  return strtol(reinterpret_cast<const char*>(s), reinterpret_cast<char**>(end), base);
}

WIDE_FN(unsigned long, wcstoul, (const wchar_t* s, wchar_t** end, int base)) {
  return strtoul(reinterpret_cast<const char*>(s), reinterpret_cast<char**>(end), base);
}

WIDE_FN(wchar_t*, wcswcs, (const wchar_t* haystack, const wchar_t* needle)) {
  return reinterpret_cast<wchar_t*>(const_cast<char*>(
      strstr(reinterpret_cast<const char*>(haystack), reinterpret_cast<const char*>(needle))));
}

WIDE_FN(size_t, wcsftime, (wchar_t * buf, size_t size, const wchar_t* format, const struct tm* t)) {
  return strftime(reinterpret_cast<char*>(buf), size, reinterpret_cast<const char*>(format), t);
}

WIDE_FN(size_t, wcsxfrm, (wchar_t * dst, const wchar_t* src, size_t n)) {
  memcpy(dst, src, n);
  return n;
}

// ---- Multibyte conversion: one byte is one character --------------------------

WIDE_FN(wint_t, btowc, (int c)) { return static_cast<wint_t>(c); }
WIDE_FN(int, wctob, (wint_t c)) { return static_cast<int>(c); }

WIDE_FN(int, mbsinit, (const mbstate_t*)) { return 1; }

WIDE_FN(size_t, mbrlen, (const char* s, size_t, mbstate_t*)) { return s ? 1 : 0; }

WIDE_FN(size_t, mbrtowc, (wchar_t * pwc, const char* s, size_t, mbstate_t*)) {
  if (!s) return 0;
  unsigned char byte = static_cast<unsigned char>(*s);
  if (pwc) *pwc = byte;
  return byte != 0 ? 1 : 0;
}

// Stores the value 1, not the character: callers only ever asked for the
// length of the sequence.
WIDE_FN(size_t, wcrtomb, (char* s, wchar_t, mbstate_t*)) {
  if (s) *s = 1;
  return 1;
}

namespace {

// Copies a string one element at a time with the library's usual contract: a
// null destination only counts; the terminator ends the copy, is stored when
// there is room, and clears *src.
// A narrow character widens as the byte it is, whatever the sign of char.
unsigned char byteValue(char c) { return static_cast<unsigned char>(c); }
wchar_t byteValue(wchar_t c) { return c; }

template <typename To, typename From>
size_t copyString(To* dst, const From** src, size_t len) {
  const From* s = *src;
  size_t n = 0;
  for (; !dst || n < len; ++n) {
    if (dst) dst[n] = static_cast<To>(byteValue(s[n]));
    if (s[n] == 0) {
      if (dst) *src = nullptr;
      return n;
    }
  }
  *src = s + n;
  return n;
}

}  // namespace

WIDE_FN(size_t, mbsrtowcs, (wchar_t * dst, const char** src, size_t len, mbstate_t*)) {
  return copyString(dst, src, len);
}

WIDE_FN(size_t, wcsrtombs, (char* dst, const wchar_t** src, size_t len, mbstate_t*)) {
  return copyString(dst, src, len);
}

WIDE_FN(size_t, mbstowcs, (wchar_t * dst, const char* src, size_t len)) {
  return wide_mbsrtowcs(dst, &src, len, nullptr);
}

WIDE_FN(size_t, wcstombs, (char* dst, const wchar_t* src, size_t len)) {
  return wide_wcsrtombs(dst, &src, len, nullptr);
}

// ---- Formatted wide input and output: not supported ---------------------------

WIDE_FN(int, vfwprintf, (FILE*, const wchar_t*, va_list)) {
  errno = EOPNOTSUPP;
  return -1;
}

WIDE_FN(int, vswprintf, (wchar_t*, size_t, const wchar_t*, va_list)) {
  errno = EOPNOTSUPP;
  return -1;
}

// The standard streams are not named: the refusal never looks at the stream,
// and Android exports stdin and stdout as symbols only from API 23.
WIDE_FN(int, vwprintf, (const wchar_t* format, va_list args)) {
  return wide_vfwprintf(nullptr, format, args);
}

WIDE_FN(int, fwprintf, (FILE * f, const wchar_t* format, ...)) {
  va_list args;
  va_start(args, format);
  int rc = wide_vfwprintf(f, format, args);
  va_end(args);
  return rc;
}

WIDE_FN(int, wprintf, (const wchar_t* format, ...)) {
  va_list args;
  va_start(args, format);
  int rc = wide_vfwprintf(nullptr, format, args);
  va_end(args);
  return rc;
}

WIDE_FN(int, swprintf, (wchar_t * buf, size_t size, const wchar_t* format, ...)) {
  va_list args;
  va_start(args, format);
  int rc = wide_vswprintf(buf, size, format, args);
  va_end(args);
  return rc;
}

WIDE_FN(int, fwscanf, (FILE*, const wchar_t*, ...)) {
  errno = EOPNOTSUPP;
  return -1;
}

WIDE_FN(int, swscanf, (const wchar_t*, const wchar_t*, ...)) {
  errno = EOPNOTSUPP;
  return -1;
}

WIDE_FN(int, wscanf, (const wchar_t* format, ...)) { return wide_fwscanf(nullptr, format); }
