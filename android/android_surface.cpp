#include "android/android_surface.h"

#include <android/native_window.h>
#include <stdarg.h>

#include "presenter/scrim_log.h"

namespace {
__attribute__((format(printf, 2, 3))) void ScrimLog(int level, const char* format, ...) {
  va_list args;
  va_start(args, format);
  ScrimLogWrite(level, format, args);
  va_end(args);
}

// The record a host passes with the surface property.
struct SurfaceRecord {
  JavaVM* m_pJvm;
  void* m_pJobj;
};

// The diagnostics print addresses with %x: their low 32 bits.

// The JDK's and the NDK's headers disagree on the type of the environment argument.
jint AttachThread(JavaVM* vm, JNIEnv** env) {
#ifdef __ANDROID__
  return vm->AttachCurrentThread(env, nullptr);
#else
  return vm->AttachCurrentThread(reinterpret_cast<void**>(env), nullptr);
#endif
}

void LogRecord(const char* func, int line, const SurfaceRecord* record) {
  ScrimLog(SCRIM_LOG_TRACE, "[%s %d] pParam 0x%x \n", func, line, Low32(record));
  ScrimLog(SCRIM_LOG_TRACE, "[%s %d] pParam->m_pJvm 0x%x, pParam->m_pJobj 0x%x \n", func, line,
           Low32(record->m_pJvm), Low32(record->m_pJobj));
}
}  // namespace

JavaVM* g_pJvm = nullptr;
void* g_lastSurfaceObject = nullptr;
intptr_t g_lastNativeSurface = 0;

void* GetAndroidSurface(void* pParam) {
  if (pParam == nullptr) {
    ScrimLog(SCRIM_LOG_ERROR, "[%s %d] GetAndroidSurface faile  pParam = 0x%x \n", __func__, __LINE__, 0u);
    return nullptr;
  }
  const SurfaceRecord* record = static_cast<const SurfaceRecord*>(pParam);
  LogRecord(__func__, __LINE__, record);
  g_pJvm = record->m_pJvm;
  if (record->m_pJobj != nullptr) ANativeWindow_acquire(static_cast<ANativeWindow*>(record->m_pJobj));
  return record->m_pJobj;
}

void ReleaseAndroidSurface(void* handle, int keepCache) {
  if (handle == nullptr) return;
  ANativeWindow_release(static_cast<ANativeWindow*>(handle));
  if (keepCache == 0) g_lastSurfaceObject = nullptr;
}

void* GetAndroidIomxSurface(void* pParam) {
  if (pParam == nullptr) {
    ScrimLog(SCRIM_LOG_ERROR, "[%s %d] GetAndroidSurface faile  pParam = 0x%x \n", __func__, __LINE__, 0u);
    return nullptr;
  }
  const SurfaceRecord* record = static_cast<const SurfaceRecord*>(pParam);
  LogRecord(__func__, __LINE__, record);
  if (record->m_pJobj == g_lastSurfaceObject && g_lastNativeSurface != 0) {
    ScrimLog(SCRIM_LOG_TRACE, "same surface, return");
    return reinterpret_cast<void*>(g_lastNativeSurface);
  }
  g_pJvm = record->m_pJvm;
  if (record->m_pJobj != g_lastSurfaceObject) g_lastNativeSurface = 0;
  g_lastSurfaceObject = nullptr;

  JNIEnv* env = nullptr;
  bool attached = false;
  if (g_pJvm->GetEnv(reinterpret_cast<void**>(&env), JNI_VERSION_1_6) != JNI_OK || env == nullptr) {
    jint status = AttachThread(g_pJvm, &env);
    if (status < 0) {
      ScrimLog(SCRIM_LOG_ERROR, "[%s %d] Attach Current thread failed!! Error %d", __func__, __LINE__,
               status);
      return nullptr;
    }
    attached = true;
  }
  ScrimLog(SCRIM_LOG_TRACE, "[%s %d] jni env = 0x%x \n", __func__, __LINE__, Low32(env));
  // No exception check and no DeleteLocalRef: the thread either returns to
  // Java right after, or is detached below, which drops its local references.
  jclass surfaceClass = env->FindClass("android/view/Surface");
  jfieldID field = env->GetFieldID(surfaceClass, "mNativeSurface", "I");
  jint value = env->GetIntField(static_cast<jobject>(record->m_pJobj), field);
  intptr_t result = static_cast<intptr_t>(value);
  if (attached) g_pJvm->DetachCurrentThread();

  g_lastSurfaceObject = record->m_pJobj;
  g_lastNativeSurface = result;
  return reinterpret_cast<void*>(result);
}

JNIEnv* GetAndroidJEnv(void) {
  if (g_pJvm == nullptr) return nullptr;
  JNIEnv* env = nullptr;
  if (AttachThread(g_pJvm, &env) < 0) {
    ScrimLog(SCRIM_LOG_ERROR, "[%s %d] Attach Current thread failed!!", __func__, __LINE__);
    return nullptr;
  }
  return env;
}

void FreeAndroidJEnv(void) {
  if (g_pJvm != nullptr) g_pJvm->DetachCurrentThread();
}
