// What a host (a media player) needs to drive the presenter: the interfaces
// with their operation order (the order is the ABI: a host calls through the
// virtual table), the records it hands in, the interface identifiers and the
// exported factory.
//
//   IKvVideoPresenterAdv* p = CreateVideoPresenterAdv();
//   p->Open(&options, sizeof options);
//   p->Set(IID_IKvVideoPresenterAdv, KV_PROPID_VP_ANDROID_SURFACE, nullptr, 0, &surface, sizeof surface);
//   p->CreateStream(&streamParams, sizeof streamParams, &stream);
//   stream->Open(); stream->Set(..., KV_PROPID_VP_SHOW, ...); stream->Present(planes, strides, &present);
//   p->DestroyStream(stream); p->Close(); p->Release();
#pragma once

#include <stddef.h>
#include <stdint.h>

#include "compat/win32.h"

// Result of every component operation: a 32-bit Win32-style code.
typedef uint32_t KVRESULT;

#define KV_S_OK 0x00000000u
#define KV_E_NOTIMPL 0x80004001u
#define KV_E_NOINTERFACE 0x80004002u
#define KV_E_POINTER 0x80004003u
#define KV_E_FAIL 0x80004005u
#define KV_E_UNEXPECTED 0x8000FFFFu
#define KV_E_INVALIDARG 0x80070057u
#define KV_E_HANDLE 0x80070006u

// Property ids understood by the presenter (Set/Get) and its streams.
#define KV_PROPID_VP_VALUE0 0u                 // presenter Get only: 64-bit, always 0
#define KV_PROPID_VP_SHOW 1u                   // 32-bit flag (streams read its first byte)
#define KV_PROPID_VP_DST_RECT 2u               // RECT
#define KV_PROPID_VP_SRC_RECT 3u               // RECT (presenter)
#define KV_PROPID_VP_PREFER_OUTPUT_FORMAT 4u   // 64-bit FOURCC; "YV12" makes windows take YV12
#define KV_PROPID_VP_VALUE771 771u             // 64-bit, stored and returned
#define KV_PROPID_VP_ANDROID_SURFACE_OLD 778u  // presenter only; streams ignore it
#define KV_PROPID_VP_OPEN_OPTIONS_PART 784u    // presenter Get: bytes 32-47 of the open options
#define KV_PROPID_VP_ANDROID_SURFACE 787u      // KV_ANDROID_SURFACE* (presenter); the window itself (stream)
#define KV_PROPID_VP_VALUE1025 1025u           // 64-bit, stored and returned
#define KV_PROPID_VP_VALUE1026 1026u           // 64-bit, stored and returned
#define KV_PROPID_VP_DEINTERLACE 1027u         // 32-bit deinterlace mode
#define KV_PROPID_VP_VALUE1033 1033u           // presenter Get only: 32-bit, 16
#define KV_PROPID_VP_OPEN_OPTIONS 1539u        // presenter Get: the 80 option bytes

#define KV_FOURCC_YV12 0x32315659u
#define KV_STREAM_KIND_VIDEO 4096u

// Options of IKvVideoPresenterAdv::Open. The presenter keeps them and hands
// them back (property 1539, and bytes 32-47 as property 784); it reads none.
struct VP_OpenOptionsAdv {
  alignas(8) unsigned char bytes[80];
};
static_assert(sizeof(VP_OpenOptionsAdv) == 80, "VP_OpenOptionsAdv is 80 bytes");

// Parameters of IKvVideoPresenterAdv::CreateStream; 72 bytes are copied.
struct VP_OPEN_STREAM_PARAMS {
  uint32_t dwStreamKind;   // must be KV_STREAM_KIND_VIDEO
  unsigned long dwWidth;   // low 32 bits used
  unsigned long dwHeight;  // low 32 bits used
  // Colour-format word: bits 0-7 matrix (H.264 matrix_coefficients: 1 BT.709,
  // 4 FCC, 7 SMPTE 240M, other BT.601), bits 8-15 range (0 video, 1 full),
  // bits 16-23 layout (0 planar 4:2:0, 1 NV12, 4 no converter), bits 24-31 zero
  // (non-zero: a FOURCC, whose pictures are never drawn).
  uint32_t dwColorFormat;
  unsigned char reserved[44];
};
static_assert(sizeof(VP_OPEN_STREAM_PARAMS) == 72, "VP_OPEN_STREAM_PARAMS is 72 bytes");
static_assert(offsetof(VP_OPEN_STREAM_PARAMS, dwWidth) == 8, "width at 8");
static_assert(offsetof(VP_OPEN_STREAM_PARAMS, dwHeight) == 16, "height at 16");
static_assert(offsetof(VP_OPEN_STREAM_PARAMS, dwColorFormat) == 24, "colour format at 24");

