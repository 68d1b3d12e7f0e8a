#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "names/register_names.h"

namespace borvanusb {

// What a word of a command line can name.
enum class NameKind { kRegisters, kSettings, kRegions, kPresets };

// The names that begin as a word does, whatever the letters' sizes, for shells that complete it. Of
// registers: those by their whole name, else those whose last parts begin so; fields when the word
// names their register and a dot. Settings end in =; after that sign they are the values of the
// field that have names.
std::vector<std::string> CompletedNames(NameKind kind, std::string_view word,
                                        const RegisterNames& names);

}  // namespace borvanusb
