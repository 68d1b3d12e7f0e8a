#pragma once

#include <string>
#include <vector>

#include "camera.h"
#include "host.h"

// Which of the cameras a choice means: its index, its whole device path or a part of it, "vid:pid",
// its name or a part of it; letters large or small. Whole matches win over parts. An empty choice
// means the only camera there is. Throws Failure: kNoCamera when none matches, kSeveralCameras,
// with the matches in its message, when more than one does: the wrong camera's firmware would be
// gone.
CameraIdentity ChooseCamera(const std::vector<CameraIdentity>& cameras, const std::string& choice);

// The camera that a command works with: the one of --camera, else of BORVANUSB_CAMERA, else the
// only one. Throws as ChooseCamera, and kUsage for more than one --camera.
CameraIdentity ChosenCamera(Host& host, const std::vector<std::string>& choices);

// A camera in a line for people: `0  1234:0001  Virtual camera`.
std::string CameraLine(const CameraIdentity& camera);
