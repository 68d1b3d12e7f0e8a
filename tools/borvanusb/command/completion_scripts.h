#pragma once

#include <string>

#include "command/command_line.h"

namespace borvanusb {

// Shell scripts that complete command lines of borvanusb: commands, options, short lists of values,
// names in the camera's profile, and file names.
std::string BashCompletion(const ToolDescription& tool);
std::string FishCompletion(const ToolDescription& tool);
std::string PowerShellCompletion(const ToolDescription& tool);
std::string ZshCompletion(const ToolDescription& tool);

}  // namespace borvanusb
