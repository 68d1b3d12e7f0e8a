#pragma once

#include <unknwn.h>

#include <atomic>
#include <exception>
#include <new>
#include <utility>

namespace virtual_camera {

// Objects and locks that keep the DLL loaded.
inline std::atomic<long> g_module_references{0};

// Reference counting for a class that implements `Interfaces`; QueryInterface is left to it. An
// object starts with one reference, its creator's.
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

// Holds one reference.
template <class T>
class ComReference {
 public:
  ComReference() = default;
  explicit ComReference(T* owned) : object_(owned) {}
  ComReference(ComReference&& other) noexcept : object_(std::exchange(other.object_, nullptr)) {}
  ComReference& operator=(ComReference&& other) noexcept {
    std::swap(object_, other.object_);
    return *this;
  }
  ~ComReference() {
    if (object_ != nullptr) {
      object_->Release();
    }
  }

  // A further reference to `object`, which may be null.
  static ComReference Share(T* object) {
    if (object != nullptr) {
      object->AddRef();
    }
    return ComReference(object);
  }

  T* get() const { return object_; }
  T* operator->() const { return object_; }
  explicit operator bool() const { return object_ != nullptr; }
  // Where a function stores the object that it returns.
  T** Receive() { return &object_; }
  // A further reference, for a caller's out parameter.
  T* ForCaller() const { return Share(object_).Detach(); }
  T* Detach() { return std::exchange(object_, nullptr); }

 private:
  T* object_ = nullptr;
};

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
