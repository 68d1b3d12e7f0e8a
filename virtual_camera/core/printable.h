#pragma once

// Makes texts from files and hosts safe to print in messages and lists.

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

namespace virtual_camera {

// Escapes control characters as JSON does, so that a text stays one line and moves no cursor:
// U+0000 to U+001F, and U+007F to U+009F, which UTF-8 writes as 0x7F and as 0xC2 with a byte below
// 0xA0.
inline std::string Printable(std::string_view text) {
  constexpr std::string_view kDigits = "0123456789abcdef";
  const auto byte_at = [text](std::size_t i) {
    return i < text.size() ? static_cast<std::uint8_t>(text[i]) : std::uint8_t{0};
  };
  std::string printable;
  for (std::size_t i = 0; i < text.size(); ++i) {
    const std::uint8_t next = byte_at(i + 1);
    const bool two_bytes = byte_at(i) == 0xC2 && next >= 0x80 && next < 0xA0;
    i += two_bytes ? 1 : 0;
    const std::uint8_t byte = byte_at(i);
    if (two_bytes || byte < 0x20 || byte == 0x7F) {
      printable += std::string("\\u00") + kDigits[byte / 16] + kDigits[byte % 16];
    } else {
      printable += text[i];
    }
  }
  return printable;
}

}  // namespace virtual_camera
