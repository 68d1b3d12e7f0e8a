#pragma once

#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "base/text_lines.h"
#include "command/command_rules.h"
#include "profile/read_profile.h"

namespace borvanusb {

// What is wrong with a profile, and what may be.
struct ProfileFindings {
  std::vector<ListProblem> errors;   // in the order of lines
  std::vector<ListProblem> remarks;  // likewise
};

// Finds what only the names of its registers and the tool's options show: presets that can't be
// applied, names that two registers share, registers that can't be reached, defaults that no option
// takes. A profile that has errors when it is read has no others here.
//   text   of the profile's file, as `reading` was made from
//   read   reads the list files of presets
//   rules  the tool's commands
ProfileFindings CheckProfile(std::string_view text,
                             const std::shared_ptr<const ProfileReading>& reading,
                             const ProfileFileReader& read, const CommandRules& rules);

}  // namespace borvanusb
