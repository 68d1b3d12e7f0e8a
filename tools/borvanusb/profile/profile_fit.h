#pragma once

#include "camera/camera.h"
#include "profile/camera_profile.h"

namespace borvanusb {

// How well a profile matches a camera: the number of parts (vid, pid, name) that its best matching
// pattern gives. 0: the profile is for other cameras.
int FitOf(const CameraProfile& profile, const CameraIdentity& camera);

// The cameras that a profile is for, as text: "vid 1D6B, pid 0105 or name Virtual*".
std::string CamerasText(const CameraProfile& profile);

}  // namespace borvanusb
