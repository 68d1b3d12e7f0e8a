#pragma once

// The camera's cable and its power.

#include <cstdint>

#include "core/device_state.h"

namespace virtual_camera {

// Microseconds since 1970: deadlines are shared by processes and outlive them.
std::uint64_t WallClockUs();

// Plugs a camera in whose time to come back has come. Returns whether it is plugged in now.
bool RefreshPlug(DeviceState& state, std::uint64_t now_us);

// A camera that comes back lost its power in between. Nothing happens to one that is plugged in.
void PlugIn(DeviceState& state);

}  // namespace virtual_camera
