#pragma once

#include <functional>
#include <string>

#include "profile/camera_profile.h"
#include "profile/json_tree.h"
#include "profile/value_reader.h"

namespace borvanusb {

// The parts of a profile, for read_profile.h.

// The files that a profile names.
struct ProfileFiles {
  // The full name of a file that the profile names.
  std::function<std::string(const std::string&)> full_name;
  // The content of a file by its full name. Throws Failure.
  std::function<std::string(const std::string&)> read;
};

std::vector<ProfileMap> ReadMapSection(const JsonNode* node, const ProfileFiles& files,
                                       ValueReader& values);
FlashLayout ReadFlashSection(const JsonNode* node, ValueReader& values);
std::vector<ProfilePreset> ReadPresetSection(const JsonNode* node, const ProfileFiles& files,
                                             ValueReader& values);

// Whether a text can be the name of a region or preset: letters, digits and _ - .
bool IsPlainName(std::string_view text);

}  // namespace borvanusb
