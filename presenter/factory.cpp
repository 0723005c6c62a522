// The library's two exported entry points besides the interface identifiers.
#include <stdarg.h>
#include <stdint.h>

#include "presenter/scrim_log.h"
#include "presenter/scrim_present.h"

namespace {
__attribute__((format(printf, 2, 3))) void ScrimLog(int level, const char* format, ...) {
  va_list args;
  va_start(args, format);
  ScrimLogWrite(level, format, args);
  va_end(args);
}

const char kVersionNotice[] =
    "libscrimpresent: software video presenter for Android. ScrimPresent Version:1.0.10461.1";
}  // namespace

IKvVideoPresenterAdv* CreateVideoPresenterAdv(void) {
  CScrimPresent* pPresenter = new CScrimPresent();
  ScrimLog(SCRIM_LOG_TRACE, "[%s %d]:CreateVideoPresenterAdv pPresenter = 0x%x", __func__, __LINE__,
           static_cast<unsigned>(reinterpret_cast<uintptr_t>(pPresenter)));
  return pPresenter;
}

const char* getVersion(void) { return kVersionNotice; }
