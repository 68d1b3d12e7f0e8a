#pragma once

#include <string>

#include "base/exit_code.h"

namespace borvanusb {

struct CommandRule;
struct Context;

// Compares two lists; either may be "camera" for the registers that the other one names.
struct RegDiffCommand {
  std::string left;
  std::string right;
};

ExitCode Run(const RegDiffCommand& command, Context& context);

CommandRule RegDiffRule();

}  // namespace borvanusb
