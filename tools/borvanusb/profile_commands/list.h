#pragma once

#include "base/exit_code.h"

namespace borvanusb {

struct CommandRule;
struct Context;

struct ProfileListCommand {};

ExitCode Run(const ProfileListCommand& command, Context& context);

CommandRule ProfileListRule();

}  // namespace borvanusb
