#include "presenter/scrim_present_stream.h"

#include <stdarg.h>
#include <string.h>

#include "android/soft_renderer.h"
#include "presenter/scrim_log.h"
#include "presenter/stream_clock.h"

namespace {
__attribute__((format(printf, 2, 3))) void ScrimLog(int level, const char* format, ...) {
  va_list args;
  va_start(args, format);
  ScrimLogWrite(level, format, args);
  va_end(args);
}

}  // namespace

CScrimPresentStream::CScrimPresentStream(VP_OPEN_STREAM_PARAMS* pOpenParams, void* surface, void*) {
  // The lock exists in every case so that destruction is always sound.
  InitializeCriticalSection(&m_cs);
  m_bShow = 0;
  m_deinterlace = 0;
  if (pOpenParams == nullptr) {
    ScrimLog(SCRIM_LOG_ERROR, "CScrimPresentStream::CScrimPresentStream invalid pOpenParams!!!");
    return;
  }
  memcpy(&m_openParams, pOpenParams, sizeof m_openParams);
  m_bOpened = 0;
  m_surface = surface;
  m_bSurfaceChanged = 1;
  m_hRender = nullptr;
  m_bDetermined = 0;
  m_bYV12 = 0;
}

CScrimPresentStream::~CScrimPresentStream() {
  Close();
  m_pReserved[0] = m_pReserved[1] = nullptr;
  DeleteCriticalSection(&m_cs);
}

KVRESULT CScrimPresentStream::QueryInterface(const _GUID& riid, void** ppv) {
  return m_pUnknown->NonDelegatingQueryInterface(riid, ppv);
}

long CScrimPresentStream::AddRef() { return m_pUnknown->NonDelegatingAddRef(); }

long CScrimPresentStream::Release() { return m_pUnknown->NonDelegatingRelease(); }

bool CScrimPresentStream::IsGles() { return false; }

KVRESULT CScrimPresentStream::Open() {
  if (m_bOpened) return KV_E_UNEXPECTED;
  SetRect(&m_rect, 0, 0, static_cast<int>(Width()), static_cast<int>(Height()));
  m_deinterlace = 0;
  m_bOpened = 1;
  return KV_S_OK;
}

KVRESULT CScrimPresentStream::Close() {
  if (m_hRender != nullptr) oru_nativewindow_uninit(m_hRender);
  m_hRender = nullptr;
  m_bDetermined = 0;
  if (!m_bOpened) return KV_E_UNEXPECTED;
  m_bOpened = 0;
  m_pReserved[0] = m_pReserved[1] = nullptr;
  return KV_S_OK;
}

KVRESULT CScrimPresentStream::LockSurface(unsigned char**, unsigned long*) {
  return m_bOpened ? KV_S_OK : KV_E_UNEXPECTED;
}

KVRESULT CScrimPresentStream::UnlockSurface() { return m_bOpened ? KV_S_OK : KV_E_UNEXPECTED; }

KVRESULT CScrimPresentStream::StartAnimation(SCRIM_ANIMATION_PARAMS*) { return KV_E_NOTIMPL; }

KVRESULT CScrimPresentStream::StopAnimation() { return KV_E_NOTIMPL; }

KVRESULT CScrimPresentStream::Set(const _GUID&, unsigned long dwPropID, void*, unsigned long, void* pPropData,
                                  unsigned long) {
  if (dwPropID == KV_PROPID_VP_PREFER_OUTPUT_FORMAT) {
    // Told by the presenter right after construction, before the host opens the stream.
    if (pPropData == nullptr) return KV_E_POINTER;
    unsigned long fourcc = *static_cast<unsigned long*>(pPropData);
    ScrimLog(SCRIM_LOG_TRACE, "[%s %d] fourcc = %x, expect = 0x%x", __func__, __LINE__,
             static_cast<unsigned>(fourcc), KV_FOURCC_YV12);
    if (fourcc == KV_FOURCC_YV12) m_bYV12 = 1;
    return KV_S_OK;
  }
  if (!m_bOpened) return KV_E_UNEXPECTED;
  switch (dwPropID) {
    case KV_PROPID_VP_SHOW:
      m_bShow = *static_cast<uint8_t*>(pPropData);
      return KV_S_OK;
    case KV_PROPID_VP_DST_RECT:
      memcpy(&m_rect, pPropData, sizeof m_rect);
      return KV_S_OK;
    case KV_PROPID_VP_ANDROID_SURFACE:
      // The data pointer is the window itself. The next picture sets the
      // renderer up again on it.
      m_surface = pPropData;
      m_bSurfaceChanged = 1;
      if (m_hRender != nullptr) oru_nativewindow_uninit(m_hRender);
      m_hRender = nullptr;
      m_bDetermined = 0;
      return KV_S_OK;
    case KV_PROPID_VP_DEINTERLACE:
      m_deinterlace = *static_cast<uint32_t*>(pPropData);
      return KV_S_OK;
    default:
      return KV_E_NOTIMPL;
  }
}

