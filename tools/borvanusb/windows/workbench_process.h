#pragma once

#include <optional>
#include <string>
#include <vector>

#include "workbench/platform.h"

namespace borvanusb {

// The processes of the workbench. A worker is this program, started with undocumented words and two
// pipes from the workbench.

// If the words and the handles of this process are those of a worker, runs it and does not return.
// Otherwise does nothing.
void RunIfWorker(const std::vector<std::string>& words);

// The system functions of the workbench. Null if the program was built without it.
WorkbenchPlatform* SystemWorkbench();

}  // namespace borvanusb
