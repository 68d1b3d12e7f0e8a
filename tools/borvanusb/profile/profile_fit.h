#pragma once

#include "camera/camera.h"
#include "profile/camera_profile.h"

namespace borvanusb {

// How well a profile fits a camera: how many of vid, pid and name the best of its patterns gives
// and the camera has; 0: it does not fit.
int FitOf(const CameraProfile& profile, const CameraIdentity& camera);

// "vid 1D6B, pid 0105 or name Virtual*": the cameras that a profile is for.
std::string CamerasText(const CameraProfile& profile);

}  // namespace borvanusb
