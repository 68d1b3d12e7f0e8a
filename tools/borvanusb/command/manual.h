#pragma once

#include "base/exit_code.h"

namespace borvanusb {

struct CommandRule;
struct Context;

struct ManualCommand {};

ExitCode Run(const ManualCommand& command, Context& context);

CommandRule ManualRule();

}  // namespace borvanusb
