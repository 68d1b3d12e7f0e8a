#include "output/columns.h"

namespace borvanusb {

namespace {

// Returns the columns of the character that starts with this byte, or 0 for a continuation byte.
// Estimates the width from the length in UTF-8: wide characters have three bytes or more.
std::size_t ColumnsFrom(char byte) {
  const auto first = static_cast<unsigned char>(byte);
  if ((first & 0xC0U) == 0x80U) {
    return 0;
  }
  return first >= 0xE0U ? 2 : 1;
}

}  // namespace

std::size_t ColumnsOf(std::string_view text) {
  std::size_t columns = 0;
  for (const char byte : text) {
    columns += ColumnsFrom(byte);
  }
  return columns;
}

std::string Padded(std::string_view text, std::size_t columns) {
  std::string padded(text);
  const std::size_t own = ColumnsOf(text);
  padded.append(columns > own ? columns - own : 0, ' ');
  return padded;
}

std::string Fitted(std::string_view text, std::size_t columns) {
  std::size_t size = 0;
  std::size_t taken = 0;
  for (const char byte : text) {
    const std::size_t more = ColumnsFrom(byte);
    if (taken + more > columns) {
      break;
    }
    taken += more;
    ++size;
  }
  return Padded(text.substr(0, size), columns);
}

}  // namespace borvanusb
