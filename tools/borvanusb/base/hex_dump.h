#pragma once

#include <cstdint>
#include <span>
#include <string>

namespace borvanusb {

// Bytes as people look at them, 16 in a line that ends with \n: the address of the line, the bytes
// in two groups of eight, and beside them the text that they would be, with a point for what is no
// visible ASCII. Lines begin at multiples of 16. A "*" stands for lines that are equal to the one
// before; the last line is always shown.
std::string HexDump(std::uint32_t address, std::span<const std::uint8_t> bytes);

}  // namespace borvanusb
