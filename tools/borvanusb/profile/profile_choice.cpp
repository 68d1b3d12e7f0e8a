#include "profile/profile_choice.h"

#include "base/failure.h"
#include "base/format.h"
#include "camera/host.h"
#include "output/output.h"
#include "profile/profile_fit.h"
#include "profile/profile_folder.h"

namespace borvanusb {

namespace {

std::shared_ptr<const CameraProfile> FittingProfile(const std::string& file, bool force,
                                                    const CameraIdentity& camera) {
  auto profile = LoadProfile(file);
  if (!force && FitOf(*profile, camera) == 0) {
    throw Failure(ExitCode::kFile,
                  Format("the profile {} is for {}, and the camera is {}:{} {}", file,
                         CamerasText(*profile), camera.vid, camera.pid, camera.name),
                  "Give the camera's own profile, or use this one all the same with "
                  "--force-profile.");
  }
  return profile;
}

}  // namespace

std::string GivenProfile(const CommonArguments& common, const Host& host) {
  return common.profile.empty() ? host.Environment("BORVANUSB_PROFILE") : common.profile;
}

std::shared_ptr<const CameraProfile> ProfileFor(const CameraIdentity& camera, Context& context) {
  const std::string given = GivenProfile(context.common, context.host);
  if (!given.empty()) {
    return FittingProfile(given, context.common.force_profile, camera);
  }
  std::shared_ptr<const CameraProfile> best;
  int best_fit = 0;
  std::string other;  // fits as well as the best
  for (const std::string& file : ProfileFiles(context.host)) {
    const auto reading = ReadKeptProfile(file);
    if (!reading->errors.empty()) {
      context.output.Note(
          Format("note: the profile {} can't be used; borvanusb profile check shows why", file));
      continue;
    }
    const int fit = FitOf(reading->profile, camera);
    if (fit > best_fit) {
      best_fit = fit;
      best = {reading, &reading->profile};
      other.clear();
    } else if (fit > 0 && fit == best_fit) {
      other = file;
    }
  }
  if (!other.empty()) {
    throw Failure(ExitCode::kUsage,
                  Format("two profiles fit the camera {} equally well: {} and {}", camera.name,
                         best->file, other),
                  "Choose one with --profile, or tell their cameras apart by vid, pid and name.");
  }
  return best;
}

}  // namespace borvanusb
