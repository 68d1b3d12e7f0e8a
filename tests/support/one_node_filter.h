#pragma once

// What the cameras in a test's and in a benchmark's memory have in common: a filter without pins
// that has one vendor node, and the factory of a DLL that stays loaded.

#include <windows.h>

#include <strmif.h>

#include "device/directshow_interfaces.h"
#include "device/ks_topology.h"

namespace test {

// The deriving class counts its references, names its class and makes the node's control.
class OneNodeFilter : public IBaseFilter, public IKsTopologyInfo {
 public:
  HRESULT STDMETHODCALLTYPE QueryInterface(REFIID iid, void** object) override {
    if (IsEqualGUID(iid, borvan::kIidUnknown) || IsEqualGUID(iid, borvan::kIidBaseFilter)) {
      *object = static_cast<IBaseFilter*>(this);
    } else if (IsEqualGUID(iid, borvan::kIidKsTopologyInfo)) {
      *object = static_cast<IKsTopologyInfo*>(this);
    } else {
      *object = nullptr;
      return E_NOINTERFACE;
    }
    static_cast<IUnknown*>(*object)->AddRef();
    return S_OK;
  }

  HRESULT STDMETHODCALLTYPE Stop() override { return E_NOTIMPL; }
  HRESULT STDMETHODCALLTYPE Pause() override { return E_NOTIMPL; }
  HRESULT STDMETHODCALLTYPE Run(REFERENCE_TIME) override { return E_NOTIMPL; }
  HRESULT STDMETHODCALLTYPE GetState(DWORD, FILTER_STATE*) override { return E_NOTIMPL; }
  HRESULT STDMETHODCALLTYPE SetSyncSource(IReferenceClock*) override { return E_NOTIMPL; }
  HRESULT STDMETHODCALLTYPE GetSyncSource(IReferenceClock**) override { return E_NOTIMPL; }
  HRESULT STDMETHODCALLTYPE EnumPins(IEnumPins**) override { return E_NOTIMPL; }
  HRESULT STDMETHODCALLTYPE FindPin(LPCWSTR, IPin**) override { return E_NOTIMPL; }
  HRESULT STDMETHODCALLTYPE QueryFilterInfo(FILTER_INFO*) override { return E_NOTIMPL; }
  HRESULT STDMETHODCALLTYPE JoinFilterGraph(IFilterGraph*, LPCWSTR) override { return E_NOTIMPL; }
  HRESULT STDMETHODCALLTYPE QueryVendorInfo(LPWSTR*) override { return E_NOTIMPL; }

  HRESULT STDMETHODCALLTYPE get_NumCategories(DWORD*) override { return E_NOTIMPL; }
  HRESULT STDMETHODCALLTYPE get_Category(DWORD, GUID*) override { return E_NOTIMPL; }
  HRESULT STDMETHODCALLTYPE get_NumConnections(DWORD*) override { return E_NOTIMPL; }
  HRESULT STDMETHODCALLTYPE get_ConnectionInfo(DWORD, void*) override { return E_NOTIMPL; }
  HRESULT STDMETHODCALLTYPE get_NodeName(DWORD, WCHAR*, DWORD, DWORD*) override {
    return E_NOTIMPL;
  }
  HRESULT STDMETHODCALLTYPE get_NumNodes(DWORD* count) override {
    *count = 1;
    return S_OK;
  }
  HRESULT STDMETHODCALLTYPE get_NodeType(DWORD node, GUID* type) override {
    *type = borvan::kKsNodeTypeDevSpecific;
    return node == 0 ? S_OK : E_INVALIDARG;
  }
};

// Lives as long as its DLL.
class LastingFactory : public IClassFactory {
 public:
  HRESULT STDMETHODCALLTYPE QueryInterface(REFIID iid, void** object) override {
    constexpr GUID kClassFactoryInterface = {
        0x00000001, 0x0000, 0x0000, {0xC0, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x46}};
    if (!IsEqualGUID(iid, borvan::kIidUnknown) && !IsEqualGUID(iid, kClassFactoryInterface)) {
      *object = nullptr;
      return E_NOINTERFACE;
    }
    *object = static_cast<IClassFactory*>(this);
    return S_OK;
  }
  ULONG STDMETHODCALLTYPE AddRef() override { return 1; }
  ULONG STDMETHODCALLTYPE Release() override { return 1; }
  HRESULT STDMETHODCALLTYPE LockServer(BOOL) override { return S_OK; }
};

}  // namespace test
