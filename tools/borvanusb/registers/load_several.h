#pragma once

#include "base/exit_code.h"
#include "command/command_rules.h"
#include "command/context.h"
#include "command/several_cameras.h"
#include "command/standard_streams.h"

namespace borvanusb {

// Loads the list of the command line into several cameras. The list must have been checked.
ExitCode LoadForSeveral(bool all, Context& context);

// Throws WrongUse if the options do not allow loading into several cameras.
template <typename C>
void CheckLoadForSeveral(const C& command, const GivenOptions& given) {
  CheckAll(command.all, given);
  if (command.all && command.check_only) {
    throw WrongUse("--all: does not apply to --check-only, which uses no camera");
  }
  if (IsForSeveral(command.all, given) && IsStandardStream(command.file)) {
    throw WrongUse("FILE: standard input can't be read once for each camera; give a file name");
  }
}

}  // namespace borvanusb
