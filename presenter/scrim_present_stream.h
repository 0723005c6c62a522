// One presentation stream: converts each picture into a native-window buffer
// through the software renderer, holds it back until its display delay has
// passed, and posts it. Everything runs on the host's calling thread.
#pragma once

#include <stdint.h>

#include "compat/win32.h"
#include "presenter/kv_unknown.h"
#include "presenter/scrim_presenter.h"

class CScrimPresentStream : public IKvVideoPresenterStream, public CKvUnknown {
 public:
  // surface is the presenter's native-window handle (may be null); context is not kept.
  CScrimPresentStream(VP_OPEN_STREAM_PARAMS* pOpenParams, void* surface, void* context);

  KVRESULT QueryInterface(const _GUID& riid, void** ppv) override;
  long AddRef() override;
  long Release() override;
  KVRESULT Open() override;
  KVRESULT Close() override;
  KVRESULT Get(const _GUID& riid, unsigned long dwPropID, void* pInstanceData, unsigned long cbInstanceData,
               void* pPropData, unsigned long cbPropData, unsigned long* pcbReturned) override;
  KVRESULT Set(const _GUID& riid, unsigned long dwPropID, void* pInstanceData, unsigned long cbInstanceData,
               void* pPropData, unsigned long cbPropData) override;
  KVRESULT LockSurface(unsigned char** ppbBuffer, unsigned long* pdwStride) override;
  KVRESULT UnlockSurface() override;
  KVRESULT Present(unsigned char** ppbPlanes, unsigned long* pdwStrides,
                   VP_PRESENT_STREAM_PARAMS* pParams) override;
  KVRESULT StartAnimation(SCRIM_ANIMATION_PARAMS* pParams) override;
  KVRESULT StopAnimation() override;
  ~CScrimPresentStream() override;
  // A stream drawn by a graphics API instead of the software renderer answers
  // true; Present asks through the virtual table.
  virtual bool IsGles();

 private:
  uint32_t Width() const { return static_cast<uint32_t>(m_openParams.dwWidth); }
  uint32_t Height() const { return static_cast<uint32_t>(m_openParams.dwHeight); }
  uint32_t ColorFormat() const { return m_openParams.dwColorFormat; }

  VP_OPEN_STREAM_PARAMS m_openParams{};
  uint8_t m_bShow = 0;
  uint8_t m_bOpened = 0;
  RECT m_rect{};
  uint32_t m_deinterlace = 0;
  void* m_surface = nullptr;
  CRITICAL_SECTION m_cs;          // no operation takes it
  uint8_t m_bSurfaceChanged = 0;  // never read
  void* m_hRender = nullptr;
  uint8_t m_bDetermined = 0;
  void* m_pReserved[2] = {nullptr, nullptr};  // cleared again by Close and the destructor
  [[maybe_unused]] uint8_t m_bReserved = 0;
  uint32_t m_bYV12 = 0;
};
