#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace borvanusb {

// Columns that a UTF-8 text takes on a terminal.
std::size_t ColumnsOf(std::string_view text);

// Filled up with blanks to a number of columns.
std::string Padded(std::string_view text, std::size_t columns);

// The same, and cut where it is longer, not in the middle of a character.
std::string Fitted(std::string_view text, std::size_t columns);

}  // namespace borvanusb
