#include "memory_camera.h"

#include <strmif.h>

#include <ks.h>
#include <ksproxy.h>

#include <algorithm>
#include <array>
#include <atomic>
#include <limits>

#include "device/directshow_interfaces.h"
#include "device/ks_topology.h"

namespace {

constexpr GUID kClassFactoryInterface = {
    0x00000001, 0x0000, 0x0000, {0xC0, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x46}};
constexpr std::int64_t kNever = std::numeric_limits<std::int64_t>::max();
constexpr HRESULT kMoreData = static_cast<HRESULT>(0x800700EA);

std::atomic<std::int32_t> controls{0};
std::atomic<std::int32_t> filters{0};
std::atomic<std::int32_t> references{0};
std::atomic<std::int64_t> transfers{0};
std::atomic<std::int64_t> last_transfer{kNever};
std::atomic<std::uint8_t> features{0};

// The lengths of the selectors 1 to 7.
constexpr std::array<ULONG, 8> kLengths = {0, 4, 12, 11, 64, 64, 64, 64};

HRESULT Transfer(ULONG selector, bool get, void* data, ULONG length, ULONG& moved) {
  if (++transfers > last_transfer) {
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
      bytes[1] = features;
      bytes[3] = 0x28;  // the tag of a byte read
    }
  }
  return S_OK;
}

class Control final : public IKsControl {
 public:
  Control() {
    ++controls;
    ++references;
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
    ++references;
    return ++count_;
  }
  ULONG STDMETHODCALLTYPE Release() override {
    --references;
    const ULONG left = --count_;
    if (left == 0) {
      delete this;
    }
    return left;
  }

  HRESULT STDMETHODCALLTYPE KsProperty(PKSPROPERTY property, ULONG, void* data, ULONG length,
                                       ULONG* returned) override {
    return Transfer(property->Id, (property->Flags & KSPROPERTY_TYPE_GET) != 0, data, length,
                    *returned);
  }
  HRESULT STDMETHODCALLTYPE KsMethod(PKSMETHOD, ULONG, void*, ULONG, ULONG*) override {
    return E_NOTIMPL;
  }
  HRESULT STDMETHODCALLTYPE KsEvent(PKSEVENT, ULONG, void*, ULONG, ULONG*) override {
    return E_NOTIMPL;
  }

 private:
  ~Control() { --controls; }
  std::atomic<ULONG> count_{1};
};

// A filter without pins, with one vendor node.
class Filter final : public IBaseFilter, public IKsTopologyInfo {
 public:
  Filter() { ++filters; }
  Filter(const Filter&) = delete;
  Filter& operator=(const Filter&) = delete;

  HRESULT STDMETHODCALLTYPE QueryInterface(REFIID iid, void** object) override {
    if (IsEqualGUID(iid, borvan::kIidUnknown) || IsEqualGUID(iid, borvan::kIidBaseFilter)) {
      *object = static_cast<IBaseFilter*>(this);
    } else if (IsEqualGUID(iid, borvan::kIidKsTopologyInfo)) {
      *object = static_cast<IKsTopologyInfo*>(this);
    } else {
      *object = nullptr;
      return E_NOINTERFACE;
    }
    AddRef();
    return S_OK;
  }
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
  HRESULT STDMETHODCALLTYPE CreateNodeInstance(DWORD, REFIID iid, void** object) override {
    auto* const control = new Control;
    const HRESULT result = control->QueryInterface(iid, object);
    control->Release();
    return result;
  }

 private:
  ~Filter() { --filters; }
  std::atomic<ULONG> count_{1};
};

// Lives as long as the DLL.
class Factory final : public IClassFactory {
 public:
  HRESULT STDMETHODCALLTYPE QueryInterface(REFIID iid, void** object) override {
    if (!IsEqualGUID(iid, borvan::kIidUnknown) && !IsEqualGUID(iid, kClassFactoryInterface)) {
      *object = nullptr;
      return E_NOINTERFACE;
    }
    *object = static_cast<IClassFactory*>(this);
    return S_OK;
  }
  ULONG STDMETHODCALLTYPE AddRef() override { return 1; }
  ULONG STDMETHODCALLTYPE Release() override { return 1; }
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
  HRESULT STDMETHODCALLTYPE LockServer(BOOL) override { return S_OK; }
};

}  // namespace

extern "C" {

std::int32_t MemoryCameraControls() {
  return controls;
}

std::int32_t MemoryCameraFilters() {
  return filters;
}

std::int32_t MemoryCameraReferences() {
  return references;
}

std::int64_t MemoryCameraTransfers() {
  return transfers;
}

void MemoryCameraUnplugAfter(std::int64_t count) {
  last_transfer = transfers + count;
}

void MemoryCameraPlug() {
  last_transfer = kNever;
}

void MemoryCameraSetFeatures(std::uint8_t value) {
  features = value;
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
