#pragma once

#include <cstdint>
#include <string>

namespace borvan_fuzz {

// Readable models of the number conversions of the Windows runtime, base 16; `long` has 32 bits.
// The text may start with white space, a sign and "0x", and ends at the first character that is not
// a digit.

// strtoul: an overflow gives 0xFFFFFFFF. A minus negates the result, including that of an overflow.
std::uint32_t ModelUnsignedLong(const std::string& text);

// strtol: an overflow gives 0x7FFFFFFF or -0x80000000.
std::int32_t ModelLong(const std::string& text);

// The low 32 bits of the unsigned 64-bit conversion.
std::uint32_t ModelUnsigned64Low(const std::string& text);

}  // namespace borvan_fuzz
