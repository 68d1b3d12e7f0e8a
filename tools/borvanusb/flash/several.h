#pragma once

// `flash read` and `flash verify` for several cameras, and file names that contain the camera.

#include <string>

#include "base/exit_code.h"
#include "camera/camera.h"
#include "command/command_rules.h"
#include "command/context.h"

namespace borvanusb {

// Replaces {index}, {vid}, {pid} and {camera} in a name. {camera} becomes VID-PID-CAMERA, as in the
// names of backups.
std::string NameForCamera(const std::string& file, const CameraIdentity& camera);

// Throws WrongUse if several cameras would use the same file name.
void CheckNameForSeveral(const std::string& file, bool all, const GivenOptions& given);

// Run the current command line for several cameras.
ExitCode ReadSeveral(const std::string& file, bool all, Context& context);
ExitCode VerifySeveral(bool all, Context& context);

}  // namespace borvanusb
