#pragma once

#include "base/exit_code.h"
#include "base/numbers.h"

namespace borvanusb {

struct CommandRule;
struct Context;

struct RegReadCommand {
  Range range;
  bool wide = false;
};

ExitCode Run(const RegReadCommand& command, Context& context);

CommandRule RegReadRule();

}  // namespace borvanusb
