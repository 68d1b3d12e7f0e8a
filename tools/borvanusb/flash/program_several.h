#pragma once

#include "base/exit_code.h"
#include "command/context.h"
#include "flash/program.h"

namespace borvanusb {

// Programs one image into several cameras in parallel, with one process for each. Returns the
// highest exit code. Prints one JSON line per camera; context.result stays empty.
ExitCode ProgramSeveral(const FlashProgramCommand& command, Context& context);

}  // namespace borvanusb