// Parameters of IKvVideoPresenterStream::Present, one record per picture.
struct VP_PRESENT_STREAM_PARAMS {
  unsigned long reserved0;  // the host's; not read
  unsigned long reserved1;  // the host's; not read
  long lDisplayDelay;       // milliseconds from the call until the picture is to be shown
};
static_assert(sizeof(VP_PRESENT_STREAM_PARAMS) == 24, "VP_PRESENT_STREAM_PARAMS is 24 bytes");
static_assert(offsetof(VP_PRESENT_STREAM_PARAMS, lDisplayDelay) == 16, "delay is the third word");

// The surface record, data of property KV_PROPID_VP_ANDROID_SURFACE.
struct KV_ANDROID_SURFACE {
  void* m_pJvm;   // the hosting JavaVM* (may be null for a host without one)
  void* m_pJobj;  // the ANativeWindow* the host obtained for its Surface
};

struct SCRIM_ANIMATION_PARAMS;

class IUnknown {
 public:
  virtual KVRESULT QueryInterface(const _GUID& riid, void** ppv) = 0;
  virtual long AddRef() = 0;
  virtual long Release() = 0;

 protected:
  ~IUnknown() = default;
};

class IKvNonDelegatingUnknown {
 public:
  virtual KVRESULT NonDelegatingQueryInterface(const _GUID& riid, void** ppv) = 0;
  virtual long NonDelegatingAddRef() = 0;
  virtual long NonDelegatingRelease() = 0;

 protected:
  ~IKvNonDelegatingUnknown() = default;
};

class IKvVideoPresenterStream;

class IKvVideoPresenterAdv : public IUnknown {
 public:
  virtual KVRESULT Open(VP_OpenOptionsAdv* pOptions, unsigned long dwSize) = 0;
  virtual KVRESULT Close() = 0;
  virtual KVRESULT Render(unsigned long dwFlags) = 0;
  virtual KVRESULT Get(const _GUID& riid, unsigned long dwPropID, void* pInstanceData,
                       unsigned long cbInstanceData, void* pPropData, unsigned long cbPropData,
                       unsigned long* pcbReturned) = 0;
  virtual KVRESULT Set(const _GUID& riid, unsigned long dwPropID, void* pInstanceData,
                       unsigned long cbInstanceData, void* pPropData, unsigned long cbPropData) = 0;
  virtual KVRESULT CreateStream(VP_OPEN_STREAM_PARAMS* pParams, unsigned long dwSize,
                                IKvVideoPresenterStream** ppStream) = 0;
  virtual KVRESULT DestroyStream(IKvVideoPresenterStream* pStream) = 0;

 protected:
  ~IKvVideoPresenterAdv() = default;
};

class IKvVideoPresenterStream : public IUnknown {
 public:
  virtual KVRESULT Open() = 0;
  virtual KVRESULT Close() = 0;
  virtual KVRESULT Get(const _GUID& riid, unsigned long dwPropID, void* pInstanceData,
                       unsigned long cbInstanceData, void* pPropData, unsigned long cbPropData,
                       unsigned long* pcbReturned) = 0;
  virtual KVRESULT Set(const _GUID& riid, unsigned long dwPropID, void* pInstanceData,
                       unsigned long cbInstanceData, void* pPropData, unsigned long cbPropData) = 0;
  virtual KVRESULT LockSurface(unsigned char** ppbBuffer, unsigned long* pdwStride) = 0;
  virtual KVRESULT UnlockSurface() = 0;
  // ppbPlanes and pdwStrides hold three entries (Y, Cb, Cr; NV12: Y, CbCr, unused).
  virtual KVRESULT Present(unsigned char** ppbPlanes, unsigned long* pdwStrides,
                           VP_PRESENT_STREAM_PARAMS* pParams) = 0;
  virtual KVRESULT StartAnimation(SCRIM_ANIMATION_PARAMS* pParams) = 0;
  virtual KVRESULT StopAnimation() = 0;

 protected:
  ~IKvVideoPresenterStream() = default;
};

extern "C" {
SCRIM_API extern const _GUID IID_IUnknown;
SCRIM_API extern const _GUID IID_IKvVideoPresenter;
SCRIM_API extern const _GUID IID_IKvVideoPresenterAdv;
SCRIM_API extern const _GUID IID_IKvVideoPresenterStream;
SCRIM_API extern const _GUID IID_IKvVideoPresenterAnimation;
SCRIM_API extern const _GUID IID_IKvFont;
SCRIM_API extern const _GUID IID_IOruvmVideoMixer;
SCRIM_API extern const _GUID IID_IOruvmVideoContext;

// A new presenter, reference count 1; end it with Release.
SCRIM_API IKvVideoPresenterAdv* CreateVideoPresenterAdv(void);
// One line naming the library; ends in its version.
SCRIM_API const char* getVersion(void);
}

// Function types for hosts that load the library with dlopen.
typedef IKvVideoPresenterAdv* (*PFN_CreateVideoPresenterAdv)(void);
typedef const char* (*PFN_getVersion)(void);
