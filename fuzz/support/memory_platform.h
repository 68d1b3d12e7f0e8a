#pragma once

#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "device/device_platform.h"

namespace borvan_fuzz {

// One device of the system's list, and what comes of opening it.
struct ListedDevice {
  std::optional<std::u16string> path;
  std::optional<std::u16string> name;
  unsigned vendor_nodes = 1;
  bool refuses = false;  // at the end of its opening
};

// What the system says, for every platform object from now on.
struct SystemScript {
  std::optional<borvan::SystemVersion> version = borvan::SystemVersion{10, 0};
  borvan::VideoInputListing::Outcome outcome = borvan::VideoInputListing::Outcome::kWalked;
  borvan::Result result = 1;
  std::vector<ListedDevice> devices;
};
SystemScript& TheSystem();

// The system that TheSystem describes. All its vendor nodes are the one control of
// SetConversation (hostile_control.h). Device objects keep references for ever, so what they keep
// here is small.
std::unique_ptr<borvan::DevicePlatform> MakeMemoryPlatform();

// Latin 1, and "?" for what is not in it.
std::string NarrowText(std::u16string_view wide);

}  // namespace borvan_fuzz
