#pragma once

// Runs and lists of chip registers, on selector 7.

#include <cstdint>
#include <vector>

#include "base/list_entry.h"
#include "base/result.h"
#include "protocol/command_channel.h"

namespace borvan {

// Appends the page markers and one entry for each register. Only the low 16 bits of the addresses
// bound the run, whose page is that of the start.
Result ReadRegisterRun(const CommandChannel& channel, std::uint32_t start_address,
                       std::uint32_t end_address, std::vector<ListEntry>& list);

// Sends runs and scattered registers in 64-byte blocks. 11 and nothing sent for a list without
// header.
Result WriteRegisterList(const CommandChannel& channel, std::vector<ListEntry> list);

}  // namespace borvan
