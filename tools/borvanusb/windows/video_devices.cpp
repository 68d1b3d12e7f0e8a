#include "windows/video_devices.h"

#include <windows.h>
#include <wrl/client.h>

#include <oaidl.h>
#include <oleauto.h>
#include <strmif.h>
#include <uuids.h>

#include <algorithm>
#include <cwctype>
#include <utility>

#include "base/format.h"
#include "base/numbers.h"
#include "windows/com_functions.h"
#include "windows/text.h"

namespace borvanusb {

namespace {

using Microsoft::WRL::ComPtr;

constexpr int kResultDigits = 8;

std::string ResultText(HRESULT result) {
  const auto code = static_cast<unsigned long>(result);
  const std::string message = SystemMessage(code);
  return Format("{}{}", Hex(code, kResultDigits), message.empty() ? "" : Format(", {}", message));
}

// A text property of a device. If it is not available, an empty text and the reason.
std::pair<std::wstring, std::string> TextProperty(const ComFunctions& com, IPropertyBag& bag,
                                                  const wchar_t* name) {
  VARIANT value;
  com.VariantInit(&value);
  value.vt = VT_BSTR;
  const HRESULT result = bag.Read(name, &value, nullptr);
  std::pair<std::wstring, std::string> property;
  if (FAILED(result)) {
    property.second = ResultText(result);
  } else if (value.vt != VT_BSTR || value.bstrVal == nullptr) {
    property.second = "it is no text";
  } else {
    property.first = value.bstrVal;
  }
  com.VariantClear(&value);
  return property;
}

VideoDevice Examine(const ComFunctions& com, IMoniker& moniker) {
  VideoDevice device;
  ComPtr<IPropertyBag> bag;
  const HRESULT result = moniker.BindToStorage(nullptr, nullptr, IID_IPropertyBag,
                                               reinterpret_cast<void**>(bag.GetAddressOf()));
  if (FAILED(result)) {
    device.reason = Format("its properties can't be read: {}", ResultText(result));
    return device;
  }
  auto [name, name_problem] = TextProperty(com, *bag.Get(), L"FriendlyName");
  auto [path, path_problem] = TextProperty(com, *bag.Get(), L"DevicePath");
  device.name = ToUtf8(name);
  device.path = ToUtf8(path);
  std::transform(path.begin(), path.end(), path.begin(),
                 [](wchar_t character) { return static_cast<wchar_t>(std::towlower(character)); });
  if (!path_problem.empty()) {
    device.reason = Format("it has no device path ({}): a camera made by a program", path_problem);
  } else if (path.find(L"usb#") == std::wstring::npos) {
    device.reason = "its device path has no \"usb#\" in it: it is no USB camera";
  } else if (!name_problem.empty()) {
    device.reason = Format("its name can't be read ({})", name_problem);
  }
  return device;
}

}  // namespace

std::string ListVideoDevices(std::vector<VideoDevice>& devices) {
  const ComFunctions* const com = LoadComFunctions();
  if (com == nullptr) {
    return "COM can't be initialised: ole32.dll or oleaut32.dll can't be loaded";
  }
  // RPC_E_CHANGED_MODE means that COM was already initialised in another mode, which also works.
  const HRESULT initialised = com->CoInitialize(nullptr);
  if (FAILED(initialised) && initialised != RPC_E_CHANGED_MODE) {
    return Format("COM can't be initialised: {}", ResultText(initialised));
  }
  ComPtr<ICreateDevEnum> creator;
  HRESULT result =
      com->CoCreateInstance(CLSID_SystemDeviceEnum, nullptr, CLSCTX_INPROC_SERVER,
                            IID_ICreateDevEnum, reinterpret_cast<void**>(creator.GetAddressOf()));
  if (FAILED(result)) {
    return Format("the system's device enumerator can't be created: {}", ResultText(result));
  }
  ComPtr<IEnumMoniker> category;
  result =
      creator->CreateClassEnumerator(CLSID_VideoInputDeviceCategory, category.GetAddressOf(), 0);
  if (FAILED(result)) {
    return Format("the category of video inputs can't be listed: {}", ResultText(result));
  }
  ComPtr<IMoniker> moniker;
  while (category && category->Next(1, moniker.ReleaseAndGetAddressOf(), nullptr) == S_OK) {
    devices.push_back(Examine(*com, *moniker.Get()));
  }
  return {};
}

}  // namespace borvanusb
