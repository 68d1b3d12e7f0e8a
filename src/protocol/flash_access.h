#pragma once

// Flash words and erases, one at a time, on selector 3. Without a channel nothing is sent and the
// result is kNullPointer.

#include <cstdint>
#include <string>

#include "base/result.h"
#include "protocol/command_channel.h"

namespace borvan {

Result WriteFlash(const CommandChannel& channel, std::uint32_t address, std::uint32_t value);

// Returns 0 and eight digits in `value`, or 1 and leaves `value` unchanged if no reply is usable.
Result ReadFlash(const CommandChannel& channel, std::uint32_t address, std::string& value);

Result EraseFlash(const CommandChannel& channel, std::uint32_t address);

}  // namespace borvan
