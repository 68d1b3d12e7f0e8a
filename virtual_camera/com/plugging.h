#pragma once

// A camera's cable: the device's own state and its entry among the video inputs go together.

#include <cstddef>
#include <cstdint>
#include <optional>
#include <vector>

#include "com/registration.h"
#include "core/configuration.h"

namespace virtual_camera {

// The entry of camera `position` of the configuration.
CategoryEntry EntryOf(const Configuration& configuration, std::size_t position);

// Registers the cameras of the configuration that are plugged in, in place of all others. `dll` is
// the full name of the virtual camera's DLL. Returns their entries. ConfigurationError when a state
// can't be read, RegistrationError when the registry can't be changed. Makes and changes no file.
std::vector<CategoryEntry> Register(const Configuration& configuration, const std::wstring& dll);

// Whether the registered cameras are those of this configuration's file.
bool IsRegistered(const Configuration& configuration);

// Gives each camera that is plugged in its entry and takes those of the others away, if the cameras
// of this configuration are the registered ones: a camera comes back when its time is over, whether
// or not the process in which it fell off still runs. Raises nothing; without the right to change
// the registry the entries stay, and cameras whose state can't be read keep theirs.
void SyncEntries(const Configuration& configuration);

// Plugs camera `position` in or unplugs it for good: its state changes, and so does its entry.
// ConfigurationError when the state can't be changed.
void Plug(const Configuration& configuration, std::size_t position);
void Unplug(const Configuration& configuration, std::size_t position);

// Called when a camera fell off by itself: its entry goes and, if it comes back after
// `back_after_ms`, is there again when that time is over. Raises nothing: it runs inside a
// transfer, whose answer stands.
void FollowFall(const Configuration& configuration, std::size_t position,
                std::optional<std::uint32_t> back_after_ms);

}  // namespace virtual_camera
