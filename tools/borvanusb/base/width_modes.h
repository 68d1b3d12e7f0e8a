#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <string_view>

namespace borvanusb {

// The width modes of I2C accesses. A name such as "16/8" gives the bits of the register address and
// the bits of the value.

struct WidthMode {
  std::string_view name;
  int address_bits = 0;
  int data_bits = 0;
  int address_digits = 0;  // hexadecimal digits
  int value_digits = 0;
  std::uint32_t highest_address = 0;
  std::uint32_t highest_value = 0;
  // The code that follows 0xfffe in a list to select the mode. Empty if lists don't support it.
  std::optional<std::uint32_t> list_code;
};

// The index is the number of the mode.
inline constexpr std::array<WidthMode, 6> kWidthModes = {{
    {"8/8", 8, 8, 2, 2, 0xFF, 0xFF, 0x01},
    {"16/8", 16, 8, 4, 2, 0xFFFF, 0xFF, 0x03},
    {"16/16", 16, 16, 4, 4, 0xFFFF, 0xFFFF, 0x04},
    {"32/8", 32, 8, 8, 2, 0xFFFFFFFF, 0xFF, std::nullopt},
    {"32/16", 32, 16, 8, 4, 0xFFFFFFFF, 0xFFFF, std::nullopt},
    {"32/32", 32, 32, 8, 8, 0xFFFFFFFF, 0xFFFFFFFF, std::nullopt},
}};

// Requires a mode from 0 to 5.
constexpr const WidthMode& WidthModeOf(std::int32_t mode) {
  return kWidthModes.at(static_cast<std::size_t>(mode));
}

// Returns the mode that a width code in a list selects. Returns nothing for codes that the two
// kinds of chips interpret differently, and for unknown codes.
constexpr std::optional<std::int32_t> ModeOfListCode(std::uint32_t code) {
  switch (code) {
    case 0x00:
    case 0x01:
      return 0;
    case 0x03:
      return 1;
    case 0x04:
      return 2;
    default:
      return std::nullopt;
  }
}

}  // namespace borvanusb
