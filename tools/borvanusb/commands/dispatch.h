#pragma once

#include "arguments/arguments.h"
#include "commands/context.h"
#include "exit_code.h"

// Runs the command that was asked for, see Run of commands.h.
ExitCode Dispatch(const Command& command, Context& context);
