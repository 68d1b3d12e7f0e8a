#pragma once

#include <cstdint>
#include <vector>

#include "base/exit_code.h"
#include "base/numbers.h"
#include "i2c/bus_options.h"

namespace borvanusb {

struct CommandRule;
struct Context;

struct I2cScanCommand {
  I2cOptions i2c;
  Range slaves{0, 255};
  std::uint32_t address = 0;  // register to read from each device
  bool yes = false;
  std::vector<std::int32_t> modes = {};  // to try on each device; empty: only that of i2c
};

ExitCode Run(const I2cScanCommand& command, Context& context);

CommandRule I2cScanRule();

}  // namespace borvanusb
