// The command `profile list`.

#include "profile_commands/list.h"

#include <algorithm>
#include <nlohmann/json.hpp>
#include <optional>
#include <vector>

#include "base/failure.h"
#include "base/files.h"
#include "base/format.h"
#include "camera/camera_json.h"
#include "camera/host.h"
#include "command/camera_work.h"
#include "command/command_rules.h"
#include "command/context.h"
#include "output/columns.h"
#include "output/output.h"
#include "output/printable.h"
#include "profile/profile_choice.h"
#include "profile/profile_fit.h"
#include "profile/profile_folder.h"
#include "profile_commands/profile_text.h"

namespace borvanusb {

namespace {

using Json = nlohmann::ordered_json;

struct ListedProfile {
  std::string file;
  std::shared_ptr<const ProfileReading> reading;  // null: can't be read
  std::string problem;                            // why it can't be used; else empty
  bool given = false;                             // with --profile or BORVANUSB_PROFILE
};

ListedProfile Listed(const std::string& file, bool given) {
  ListedProfile profile{AbsoluteName(file), nullptr, {}, given};
  try {
    profile.reading = ReadKeptProfile(file);
    if (!profile.reading->errors.empty()) {
      profile.problem = Count(profile.reading->errors.size(), "error");
    }
  } catch (const Failure& failure) {
    profile.problem = failure.Message();
  }
  return profile;
}

std::vector<ListedProfile> AllProfiles(const Context& context) {
  std::vector<ListedProfile> profiles;
  const std::string given = GivenProfile(context.common, context.host);
  if (!given.empty()) {
    profiles.push_back(Listed(given, true));
  }
  for (const std::string& file : ProfileFiles(context.host)) {
    if (given.empty() || !SameFile(file, given)) {
      profiles.push_back(Listed(file, false));
    }
  }
  return profiles;
}

// The profile that a camera uses.
struct CameraUse {
  CameraIdentity camera;
  const ListedProfile* profile = nullptr;
  std::vector<std::string> ambiguous;  // files that match equally well, if there are several
  std::string problem;                 // why an existing profile is not used
};

CameraUse UseOf(const CameraIdentity& camera, const std::vector<ListedProfile>& profiles,
                bool force) {
  CameraUse use;
  use.camera = camera;
  // A given profile replaces those in the folder.
  if (!profiles.empty() && profiles.front().given) {
    const ListedProfile& given = profiles.front();
    if (!given.problem.empty()) {
      use.problem = "the profile that is given can't be used";
    } else if (!force && FitOf(given.reading->profile, camera) == 0) {
      use.problem = "the profile that is given is for other cameras";
    } else {
      use.profile = &given;
    }
    return use;
  }
  int best = 0;
  for (const ListedProfile& profile : profiles) {
    const int fit = profile.problem.empty() ? FitOf(profile.reading->profile, camera) : 0;
    if (fit > best) {
      best = fit;
      use.profile = &profile;
      use.ambiguous.clear();
    } else if (fit > 0 && fit == best) {
      use.ambiguous.push_back(profile.file);
    }
  }
  if (!use.ambiguous.empty()) {
    use.ambiguous.insert(use.ambiguous.begin(), use.profile->file);
    use.profile = nullptr;
  }
  return use;
}

std::string NameOf(const ListedProfile& profile) {
  const std::string name = profile.reading != nullptr ? profile.reading->profile.name : "";
  return name.empty() ? BareName(profile.file) : name;
}

void PrintProfiles(const std::vector<ListedProfile>& profiles, Output& output) {
  std::size_t columns = 0;
  for (const ListedProfile& profile : profiles) {
    columns = std::max(columns, ColumnsOf(Printable(BareName(profile.file))));
  }
  for (const ListedProfile& profile : profiles) {
    const std::string file = Padded(Printable(BareName(profile.file)), columns);
    const std::string given = profile.given ? "  (given)" : "";
    if (!profile.problem.empty()) {
      output.Line(Format("{}  can't be used: {}{}", file, profile.problem, given));
      continue;
    }
    output.Line(Format("{}  {}  for {}{}", file, NameOf(profile),
                       CamerasText(profile.reading->profile), given));
  }
}

void PrintUses(const std::vector<CameraUse>& uses, Output& output) {
  for (const CameraUse& use : uses) {
    std::string what = "no profile";
    if (use.profile != nullptr) {
      what = Format("uses {}", BareName(use.profile->file));
    } else if (!use.problem.empty()) {
      what = use.problem;
    } else if (!use.ambiguous.empty()) {
      what = "ambiguous:";
      for (const std::string& file : use.ambiguous) {
        what += Format("{} {}", what.ends_with(':') ? "" : " and", BareName(file));
      }
      what += " fit equally well";
    }
    output.Line(Format("camera {}  {}:{}  {}  {}", use.camera.index, use.camera.vid, use.camera.pid,
                       Printable(use.camera.name), what));
  }
}

Json ProfilesJson(const std::vector<ListedProfile>& profiles) {
  Json list = Json::array();
  for (const ListedProfile& profile : profiles) {
    Json cameras = Json::array();
    if (profile.reading != nullptr) {
      cameras = CamerasJson(profile.reading->profile);
    }
    list.push_back({{"file", profile.file},
                    {"name", NameOf(profile)},
                    {"cameras", std::move(cameras)},
                    {"given", profile.given},
                    {"problem", profile.problem.empty() ? Json() : Json(profile.problem)}});
  }
  return list;
}

Json UsesJson(const std::vector<CameraUse>& uses) {
  Json list = Json::array();
  for (const CameraUse& use : uses) {
    Json camera = CameraJson(use.camera);
    camera["profile"] = use.profile != nullptr
                            ? Json{{"file", use.profile->file}, {"name", NameOf(*use.profile)}}
                            : Json();
    camera["ambiguous"] = use.ambiguous;
    camera["problem"] = use.problem.empty() ? Json() : Json(use.problem);
    list.push_back(std::move(camera));
  }
  return list;
}

}  // namespace

ExitCode Run(const ProfileListCommand& /*command*/, Context& context) {
  const std::string folder = ProfileFolder(context.host);
  const std::vector<ListedProfile> profiles = AllProfiles(context);
  PrintProfiles(profiles, context.output);
  if (profiles.empty()) {
    context.output.Note(folder.empty()
                            ? "no profile; BORVANUSB_PROFILES names the folder of profiles"
                            : Format("no profile (*.camera.json) in {}", folder));
  }
  context.result = {{"folder", folder.empty() ? Json() : Json(folder)},
                    {"profiles", ProfilesJson(profiles)},
                    {"cameras", nullptr}};
  std::vector<CameraUse> uses;
  try {
    for (const CameraIdentity& camera : context.host.ListCameras()) {
      uses.push_back(UseOf(camera, profiles, context.common.force_profile));
    }
  } catch (const Failure& failure) {
    if (failure.Code() == ExitCode::kStopped) {
      throw;
    }
    context.output.Note(Format("note: the cameras can't be listed: {}", failure.Message()));
    return ExitCode::kDone;
  }
  PrintUses(uses, context.output);
  context.result["cameras"] = UsesJson(uses);
  return ExitCode::kDone;
}

CommandRule ProfileListRule() {
  RuleOf<ProfileListCommand> rule({"profile", "list"},
                                  "Lists the camera profiles and which camera uses which.");
  rule.Details(
      "The profiles are those of the folder BORVANUSB_PROFILES, default "
      "%APPDATA%\\BorvanUSB\\profiles, and the one of --profile.");
  rule.Refuse("--camera", "which lists all cameras");
  rule.Refuse("--progress", kNoProgress);
  rule.Refuse("--trace", "which makes no transfers");
  rule.Example("borvanusb profile list");
  return rule.Take();
}

}  // namespace borvanusb
