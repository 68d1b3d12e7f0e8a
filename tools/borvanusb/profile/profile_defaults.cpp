// Takes defaults of options from the profile of the camera.
#include "base/failure.h"
#include "camera/camera_choice.h"
#include "camera/host.h"
#include "command/option_defaults.h"
#include "profile/profile_choice.h"
#include "profile/profile_folder.h"

namespace borvanusb {

namespace {

OptionDefaults DefaultsOf(const CommonArguments& common, Host& host) {
  const std::string given = GivenProfile(common, host);
  if (!given.empty()) {
    const auto profile = LoadProfile(given);
    return {profile->options, profile->file, {}};
  }
  // Most users have no profiles. Then the camera need not be queried.
  if (ProfileFiles(host).empty()) {
    return {};
  }
  try {
    const FolderMatch match = MatchInFolder(ChosenCamera(host, common.cameras), host);
    // If two profiles match equally well, neither is used.
    if (match.best != nullptr && match.equal.empty()) {
      return {match.best->options, match.best->file, {}};
    }
    return {};
  } catch (const Failure& failure) {
    if (failure.Code() == ExitCode::kStopped) {
      throw;
    }
    return {{}, {}, failure};
  }
}

void RequireFitOf(const CameraIdentity& camera, const CommonArguments& common, Host& host) {
  const std::string given = GivenProfile(common, host);
  if (!given.empty() && !common.force_profile) {
    RequireFit(*LoadProfile(given), camera);
  }
}

}  // namespace

const CameraKnowledge& ProfileKnowledge() {
  static const CameraKnowledge kKnowledge{DefaultsOf, RequireFitOf};
  return kKnowledge;
}

}  // namespace borvanusb
