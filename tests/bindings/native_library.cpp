// The library's exports as a shared library of this system, for bindings that can only be run here.
// The cameras are those of the configuration that BORVAN_VIRTUAL_CAMERA names, with their chips.

#include <borvan_usb.h>

#include <chrono>
#include <cstdlib>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <utility>

#include "api/device_instance.h"
#include "core/camera.h"
#include "core/configuration.h"
#include "device/device_platform.h"

namespace {

using virtual_camera::CameraConfiguration;

constexpr std::uint32_t kGetFlags = 0x10000001;

class Moniker : public borvan::VideoInputMoniker {
 public:
  explicit Moniker(CameraConfiguration configuration) : configuration_(std::move(configuration)) {}
  const CameraConfiguration& Get() const { return configuration_; }

 private:
  const CameraConfiguration configuration_;
};

class VendorControl : public borvan::ExtensionUnitControl {
 public:
  explicit VendorControl(const CameraConfiguration& configuration) : camera_(configuration) {}

  borvan::Result KsProperty(const borvan::NodePropertyRequest& request, void* data,
                            std::uint32_t length, std::uint32_t& bytes_returned) override {
    const std::span<std::uint8_t> bytes(static_cast<std::uint8_t*>(data),
                                        data == nullptr ? 0 : length);
    virtual_camera::Answer answer;
    if (data == nullptr) {
      answer = camera_.QueryLength(request.id);
    } else if (request.flags == kGetFlags) {
      answer = camera_.Get(request.id, bytes);
    } else {
      answer = camera_.Set(request.id, bytes);
    }
    bytes_returned = answer.bytes;
    return answer.result;
  }

 private:
  virtual_camera::Camera camera_;
};

std::u16string Wide(std::string_view text) {
  return {text.begin(), text.end()};  // the tests' texts are ASCII
}

class Platform : public borvan::DevicePlatform {
 public:
  void InitialiseCom() override {}
  std::optional<borvan::SystemVersion> GetSystemVersion() override {
    return borvan::SystemVersion{10, 0};
  }

  borvan::VideoInputListing ListVideoInputs() override {
    borvan::VideoInputListing listing;
    listing.outcome = borvan::VideoInputListing::Outcome::kWalked;
    listing.result = 1;
    const char* const file = std::getenv("BORVAN_VIRTUAL_CAMERA");
    if (file != nullptr) {
      for (const auto& camera : virtual_camera::LoadConfiguration(file).cameras) {
        listing.devices.push_back(
            {Wide(camera.path), Wide(camera.name), std::make_shared<Moniker>(camera)});
      }
    }
    return listing;
  }

  void OpenVendorNodes(borvan::VideoInputMoniker* moniker,
                       const borvan::VendorNodeHandler& keep) override {
    const auto* const listed = dynamic_cast<Moniker*>(moniker);
    if (listed == nullptr || !virtual_camera::IsPlugged(listed->Get())) {
      throw "ERROR: gcap.pmVideo->BindToObject failed";
    }
    std::uint32_t node = 0;
    for (const virtual_camera::NodeType type : listed->Get().nodes) {
      if (type == virtual_camera::NodeType::kVendor) {
        keep(std::make_shared<VendorControl>(listed->Get()), node);
      }
      ++node;
    }
  }

  std::string ToAnsi(std::u16string_view wide) override { return {wide.begin(), wide.end()}; }
  std::uint32_t TryOpenExclusively(const std::string& /*path*/) override { return 0; }
  std::string SystemMessage(std::uint32_t /*code*/) override { return ""; }
};

}  // namespace

namespace borvan {

std::unique_ptr<DevicePlatform> MakeDevicePlatform() {
  return std::make_unique<Platform>();
}

}  // namespace borvan

// Python can't catch the exception of UsbSelectDevice; on Windows borvanusb_select.dll has this
// function.
extern "C" {
extern bool (*const borvan_select_device_body)(int32_t index, const char** message);
bool (*const borvan_select_device_body)(int32_t index, const char** message) = borvan_select_device;
}
