#pragma once

#include <memory>
#include <string>
#include <vector>

#include "camera/camera.h"
#include "command/context.h"
#include "profile/camera_profile.h"

namespace borvanusb {

// The profile for a camera: that of --profile or BORVANUSB_PROFILE, else the one in the folder of
// profiles that fits the camera best. Null when there is none. Throws Failure: kFile for a profile
// that can't be used or, without --force-profile, does not fit the camera; kUsage when several in
// the folder fit equally well.
std::shared_ptr<const CameraProfile> ProfileFor(const CameraIdentity& camera, Context& context);

// The profiles in the folder for one camera.
struct FolderMatch {
  std::shared_ptr<const CameraProfile> best;  // null: none fits
  std::vector<std::string> equal;             // files of others that fit as well as the best
  std::vector<std::string> unusable;          // files that have errors
};
// Throws Failure kFile when a file can't be read.
FolderMatch MatchInFolder(const CameraIdentity& camera, const Host& host);

// Throws Failure kFile when a profile is for other cameras than this one.
void RequireFit(const CameraProfile& profile, const CameraIdentity& camera);

// The profile that --profile or BORVANUSB_PROFILE names; empty when they name none.
std::string GivenProfile(const CommonArguments& common, const Host& host);

}  // namespace borvanusb
