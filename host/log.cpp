// Host stand-in for liblog: lines go to standard error as "P/tag: message" and
// are kept so that tests can read and clear them.
#include <android/log.h>

#include <stdarg.h>
#include <stdio.h>
#include <string.h>

#include <mutex>
#include <string>
#include <vector>

#include "host_log.h"

namespace {

struct LogSink {
  std::mutex lock;
  std::vector<std::string> lines;
  bool echo = true;
};

LogSink& sink() {
  static LogSink* s = new LogSink;  // never destroyed: logging may happen during exit
  return *s;
}

char priorityLetter(int prio) {
  static const char kLetters[] = "??VDIWEFS";
  return (prio >= 0 && prio <= ANDROID_LOG_SILENT) ? kLetters[prio] : '?';
}

}  // namespace

extern "C" int __android_log_print(int prio, const char* tag, const char* fmt, ...) {
  va_list ap;
  va_start(ap, fmt);
  va_list ap2;
  va_copy(ap2, ap);
  int n = vsnprintf(nullptr, 0, fmt, ap);
  va_end(ap);
  std::string message(n > 0 ? static_cast<size_t>(n) : 0, '\0');
  if (n > 0) vsnprintf(&message[0], message.size() + 1, fmt, ap2);
  va_end(ap2);

  std::string line;
  line += priorityLetter(prio);
  line += '/';
  line += tag ? tag : "";
  line += ": ";
  line += message;

  LogSink& s = sink();
  std::lock_guard<std::mutex> guard(s.lock);
  if (s.echo) fprintf(stderr, "%s\n", line.c_str());
  s.lines.push_back(std::move(line));
  return n < 0 ? -1 : n;
}

extern "C" size_t HostLog_count(void) {
  LogSink& s = sink();
  std::lock_guard<std::mutex> guard(s.lock);
  return s.lines.size();
}

extern "C" long HostLog_line(size_t index, char* buf, size_t size) {
  LogSink& s = sink();
  std::lock_guard<std::mutex> guard(s.lock);
  if (index >= s.lines.size()) return -1;
  const std::string& line = s.lines[index];
  if (buf && size > 0) {
    size_t n = line.size() < size - 1 ? line.size() : size - 1;
    memcpy(buf, line.data(), n);
    buf[n] = '\0';
  }
  return static_cast<long>(line.size());
}

extern "C" void HostLog_clear(void) {
  LogSink& s = sink();
  std::lock_guard<std::mutex> guard(s.lock);
  s.lines.clear();
}

extern "C" void HostLog_setEcho(int echo) {
  LogSink& s = sink();
  std::lock_guard<std::mutex> guard(s.lock);
  s.echo = echo != 0;
}
