#pragma once

#include <cstdint>

namespace borvanusb {

// What a chip takes the values of 0xfffd and 0xfffe in a register list for.
enum class ListMarkers {
  kDelays,  // nothing that changes where the registers lie
  kPage,    // bits 24 to 31 and 16 to 23 of the addresses of the registers behind them
};

constexpr std::uint32_t kSlaveMarker = 0xFFF8;
constexpr std::uint32_t kWidthMarker = 0xFFFE;  // behind a kSlaveMarker

// Whether an entry of an I2C list at this address is passed over.
constexpr bool IsPassedOver(std::uint32_t address) {
  return address == 0xFEF0 || address == 0xFEF1;
}

}  // namespace borvanusb
