#pragma once

#include <cstdint>

#include "base/exit_code.h"
#include "i2c/bus_options.h"

namespace borvanusb {

struct CommandRule;
struct Context;

struct BenchCommand {
  std::uint64_t rounds = 200;
  I2cOptions i2c;
};

ExitCode Run(const BenchCommand& command, Context& context);

CommandRule BenchRule();

}  // namespace borvanusb
