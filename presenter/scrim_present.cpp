#include "presenter/scrim_present.h"

#include <stdarg.h>
#include <string.h>

#include "android/android_surface.h"
#include "presenter/scrim_log.h"

namespace {
__attribute__((format(printf, 2, 3))) void ScrimLog(int level, const char* format, ...) {
  va_list args;
  va_start(args, format);
  ScrimLogWrite(level, format, args);
  va_end(args);
}

// Copies a value to the host's buffer and reports its size when asked to.
template <typename T>
KVRESULT ReturnValue(const T& value, void* pPropData, unsigned long* pcbReturned, bool reportSize) {
  if (pPropData == nullptr) return KV_E_POINTER;
  memcpy(pPropData, &value, sizeof value);
  if (reportSize && pcbReturned != nullptr) *pcbReturned = sizeof value;
  return KV_S_OK;
}
}  // namespace

CScrimPresent::CScrimPresent()
    : m_lValue771(0),
      m_lValue1025(0),
      m_lValue1026(0),
      m_nReservedCount(0),
      m_lValue0(0),
      m_bOpened(0),
      m_bShow(0),
      m_pOwnedBuffer(nullptr),
      m_dwValue1027(0),
      m_dwValue1033(16),
      m_surface(nullptr),
      m_pStreamContext(nullptr),
      m_preferOutputFormat(0) {
  InitializeCriticalSection(&m_cs);
  ZeroMemory(&m_rDst, sizeof m_rDst);
  ZeroMemory(&m_rSrcSize, sizeof m_rSrcSize);
  ZeroMemory(m_lReserved, sizeof m_lReserved);
  ZeroMemory(&m_openOptions, sizeof m_openOptions);
  ZeroMemory(m_abReserved16, sizeof m_abReserved16);
  ZeroMemory(m_abReserved32, sizeof m_abReserved32);
  ZeroMemory(m_slots, sizeof m_slots);
}

CScrimPresent::~CScrimPresent() {
  Close();
  if (m_pOwnedBuffer != nullptr) delete m_pOwnedBuffer;
  DeleteCriticalSection(&m_cs);
}

KVRESULT CScrimPresent::QueryInterface(const _GUID& riid, void** ppv) {
  return m_pUnknown->NonDelegatingQueryInterface(riid, ppv);
}

long CScrimPresent::AddRef() { return m_pUnknown->NonDelegatingAddRef(); }

long CScrimPresent::Release() { return m_pUnknown->NonDelegatingRelease(); }

KVRESULT CScrimPresent::Open(VP_OpenOptionsAdv* pOptions, unsigned long dwSize) {
  ScrimLog(SCRIM_LOG_TRACE, "[%s %d]:ScrimPresent Open start", __func__, __LINE__);
  if (pOptions == nullptr || dwSize != sizeof(VP_OpenOptionsAdv)) return KV_E_INVALIDARG;
  if (m_bOpened) {
    ScrimLog(SCRIM_LOG_ERROR, "[%s %d] Invalid call. Video Presenter is opened already ", __func__, __LINE__);
    return KV_E_FAIL;
  }
  EnterCriticalSection(&m_cs);
  ZeroMemory(&m_rDst, sizeof m_rDst);
  ZeroMemory(m_abReserved32, sizeof m_abReserved32);
  m_nReservedCount = 0;
  m_dwValue1027 = 64;
  m_dwValue1033 = 16;
  memcpy(&m_openOptions, pOptions, sizeof m_openOptions);
  m_lReserved[1] = 0;
  m_bOpened = 1;
  m_bShow = 1;
  LeaveCriticalSection(&m_cs);
  return KV_S_OK;
}

KVRESULT CScrimPresent::Close() {
  ScrimLog(SCRIM_LOG_TRACE, "[%s %d]:ScrimPresent Close start", __func__, __LINE__);
  if (!m_bOpened) return KV_S_OK;
  EnterCriticalSection(&m_cs);
  if (m_surface != nullptr) {
    ReleaseAndroidSurface(m_surface, 0);
    m_surface = nullptr;
  }
  m_bOpened = 0;
  LeaveCriticalSection(&m_cs);
  return KV_S_OK;
}

KVRESULT CScrimPresent::Render(unsigned long) { return (m_bOpened && m_bShow) ? KV_S_OK : 1u; }

