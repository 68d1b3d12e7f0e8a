#pragma once

#include <array>
#include <cstddef>
#include <string_view>

namespace borvanusb {

// What the process ends with: one number for each kind of failure, so that a line's control program
// knows what to do without reading a text. The numbers are a promise to scripts.
enum class ExitCode {
  kDone = 0,
  kUsage = 1,           // the command line can't be right
  kNoCamera = 2,        // no camera, or none that was meant
  kSeveralCameras = 3,  // more than one camera that may be meant
  kRefused = 4,         // no vendor unit, or the camera is busy or won't be opened
  kFile = 5,            // a file can't be read or written, or does not fit
  kDevice = 6,          // the camera failed, or is gone
  kVerify = 7,          // what was read back differs
  kTimeout = 8,         // no progress for too long
  kStopped = 9,         // stopped by the user
  kInternal = 10,       // anything else
};

struct ExitCodeTexts {
  ExitCode code = ExitCode::kDone;
  std::string_view kind;     // as in the "kind" of a failure's JSON
  std::string_view summary;  // as the overview of the help lists it
  std::string_view meaning;  // as the manual page tells it
};

// In the order of the numbers, from 0 on.
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
    {ExitCode::kVerify, "verify", "verify differs", "What was read back differs."},
    {ExitCode::kTimeout, "timeout", "timed out", "No progress for longer than --timeout."},
    {ExitCode::kStopped, "stopped", "stopped by the user", "Stopped by the user."},
    {ExitCode::kInternal, "internal", "internal",
     "Anything else, such as a defect of the program."},
}};

constexpr std::string_view KindOf(ExitCode code) {
  return kExitCodes.at(static_cast<std::size_t>(code)).kind;
}

}  // namespace borvanusb
