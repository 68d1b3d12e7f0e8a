#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "base/result.h"
#include "device/device_entry.h"
#include "device/extension_unit_control.h"

namespace borvan {

// A device of the video-input category, as its property bag describes it.
struct VideoInputDevice {
  std::optional<std::u16string> path;           // "DevicePath", absent when it can't be read
  std::optional<std::u16string> friendly_name;  // "FriendlyName", likewise
  std::shared_ptr<VideoInputMoniker> moniker;
};

struct VideoInputListing {
  enum class Outcome {
    kNoDeviceEnumerator,  // the system's device enumerator could not be created
    kNoCategory,          // the video-input category is empty or could not be opened
    kWalked,              // the category was enumerated to its end
  };
  Outcome outcome = Outcome::kNoDeviceEnumerator;
  Result result = kOk;  // the system's result that decided the outcome
  std::vector<VideoInputDevice> devices;
};

struct SystemVersion {
  std::uint32_t major = 0;
  std::uint32_t minor = 0;
};

// Called for each vendor node that was opened, in the order of the nodes.
using VendorNodeHandler =
    std::function<void(std::shared_ptr<ExtensionUnitControl> control, std::uint32_t node_id)>;

// What the device object needs from the operating system. One instance serves one device object.
class DevicePlatform {
 public:
  DevicePlatform() = default;
  DevicePlatform(const DevicePlatform&) = delete;
  DevicePlatform& operator=(const DevicePlatform&) = delete;
  virtual ~DevicePlatform() = default;

  // Makes COM usable on the calling thread.
  virtual void InitialiseCom() = 0;

  // The version of the operating system, nullopt if it can't be determined.
  virtual std::optional<SystemVersion> GetSystemVersion() = 0;

  virtual VideoInputListing ListVideoInputs() = 0;

  // Binds the device's capture filter and opens every vendor extension node that it has.
  // Throws a `const char*` message if the filter or a vendor node can't be opened; nodes that
  // `keep` has already received stay valid. A null `moniker` fails in the same way.
  virtual void OpenVendorNodes(VideoInputMoniker* moniker, const VendorNodeHandler& keep) = 0;

  // Converts wide text to the ANSI code page. Characters that the page lacks become its default
  // character.
  virtual std::string ToAnsi(std::u16string_view wide) = 0;

  // Opens an existing file or device exclusively and closes it again. Returns the system's error
  // number, or 0 if it opened.
  virtual std::uint32_t TryOpenExclusively(const std::string& path) = 0;

  // The system's own text for a result code, empty when it has none.
  virtual std::string SystemMessage(std::uint32_t code) = 0;
};

}  // namespace borvan
