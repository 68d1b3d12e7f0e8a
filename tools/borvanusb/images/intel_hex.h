#pragma once

#include <cstdint>
#include <span>
#include <string>

#include "images/segments.h"

namespace borvanusb {

// Intel HEX. The format defines how data addresses continue: after an extended segment address, or
// without any, they wrap at 64 KiB. After an extended linear address they continue up to 4 GiB
// without wrapping.

// Throws ImageError if the file violates the format: wrong checksum or length, unknown type,
// several bytes for the same address, no end record, or anything after the end record.
ImageContent ReadIntelHex(std::span<const std::uint8_t> file);

// Writes records of 16 bytes with extended linear addresses. Lines end with CR LF.
std::string IntelHexText(const Segments& segments);

}  // namespace borvanusb
