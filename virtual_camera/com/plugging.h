#pragma once

// A camera's cable: the device's own state and its entry among the video inputs go together.

#include <cstddef>
#include <cstdint>
#include <optional>
#include <vector>

#include "registration.h"
#include "virtual_camera/core/configuration.h"

namespace virtual_camera {

// The entry of camera `position` of the configuration.
CategoryEntry EntryOf(const Configuration& configuration, std::size_t position);

// The entries of all cameras that are plugged in. ConfigurationError when a state can't be read.
std::vector<CategoryEntry> PluggedEntries(const Configuration& configuration);

// Plugs camera `position` in or unplugs it for good: its state changes, and so does its entry if
// the class is registered. ConfigurationError or RegistrationError on failure.
void Plug(const Configuration& configuration, std::size_t position);
void Unplug(const Configuration& configuration, std::size_t position);

// Takes a camera that fell off by itself out of the video inputs. With `back_after_ms` it is
// plugged in again when that time is over: by this process if it still runs, else by the next
// PlugDueCameras. Raises nothing: it runs inside a transfer, whose answer stands. Without the
// right to change the registry the entry stays; transfers fail all the same.
void FallOff(const Configuration& configuration, std::size_t position,
             std::optional<std::uint32_t> back_after_ms);

// Plugs in the cameras whose time came while nobody was there to do it; a camera whose state or
// entry can't be changed stays for the next time.
void PlugDueCameras(const Configuration& configuration);

}  // namespace virtual_camera
