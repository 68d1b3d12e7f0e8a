#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace borvanusb {

// Returns the number of terminal columns that a UTF-8 text needs. This is an estimate: a character
// of three bytes or more counts as two columns.
std::size_t ColumnsOf(std::string_view text);

// Pads a text with blanks to `columns`. A longer text is returned unchanged.
std::string Padded(std::string_view text, std::size_t columns);

// Pads a text with blanks, or cuts it at the end of a character, so that it has `columns` columns.
std::string Fitted(std::string_view text, std::size_t columns);

}  // namespace borvanusb
