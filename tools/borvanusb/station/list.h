#pragma once

#include "base/exit_code.h"

namespace borvanusb {

struct CommandRule;
struct Context;

struct ListCommand {
  bool watch = false;
};

ExitCode Run(const ListCommand& command, Context& context);

CommandRule ListRule();

}  // namespace borvanusb
