#pragma once

#include <cstdint>
#include <optional>
#include <string>

#include "base/exit_code.h"
#include "i2c/bus_options.h"

namespace borvanusb {

struct CommandRule;
struct Context;

struct ProfileNewCommand {
  std::string file;
  bool force = false;
  bool scan = false;
  bool yes = false;
  std::optional<std::uint64_t> flash_size;
  I2cOptions i2c;  // how the scan accesses devices
};

ExitCode Run(const ProfileNewCommand& command, Context& context);

CommandRule ProfileNewRule();

}  // namespace borvanusb
