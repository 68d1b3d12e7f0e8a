#pragma once

#include <memory>
#include <string>
#include <vector>

#include "camera/camera.h"
#include "command/context.h"
#include "profile/camera_profile.h"

namespace borvanusb {

// The profile for a camera: the one of --profile or BORVANUSB_PROFILE, else the best match in the
// profile folder. Null if there is none. Throws Failure: kFile if the profile can't be used or,
// without --force-profile, is for other cameras; kUsage if several profiles in the folder match
// equally well.
std::shared_ptr<const CameraProfile> ProfileFor(const CameraIdentity& camera, Context& context);

// The profiles in the folder that match one camera.
struct FolderMatch {
  std::shared_ptr<const CameraProfile> best;  // null: no profile matches
  std::vector<std::string> equal;             // other files that match equally well
  std::vector<std::string> unusable;          // files with errors
};
// Throws Failure kFile when a file can't be read.
FolderMatch MatchInFolder(const CameraIdentity& camera, const Host& host);

// Throws Failure kFile when a profile is for other cameras than this one.
void RequireFit(const CameraProfile& profile, const CameraIdentity& camera);

// The profile in --profile or BORVANUSB_PROFILE. Empty if neither is set.
std::string GivenProfile(const CommonArguments& common, const Host& host);

}  // namespace borvanusb
