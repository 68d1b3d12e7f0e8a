#include "native_device.h"

#include <utility>

#include "device/device_platform.h"

namespace bench {
namespace {

constexpr std::uint32_t kGetTopology = 0x10000001;
constexpr std::uint32_t kSetTopology = 0x10000002;
constexpr std::uint32_t kNode = 2;

// One camera, whose vendor node is `control`.
class OneCameraPlatform : public borvan::DevicePlatform {
 public:
  explicit OneCameraPlatform(std::shared_ptr<MemoryControl> control)
      : control_(std::move(control)) {}

  void InitialiseCom() override {}
  std::optional<borvan::SystemVersion> GetSystemVersion() override { return std::nullopt; }

  borvan::VideoInputListing ListVideoInputs() override {
    borvan::VideoInputListing listing;
    listing.outcome = borvan::VideoInputListing::Outcome::kWalked;
    listing.result = borvan::kFalse;
    listing.devices.push_back({u"\\\\?\\usb#vid_0001&pid_0002", u"Flash in memory",
                               std::make_shared<borvan::VideoInputMoniker>()});
    return listing;
  }

  void OpenVendorNodes(borvan::VideoInputMoniker* /*moniker*/,
                       const borvan::VendorNodeHandler& keep) override {
    keep(control_, kNode);
  }

  std::string ToAnsi(std::u16string_view wide) override { return {wide.begin(), wide.end()}; }
  std::uint32_t TryOpenExclusively(const std::string& /*path*/) override { return 0; }
  std::string SystemMessage(std::uint32_t /*code*/) override { return {}; }

 private:
  const std::shared_ptr<MemoryControl> control_;
};

}  // namespace

borvan::Result MemoryControl::KsProperty(const borvan::NodePropertyRequest& request, void* data,
                                         std::uint32_t length, std::uint32_t& bytes_returned) {
  return flash_.Transfer(request.id, request.flags == kGetTopology, data, length, bytes_returned);
}

std::shared_ptr<borvan::BorvanUsb_Q7> MakeSelectedDevice(std::shared_ptr<MemoryControl> control) {
  auto device = std::make_shared<borvan::BorvanUsb_Q7>(
      std::make_unique<OneCameraPlatform>(std::move(control)));
  device->EnumerateDevices();
  device->SelectDevice(0);
  return device;
}

std::int64_t RunScript(borvan::ExtensionUnitControl& control,
                       std::span<const ScriptedTransfer> script) {
  borvan::NodePropertyRequest request;
  request.node_id = kNode;
  std::array<std::uint8_t, 64> buffer{};
  std::int64_t answers = 0;
  for (const ScriptedTransfer& transfer : script) {
    request.id = transfer.selector;
    request.flags = transfer.is_get ? kGetTopology : kSetTopology;
    // The control reads what a set hands it and leaves it as it is.
    void* const data =
        transfer.is_get ? buffer.data() : const_cast<std::uint8_t*>(transfer.bytes.data());
    std::uint32_t returned = 0;
    answers += control.KsProperty(request, data, transfer.length, returned);
  }
  return answers;
}

}  // namespace bench
