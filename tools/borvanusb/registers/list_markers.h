#pragma once

#include <cstdint>

namespace borvanusb {

// How a chip interprets the values of 0xfffd and 0xfffe in a register list.
enum class ListMarkers {
  kDelays,  // the addresses of the registers are unaffected
  kPage,    // bits 24 to 31 and 16 to 23 of the addresses of the following registers
};

constexpr std::uint32_t kSlaveMarker = 0xFFF8;
constexpr std::uint32_t kWidthMarker = 0xFFFE;  // after a kSlaveMarker

// Whether an I2C list ignores entries with this address.
constexpr bool IsPassedOver(std::uint32_t address) {
  return address == 0xFEF0 || address == 0xFEF1;
}

}  // namespace borvanusb
