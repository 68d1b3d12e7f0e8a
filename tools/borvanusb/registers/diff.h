#pragma once

#include <string>

#include "base/exit_code.h"
#include "names/snapshot.h"

namespace borvanusb {

struct CommandRule;
struct Context;

// Compares two of: a list, "camera", "camera:WHICH", "preset:NAME", "reset". Of a camera the
// registers that the other side names are read.
struct RegDiffCommand {
  std::string left;
  std::string right;
  std::string csv = {};
};

ExitCode Run(const RegDiffCommand& command, Context& context);

CommandRule RegDiffRule();

// What a register list leaves in the chip's registers, by their whole addresses. Throws Failure
// kFile for a list that can't be loaded.
Snapshot RegistersOfListFile(const std::string& file, Context& context);

}  // namespace borvanusb
