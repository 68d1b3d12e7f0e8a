#pragma once

#include <cstdint>
#include <string>

namespace borvan_fuzz {

// The number conversions of the Windows runtime, base 16, written to be read: `long` has 32 bits.
// White space, a sign and "0x" may open the text; it ends at the first character that is no digit.

// strtoul: too large gives 0xFFFFFFFF; a minus negates what was read, that largest number included.
std::uint32_t ModelUnsignedLong(const std::string& text);

// strtol: too large gives 0x7FFFFFFF, too small -0x80000000.
std::int32_t ModelLong(const std::string& text);

// The unsigned 64-bit conversion, its low 32 bits.
std::uint32_t ModelUnsigned64Low(const std::string& text);

}  // namespace borvan_fuzz
