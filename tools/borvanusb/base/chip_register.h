#pragma once

#include <cstdint>

namespace borvanusb {

// How registers of the chip are written as text.

inline constexpr std::uint32_t kBitsOfDigit = 4;
inline constexpr int kAddressDigits = 4;  // without the page
inline constexpr int kByteDigits = 2;
inline constexpr int kWideDigits = 8;

constexpr int ValueDigits(bool wide) {
  return wide ? kWideDigits : kByteDigits;
}

// The page of an address is in its bits from here on. Lists contain it only once.
inline constexpr unsigned kPageShift = 16;
inline constexpr std::uint32_t kLowByte = 0xFF;

}  // namespace borvanusb
