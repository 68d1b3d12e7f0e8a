#pragma once

#include <string>

#include "base/exit_code.h"
#include "command/context.h"

namespace borvanusb {

// Reads all registers of the camera's profile that can be read without side effects, and writes
// them to `file`: as lines NAME=VALUE, or as a table if the name ends in .csv. An empty name means
// standard output.
ExitCode DumpNamed(const std::string& file, Context& context);

}  // namespace borvanusb
