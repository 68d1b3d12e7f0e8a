#include "profile/profile_fit.h"

#include <algorithm>

#include "base/format.h"
#include "base/name_pattern.h"

namespace borvanusb {

namespace {

int FitOf(const CameraPattern& pattern, const CameraIdentity& camera) {
  int parts = 0;
  for (const auto& [wanted, given] :
       {std::pair(&pattern.vid, &camera.vid), std::pair(&pattern.pid, &camera.pid)}) {
    if (!wanted->empty()) {
      if (!SameName(*wanted, *given)) {
        return 0;
      }
      ++parts;
    }
  }
  if (!pattern.name.empty()) {
    if (!MatchesPattern(pattern.name, camera.name)) {
      return 0;
    }
    ++parts;
  }
  return parts;
}

}  // namespace

int FitOf(const CameraProfile& profile, const CameraIdentity& camera) {
  int best = 0;
  for (const CameraPattern& pattern : profile.cameras) {
    best = std::max(best, FitOf(pattern, camera));
  }
  return best;
}

std::string CamerasText(const CameraProfile& profile) {
  std::string text;
  for (const CameraPattern& pattern : profile.cameras) {
    std::string one;
    for (const auto& [what, value] :
         {std::pair("vid", &pattern.vid), std::pair("pid", &pattern.pid),
          std::pair("name", &pattern.name)}) {
      if (!value->empty()) {
        one += Format("{}{} {}", one.empty() ? "" : ", ", what, *value);
      }
    }
    text += Format("{}{}", text.empty() ? "" : " or ", one);
  }
  return text;
}

}  // namespace borvanusb
