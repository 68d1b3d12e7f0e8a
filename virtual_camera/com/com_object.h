#pragma once

#include <unknwn.h>
#include <wrl/client.h>

#include <atomic>
#include <exception>
#include <new>

namespace virtual_camera {

// Objects and locks that keep the DLL loaded.
inline std::atomic<long> g_module_references{0};

// Implements reference counting for a class with `Interfaces`. The class itself implements
// QueryInterface. A new object has one reference, which belongs to its creator.
template <class... Interfaces>
class ComObject : public Interfaces... {
 public:
  ComObject() { ++g_module_references; }
  ComObject(const ComObject&) = delete;
  ComObject& operator=(const ComObject&) = delete;

  ULONG STDMETHODCALLTYPE AddRef() override { return ++references_; }
  ULONG STDMETHODCALLTYPE Release() override {
    const ULONG left = --references_;
    if (left == 0) {
      delete this;
    }
    return left;
  }

 protected:
  virtual ~ComObject() { --g_module_references; }

 private:
  std::atomic<ULONG> references_{1};
};

using Microsoft::WRL::ComPtr;

// Takes over the first reference of a new object. Does not use ComPtr::Attach, because the one of
// mingw-w64 adds a reference and others do not.
template <class T>
ComPtr<T> Owned(T* object) {
  ComPtr<T> owned;
  *owned.GetAddressOf() = object;
  return owned;
}

// Runs `body`, which returns an HRESULT; exceptions must not leave a COM method.
template <class Body>
HRESULT Guarded(Body body) noexcept {
  try {
    return body();
  } catch (const std::bad_alloc&) {
    return E_OUTOFMEMORY;
  } catch (const std::exception& error) {
    OutputDebugStringA(error.what());
    return E_FAIL;
  }
}

}  // namespace virtual_camera
