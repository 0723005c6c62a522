// Reaching the native window behind the application's Surface, and letting
// library threads attach to and detach from the hosting Java virtual machine.
#pragma once

#include <jni.h>
#include <stdint.h>

#ifndef SCRIM_API
#define SCRIM_API __attribute__((visibility("default")))
#endif

extern "C" {
// pParam is a KV_ANDROID_SURFACE* whose m_pJobj is an ANativeWindow*. Returns
// that window with one reference taken for the caller, or null.
SCRIM_API void* GetAndroidSurface(void* pParam);
// Gives back the reference of a GetAndroidSurface handle; keepCache 0 also
// forgets the Surface object that GetAndroidIomxSurface read last.
SCRIM_API void ReleaseAndroidSurface(void* handle, int keepCache);
// pParam is a KV_ANDROID_SURFACE* whose m_pJobj is a JNI reference to an
// android.view.Surface; returns its mNativeSurface field (sign-extended),
// remembered for the next call on the same object.
SCRIM_API void* GetAndroidIomxSurface(void* pParam);
// Attaches the calling thread to the last virtual machine seen; null on failure.
SCRIM_API JNIEnv* GetAndroidJEnv(void);
SCRIM_API void FreeAndroidJEnv(void);
}

// Module state, shared by every presenter in the process (not exported).
extern JavaVM* g_pJvm;
extern void* g_lastSurfaceObject;
extern intptr_t g_lastNativeSurface;
