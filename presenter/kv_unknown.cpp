#include "presenter/kv_unknown.h"

CKvUnknown::CKvUnknown() : m_pName(nullptr), m_cRef(1), m_pUnknown(this) {}

CKvUnknown::~CKvUnknown() {}

KVRESULT CKvUnknown::NonDelegatingQueryInterface(const _GUID& riid, void** ppv) {
  if (ppv == nullptr) return KV_E_POINTER;
  if (IsEqualGUID(riid, IID_IUnknown)) {
    // The CKvUnknown part itself: its first three slots line up with IUnknown's.
    return GetInterface(reinterpret_cast<IUnknown*>(static_cast<IKvNonDelegatingUnknown*>(this)), ppv);
  }
  return KV_E_NOINTERFACE;
}

long CKvUnknown::NonDelegatingAddRef() { return InterlockedIncrement(&m_cRef); }

long CKvUnknown::NonDelegatingRelease() {
  long count = InterlockedDecrement(&m_cRef);
  if (count > 0) return count;
  delete this;
  return count;
}

KVRESULT CKvUnknown::GetInterface(IUnknown* pUnk, void** ppv) {
  if (ppv == nullptr) return KV_E_POINTER;
  NonDelegatingAddRef();
  *ppv = pUnk;
  return KV_S_OK;
}
