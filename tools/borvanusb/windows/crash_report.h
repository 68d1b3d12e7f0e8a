#pragma once

#include <string_view>

namespace borvanusb {

// Ends the process after an error that no command can report. These functions do not allocate
// memory.

constexpr std::string_view kReportIt =
    "Please report it with this command line and what borvanusb doctor prints.";

// Ends the process immediately. It waits for nothing, because threads of the library may be in the
// middle of a transfer.
[[noreturn]] void EndProcess(int code);

// Writes "borvanusb: " `what`, ": " `detail` if given, and `hint` in the next line to standard
// error, and ends the process with ExitCode::kInternal.
[[noreturn]] void EndBroken(std::string_view what, std::string_view detail = {},
                            std::string_view hint = kReportIt);

// The same for the current exception.
[[noreturn]] void EndWithCurrentException();

// Installs handlers for all threads: a crash, an uncaught exception or an abort ends the process
// with EndBroken. Otherwise Wine and Windows would print nothing, and the exit code would have
// another meaning: abort uses 3.
void ReportCrashes();

}  // namespace borvanusb
