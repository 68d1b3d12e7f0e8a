#pragma once

#include <string>
#include <vector>

#include "command/context.h"
#include "names/register_names.h"
#include "names/register_setting.h"

namespace borvanusb {

// Lists of settings by name, "SENSOR.GAIN=0x10": presets of a profile and files of such lines.

// The preset of a profile. Throws Failure kUsage, with the names there are, when there is none.
const ProfilePreset& FindPreset(const CameraProfile& profile, const std::string& name);

// The settings of a preset that has no list file, in order; those of one register that follow each
// other are one write. Throws Failure kFile for one that can't be written.
std::vector<RegisterSetting> SettingsOf(const ProfilePreset& preset, const RegisterNames& names);

// Whether a text is one of lines NAME=VALUE, as reg dump --all-named writes them.
bool IsSettingsText(std::string_view text);
// Its lines without remarks and blanks.
std::vector<std::string> SettingsLines(std::string_view text);
// The settings of such a text. Throws Failure kFile with the line. Values of registers that are
// read-only are taken, too: they are for comparing.
std::vector<RegisterSetting> ComparableSettings(const std::string& file, std::string_view text,
                                                const RegisterNames& names);

}  // namespace borvanusb
