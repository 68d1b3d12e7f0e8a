#pragma once

#include <string>

#include "base/exit_code.h"

namespace borvanusb {

struct CommandRule;
struct Context;

struct ProfileShowCommand {
  std::string file;  // empty: the profile of the camera
};

ExitCode Run(const ProfileShowCommand& command, Context& context);

CommandRule ProfileShowRule();

}  // namespace borvanusb
