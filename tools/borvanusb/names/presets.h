#pragma once

#include <string>
#include <vector>

#include "command/context.h"
#include "names/register_names.h"
#include "names/register_setting.h"

namespace borvanusb {

// Lists of named settings, such as "SENSOR.GAIN=0x10": presets of a profile, and files of such
// lines.

// Finds a preset of the profile. Throws Failure kUsage, with the existing names, if there is none.
const ProfilePreset& FindPreset(const CameraProfile& profile, const std::string& name);

// The settings of a preset without a list file, in order. Consecutive settings of one register
// become one write. Throws Failure kFile for a setting that can't be written.
std::vector<RegisterSetting> SettingsOf(const ProfilePreset& preset, const RegisterNames& names);

// Whether a text consists of lines NAME=VALUE, the format of `reg dump --all-named`.
bool IsSettingsText(std::string_view text);
// The lines of such a text, without remarks and blanks.
std::vector<std::string> SettingsLines(std::string_view text);
// The settings of such a text, for a comparison: values of read-only registers are allowed. Throws
// Failure kFile with the line number.
std::vector<RegisterSetting> ComparableSettings(const std::string& file, std::string_view text,
                                                const RegisterNames& names);

}  // namespace borvanusb
