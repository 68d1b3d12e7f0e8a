#pragma once

#include <array>
#include <string>
#include <string_view>
#include <vector>

#include "names/register_names.h"

namespace borvanusb {

// The kinds of names that a word of a command line can stand for.
enum class NameKind { kRegisters, kSettings, kRegions, kPresets };
inline constexpr std::array<std::string_view, 4> kNameKinds = {"registers", "settings", "regions",
                                                               "presets"};

// Shell completion: the names that begin with a word, in upper or lower case. Registers are
// completed by full name, else by their last parts; fields follow after a register's name and a
// dot. Settings end in =; after the =, the named values of the field are completed.
std::vector<std::string> CompletedNames(NameKind kind, std::string_view word,
                                        const RegisterNames& names);

}  // namespace borvanusb
