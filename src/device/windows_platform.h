#pragma once

#include <wrl/client.h>

#include <objidl.h>

#include "device/device_platform.h"

namespace borvan {

// A moniker of the system's device enumerator.
class WindowsMoniker : public VideoInputMoniker {
 public:
  explicit WindowsMoniker(Microsoft::WRL::ComPtr<IMoniker> moniker);
  IMoniker* Get() const;

 private:
  const Microsoft::WRL::ComPtr<IMoniker> moniker_;
};

// DirectShow, kernel streaming and the few base services that the device object uses.
class WindowsPlatform : public DevicePlatform {
 public:
  void InitialiseCom() override;
  std::optional<SystemVersion> GetSystemVersion() override;
  VideoInputListing ListVideoInputs() override;
  void OpenVendorNodes(VideoInputMoniker* moniker, const VendorNodeHandler& keep) override;
  std::string ToAnsi(std::u16string_view wide) override;
  std::uint32_t TryOpenExclusively(const std::string& path) override;
  std::string SystemMessage(std::uint32_t code) override;
};

}  // namespace borvan
