#pragma once

#include <string>
#include <string_view>

namespace borvanusb {

// Texts from devices, files and the system may contain characters that a terminal interprets: line
// ends, escape sequences, and marks that change the writing direction. These functions replace such
// characters, so that a line of the output ends only where the program ends it.

// Replaces control characters, line ends, marks that change the writing direction, and bytes that
// are not valid UTF-8 by question marks.
std::string Printable(std::string_view text);

// Replaces such characters in JSON by escapes. The values stay the same.
std::string PrintableJson(std::string_view json);

}  // namespace borvanusb
