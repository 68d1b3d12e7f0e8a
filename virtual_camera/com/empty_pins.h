#pragma once

#include "com/com_object.h"
#include "com/kernel_streaming.h"

namespace virtual_camera {

// The pins of a filter that has none.
class EmptyPins final : public ComObject<IEnumPins> {
 public:
  HRESULT STDMETHODCALLTYPE QueryInterface(REFIID iid, void** object) override {
    if (object == nullptr) {
      return E_POINTER;
    }
    if (!IsEqualGUID(iid, IID_IUnknown) && !IsEqualGUID(iid, IID_IEnumPins)) {
      *object = nullptr;
      return E_NOINTERFACE;
    }
    *object = static_cast<IEnumPins*>(this);
    AddRef();
    return S_OK;
  }

  HRESULT STDMETHODCALLTYPE Next(ULONG count, IPin** pins, ULONG* fetched) override {
    if (pins == nullptr || (fetched == nullptr && count != 1)) {
      return E_POINTER;
    }
    if (fetched != nullptr) {
      *fetched = 0;
    }
    return count == 0 ? S_OK : S_FALSE;
  }

  HRESULT STDMETHODCALLTYPE Skip(ULONG count) override { return count == 0 ? S_OK : S_FALSE; }
  HRESULT STDMETHODCALLTYPE Reset() override { return S_OK; }

  HRESULT STDMETHODCALLTYPE Clone(IEnumPins** copy) override {
    if (copy == nullptr) {
      return E_POINTER;
    }
    *copy = new (std::nothrow) EmptyPins;
    return *copy != nullptr ? S_OK : E_OUTOFMEMORY;
  }
};

}  // namespace virtual_camera
