// Test-side view of the host log stand-in: every __android_log_print call is
// kept as one "P/tag: message" line (P the priority letter) until cleared.
#pragma once

#include <stddef.h>

#ifdef __cplusplus
extern "C" {
#endif

size_t HostLog_count(void);
// Copies line i (0-based) into buf (NUL-terminated, cut to size); returns its full length, or -1.
long HostLog_line(size_t index, char* buf, size_t size);
void HostLog_clear(void);
// 1 (default): every line is also written to standard error; 0: kept only.
void HostLog_setEcho(int echo);

#ifdef __cplusplus
}

#include <string>
#include <vector>
// All captured lines, oldest first.
inline std::vector<std::string> HostLog_lines() {
  std::vector<std::string> out;
  for (size_t i = 0, n = HostLog_count(); i < n; ++i) {
    long len = HostLog_line(i, nullptr, 0);
    if (len < 0) break;
    std::string s(static_cast<size_t>(len) + 1, '\0');
    HostLog_line(i, &s[0], s.size());
    s.resize(static_cast<size_t>(len));
    out.push_back(std::move(s));
  }
  return out;
}
#endif
