#pragma once

#include <string>

#include "base/exit_code.h"
#include "names/completed_names.h"

namespace borvanusb {

struct CommandRule;
struct Context;

struct ProfileNamesCommand {
  NameKind kind = NameKind::kRegisters;
  std::string word;
};

ExitCode Run(const ProfileNamesCommand& command, Context& context);

CommandRule ProfileNamesRule();

}  // namespace borvanusb
