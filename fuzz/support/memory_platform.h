#pragma once

#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "device/device_platform.h"

namespace borvan_fuzz {

// A device in the system's list, and the result of opening it.
struct ListedDevice {
  std::optional<std::u16string> path;
  std::optional<std::u16string> name;
  unsigned vendor_nodes = 1;
  bool refuses = false;  // fails at the end of opening
};

// The simulated system, for all platform objects.
struct SystemScript {
  std::optional<borvan::SystemVersion> version = borvan::SystemVersion{10, 0};
  borvan::VideoInputListing::Outcome outcome = borvan::VideoInputListing::Outcome::kWalked;
  borvan::Result result = 1;
  std::vector<ListedDevice> devices;
};
SystemScript& TheSystem();

// Creates a platform for the system in TheSystem. All its vendor nodes use the control of
// SetConversation (hostile_control.h). Device objects leak references, so the objects kept here are
// small.
std::unique_ptr<borvan::DevicePlatform> MakeMemoryPlatform();

// Converts to Latin 1, with "?" for other characters.
std::string NarrowText(std::u16string_view wide);

}  // namespace borvan_fuzz
