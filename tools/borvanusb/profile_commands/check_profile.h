#pragma once

#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "base/text_lines.h"
#include "command/command_rules.h"
#include "profile/read_profile.h"

namespace borvanusb {

// Errors of a profile, and remarks about possible errors.
struct ProfileFindings {
  std::vector<ListProblem> errors;   // sorted by line
  std::vector<ListProblem> remarks;  // sorted by line
};

// Makes the checks that need register names and the tool's options. It finds presets that can't be
// applied, names that two registers share, registers that can't be accessed, and defaults that no
// option accepts. A profile that has errors after reading is not checked further.
//   text   content of the profile's file, from which `reading` was made
//   read   reads the list files of presets
//   rules  the tool's commands
ProfileFindings CheckProfile(std::string_view text,
                             const std::shared_ptr<const ProfileReading>& reading,
                             const ProfileFileReader& read, const CommandRules& rules);

}  // namespace borvanusb
