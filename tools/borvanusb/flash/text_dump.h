#pragma once

#include <cstdint>
#include <span>
#include <string>

namespace borvanusb {

// Flash as text: lines "00001008h: 00 01 02 03 04 05 06 07;" that end with CR LF, eight bytes each.
// The last line shows 00 for bytes that are missing, as all dumps of these cameras do.
std::string TextDump(std::uint32_t address, std::span<const std::uint8_t> bytes);

}  // namespace borvanusb
