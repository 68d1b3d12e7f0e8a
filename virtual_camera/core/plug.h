#pragma once

// The camera's cable and its power.

#include <cstdint>

#include "core/device_state.h"

namespace virtual_camera {

// Microseconds since 1970: deadlines are shared by processes and outlive them.
std::uint64_t WallClockUs();

// Plugs in an unplugged camera if the time for its return has come. Returns whether the camera is
// plugged in now.
bool RefreshPlug(DeviceState& state, std::uint64_t now_us);

// Plugs in a camera. An unplugged camera has lost its power, so it starts as after a power cycle.
// Does nothing if the camera is already plugged in.
void PlugIn(DeviceState& state);

}  // namespace virtual_camera
