#pragma once

#include "base/exit_code.h"
#include "base/terminal.h"
#include "command/context.h"
#include "station/script_variables.h"

namespace borvanusb {

// Reads lines from the terminal and runs each one, until exit, quit or the end of input. If a line
// fails, the error is printed and the prompt continues. Ctrl-C stops the line, not the prompt.
// Throws Failure kFile if standard output fails.
ExitCode RunPrompt(Terminal& terminal, ScriptVariables variables, Context& context);

}  // namespace borvanusb
