#pragma once

#include <cstddef>
#include <cstdint>
#include <span>

namespace borvanusb {

// The flash as the chip addresses, erases and programs it.

inline constexpr std::uint64_t kAddressSpace = std::uint64_t{1} << 32U;  // bytes
inline constexpr std::uint32_t kSectorSize = 4096;                       // erased at once
inline constexpr std::uint32_t kWritePacket = 60;                        // written by one transfer
inline constexpr std::uint32_t kWordSize = 4;
inline constexpr std::uint8_t kErased = 0xFF;
inline constexpr std::uint32_t kErasedWord = 0xFFFFFFFF;

// The word at `offset`, high byte first, which must lie within the bytes.
constexpr std::uint32_t WordAt(std::span<const std::uint8_t> bytes, std::size_t offset) {
  std::uint32_t word = 0;
  for (const std::uint8_t byte : bytes.subspan(offset, kWordSize)) {
    word = word << 8U | byte;
  }
  return word;
}

}  // namespace borvanusb
