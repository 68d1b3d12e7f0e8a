#pragma once

#include <memory>

#include "camera/camera.h"
#include "command/context.h"
#include "profile/camera_profile.h"

namespace borvanusb {

// The profile for a camera: that of --profile or BORVANUSB_PROFILE, else the one in the folder of
// profiles that fits the camera best. Null when there is none. Throws Failure: kFile for a profile
// that can't be used or, without --force-profile, does not fit the camera; kUsage when several in
// the folder fit equally well.
std::shared_ptr<const CameraProfile> ProfileFor(const CameraIdentity& camera, Context& context);

// The profile that --profile or BORVANUSB_PROFILE names; empty when they name none.
std::string GivenProfile(const CommonArguments& common, const Host& host);

}  // namespace borvanusb
