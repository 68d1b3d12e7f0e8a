#include "profile/profile_choice.h"

#include "base/failure.h"
#include "base/format.h"
#include "camera/host.h"
#include "output/output.h"
#include "profile/profile_fit.h"
#include "profile/profile_folder.h"

namespace borvanusb {

void RequireFit(const CameraProfile& profile, const CameraIdentity& camera) {
  if (FitOf(profile, camera) == 0) {
    throw Failure(ExitCode::kFile,
                  Format("the profile {} is for {}, and the camera is {}:{} {}", profile.file,
                         CamerasText(profile), camera.vid, camera.pid, camera.name),
                  "Give the camera's own profile, or use this one anyway with "
                  "--force-profile.");
  }
}

FolderMatch MatchInFolder(const CameraIdentity& camera, const Host& host) {
  FolderMatch match;
  int best_fit = 0;
  for (const std::string& file : ProfileFiles(host)) {
    const auto reading = ReadKeptProfile(file);
    if (!reading->errors.empty()) {
      match.unusable.push_back(file);
      continue;
    }
    const int fit = FitOf(reading->profile, camera);
    if (fit > best_fit) {
      best_fit = fit;
      match.best = {reading, &reading->profile};
      match.equal.clear();
    } else if (fit > 0 && fit == best_fit) {
      match.equal.push_back(file);
    }
  }
  return match;
}

std::string GivenProfile(const CommonArguments& common, const Host& host) {
  return common.profile.empty() ? host.Environment("BORVANUSB_PROFILE") : common.profile;
}

std::shared_ptr<const CameraProfile> ProfileFor(const CameraIdentity& camera, Context& context) {
  const std::string given = GivenProfile(context.common, context.host);
  if (!given.empty()) {
    auto profile = LoadProfile(given);
    if (!context.common.force_profile) {
      RequireFit(*profile, camera);
    }
    return profile;
  }
  FolderMatch match = MatchInFolder(camera, context.host);
  for (const std::string& file : match.unusable) {
    context.output.Note(
        Format("note: the profile {} can't be used; borvanusb profile check shows why", file));
  }
  if (!match.equal.empty()) {
    throw Failure(ExitCode::kUsage,
                  Format("two profiles fit the camera {} equally well: {} and {}", camera.name,
                         match.best->file, match.equal.front()),
                  "Choose one with --profile, or distinguish their cameras by vid, pid and name.");
  }
  return match.best;
}

}  // namespace borvanusb
