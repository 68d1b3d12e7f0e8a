#pragma once

#include <string>

#include "base/exit_code.h"

namespace borvanusb {

struct CommandRule;
struct Context;

struct RegShowCommand {
  std::string name;
  bool read = true;
};

ExitCode Run(const RegShowCommand& command, Context& context);

CommandRule RegShowRule();

}  // namespace borvanusb
