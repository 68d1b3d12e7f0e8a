#pragma once

#include <string>

#include "base/exit_code.h"
#include "i2c/bus_options.h"

namespace borvanusb {

struct CommandRule;
struct Context;

struct I2cLoadCommand {
  I2cOptions i2c;  // slave and mode open the list if it doesn't itself
  std::string file;
  bool check_only = false;
  bool verify = false;
  bool all = false;  // every camera there is
};

ExitCode Run(const I2cLoadCommand& command, Context& context);

CommandRule I2cLoadRule();

}  // namespace borvanusb
