#pragma once

#include <string>

#include "command/command_rules.h"

namespace borvanusb {

// Why a default of a profile can't be used. Empty if every command that has the option accepts the
// value.
//   option  "--slave"
std::string DefaultProblem(const std::string& option, const std::string& value,
                           const CommandRules& rules);

}  // namespace borvanusb
