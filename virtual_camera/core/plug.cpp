#include "core/plug.h"

#include <chrono>

namespace virtual_camera {

std::uint64_t WallClockUs() {
  const auto since_epoch = std::chrono::system_clock::now().time_since_epoch();
  return static_cast<std::uint64_t>(
      std::chrono::duration_cast<std::chrono::microseconds>(since_epoch).count());
}

bool RefreshPlug(DeviceState& state, std::uint64_t now_us) {
  if (!state.fields.plugged && state.fields.back_at_us != 0 && now_us >= state.fields.back_at_us) {
    PlugIn(state);
  }
  return state.fields.plugged;
}

void PlugIn(DeviceState& state) {
  if (!state.fields.plugged) {
    state.fields.plugged = true;
    state.fields.back_at_us = 0;
    state.LosePower();
  }
}

}  // namespace virtual_camera
