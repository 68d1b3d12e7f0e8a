#pragma once

#include <cstdint>
#include <span>
#include <string>

namespace borvanusb {

// Returns a hex dump. Each line ends with \n and shows an address, 16 bytes in two groups of eight,
// and the same bytes as ASCII, with a point for each byte that is not visible ASCII. Lines start at
// multiples of 16. A "*" replaces lines that are equal to the line before. The last line is always
// shown.
std::string HexDump(std::uint32_t address, std::span<const std::uint8_t> bytes);

}  // namespace borvanusb
