#pragma once

#include <string>
#include <string_view>

namespace borvanusb {

// Texts of devices, files and the system may hold characters that a terminal obeys: line ends,
// escape sequences, marks that turn the direction of writing. In what leaves the program a line
// ends only where the program itself ends it.

// The text as one row: control characters, other line ends and turns of direction are replaced by
// question marks, and so are bytes that are no UTF-8.
std::string Printable(std::string_view text);

// JSON with such characters as escapes: the same values.
std::string PrintableJson(std::string_view json);

}  // namespace borvanusb
