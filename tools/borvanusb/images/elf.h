#pragma once

#include <cstdint>
#include <span>

#include "images/segments.h"

namespace borvanusb {

// The bytes of an ELF file that are loaded: its PT_LOAD segments, as long as the file holds them,
// at their physical addresses. Of 32 and 64 bits, in both byte orders. Throws ImageError that names
// the place, as a byte's offset, for a file that is truncated or contradicts itself, for addresses
// beyond 4 GiB, and when nothing is loaded.
ImageContent ReadElf(std::span<const std::uint8_t> file);

}  // namespace borvanusb
