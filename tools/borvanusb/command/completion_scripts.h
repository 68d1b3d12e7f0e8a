#pragma once

#include <string>

#include "command/command_line.h"

namespace borvanusb {

// Scripts that complete the command lines of borvanusb: commands, options, values that are few,
// names of the camera's profile, and file names.
std::string BashCompletion(const ToolDescription& tool);
std::string FishCompletion(const ToolDescription& tool);
std::string PowerShellCompletion(const ToolDescription& tool);
std::string ZshCompletion(const ToolDescription& tool);

}  // namespace borvanusb
