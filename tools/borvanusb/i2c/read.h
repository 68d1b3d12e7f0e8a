#pragma once

#include "base/exit_code.h"
#include "base/numbers.h"
#include "i2c/bus_options.h"

namespace borvanusb {

struct CommandRule;
struct Context;

struct I2cReadCommand {
  I2cOptions i2c;
  Range range;
};

ExitCode Run(const I2cReadCommand& command, Context& context);

CommandRule I2cReadRule();

}  // namespace borvanusb
