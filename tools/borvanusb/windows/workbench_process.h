#pragma once

#include <optional>
#include <string>
#include <vector>

#include "workbench/platform.h"

namespace borvanusb {

// The workbench's processes. Its worker is this program, started with words that no help shows and
// with two pipes that only the workbench hands on.

// Runs a worker, if these words and this process's handles are those of one; else nothing. Does not
// return from a worker.
void RunIfWorker(const std::vector<std::string>& words);

// The workbench's part of the system; null in a program that was built without it.
WorkbenchPlatform* SystemWorkbench();

}  // namespace borvanusb
