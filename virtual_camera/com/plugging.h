#pragma once

// Plugs cameras in and unplugs them. Keeps the state of the device and its entry among the video
// inputs consistent.

#include <cstddef>
#include <cstdint>
#include <optional>
#include <vector>

#include "com/registration.h"
#include "core/configuration.h"

namespace virtual_camera {

// Returns the entry of the camera at `position` in the configuration.
CategoryEntry EntryOf(const Configuration& configuration, std::size_t position);

// Registers the cameras of the configuration that are plugged in, and replaces all registered ones.
// `dll` is the full name of the virtual camera's DLL. Returns the new entries. Throws
// ConfigurationError if a state can't be read, and RegistrationError if the registry can't be
// changed. Creates and changes no file.
std::vector<CategoryEntry> Register(const Configuration& configuration, const std::wstring& dll);

// Whether the registered cameras are those of this configuration's file.
bool IsRegistered(const Configuration& configuration);

// Updates the entries if the cameras of this configuration are the registered ones: adds the
// entries of plugged-in cameras and removes those of the others. A camera can therefore return on
// time even if the process in which it was unplugged has ended. Throws nothing. Without the right
// to change the registry, the entries stay. A camera whose state can't be read keeps its entry.
void SyncEntries(const Configuration& configuration);

// Plugs in the camera at `position`, or unplugs it permanently. Changes its state and its entry.
// Throws ConfigurationError if the state can't be changed.
void Plug(const Configuration& configuration, std::size_t position);
void Unplug(const Configuration& configuration, std::size_t position);

// Handles a camera that a fault has unplugged: removes its entry and, if the camera returns after
// `back_after_ms`, adds the entry again after that time. Throws nothing, because it is called
// during a transfer and must not change the transfer's result.
void FollowFall(const Configuration& configuration, std::size_t position,
                std::optional<std::uint32_t> back_after_ms);

}  // namespace virtual_camera
