#pragma once

// Programs a whole image: erases on selector 3, then 60-byte pieces on selector 4.

#include <cstdint>
#include <vector>

#include "base/progress_callback.h"
#include "base/result.h"
#include "protocol/command_channel.h"
#include "protocol/stop_query.h"

namespace borvan {

// Erases every sector that the image covers, then writes the image in pieces of 60 bytes. Skips
// blank pieces. Reports (0, 1 to 99).
Result ProgramFlash(const CommandChannel& channel, std::vector<std::uint8_t> image,
                    std::uint32_t start_address, const StopQuery& stop_requested,
                    const ProgressCallback& progress);

}  // namespace borvan
