#pragma once

// Decides which faults of a camera take effect on a transfer.

#include <cstdint>
#include <optional>
#include <vector>

#include "core/configuration.h"
#include "core/device_state.h"

namespace virtual_camera {

// The combined effect of all faults on one transfer. If two faults set the same item, the first in
// the configuration applies. Delays are added.
struct FaultEffects {
  std::optional<std::int32_t> result;
  bool wrong_tag = false;
  std::optional<std::uint32_t> length;
  std::optional<std::uint32_t> short_answer;
  std::uint64_t delay_ms = 0;
  std::vector<std::uint32_t> stuck_words;
  bool lie = false;
  std::optional<UnplugAction> unplug;
};

// Resets the counters to 0 if they belong to another list of faults than the camera's.
void RefreshFaultCounters(const CameraConfiguration& configuration, DeviceFields& fields);

// Counts a transfer in `fields` for every fault that it matches, and returns the effects of those
// that apply. Refreshes the counters first.
FaultEffects StrikeFaults(const CameraConfiguration& configuration, Direction direction,
                          std::uint32_t selector, DeviceFields& fields);

}  // namespace virtual_camera
