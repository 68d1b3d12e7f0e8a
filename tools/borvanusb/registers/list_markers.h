#pragma once

namespace borvanusb {

// What a chip takes the values of 0xfffd and 0xfffe in a register list for.
enum class ListMarkers {
  kDelays,  // nothing that changes where the registers lie
  kPage,    // bits 24 to 31 and 16 to 23 of the addresses of the registers behind them
};

}  // namespace borvanusb
