#pragma once

#include <functional>
#include <string>

#include "profile/camera_profile.h"
#include "profile/json_tree.h"
#include "profile/value_reader.h"

namespace borvanusb {

// Readers for the sections of a profile; read_profile.h uses them.

// Access to the files that a profile names.
struct FilesOfProfile {
  // The full name of such a file.
  std::function<std::string(const std::string&)> full_name;
  // The content of a file, given its full name. Throws Failure.
  std::function<std::string(const std::string&)> read;
};

std::vector<ProfileMap> ReadMapSection(const JsonNode* node, const FilesOfProfile& files,
                                       ValueReader& values);
FlashLayout ReadFlashSection(const JsonNode* node, ValueReader& values);
std::vector<ProfilePreset> ReadPresetSection(const JsonNode* node, const FilesOfProfile& files,
                                             ValueReader& values);

// Whether a text is a valid name of a region or preset: letters, digits and _ - .
bool IsPlainName(std::string_view text);

}  // namespace borvanusb