KVRESULT CScrimPresentStream::Get(const _GUID&, unsigned long dwPropID, void*, unsigned long, void* pPropData,
                                  unsigned long, unsigned long* pcbReturned) {
  if (pPropData == nullptr) return KV_E_POINTER;
  if (!m_bOpened) return KV_E_UNEXPECTED;
  switch (dwPropID) {
    case KV_PROPID_VP_SHOW:
      *static_cast<uint8_t*>(pPropData) = m_bShow;
      // Hosts read 32 here although one byte was written; they depend on it.
      if (pcbReturned != nullptr) *pcbReturned = 32;
      return KV_S_OK;
    case KV_PROPID_VP_DEINTERLACE:
      memcpy(pPropData, &m_deinterlace, sizeof m_deinterlace);
      return KV_S_OK;
    default:
      return KV_E_NOTIMPL;
  }
}

KVRESULT CScrimPresentStream::Present(unsigned char** ppbPlanes, unsigned long* pdwStrides,
                                      VP_PRESENT_STREAM_PARAMS* pParams) {
  if (!m_bOpened || !m_bShow) return KV_E_FAIL;
  // The display delay counts from here: conversion time is spent out of it.
  const int64_t start = timeval_GetUs();
  const long delayMs = pParams->lDisplayDelay;

  ScrimLog(SCRIM_LOG_TRACE, "[%s %d]:Present ppbPlanes[0] = 0x%x", __func__, __LINE__, Low32(ppbPlanes[0]));
  ScrimLog(SCRIM_LOG_TRACE, "[%s %d]:Present ppbPlanes[1] = 0x%x", __func__, __LINE__, Low32(ppbPlanes[1]));
  ScrimLog(SCRIM_LOG_TRACE, "[%s %d]:Present ppbPlanes[2] = 0x%x", __func__, __LINE__, Low32(ppbPlanes[2]));
  if (ppbPlanes[0] == nullptr) return KV_E_INVALIDARG;

  ScrimLog(SCRIM_LOG_TRACE, "[%s %d] Android4x start m_surface = 0x%x \n", __func__, __LINE__,
           Low32(m_surface));
  if (m_surface == nullptr) return KV_E_HANDLE;

  ScrimLog(SCRIM_LOG_TRACE, "[%s %d] oru_nativewindow_determin start ,fourcc %x\n", __func__, __LINE__,
           ColorFormat());
  void** planes = reinterpret_cast<void**>(ppbPlanes);
  // A FOURCC colour format is never drawn: such pictures are dropped without error.
  if (!m_bDetermined && !oru_nativewindow_determin(planes, pdwStrides, Width(), Height(), ColorFormat())) {
    return KV_S_OK;
  }
  ScrimLog(SCRIM_LOG_TRACE, "[%s %d]:oru_nativewindow_determin true", __func__, __LINE__);

  if (!IsGles() && m_hRender == nullptr) {
    m_hRender = oru_nativewindow_init(m_surface, Width(), Height(), ColorFormat(), m_bYV12);
    if (m_hRender == nullptr) {
      ScrimLog(SCRIM_LOG_ERROR, "[%s %d]:oru_nativewindow_init fail", __func__, __LINE__);
      return KV_E_FAIL;
    }
  }
  m_bDetermined = 1;
  if (IsGles()) return KV_S_OK;

  if (oru_nativewindow_render(m_hRender, planes, pdwStrides, Width(), Height(), ColorFormat(),
                              m_deinterlace) != 0) {
    ScrimLog(SCRIM_LOG_ERROR, "[%s %d]:oru_nativewindow_render fail", __func__, __LINE__);
    return KV_E_FAIL;
  }

  // The buffer stays locked while the picture waits out the rest of its delay.
  const int64_t delayUs = static_cast<int64_t>(delayMs) * 1000;
  const int64_t funcDelayUs = timeval_GetUs() - start;
  ScrimLog(SCRIM_LOG_TRACE, "[%s %d] delayUs = %lld, func_delayUs = %lld", __func__, __LINE__,
           static_cast<long long>(delayUs), static_cast<long long>(funcDelayUs));
  if (delayUs > funcDelayUs) vsync_sleep(static_cast<long>(delayUs - funcDelayUs), 0);

  return oru_nativewindow_dorender(m_hRender) == 0 ? KV_S_OK : KV_E_FAIL;
}
