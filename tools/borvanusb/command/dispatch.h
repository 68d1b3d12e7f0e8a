#pragma once

#include "base/exit_code.h"
#include "command/arguments.h"
#include "command/context.h"

namespace borvanusb {

// Runs the command that was asked for, see Run of commands.h.
ExitCode Dispatch(const Command& command, Context& context);

}  // namespace borvanusb
