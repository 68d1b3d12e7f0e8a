#pragma once

// Registers of devices on the chip's I2C bus, one at a time, on selector 2. Without a channel
// nothing is sent and the result is kNullPointer.

#include <cstdint>
#include <string>

#include "base/result.h"
#include "protocol/command_channel.h"
#include "protocol/i2c_blocks.h"

namespace borvan {

Result WriteI2c(const CommandChannel& channel, const I2cAccess& access, std::uint32_t value);

// Replaces `value` on success in the modes 0 to 5.
Result ReadI2c(const CommandChannel& channel, const I2cAccess& access, std::string& value);

}  // namespace borvan
