#pragma once

#include <string>
#include <vector>

#include "camera/camera.h"
#include "camera/host.h"

namespace borvanusb {

// Returns the camera that `choice` selects: by its index, device path, "vid:pid" or name. If none
// of these matches as a whole, `choice` may be a part of a path or name, of at least 3 characters.
// Case is ignored. An empty choice selects the only camera.
//
// Throws Failure: kNoCamera if no camera matches; kSeveralCameras, with the matches in the message,
// if several match. The function never guesses, because a command may erase the firmware of the
// camera.
CameraIdentity ChooseCamera(const std::vector<CameraIdentity>& cameras, const std::string& choice);

// Returns the camera for a command: the one that --camera selects, otherwise the one that the
// environment variable BORVANUSB_CAMERA selects, otherwise the only one. Retries as long as the
// host allows it (see Host::UntilItWorks). Throws like ChooseCamera and Host::CheckCamera, and
// kUsage for more than one --camera.
CameraIdentity ChosenCamera(Host& host, const std::vector<std::string>& choices);

// Returns a line that describes a camera: `0  1234:0001  Virtual camera`.
std::string CameraLine(const CameraIdentity& camera);

}  // namespace borvanusb
