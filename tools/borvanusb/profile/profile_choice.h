#pragma once

#include <memory>

#include "camera/camera.h"
#include "command/context.h"
#include "profile/camera_profile.h"

namespace borvanusb {

// The profile for a camera: that of --profile or BORVANUSB_PROFILE, else the one in the folder of
// profiles that fits the camera. Null when there is none. Throws Failure: kFile for a profile that
// can't be used or does not fit the camera (unless --force-profile), kUsage when several in the
// folder fit.
std::shared_ptr<const CameraProfile> ProfileFor(const CameraIdentity& camera, Context& context);

}  // namespace borvanusb
