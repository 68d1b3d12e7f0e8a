#pragma once

#include <string>
#include <vector>

#include "base/exit_code.h"

namespace borvanusb {

struct CommandRule;
struct Context;

struct RegFindCommand {
  std::vector<std::string> texts;  // a register must match all of them
};

ExitCode Run(const RegFindCommand& command, Context& context);

CommandRule RegFindRule();

}  // namespace borvanusb
