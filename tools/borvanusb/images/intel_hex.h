#pragma once

#include <cstdint>
#include <span>
#include <string>

#include "images/segments.h"

namespace borvanusb {

// Intel HEX. Data after an extended segment address, or after none, counts on within 64 KiB, as
// the format has it; after an extended linear address it counts on to 4 GiB and not around.

// Throws ImageError for what breaks the format: a wrong checksum or length, an unknown type, bytes
// at the same address, a missing end record or anything after it.
ImageContent ReadIntelHex(std::span<const std::uint8_t> file);

// Records of 16 bytes with extended linear addresses, lines that end with CR LF.
std::string IntelHexText(const Segments& segments);

}  // namespace borvanusb
