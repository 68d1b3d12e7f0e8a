#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "base/exit_code.h"
#include "base/numbers.h"
#include "i2c/bus_options.h"

namespace borvanusb {

struct CommandRule;
struct Context;

struct WatchCommand {
  std::vector<Range> registers;
  std::vector<Range> i2c_registers;
  I2cOptions i2c;
  bool wide = false;
  double rate = 2;                     // polls per second
  std::optional<std::uint64_t> count;  // number of polls; default: until Ctrl-C
  std::string csv;
  std::vector<std::string> words = {};  // named registers and fields
};

ExitCode Run(const WatchCommand& command, Context& context);

CommandRule WatchRule();

}  // namespace borvanusb
