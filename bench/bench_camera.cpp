#include "bench_camera.h"

#include <cstdlib>
#include <fstream>
#include <memory>

#include "device/directshow_interfaces.h"
#include "support/one_node_filter.h"

namespace {

// The objects live as long as the DLL: counting references would be a cost of the benchmark's own.
constexpr ULONG kAlwaysReferenced = 1;

// In a process that was started for a measurement, its starter says what the flash is to be.
std::uint64_t NumberFromStarter(const char* name, std::uint64_t otherwise) {
  const char* const text = std::getenv(name);
  return text != nullptr ? std::strtoull(text, nullptr, 10) : otherwise;
}

std::unique_ptr<bench::MemoryFlash> MakeFlash() {
  auto flash = std::make_unique<bench::MemoryFlash>(
      NumberFromStarter(bench::kSizeVariable, bench::kFlashSize));
  flash->Clock().wait_cycles = NumberFromStarter(bench::kWaitVariable, 0);
  if (const char* const content = std::getenv(bench::kContentVariable)) {
    std::ifstream file(content, std::ios::binary);
    file.read(reinterpret_cast<char*>(flash->Bytes()),
              static_cast<std::streamsize>(NumberFromStarter(bench::kSizeVariable, 0)));
  }
  return flash;
}

bench::MemoryFlash& Flash() {
  static const std::unique_ptr<bench::MemoryFlash> kFlash = MakeFlash();
  return *kFlash;
}

class Control final : public IKsControl {
 public:
  HRESULT STDMETHODCALLTYPE QueryInterface(REFIID iid, void** object) override {
    if (!IsEqualGUID(iid, borvan::kIidUnknown) && !IsEqualGUID(iid, borvan::kIidKsControl)) {
      *object = nullptr;
      return E_NOINTERFACE;
    }
    *object = static_cast<IKsControl*>(this);
    return S_OK;
  }
  ULONG STDMETHODCALLTYPE AddRef() override { return kAlwaysReferenced; }
  ULONG STDMETHODCALLTYPE Release() override { return kAlwaysReferenced; }

  HRESULT STDMETHODCALLTYPE KsProperty(PKSPROPERTY property, ULONG /*property_length*/, void* data,
                                       ULONG length, ULONG* returned) override {
    std::uint32_t moved = 0;
    const std::int32_t answer = flash_.Transfer(
        property->Id, (property->Flags & KSPROPERTY_TYPE_GET) != 0, data, length, moved);
    *returned = moved;
    return answer;
  }
  HRESULT STDMETHODCALLTYPE KsMethod(PKSMETHOD, ULONG, void*, ULONG, ULONG*) override {
    return E_NOTIMPL;
  }
  HRESULT STDMETHODCALLTYPE KsEvent(PKSEVENT, ULONG, void*, ULONG, ULONG*) override {
    return E_NOTIMPL;
  }

 private:
  bench::MemoryFlash& flash_ = Flash();
};

Control& TheControl() {
  static Control control;
  return control;
}

class Camera final : public test::OneNodeFilter {
 public:
  ULONG STDMETHODCALLTYPE AddRef() override { return kAlwaysReferenced; }
  ULONG STDMETHODCALLTYPE Release() override { return kAlwaysReferenced; }

  HRESULT STDMETHODCALLTYPE GetClassID(CLSID* id) override {
    *id = bench::kBenchCameraClass;
    return S_OK;
  }
  HRESULT STDMETHODCALLTYPE CreateNodeInstance(DWORD, REFIID iid, void** object) override {
    return TheControl().QueryInterface(iid, object);
  }
};

class Factory final : public test::LastingFactory {
 public:
  HRESULT STDMETHODCALLTYPE CreateInstance(IUnknown* outer, REFIID iid, void** object) override {
    static Camera camera;
    *object = nullptr;
    return outer != nullptr ? CLASS_E_NOAGGREGATION : camera.QueryInterface(iid, object);
  }
};

}  // namespace

extern "C" {

bench::MemoryFlash* BenchCameraFlash() {
  return &Flash();
}

IKsControl* BenchCameraControl() {
  return &TheControl();
}

HRESULT WINAPI DllGetClassObject(REFCLSID class_id, REFIID iid, void** object) {
  static Factory factory;
  *object = nullptr;
  return IsEqualGUID(class_id, bench::kBenchCameraClass) ? factory.QueryInterface(iid, object)
                                                         : CLASS_E_CLASSNOTAVAILABLE;
}

HRESULT WINAPI DllCanUnloadNow() {
  return S_FALSE;
}
}
