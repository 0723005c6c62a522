// Paths handed to the file and directory functions are copied into a zeroed
// buffer of 4096 bytes before use, as the layer has always done.
#pragma once

#include <string.h>

struct ScrimPath {
  char s[4096];
  explicit ScrimPath(const char* path) {
    memset(s, 0, sizeof s);
    strncpy(s, path, sizeof s - 1);
  }
};
