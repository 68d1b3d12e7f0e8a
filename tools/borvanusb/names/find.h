#pragma once

#include <string>
#include <vector>

#include "base/exit_code.h"

namespace borvanusb {

struct CommandRule;
struct Context;

struct RegFindCommand {
  std::vector<std::string> texts;  // all must be found
};

ExitCode Run(const RegFindCommand& command, Context& context);

CommandRule RegFindRule();

}  // namespace borvanusb
