#pragma once

#include "base/exit_code.h"
#include "command/command_rules.h"
#include "command/context.h"
#include "command/several_cameras.h"
#include "command/standard_streams.h"

namespace borvanusb {

// Loads the list of the command line into several cameras; the list was checked.
ExitCode LoadForSeveral(bool all, Context& context);

// Refuses what can't be loaded into several cameras. Throws WrongUse.
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
