// Reference counting and interface lookup shared by the presenter's component
// objects. A concrete component derives first from its interface (so that a
// pointer to the object is a pointer to that interface) and second from
// CKvUnknown, and forwards its public QueryInterface/AddRef/Release to the
// non-delegating operations through m_pUnknown.
#pragma once

#include "presenter/scrim_presenter.h"

class CKvUnknown : public IKvNonDelegatingUnknown {
 public:
  CKvUnknown();
  CKvUnknown(const CKvUnknown&) = delete;
  CKvUnknown& operator=(const CKvUnknown&) = delete;

  // Answers IID_IUnknown only, with this CKvUnknown part; every other
  // identifier gets KV_E_NOINTERFACE: hosts obtain the presenter from the
  // factory and streams from CreateStream, never by lookup.
  KVRESULT NonDelegatingQueryInterface(const _GUID& riid, void** ppv) override;
  long NonDelegatingAddRef() override;
  // Destroys the object through the virtual destructor when the count reaches 0 or below.
  long NonDelegatingRelease() override;
  virtual ~CKvUnknown();
  // Adds one reference to this object and hands out pUnk.
  virtual KVRESULT GetInterface(IUnknown* pUnk, void** ppv);

 protected:
  void* m_pName;  // always null; kept for layout
  long m_cRef;
  IKvNonDelegatingUnknown* m_pUnknown;
};
