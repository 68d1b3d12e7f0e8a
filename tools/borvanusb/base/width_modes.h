#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <string_view>

namespace borvanusb {

// The width modes of I2C accesses by their names: bits of the register address, bits of the value.

struct WidthMode {
  std::string_view name;
  int address_bits = 0;
  int data_bits = 0;
  int address_digits = 0;  // hexadecimal ones
  int value_digits = 0;
  std::uint32_t highest_address = 0;
  std::uint32_t highest_value = 0;
  // What stands behind 0xfffe in a list; none for the modes that lists can't write in.
  std::optional<std::uint32_t> list_code;
};

// In the order of the modes' numbers.
inline constexpr std::array<WidthMode, 6> kWidthModes = {{
    {"8/8", 8, 8, 2, 2, 0xFF, 0xFF, 0x01},
    {"16/8", 16, 8, 4, 2, 0xFFFF, 0xFF, 0x03},
    {"16/16", 16, 16, 4, 4, 0xFFFF, 0xFFFF, 0x04},
    {"32/8", 32, 8, 8, 2, 0xFFFFFFFF, 0xFF, std::nullopt},
    {"32/16", 32, 16, 8, 4, 0xFFFFFFFF, 0xFFFF, std::nullopt},
    {"32/32", 32, 32, 8, 8, 0xFFFFFFFF, 0xFFFFFFFF, std::nullopt},
}};

// mode: 0 to 5.
constexpr const WidthMode& WidthModeOf(std::int32_t mode) {
  return kWidthModes.at(static_cast<std::size_t>(mode));
}

// The mode that a list's width code chooses. Nothing for the codes that one sort of chip takes for
// one width and the other sort for another.
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
