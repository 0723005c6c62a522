#include "presenter/scrim_log.h"

#include <android/log.h>
#include <stdio.h>
#include <string.h>

void ScrimLogWrite(int level, const char* format, va_list args) {
  char buffer[256];
  memset(buffer, 0, sizeof buffer);
  vsnprintf(buffer, sizeof buffer - 1, format, args);
  buffer[sizeof buffer - 1] = '\0';
  if (level == SCRIM_LOG_ERROR) {
    __android_log_print(ANDROID_LOG_ERROR, "OruScrimPresent", "%s", buffer);
  }
}
