#pragma once

#include <cstdint>
#include <optional>

#include "base/exit_code.h"
#include "i2c/bus_options.h"

namespace borvanusb {

struct CommandRule;
struct Context;

struct I2cWriteCommand {
  I2cOptions i2c;
  std::uint32_t address = 0;
  std::uint32_t value = 0;
  std::optional<std::uint32_t> mask;
  bool verify = false;
};

ExitCode Run(const I2cWriteCommand& command, Context& context);

CommandRule I2cWriteRule();

}  // namespace borvanusb
