#pragma once

#include <string>

#include "base/exit_code.h"

namespace borvanusb {

struct CommandRule;
struct Context;

struct RunCommand {
  std::string file;
  bool keep_going = false;
};

ExitCode Run(const RunCommand& command, Context& context);

CommandRule RunRule();

}  // namespace borvanusb
