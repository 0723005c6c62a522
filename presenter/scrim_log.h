// Diagnostics of the presenter and Android-output sources. Each source file
// keeps its own small ScrimLog(level, format, ...) that hands its arguments to
// ScrimLogWrite, so the filter and the line format live in one place.
#pragma once

#include <stdarg.h>
#include <stdint.h>

// Failures: written at Android priority ERROR under the tag "OruScrimPresent".
#define SCRIM_LOG_ERROR 0
// Routine progress: formatted and dropped, so the library is silent in normal operation.
#define SCRIM_LOG_TRACE 2

// Formats into a 256-byte buffer (at most 254 characters of text) and writes
// the line when level is SCRIM_LOG_ERROR; any other level is dropped.
void ScrimLogWrite(int level, const char* format, va_list args);

// The low 32 bits of a pointer, as the "0x%x" fields of the log lines print it.
inline unsigned Low32(const void* p) { return static_cast<unsigned>(reinterpret_cast<uintptr_t>(p)); }
