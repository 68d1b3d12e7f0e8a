#pragma once

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
  kTimeout = 8,         // nothing moved for too long
  kStopped = 9,         // stopped by the user
  kInternal = 10,       // anything else
};

// The kind's short name, as in the "kind" of a failure's JSON.
constexpr std::string_view KindOf(ExitCode code) {
  switch (code) {
    case ExitCode::kDone:
      return "done";
    case ExitCode::kUsage:
      return "usage";
    case ExitCode::kNoCamera:
      return "no-camera";
    case ExitCode::kSeveralCameras:
      return "several-cameras";
    case ExitCode::kRefused:
      return "refused";
    case ExitCode::kFile:
      return "file";
    case ExitCode::kDevice:
      return "device";
    case ExitCode::kVerify:
      return "verify";
    case ExitCode::kTimeout:
      return "timeout";
    case ExitCode::kStopped:
      return "stopped";
    case ExitCode::kInternal:
      return "internal";
  }
  return "internal";
}

}  // namespace borvanusb
