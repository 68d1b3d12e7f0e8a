// Texts of files and hosts for messages and lists.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

namespace virtual_camera {

// Control characters as in JSON, so that a text stays one line and moves no cursor.
inline std::string Printable(std::string_view text) {
  constexpr std::string_view kDigits = "0123456789abcdef";
  std::string printable;
  for (const char c : text) {
    const auto byte = static_cast<std::uint8_t>(c);
    if (byte >= 0x20 && byte != 0x7F) {
      printable += c;
    } else {
      printable += std::string("\\u00") + kDigits[byte / 16] + kDigits[byte % 16];
    }
  }
  return printable;
}

}  // namespace virtual_camera
