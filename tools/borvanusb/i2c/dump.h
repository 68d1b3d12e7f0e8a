#pragma once

#include <string>

#include "base/exit_code.h"
#include "base/numbers.h"
#include "i2c/bus_options.h"

namespace borvanusb {

struct CommandRule;
struct Context;

struct I2cDumpCommand {
  I2cOptions i2c;
  Range range;
  std::string file;
  bool hex = false;  // hex dump on standard output instead of a list
};

ExitCode Run(const I2cDumpCommand& command, Context& context);

CommandRule I2cDumpRule();

}  // namespace borvanusb
