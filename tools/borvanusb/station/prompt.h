#pragma once

#include "base/exit_code.h"
#include "base/terminal.h"
#include "command/context.h"
#include "station/script_variables.h"

namespace borvanusb {

// Reads lines at the terminal and runs each, until exit, quit or the end of input. A line that
// fails is reported, and the next one follows; Ctrl-C stops a line and not the prompt. Throws
// Failure kFile when standard output is lost.
ExitCode RunPrompt(Terminal& terminal, ScriptVariables variables, Context& context);

}  // namespace borvanusb
