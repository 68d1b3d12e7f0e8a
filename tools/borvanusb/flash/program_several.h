#pragma once

#include "base/exit_code.h"
#include "command/context.h"
#include "flash/program.h"

namespace borvanusb {

// Programs one image into several cameras side by side, each by a process of its own. Returns the
// highest of their exit codes. Prints one JSON line per camera; context.result stays empty.
ExitCode ProgramSeveral(const FlashProgramCommand& command, Context& context);

}  // namespace borvanusb
