// The yardstick of `borvanusb list`: asks the system for its video-input devices, and does nothing
// else.

#include <windows.h>
#include <wrl/client.h>

#include <oaidl.h>
#include <objidl.h>
#include <oleauto.h>
#include <strmif.h>
#include <uuids.h>

#include <cstdio>

namespace {

using Microsoft::WRL::ComPtr;

bool PrintText(IPropertyBag* bag, const wchar_t* name) {
  VARIANT value;
  VariantInit(&value);
  value.vt = VT_BSTR;
  value.bstrVal = nullptr;
  if (FAILED(bag->Read(name, &value, nullptr))) {
    return false;
  }
  std::printf("%ls\n", value.bstrVal);
  VariantClear(&value);
  return true;
}

bool PrintDevices() {
  ComPtr<ICreateDevEnum> enumerator;
  ComPtr<IEnumMoniker> devices;
  if (FAILED(CoCreateInstance(CLSID_SystemDeviceEnum, nullptr, CLSCTX_INPROC_SERVER,
                              IID_ICreateDevEnum,
                              reinterpret_cast<void**>(enumerator.GetAddressOf()))) ||
      enumerator->CreateClassEnumerator(CLSID_VideoInputDeviceCategory, devices.GetAddressOf(),
                                        0) != S_OK) {
    return false;
  }
  bool found = false;
  ComPtr<IMoniker> device;
  while (devices->Next(1, device.ReleaseAndGetAddressOf(), nullptr) == S_OK) {
    ComPtr<IPropertyBag> bag;
    if (SUCCEEDED(device->BindToStorage(nullptr, nullptr, IID_IPropertyBag,
                                        reinterpret_cast<void**>(bag.GetAddressOf())))) {
      found = PrintText(bag.Get(), L"FriendlyName") && PrintText(bag.Get(), L"DevicePath");
    }
  }
  return found;
}

}  // namespace

int main() {
  if (FAILED(CoInitialize(nullptr))) {
    return 1;
  }
  const bool printed = PrintDevices();
  CoUninitialize();
  return printed ? 0 : 1;
}
