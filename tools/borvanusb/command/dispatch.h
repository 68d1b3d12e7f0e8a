#pragma once

#include "command/arguments.h"
#include "command/context.h"
#include "base/exit_code.h"

// Runs the command that was asked for, see Run of commands.h.
ExitCode Dispatch(const Command& command, Context& context);
