#include "host.h"

#include <utility>

namespace host {
namespace {

// {62BE5D10-60EB-11D0-BD3B-00A0C911CE86}
constexpr GUID kSystemDeviceEnum = {
    0x62BE5D10, 0x60EB, 0x11D0, {0xBD, 0x3B, 0x00, 0xA0, 0xC9, 0x11, 0xCE, 0x86}};
// {860BB310-5D01-11D0-BD3B-00A0C911CE86}
constexpr GUID kVideoInputs = {
    0x860BB310, 0x5D01, 0x11D0, {0xBD, 0x3B, 0x00, 0xA0, 0xC9, 0x11, 0xCE, 0x86}};
// {DD880F8A-1CBA-4954-8A25-F7875967F0F7}
constexpr GUID kUnit = {
    0xDD880F8A, 0x1CBA, 0x4954, {0x8A, 0x25, 0xF7, 0x87, 0x59, 0x67, 0xF0, 0xF7}};
// {720D4AC0-7533-11D0-A5D6-28DB04C10000}
constexpr GUID kTopology = {
    0x720D4AC0, 0x7533, 0x11D0, {0xA5, 0xD6, 0x28, 0xDB, 0x04, 0xC1, 0x00, 0x00}};
// {28F54685-06FD-11D2-B27A-00A0C9223196}
constexpr GUID kControl = {
    0x28F54685, 0x06FD, 0x11D2, {0xB2, 0x7A, 0x00, 0xA0, 0xC9, 0x22, 0x31, 0x96}};

constexpr ULONG kGet = 0x10000001;
constexpr ULONG kSet = 0x10000002;

std::wstring ReadText(IPropertyBag* bag, const wchar_t* name) {
  VARIANT value = {};
  value.vt = VT_BSTR;
  if (FAILED(bag->Read(name, &value, nullptr)) || value.vt != VT_BSTR) {
    return {};
  }
  std::wstring text = value.bstrVal != nullptr ? value.bstrVal : L"";
  VariantClear(&value);
  return text;
}

Reply Request(IKsControl* control, ULONG selector, ULONG flags, void* data, std::size_t size) {
  KSP_NODE request = {};
  request.Property.Set = kUnit;
  request.Property.Id = selector;
  request.Property.Flags = flags;
  request.NodeId = 2;
  Reply reply = {S_OK, 0};
  reply.result = control->KsProperty(&request.Property, sizeof request, data,
                                     static_cast<ULONG>(size), &reply.bytes);
  return reply;
}

}  // namespace

std::vector<Device> VideoInputs() {
  std::vector<Device> devices;
  ComPtr<ICreateDevEnum> creator;
  if (FAILED(CoCreateInstance(kSystemDeviceEnum, nullptr, CLSCTX_INPROC_SERVER, IID_ICreateDevEnum,
                              reinterpret_cast<void**>(creator.GetAddressOf())))) {
    return devices;
  }
  ComPtr<IEnumMoniker> monikers;
  if (creator->CreateClassEnumerator(kVideoInputs, monikers.GetAddressOf(), 0) != S_OK) {
    return devices;
  }
  for (;;) {
    Device device;
    if (monikers->Next(1, device.moniker.GetAddressOf(), nullptr) != S_OK) {
      return devices;
    }
    ComPtr<IPropertyBag> bag;
    if (SUCCEEDED(device.moniker->BindToStorage(nullptr, nullptr, IID_IPropertyBag,
                                                reinterpret_cast<void**>(bag.GetAddressOf())))) {
      device.path = ReadText(bag.Get(), L"DevicePath");
      device.name = ReadText(bag.Get(), L"FriendlyName");
      devices.push_back(std::move(device));
    }
  }
}

std::vector<std::wstring> ListedPaths() {
  std::vector<std::wstring> paths;
  for (const Device& device : VideoInputs()) {
    paths.push_back(device.path);
  }
  return paths;
}

ComPtr<IBaseFilter> Bind(const std::wstring& path, HRESULT* result) {
  for (const Device& device : VideoInputs()) {
    if (device.path == path) {
      ComPtr<IBaseFilter> filter;
      const HRESULT bound = device.moniker->BindToObject(
          nullptr, nullptr, IID_IBaseFilter, reinterpret_cast<void**>(filter.GetAddressOf()));
      if (result != nullptr) {
        *result = bound;
      }
      return filter;
    }
  }
  return {};
}

ComPtr<IKsControl> NodeControl(IBaseFilter* filter, DWORD node_id) {
  const auto topology = Query<IKsTopologyInfo>(filter, kTopology);
  ComPtr<IUnknown> node;
  if (!topology || FAILED(topology->CreateNodeInstance(
                       node_id, IID_IUnknown, reinterpret_cast<void**>(node.GetAddressOf())))) {
    return {};
  }
  return Query<IKsControl>(node.Get(), kControl);
}

Reply QueryLength(IKsControl* control, ULONG selector) {
  return Request(control, selector, kGet, nullptr, 0);
}

Reply Set(IKsControl* control, ULONG selector, std::vector<std::uint8_t> block) {
  return Request(control, selector, kSet, block.data(), block.size());
}

Reply Get(IKsControl* control, ULONG selector, std::vector<std::uint8_t>& block) {
  return Request(control, selector, kGet, block.data(), block.size());
}

bool WriteRegister(IKsControl* control, std::uint16_t address, std::uint8_t value) {
  const auto low = static_cast<std::uint8_t>(address);
  const auto high = static_cast<std::uint8_t>(address >> 8);
  return Set(control, 1, {0x28, low, high, 0x08}).result == S_OK &&
         Set(control, 1, {0x28, 0, 0, 0x38}).result == S_OK &&
         Set(control, 1, {0x28, value, 0, 0x48}).result == S_OK;
}

bool ReadRegister(IKsControl* control, std::uint16_t address, std::uint8_t* value) {
  const auto low = static_cast<std::uint8_t>(address);
  const auto high = static_cast<std::uint8_t>(address >> 8);
  std::vector<std::uint8_t> reply(4);
  if (Set(control, 1, {0x24, low, high, 0x18}).result != S_OK ||
      Set(control, 1, {0x24, 0, 0, 0x58}).result != S_OK || Get(control, 1, reply).result != S_OK ||
      reply[3] != 0x28) {
    return false;
  }
  *value = reply[1];
  return true;
}

bool ProgramWord(IKsControl* control, std::uint32_t address, std::uint32_t value) {
  const auto byte = [](std::uint32_t number, int shift) {
    return static_cast<std::uint8_t>(number >> shift);
  };
  return Set(control, 3,
             {0x38, byte(address, 24), byte(address, 16), byte(address, 8), byte(address, 0),
              byte(value, 24), byte(value, 16), byte(value, 8), byte(value, 0), 0, 0})
             .result == S_OK;
}

bool ReadWord(IKsControl* control, std::uint32_t address, std::uint32_t* value) {
  const auto byte = [address](int shift) { return static_cast<std::uint8_t>(address >> shift); };
  std::vector<std::uint8_t> reply(11);
  if (Set(control, 3, {0x34, byte(24), byte(16), byte(8), byte(0), 0, 0, 0, 0, 0, 0}).result !=
          S_OK ||
      Get(control, 3, reply).result != S_OK || reply[0] != 0x34) {
    return false;
  }
  *value = 0;
  for (std::size_t i = 5; i < 9; ++i) {
    *value = *value << 8 | reply[i];
  }
  return true;
}

ComPtr<IKsControl> OpenCamera(const std::wstring& path) {
  const ComPtr<IBaseFilter> filter = Bind(path);
  return filter ? NodeControl(filter.Get(), 2) : ComPtr<IKsControl>();
}

}  // namespace host
