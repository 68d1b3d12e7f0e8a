#pragma once

#include <string>
#include <vector>

#include "camera/camera.h"
#include "camera/host.h"

namespace borvanusb {

// Which of the cameras a choice means: its index, its device path, "vid:pid", its name; where none
// of these matches whole, a part of path or name of at least 3 characters. Letters may be large or
// small. An empty choice means the only camera there is. Throws Failure: kNoCamera when none
// matches, kSeveralCameras, with the matches in its message, when more than one does: the wrong
// camera's firmware would be gone.
CameraIdentity ChooseCamera(const std::vector<CameraIdentity>& cameras, const std::string& choice);

// The camera that a command works with: the one of --camera, else of BORVANUSB_CAMERA, else the
// only one. Tries again as long as the host allows it. Throws as ChooseCamera and as
// Host::CheckCamera, and kUsage for more than one --camera.
CameraIdentity ChosenCamera(Host& host, const std::vector<std::string>& choices);

// A camera in a line for people: `0  1234:0001  Virtual camera`.
std::string CameraLine(const CameraIdentity& camera);

}  // namespace borvanusb
