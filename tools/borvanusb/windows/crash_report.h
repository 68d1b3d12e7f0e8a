#pragma once

#include <string_view>

namespace borvanusb {

// How a process of the tool ends when something goes wrong that no command can report. Each of
// these functions works without free memory.

constexpr std::string_view kReportIt =
    "Please report it with this command line and what borvanusb doctor prints.";

// Ends the process as it stands: threads of the library may be in the middle of a transfer, and
// nothing that they hold must be waited for.
[[noreturn]] void EndProcess(int code);

// Writes "borvanusb: " with `what`, ": " with `detail` if there is one, and below it what to do to
// standard error, and ends the process with ExitCode::kInternal.
[[noreturn]] void EndBroken(std::string_view what, std::string_view detail = {},
                            std::string_view hint = kReportIt);

// The same for the exception that is being handled.
[[noreturn]] void EndWithCurrentException();

// From now on a crash, an exception that nobody catches and an abort end the process with
// EndBroken, on whichever thread. Without it Wine and Windows print nothing, and the exit code
// would be one that means something else: an abort's is 3.
void ReportCrashes();

}  // namespace borvanusb
