#pragma once

// Runs and lists of chip registers, on selector 7.

#include <cstdint>
#include <vector>

#include "base/list_entry.h"
#include "base/result.h"
#include "protocol/command_channel.h"

namespace borvan {

// Appends the page markers and one entry for each register. Only the low 16 bits of the addresses
// limit the run, which is in the page of the start address.
Result ReadRegisterRun(const CommandChannel& channel, std::uint32_t start_address,
                       std::uint32_t end_address, std::vector<ListEntry>& list);

// Sends runs and scattered registers in 64-byte blocks. Returns 11 and sends no block for a list
// without a header.
Result WriteRegisterList(const CommandChannel& channel, std::vector<ListEntry> list);

}  // namespace borvan
