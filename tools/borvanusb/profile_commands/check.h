#pragma once

#include <string>

#include "base/exit_code.h"

namespace borvanusb {

struct CommandRule;
struct Context;

struct ProfileCheckCommand {
  std::string file;
};

ExitCode Run(const ProfileCheckCommand& command, Context& context);

CommandRule ProfileCheckRule();

}  // namespace borvanusb
