#pragma once

// Flash words and erases, one at a time, on selector 3. Without a channel nothing is sent and the
// result is kNullPointer.

#include <cstdint>
#include <string>

#include "base/result.h"
#include "protocol/command_channel.h"

namespace borvan {

Result WriteFlash(const CommandChannel& channel, std::uint32_t address, std::uint32_t value);

// 0 and eight digits in `value`; 1 and `value` untouched when there is no usable answer.
Result ReadFlash(const CommandChannel& channel, std::uint32_t address, std::string& value);

Result EraseFlash(const CommandChannel& channel, std::uint32_t address);

}  // namespace borvan
