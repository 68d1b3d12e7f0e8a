#pragma once

#include <string>

#include "base/exit_code.h"
#include "i2c/bus_options.h"

namespace borvanusb {

struct CommandRule;
struct Context;

struct I2cLoadCommand {
  I2cOptions i2c;  // used unless the list begins with its own slave and mode
  std::string file;
  bool check_only = false;
  bool verify = false;
  bool all = false;  // all connected cameras
};

ExitCode Run(const I2cLoadCommand& command, Context& context);

CommandRule I2cLoadRule();

}  // namespace borvanusb
