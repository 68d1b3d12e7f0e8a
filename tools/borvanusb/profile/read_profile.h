#pragma once

#include <functional>
#include <string>
#include <string_view>
#include <vector>

#include "base/text_lines.h"
#include "profile/camera_profile.h"

namespace borvanusb {

// A profile as far as it could be read.
struct ProfileReading {
  CameraProfile profile;
  std::vector<ListProblem>
      errors;  // in the order of lines; with any, the profile is not to be used
};

// A file's content by its full name. Throws Failure.
using ProfileFileReader = std::function<std::string(const std::string& name)>;

// Reads a profile from the text of its file.
//   file  the profile's full name: the files that it names lie relative to its folder
ProfileReading ReadProfileText(std::string_view text, const std::string& file,
                               const ProfileFileReader& read);

// Reads a profile and the maps that it names. Throws Failure kFile when the file itself can't be
// read.
ProfileReading ReadProfile(const std::string& file);

}  // namespace borvanusb
