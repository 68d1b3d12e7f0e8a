#pragma once

#include "base/exit_code.h"
#include "i2c/bus_options.h"

namespace borvanusb {

struct CommandRule;
struct Context;

struct SelftestCommand {
  I2cOptions i2c;
};

ExitCode Run(const SelftestCommand& command, Context& context);

CommandRule SelftestRule();

}  // namespace borvanusb
