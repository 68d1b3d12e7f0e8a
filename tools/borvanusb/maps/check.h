#pragma once

#include <string>

#include "base/exit_code.h"

namespace borvanusb {

struct CommandRule;
struct Context;

struct MapCheckCommand {
  std::string file;
};

ExitCode Run(const MapCheckCommand& command, Context& context);

CommandRule MapCheckRule();

}  // namespace borvanusb
