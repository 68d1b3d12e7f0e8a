#pragma once

// Reads a range of flash, 64 bytes per transfer, on selector 5.

#include <cstdint>
#include <vector>

#include "base/progress_callback.h"
#include "base/result.h"
#include "protocol/command_channel.h"
#include "protocol/stop_query.h"

namespace borvan {

// Appends the inclusive range to `output`. A failing transfer is repeated until a stop request.
Result ReadFlashRange(const CommandChannel& channel, std::uint32_t start_address,
                      std::uint32_t end_address, const StopQuery& stop_requested,
                      const ProgressCallback& progress, std::vector<std::uint8_t>& output);

}  // namespace borvan
