#pragma once

// Runs and lists of registers on the I2C bus: fast on selector 6, otherwise step by step on
// selector 2. The feature register shows which way the chip's firmware supports.

#include <cstdint>
#include <vector>

#include "base/list_entry.h"
#include "base/result.h"
#include "protocol/command_channel.h"
#include "protocol/stop_query.h"

namespace borvan {

// The registers `start_address` to `end_address`, both included.
struct I2cRun {
  std::uint32_t slave = 0;
  std::uint32_t start_address = 0;
  std::uint32_t end_address = 0;
  std::uint32_t mode = 0;
};

// Append one entry for each register. Read 56 per exchange, or one at a time.
Result ReadI2cBlocks(const CommandChannel& channel, const I2cRun& run,
                     const StopQuery& stop_requested, std::vector<ListEntry>& list);
Result ReadI2cSteps(const CommandChannel& channel, const I2cRun& run,
                    const StopQuery& stop_requested, std::vector<ListEntry>& list);

Result WriteI2cPackets(const CommandChannel& channel, const std::vector<ListEntry>& list,
                       std::uint32_t option, const StopQuery& stop_requested);
Result WriteI2cSteps(const CommandChannel& channel, const std::vector<ListEntry>& list,
                     const StopQuery& stop_requested);

}  // namespace borvan
