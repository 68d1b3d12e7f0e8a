#pragma once

#include "base/exit_code.h"

namespace borvanusb {

struct CommandRule;
struct Context;

enum class Shell { kBash, kFish, kPowerShell, kZsh };

struct CompletionCommand {
  Shell shell = Shell::kBash;
};

ExitCode Run(const CompletionCommand& command, Context& context);

CommandRule CompletionRule();

}  // namespace borvanusb
