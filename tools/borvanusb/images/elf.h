#pragma once

#include <cstdint>
#include <span>

#include "images/segments.h"

namespace borvanusb {

// Reads the bytes that an ELF file loads: the file part of its PT_LOAD segments, at their physical
// addresses. Supports 32 and 64 bits in both byte orders. Throws ImageError with the byte offset if
// the file is truncated or inconsistent, if an address is beyond 4 GiB, or if nothing is loaded.
ImageContent ReadElf(std::span<const std::uint8_t> file);

}  // namespace borvanusb