KVRESULT CScrimPresent::Set(const _GUID& riid, unsigned long dwPropID, void* pInstanceData,
                            unsigned long cbInstanceData, void* pPropData, unsigned long cbPropData) {
  ScrimLog(SCRIM_LOG_TRACE, "[%s %d]:ScrimPresent Set start, dwPropID = 0x%x", __func__, __LINE__,
           static_cast<unsigned>(dwPropID));
  if (!m_bOpened) return KV_E_FAIL;
  switch (dwPropID) {
    case KV_PROPID_VP_SHOW: {
      if (pPropData == nullptr) return KV_E_POINTER;
      EnterCriticalSection(&m_cs);
      m_bShow = *static_cast<int32_t*>(pPropData);
      LeaveCriticalSection(&m_cs);
      for (StreamSlot& slot : m_slots) {
        if (slot.bInUse)
          slot.pStream->Set(riid, dwPropID, pInstanceData, cbInstanceData, pPropData, cbPropData);
      }
      return KV_S_OK;
    }
    case KV_PROPID_VP_DST_RECT:
      if (pPropData == nullptr) return KV_E_POINTER;
      memcpy(&m_rDst, pPropData, sizeof m_rDst);
      ScrimLog(SCRIM_LOG_TRACE, "[%s %d]:m_rDst l:%d, r:%d, t:%d, b:%d \n", __func__, __LINE__,
               static_cast<int>(m_rDst.left), static_cast<int>(m_rDst.right), static_cast<int>(m_rDst.top),
               static_cast<int>(m_rDst.bottom));
      return KV_S_OK;
    case KV_PROPID_VP_SRC_RECT: {
      const RECT* rect = static_cast<const RECT*>(pPropData);
      EnterCriticalSection(&m_cs);
      if (!EqualRect(&m_rSrcSize, rect)) {
        m_rSrcSize = *rect;
        ScrimLog(SCRIM_LOG_TRACE, "[%s %d]:m_rSrcSize l:%d, r:%d, t:%d, b:%d \n", __func__, __LINE__,
                 static_cast<int>(m_rSrcSize.left), static_cast<int>(m_rSrcSize.right),
                 static_cast<int>(m_rSrcSize.top), static_cast<int>(m_rSrcSize.bottom));
      }
      LeaveCriticalSection(&m_cs);
      return KV_S_OK;
    }
    case KV_PROPID_VP_PREFER_OUTPUT_FORMAT:
      EnterCriticalSection(&m_cs);
      ScrimLog(SCRIM_LOG_TRACE, "[%s %d] fourcc = %x, expect = 0x%x", __func__, __LINE__,
               static_cast<unsigned>(m_preferOutputFormat), KV_FOURCC_YV12);
      if (pPropData == nullptr) {
        LeaveCriticalSection(&m_cs);
        return KV_E_POINTER;
      }
      m_preferOutputFormat = *static_cast<unsigned long*>(pPropData);
      LeaveCriticalSection(&m_cs);
      return KV_S_OK;
    case KV_PROPID_VP_VALUE771: {
      long value = *static_cast<long*>(pPropData);
      EnterCriticalSection(&m_cs);
      if (m_lValue771 != value) m_lValue771 = value;
      LeaveCriticalSection(&m_cs);
      return KV_S_OK;
    }
    case KV_PROPID_VP_ANDROID_SURFACE_OLD:
    case KV_PROPID_VP_ANDROID_SURFACE:
      return SetAndroidSurface(riid, dwPropID, pInstanceData, cbInstanceData, pPropData);
    case KV_PROPID_VP_VALUE1025:
      m_lValue1025 = *static_cast<long*>(pPropData);
      return KV_S_OK;
    case KV_PROPID_VP_VALUE1026: {
      long value = *static_cast<long*>(pPropData);
      EnterCriticalSection(&m_cs);
      if (m_lValue1026 != value) m_lValue1026 = value;
      LeaveCriticalSection(&m_cs);
      return KV_S_OK;
    }
    case KV_PROPID_VP_DEINTERLACE:
      m_dwValue1027 = *static_cast<uint32_t*>(pPropData);
      return KV_S_OK;
    default:
      return KV_E_NOTIMPL;
  }
}

// The streams understand only 787: with 778 they answer KV_E_NOTIMPL, which is
// ignored, and keep drawing to the window released below. Hosts rely on 787.
KVRESULT CScrimPresent::SetAndroidSurface(const _GUID& riid, unsigned long dwPropID, void* pInstanceData,
                                          unsigned long cbInstanceData, void* pPropData) {
  // The record's first word, when there is a record to read it from.
  unsigned firstWord = pPropData != nullptr ? *static_cast<unsigned*>(pPropData) : 0u;
  ScrimLog(SCRIM_LOG_TRACE, "[%s %d]:Set KV_PROPID_VP_ANDROID_SURFACE pPropData = 0x%x, *pPropData = 0x%x",
           __func__, __LINE__, Low32(pPropData), firstWord);
  void* handle = GetAndroidSurface(pPropData);
  if (handle == m_surface) {
    ReleaseAndroidSurface(handle, 1);
    return KV_S_OK;
  }
  for (StreamSlot& slot : m_slots) {
    // The handle itself, not a pointer to it, goes in the data argument.
    if (slot.bInUse) slot.pStream->Set(riid, dwPropID, pInstanceData, cbInstanceData, handle, 8);
  }
  if (m_surface != nullptr) ReleaseAndroidSurface(m_surface, 1);
  m_surface = handle;
  ScrimLog(SCRIM_LOG_TRACE, "[%s, %d] m_surface = 0x%x", __func__, __LINE__, Low32(m_surface));
  return KV_S_OK;
}

