#pragma once

#include <cstdint>
#include <span>
#include <string>

namespace borvanusb {

// The flash as text: lines "00001008h: 00 01 02 03 04 05 06 07;" of eight bytes that end with CR
// LF. Missing bytes in the last line are shown as 00, as in all dumps of these cameras.
std::string TextDump(std::uint32_t address, std::span<const std::uint8_t> bytes);

}  // namespace borvanusb
