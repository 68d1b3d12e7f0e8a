#pragma once

#include <string>

#include "base/exit_code.h"

namespace borvanusb {

struct CommandRule;
struct Context;

// Compares two of: a list, "camera", "camera:WHICH", "preset:NAME", "reset". Of a camera the
// registers that the other side names are read.
struct RegDiffCommand {
  std::string left;
  std::string right;
  std::string csv = {};
};

ExitCode Run(const RegDiffCommand& command, Context& context);

CommandRule RegDiffRule();

}  // namespace borvanusb
