#pragma once

#include <string>

#include "command/command_rules.h"

namespace borvanusb {

// Why a default of a profile can't be used; empty when every command that has the option takes it.
//   option  "--slave"
std::string DefaultProblem(const std::string& option, const std::string& value,
                           const CommandRules& rules);

}  // namespace borvanusb
