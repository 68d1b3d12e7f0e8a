#pragma once

#include <functional>
#include <string>
#include <string_view>
#include <vector>

#include "base/text_lines.h"
#include "profile/camera_profile.h"

namespace borvanusb {

// A profile, as far as it could be read.
struct ProfileReading {
  CameraProfile profile;
  std::vector<ListProblem> errors;  // sorted by line; if there are any, do not use the profile
};

// Returns the content of a file, given its full name. Throws Failure.
using ProfileFileReader = std::function<std::string(const std::string& name)>;

// Reads a profile from the text of its file.
//   file  full name of the profile; the files that it names are relative to its folder
ProfileReading ReadProfileText(std::string_view text, const std::string& file,
                               const ProfileFileReader& read);

// Reads a profile and its maps. Throws Failure kFile if the file itself can't be read.
ProfileReading ReadProfile(const std::string& file);

}  // namespace borvanusb
