#pragma once

// flash read and flash verify for several cameras, and file names that tell the camera.

#include <string>

#include "base/exit_code.h"
#include "camera/camera.h"
#include "command/command_rules.h"
#include "command/context.h"

namespace borvanusb {

// The name with the camera in place of {index}, {vid}, {pid} and {camera}; the last is
// VID-PID-CAMERA, as backups have it in their names.
std::string NameForCamera(const std::string& file, const CameraIdentity& camera);

// Refuses a file name that several cameras would share. Throws WrongUse.
void CheckNameForSeveral(const std::string& file, bool all, const GivenOptions& given);

// Runs the given command line for several cameras.
ExitCode ReadSeveral(const std::string& file, bool all, Context& context);
ExitCode VerifySeveral(bool all, Context& context);

}  // namespace borvanusb
