// The system's video-input devices, through DirectShow's device enumerator.

#include <windows.h>
#include <wrl/client.h>

#include <oaidl.h>
#include <objidl.h>
#include <oleauto.h>
#include <strmif.h>

#include "device/directshow_interfaces.h"
#include "device/windows_platform.h"

namespace borvan {
namespace {

using Microsoft::WRL::ComPtr;

class Variant {
 public:
  // A text property. The variant must contain the requested type before the call.
  Variant() {
    VariantInit(&value_);
    value_.vt = VT_BSTR;
    value_.bstrVal = nullptr;
  }
  Variant(const Variant&) = delete;
  Variant& operator=(const Variant&) = delete;
  ~Variant() { VariantClear(&value_); }

  VARIANT* Receive() { return &value_; }

  std::optional<std::u16string> Text() const {
    if (value_.vt != VT_BSTR) {
      return std::nullopt;
    }
    if (value_.bstrVal == nullptr) {
      return std::u16string();
    }
    return std::u16string(reinterpret_cast<const char16_t*>(value_.bstrVal));
  }

 private:
  VARIANT value_;
};

std::optional<std::u16string> ReadText(IPropertyBag* bag, const wchar_t* name) {
  Variant value;
  if (FAILED(bag->Read(name, value.Receive(), nullptr))) {
    return std::nullopt;
  }
  return value.Text();
}

}  // namespace

VideoInputListing WindowsPlatform::ListVideoInputs() {
  VideoInputListing listing;
  ComPtr<ICreateDevEnum> device_enumerator;
  listing.result =
      CoCreateInstance(kClsidSystemDeviceEnum, nullptr, CLSCTX_INPROC_SERVER, kIidCreateDevEnum,
                       reinterpret_cast<void**>(device_enumerator.GetAddressOf()));
  if (listing.result != S_OK || device_enumerator == nullptr) {
    listing.outcome = VideoInputListing::Outcome::kNoDeviceEnumerator;
    return listing;
  }

  ComPtr<IEnumMoniker> category;
  listing.result = device_enumerator->CreateClassEnumerator(kClsidVideoInputDeviceCategory,
                                                            category.GetAddressOf(), 0);
  if (listing.result != S_OK || category == nullptr) {
    listing.outcome = VideoInputListing::Outcome::kNoCategory;
    if (listing.result == S_OK) {
      listing.result = S_FALSE;
    }
    return listing;
  }

  listing.outcome = VideoInputListing::Outcome::kWalked;
  category->Reset();
  while (true) {
    ComPtr<IMoniker> moniker;
    listing.result = category->Next(1, moniker.GetAddressOf(), nullptr);
    if (listing.result != S_OK || moniker == nullptr) {
      return listing;
    }
    ComPtr<IPropertyBag> bag;
    if (FAILED(moniker->BindToStorage(nullptr, nullptr, kIidPropertyBag,
                                      reinterpret_cast<void**>(bag.GetAddressOf()))) ||
        bag == nullptr) {
      continue;
    }
    VideoInputDevice device;
    device.path = ReadText(bag.Get(), L"DevicePath");
    device.friendly_name = ReadText(bag.Get(), L"FriendlyName");
    device.moniker = std::make_shared<WindowsMoniker>(std::move(moniker));
    listing.devices.push_back(std::move(device));
  }
}

}  // namespace borvan