KVRESULT CScrimPresent::Get(const _GUID&, unsigned long dwPropID, void*, unsigned long, void* pPropData,
                            unsigned long, unsigned long* pcbReturned) {
  ScrimLog(SCRIM_LOG_TRACE, "[%s %d]:ScrimPresent Get start, dwPropID = 0x%x", __func__, __LINE__,
           static_cast<unsigned>(dwPropID));
  switch (dwPropID) {
    case KV_PROPID_VP_VALUE0:
      return ReturnValue(m_lValue0, pPropData, pcbReturned, true);
    case KV_PROPID_VP_SHOW:
      return ReturnValue(m_bShow, pPropData, pcbReturned, false);
    case KV_PROPID_VP_DST_RECT:
      return ReturnValue(m_rDst, pPropData, pcbReturned, true);
    case KV_PROPID_VP_SRC_RECT:
      return ReturnValue(m_rSrcSize, pPropData, pcbReturned, true);
    case KV_PROPID_VP_VALUE771:
      return ReturnValue(m_lValue771, pPropData, pcbReturned, true);
    case KV_PROPID_VP_OPEN_OPTIONS_PART: {
      unsigned char part[16];
      memcpy(part, m_openOptions.bytes + 32, sizeof part);
      return ReturnValue(part, pPropData, pcbReturned, false);
    }
    case KV_PROPID_VP_VALUE1025:
      return ReturnValue(m_lValue1025, pPropData, pcbReturned, true);
    case KV_PROPID_VP_VALUE1026:
      return ReturnValue(m_lValue1026, pPropData, pcbReturned, true);
    case KV_PROPID_VP_VALUE1033:
      return ReturnValue(m_dwValue1033, pPropData, pcbReturned, true);
    case KV_PROPID_VP_OPEN_OPTIONS:
      return ReturnValue(m_openOptions, pPropData, pcbReturned, false);
    default:
      return KV_E_NOTIMPL;
  }
}

KVRESULT CScrimPresent::CreateStream(VP_OPEN_STREAM_PARAMS* pParams, unsigned long,
                                     IKvVideoPresenterStream** ppStream) {
  ScrimLog(SCRIM_LOG_TRACE, "[%s %d]:ScrimPresent CreateStream start", __func__, __LINE__);
  if (pParams == nullptr || ppStream == nullptr) return KV_E_INVALIDARG;
  if (!m_bOpened) return KV_E_FAIL;
  StreamSlot* slot = nullptr;
  for (StreamSlot& s : m_slots) {
    if (!s.bInUse) {
      slot = &s;
      break;
    }
  }
  if (slot == nullptr) return KV_E_UNEXPECTED;
  if (pParams->dwStreamKind != KV_STREAM_KIND_VIDEO) {
    *ppStream = nullptr;
    return KV_E_FAIL;
  }
  ScrimLog(SCRIM_LOG_TRACE, "[%s %d]:width:%d, height:%d ", __func__, __LINE__,
           static_cast<int>(pParams->dwWidth), static_cast<int>(pParams->dwHeight));

  EnterCriticalSection(&m_cs);
  memcpy(&slot->params, pParams, sizeof slot->params);
  slot->pStream = new CScrimPresentStream(&slot->params, m_surface, m_pStreamContext);
  slot->bInUse = 1;
  ScrimLog(SCRIM_LOG_TRACE, "[%s %d]:ScrimPresent CreateStream m_preferOutputFormat %x", __func__, __LINE__,
           static_cast<unsigned>(m_preferOutputFormat));
  // Tells the stream whether its window is to receive YV12.
  slot->pStream->Set(IID_IKvVideoPresenterStream, KV_PROPID_VP_PREFER_OUTPUT_FORMAT, nullptr, 0,
                     &m_preferOutputFormat, sizeof m_preferOutputFormat);
  // One reference, shared by the slot and the host: the host gives it back with DestroyStream.
  *ppStream = slot->pStream;
  LeaveCriticalSection(&m_cs);
  return KV_S_OK;
}

KVRESULT CScrimPresent::DestroyStream(IKvVideoPresenterStream* pStream) {
  ScrimLog(SCRIM_LOG_TRACE, "[%s %d]:ScrimPresent DestroyStream start", __func__, __LINE__);
  if (pStream == nullptr || !m_bOpened) return KV_E_FAIL;
  for (StreamSlot& slot : m_slots) {
    if (slot.bInUse && static_cast<IKvVideoPresenterStream*>(slot.pStream) == pStream) {
      EnterCriticalSection(&m_cs);
      slot.pStream->Release();
      ZeroMemory(&slot, sizeof slot);
      LeaveCriticalSection(&m_cs);
      return KV_S_OK;
    }
  }
  return KV_E_FAIL;
}
