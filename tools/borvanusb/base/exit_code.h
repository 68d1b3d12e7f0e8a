#pragma once

#include <array>
#include <cstddef>
#include <string_view>

namespace borvanusb {

// The exit codes of the process: one number for each kind of failure. A production line's control
// program can react to the number without parsing messages. The numbers never change, because
// scripts rely on them.
enum class ExitCode {
  kDone = 0,
  kUsage = 1,           // the command line is invalid
  kNoCamera = 2,        // no camera, or none that matches
  kSeveralCameras = 3,  // more than one camera matches
  kRefused = 4,         // no vendor unit, or the camera is busy or can't be opened
  kFile = 5,            // a file can't be read or written, or is unsuitable
  kDevice = 6,          // the camera failed or was removed
  kVerify = 7,          // the data read back differs
  kTimeout = 8,         // no progress for too long
  kStopped = 9,         // stopped by the user
  kInternal = 10,       // anything else
};

struct ExitCodeTexts {
  ExitCode code = ExitCode::kDone;
  std::string_view kind;     // the "kind" in the JSON of a failure
  std::string_view summary;  // for the overview in the help
  std::string_view meaning;  // for the manual page
};

// The index is the exit code.
inline constexpr std::array<ExitCodeTexts, 11> kExitCodes = {{
    {ExitCode::kDone, "done", "done", "Done."},
    {ExitCode::kUsage, "usage", "wrong command line",
     "The command line is wrong; nothing was done."},
    {ExitCode::kNoCamera, "no-camera", "no camera", "There is no camera, or none that matches."},
    {ExitCode::kSeveralCameras, "several-cameras", "several cameras match",
     "More than one camera matches; nothing was done."},
    {ExitCode::kRefused, "refused", "camera refused or without vendor unit",
     "The camera is busy, can't be opened or has no vendor unit."},
    {ExitCode::kFile, "file", "file",
     "A file can't be read or written, or its content is not suitable."},
    {ExitCode::kDevice, "device", "camera failed or removed", "The camera failed or was removed."},
    {ExitCode::kVerify, "verify", "verify differs", "What was read back or compared differs."},
    {ExitCode::kTimeout, "timeout", "timed out", "No progress for longer than --timeout."},
    {ExitCode::kStopped, "stopped", "stopped by the user",
     "Stopped by the user, or a question was not answered with yes."},
    {ExitCode::kInternal, "internal", "internal",
     "Anything else, such as a defect of the program."},
}};

constexpr std::string_view KindOf(ExitCode code) {
  return kExitCodes.at(static_cast<std::size_t>(code)).kind;
}

}  // namespace borvanusb
