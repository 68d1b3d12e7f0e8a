#pragma once

#include <string>

#include "base/exit_code.h"
#include "command/context.h"

namespace borvanusb {

// Reads all registers of the camera's profile that can be read without changing them, and writes
// them: as lines NAME=VALUE, or as a table to a name that ends in .csv; to standard output when
// `file` is empty.
ExitCode DumpNamed(const std::string& file, Context& context);

}  // namespace borvanusb
