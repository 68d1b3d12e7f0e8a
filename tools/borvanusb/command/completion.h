#pragma once

#include "base/exit_code.h"

namespace borvanusb {

struct CommandRule;
struct Context;

enum class Shell { kBash, kPowerShell };

struct CompletionCommand {
  Shell shell = Shell::kBash;
};

ExitCode Run(const CompletionCommand& command, Context& context);

CommandRule CompletionRule();

}  // namespace borvanusb
