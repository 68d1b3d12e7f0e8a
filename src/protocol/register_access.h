#pragma once

// Chip registers, one at a time, on selector 1. Without a channel nothing is sent and the result is
// kNullPointer.

#include <cstdint>
#include <string>

#include "base/result.h"
#include "protocol/command_channel.h"

namespace borvan {

// Width flag: a write uses the wide form for every flag but 0, a read only for 1.
Result WriteRegister(const CommandChannel& channel, std::uint32_t address, std::uint32_t value,
                     std::uint8_t width_flag);

// Replaces `value` only if the reply belongs to this read. A foreign reply is not a failure.
Result ReadRegister(const CommandChannel& channel, std::uint32_t address, std::uint8_t width_flag,
                    std::string& value);

}  // namespace borvan
