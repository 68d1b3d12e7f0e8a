#pragma once

#include "arguments/arguments.h"
#include "exit_code.h"

struct Context;

// Runs the command whose values these are. Returns and throws as it does.
ExitCode Dispatch(const Command& command, Context& context);
