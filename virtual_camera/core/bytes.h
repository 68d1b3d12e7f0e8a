#pragma once

// Numbers in bytes, in both orders.

#include <cstdint>
#include <span>

namespace virtual_camera {

constexpr std::uint16_t LittleEndian16(std::uint8_t low, std::uint8_t high) {
  return static_cast<std::uint16_t>(low | (high << 8));
}

// A number of 1 to 4 bytes, most significant byte first.
constexpr std::uint32_t BigEndian(std::span<const std::uint8_t> bytes) {
  std::uint32_t value = 0;
  for (const std::uint8_t byte : bytes) {
    value = (value << 8) | byte;
  }
  return value;
}

// Fills `bytes` (at most 4) with the low end of `value`, most significant byte first.
constexpr void PutBigEndian(std::uint32_t value, std::span<std::uint8_t> bytes) {
  for (std::size_t i = bytes.size(); i > 0; --i) {
    bytes[i - 1] = static_cast<std::uint8_t>(value);
    value >>= 8;
  }
}

}  // namespace virtual_camera
