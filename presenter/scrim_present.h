// The presenter object a host receives from CreateVideoPresenterAdv: the
// presenter-wide settings, the Android surface and up to four streams. It
// draws nothing itself; pictures go through the streams.
#pragma once

#include <stdint.h>

#include "compat/win32.h"
#include "presenter/kv_unknown.h"
#include "presenter/scrim_present_stream.h"
#include "presenter/scrim_presenter.h"

class CScrimPresent : public IKvVideoPresenterAdv, public CKvUnknown {
 public:
  static const int kStreamSlots = 4;

  CScrimPresent();

  KVRESULT QueryInterface(const _GUID& riid, void** ppv) override;
  long AddRef() override;
  long Release() override;
  KVRESULT Open(VP_OpenOptionsAdv* pOptions, unsigned long dwSize) override;
  KVRESULT Close() override;
  KVRESULT Render(unsigned long dwFlags) override;
  KVRESULT Get(const _GUID& riid, unsigned long dwPropID, void* pInstanceData, unsigned long cbInstanceData,
               void* pPropData, unsigned long cbPropData, unsigned long* pcbReturned) override;
  KVRESULT Set(const _GUID& riid, unsigned long dwPropID, void* pInstanceData, unsigned long cbInstanceData,
               void* pPropData, unsigned long cbPropData) override;
  KVRESULT CreateStream(VP_OPEN_STREAM_PARAMS* pParams, unsigned long dwSize,
                        IKvVideoPresenterStream** ppStream) override;
  KVRESULT DestroyStream(IKvVideoPresenterStream* pStream) override;
  // Closes the presenter; streams still in their slots are not released.
  ~CScrimPresent() override;

 private:
  struct StreamSlot {
    uint8_t bInUse;
    VP_OPEN_STREAM_PARAMS params;
    CScrimPresentStream* pStream;
  };

  KVRESULT SetAndroidSurface(const _GUID& riid, unsigned long dwPropID, void* pInstanceData,
                             unsigned long cbInstanceData, void* pPropData);

  CRITICAL_SECTION m_cs;
  long m_lValue771;
  long m_lValue1025;
  long m_lValue1026;
  RECT m_rDst;
  RECT m_rSrcSize;
  long m_lReserved[2];
  int32_t m_nReservedCount;
  VP_OpenOptionsAdv m_openOptions;
  long m_lValue0;  // property 0: read-only, always 0
  int32_t m_bOpened;
  int32_t m_bShow;
  unsigned char* m_pOwnedBuffer;  // freed by the destructor; never allocated here
  unsigned char m_abReserved16[16];
  unsigned char m_abReserved32[32];
  uint32_t m_dwValue1027;
  uint32_t m_dwValue1033;
  void* m_surface;
  void* m_pStreamContext;  // handed to every new stream; always null here
  unsigned long m_preferOutputFormat;
  StreamSlot m_slots[kStreamSlots];
};
