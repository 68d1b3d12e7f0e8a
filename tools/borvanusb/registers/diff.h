#pragma once

#include <string>

#include "base/exit_code.h"
#include "names/snapshot.h"

namespace borvanusb {

struct CommandRule;
struct Context;

// Compares two sides: a list, "camera", "camera:WHICH", "preset:NAME" or "reset". From a camera,
// the registers of the other side are read.
struct RegDiffCommand {
  std::string left;
  std::string right;
  std::string csv = {};
};

ExitCode Run(const RegDiffCommand& command, Context& context);

CommandRule RegDiffRule();

// The values that a register list writes to the chip, by full address. Throws Failure kFile if the
// list can't be loaded.
Snapshot RegistersOfListFile(const std::string& file, Context& context);

}  // namespace borvanusb
