#pragma once

#include <cstdint>
#include <span>

namespace borvan {

// Byte 0 is bits 0 to 7 of a number.
constexpr std::uint8_t ByteOf(std::uint32_t number, unsigned index) {
  return static_cast<std::uint8_t>(number >> (8 * index));
}

constexpr void PutBigEndian32(std::span<std::uint8_t, 4> bytes, std::uint32_t number) {
  bytes[0] = ByteOf(number, 3);
  bytes[1] = ByteOf(number, 2);
  bytes[2] = ByteOf(number, 1);
  bytes[3] = ByteOf(number, 0);
}

}  // namespace borvan
