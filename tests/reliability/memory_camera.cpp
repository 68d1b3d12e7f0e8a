#include "memory_camera.h"

#include <strmif.h>

#include <ks.h>
#include <ksproxy.h>

#include <algorithm>
#include <array>
#include <atomic>
#include <limits>

#include "device/directshow_interfaces.h"
#include "support/one_node_filter.h"

namespace {

constexpr std::int64_t kNever = std::numeric_limits<std::int64_t>::max();
constexpr HRESULT kMoreData = static_cast<HRESULT>(0x800700EA);

std::atomic<std::int32_t> g_controls{0};
std::atomic<std::int32_t> g_filters{0};
std::atomic<std::int32_t> g_references{0};
std::atomic<std::int64_t> g_transfers{0};
std::atomic<std::int64_t> g_last_transfer{kNever};
std::atomic<std::uint8_t> g_features{0};

// The lengths of the selectors 1 to 7.
constexpr std::array<ULONG, 8> kLengths = {0, 4, 12, 11, 64, 64, 64, 64};

HRESULT Transfer(ULONG selector, bool get, void* data, ULONG length, ULONG& moved) {
  if (++g_transfers > g_last_transfer) {
    return static_cast<HRESULT>(reliability::kUnplugged);
  }
  // A device lets other threads run; without this a job would hardly ever be interrupted.
  SwitchToThread();
  if (data == nullptr) {
    moved = kLengths.at(selector);
    return kMoreData;
  }
  moved = length;
  if (get) {
    auto* const bytes = static_cast<std::uint8_t*>(data);
    std::fill(bytes, bytes + length, std::uint8_t{0});
    if (selector == 1 && length >= 4) {
      bytes[1] = g_features;
      bytes[3] = 0x28;  // the tag of a byte read
    }
  }
  return S_OK;
}

class Control final : public IKsControl {
 public:
  Control() {
    ++g_controls;
    ++g_references;
  }
  Control(const Control&) = delete;
  Control& operator=(const Control&) = delete;

  HRESULT STDMETHODCALLTYPE QueryInterface(REFIID iid, void** object) override {
    if (!IsEqualGUID(iid, borvan::kIidUnknown) && !IsEqualGUID(iid, borvan::kIidKsControl)) {
      *object = nullptr;
      return E_NOINTERFACE;
    }
    AddRef();
    *object = static_cast<IKsControl*>(this);
    return S_OK;
  }
  ULONG STDMETHODCALLTYPE AddRef() override {
    ++g_references;
    return ++count_;
  }
  ULONG STDMETHODCALLTYPE Release() override {
    --g_references;
    const ULONG left = --count_;
    if (left == 0) {
      delete this;
    }
    return left;
  }

  HRESULT STDMETHODCALLTYPE KsProperty(PKSPROPERTY property, ULONG, void* data, ULONG length,
                                       ULONG* returned) noexcept override {
    return Transfer(property->Id, (property->Flags & KSPROPERTY_TYPE_GET) != 0, data, length,
                    *returned);
  }
  HRESULT STDMETHODCALLTYPE KsMethod(PKSMETHOD, ULONG, void*, ULONG, ULONG*) noexcept override {
    return E_NOTIMPL;
  }
  HRESULT STDMETHODCALLTYPE KsEvent(PKSEVENT, ULONG, void*, ULONG, ULONG*) noexcept override {
    return E_NOTIMPL;
  }

 private:
  ~Control() { --g_controls; }
  std::atomic<ULONG> count_{1};
};

class Filter final : public test::OneNodeFilter {
 public:
  Filter() { ++g_filters; }
  Filter(const Filter&) = delete;
  Filter& operator=(const Filter&) = delete;

  ULONG STDMETHODCALLTYPE AddRef() override { return ++count_; }
  ULONG STDMETHODCALLTYPE Release() override {
    const ULONG left = --count_;
    if (left == 0) {
      delete this;
    }
    return left;
  }

  HRESULT STDMETHODCALLTYPE GetClassID(CLSID* id) override {
    *id = reliability::kMemoryCameraClass;
    return S_OK;
  }
  HRESULT STDMETHODCALLTYPE CreateNodeInstance(DWORD, REFIID iid, void** object) override {
    auto* const control = new Control;
    const HRESULT result = control->QueryInterface(iid, object);
    control->Release();
    return result;
  }

 private:
  ~Filter() { --g_filters; }
  std::atomic<ULONG> count_{1};
};

class Factory final : public test::LastingFactory {
 public:
  HRESULT STDMETHODCALLTYPE CreateInstance(IUnknown* outer, REFIID iid, void** object) override {
    *object = nullptr;
    if (outer != nullptr) {
      return CLASS_E_NOAGGREGATION;
    }
    auto* const filter = new Filter;
    const HRESULT result = filter->QueryInterface(iid, object);
    filter->Release();
    return result;
  }
};

}  // namespace

extern "C" {

std::int32_t MemoryCameraControls() {
  return g_controls;
}

std::int32_t MemoryCameraFilters() {
  return g_filters;
}

std::int32_t MemoryCameraReferences() {
  return g_references;
}

std::int64_t MemoryCameraTransfers() {
  return g_transfers;
}

void MemoryCameraUnplugAfter(std::int64_t more_transfers) {
  g_last_transfer = g_transfers + more_transfers;
}

void MemoryCameraPlug() {
  g_last_transfer = kNever;
}

void MemoryCameraSetFeatures(std::uint8_t feature_bits) {
  g_features = feature_bits;
}

HRESULT WINAPI DllGetClassObject(REFCLSID class_id, REFIID iid, void** object) {
  static Factory factory;
  *object = nullptr;
  return IsEqualGUID(class_id, reliability::kMemoryCameraClass)
             ? factory.QueryInterface(iid, object)
             : CLASS_E_CLASSNOTAVAILABLE;
}

HRESULT WINAPI DllCanUnloadNow() {
  return S_FALSE;
}
}
