#include "base/hex_bytes.h"

#include <cstddef>

namespace borvanusb {

namespace {

constexpr std::string_view kDigits = "0123456789abcdef";
constexpr unsigned kBitsPerDigit = 4;
constexpr unsigned kLowDigit = 0xF;

}  // namespace

std::string HexBytes(std::span<const std::uint8_t> bytes) {
  std::string text;
  text.reserve(bytes.size() * 2);
  for (const std::uint8_t byte : bytes) {
    text += kDigits[byte >> kBitsPerDigit];
    text += kDigits[byte & kLowDigit];
  }
  return text;
}

std::optional<std::vector<std::uint8_t>> ParseHexBytes(std::string_view text) {
  if (text.size() % 2 != 0) {
    return std::nullopt;
  }
  std::vector<std::uint8_t> bytes;
  bytes.reserve(text.size() / 2);
  for (std::size_t i = 0; i < text.size(); i += 2) {
    const std::size_t high = kDigits.find(text[i]);
    const std::size_t low = kDigits.find(text[i + 1]);
    if (high == std::string_view::npos || low == std::string_view::npos) {
      return std::nullopt;
    }
    bytes.push_back(static_cast<std::uint8_t>(high << kBitsPerDigit | low));
  }
  return bytes;
}

}  // namespace borvanusb
