// The entry points by which COM and the registration program use the DLL.

#include <string>

#include <olectl.h>

#include "com/com_object.h"
#include "com/configuration_file.h"
#include "com/filter.h"
#include "com/identifiers.h"
#include "com/plugging.h"
#include "com/registration.h"

namespace virtual_camera {
namespace {

HMODULE g_module = nullptr;

class Factory final : public ComObject<IClassFactory> {
 public:
  HRESULT STDMETHODCALLTYPE QueryInterface(REFIID iid, void** object) override {
    if (object == nullptr) {
      return E_POINTER;
    }
    if (!IsEqualGUID(iid, IID_IUnknown) && !IsEqualGUID(iid, IID_IClassFactory)) {
      *object = nullptr;
      return E_NOINTERFACE;
    }
    *object = static_cast<IClassFactory*>(this);
    AddRef();
    return S_OK;
  }

  HRESULT STDMETHODCALLTYPE CreateInstance(IUnknown* outer, REFIID iid, void** object) override {
    if (object == nullptr) {
      return E_POINTER;
    }
    *object = nullptr;
    if (outer != nullptr) {
      return CLASS_E_NOAGGREGATION;
    }
    return Guarded([&] {
      const ComPtr<Filter> filter = Owned(new Filter);
      return filter->QueryInterface(iid, object);
    });
  }

  HRESULT STDMETHODCALLTYPE LockServer(BOOL lock) override {
    g_module_references += lock != FALSE ? 1 : -1;
    return S_OK;
  }
};

std::wstring ModuleFile() {
  std::wstring file(MAX_PATH, L'\0');
  for (;;) {
    const DWORD length = GetModuleFileNameW(g_module, file.data(), static_cast<DWORD>(file.size()));
    if (length < file.size()) {
      file.resize(length);
      return file;
    }
    file.resize(file.size() * 2);
  }
}

}  // namespace
}  // namespace virtual_camera

extern "C" {

BOOL WINAPI DllMain(HINSTANCE module, DWORD reason, LPVOID /*reserved*/) {
  if (reason == DLL_PROCESS_ATTACH) {
    virtual_camera::g_module = module;
  }
  return TRUE;
}

STDAPI DllGetClassObject(REFCLSID class_id, REFIID iid, LPVOID* object) {
  using namespace virtual_camera;
  if (object == nullptr) {
    return E_POINTER;
  }
  *object = nullptr;
  if (!IsEqualGUID(class_id, kClassId)) {
    return CLASS_E_CLASSNOTAVAILABLE;
  }
  return Guarded([&] {
    const ComPtr<Factory> factory = Owned(new Factory);
    return factory->QueryInterface(iid, object);
  });
}

STDAPI DllCanUnloadNow() {
  return virtual_camera::g_module_references == 0 ? S_OK : S_FALSE;
}

// Registers the cameras of the configuration file. Returns SELFREG_E_CLASS if the file can't be
// used.
STDAPI DllRegisterServer() {
  using namespace virtual_camera;
  return Guarded([]() -> HRESULT {
    try {
      Register(LoadConfiguration(ConfigurationFile()), ModuleFile());
      return S_OK;
    } catch (const ConfigurationError& error) {
      OutputDebugStringA(error.what());
      return SELFREG_E_CLASS;
    } catch (const RegistrationError& error) {
      OutputDebugStringA(error.what());
      return error.result;
    }
  });
}

STDAPI DllUnregisterServer() {
  using namespace virtual_camera;
  return Guarded([]() -> HRESULT {
    try {
      UnregisterCameras(HKEY_CLASSES_ROOT);
      return S_OK;
    } catch (const RegistrationError& error) {
      OutputDebugStringA(error.what());
      return error.result;
    }
  });
}

}  // extern "C"
