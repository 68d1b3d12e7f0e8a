#pragma once

// An operating system with cameras that lives in memory, for tests of everything above it.

#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "device/device_platform.h"
#include "support/camera_chip.h"

namespace borvan_test {

// Polls until `holds` gives true. Returns false when it still does not after ten seconds: a test
// that fails for that hangs no one.
bool WaitUntil(const std::function<bool()>& holds);

struct VendorNode {
  std::shared_ptr<borvan::ExtensionUnitControl> control;
  std::uint32_t id = 0;
};

// One device of the video-input category.
struct Camera {
  std::optional<std::u16string> path;
  std::optional<std::u16string> friendly_name;
  std::vector<VendorNode> vendor_nodes;
  std::function<void()> raise;  // called at the end of opening; may throw
};

// What the system says, and what it was asked. A test holds it beside the device object.
struct PlatformScript {
  std::optional<borvan::SystemVersion> version = borvan::SystemVersion{10, 0};
  borvan::VideoInputListing::Outcome outcome = borvan::VideoInputListing::Outcome::kWalked;
  borvan::Result listing_result = 1;  // the normal end of a walk
  std::vector<Camera> cameras;
  std::uint32_t open_error = 0;
  std::map<std::uint32_t, std::string> messages;

  int com_initialisations = 0;
  std::vector<std::weak_ptr<borvan::VideoInputMoniker>> listed;  // monikers of the last listing
  std::vector<std::u16string> converted;                         // texts that became ANSI
  std::vector<std::string> opened_paths;
  std::vector<std::uint32_t> asked_messages;
};

class ScriptedPlatform : public borvan::DevicePlatform {
 public:
  explicit ScriptedPlatform(std::shared_ptr<PlatformScript> script);

  void InitialiseCom() override;
  std::optional<borvan::SystemVersion> GetSystemVersion() override;
  borvan::VideoInputListing ListVideoInputs() override;
  void OpenVendorNodes(borvan::VideoInputMoniker* moniker,
                       const borvan::VendorNodeHandler& keep) override;
  // Characters above 0x7F become "?".
  std::string ToAnsi(std::u16string_view wide) override;
  std::uint32_t TryOpenExclusively(const std::string& path) override;
  std::string SystemMessage(std::uint32_t code) override;

 private:
  const std::shared_ptr<PlatformScript> script_;
};

// A camera "Camera <letter>" at the path \\?\usb#vid_1234&pid_5678#<letter>, with one vendor node
// when `chip` is given.
Camera MakeCamera(char16_t letter, std::shared_ptr<MemoryChip> chip = nullptr);

}  // namespace borvan_test
