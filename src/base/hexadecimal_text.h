#pragma once

#include <cstdint>
#include <string>
#include <string_view>

namespace borvan {

// The device object's interface passes numbers as hexadecimal text. On every build, the conversions
// return what the Windows runtime returns: `long` has 32 bits; leading white space, a sign and "0x"
// are accepted; the number ends at the first character that is not a digit; an overflow gives the
// largest number; a minus sign negates whatever was read, including the largest number.

// "%llx": lower case, no prefix, no padding.
std::string FormatHex(std::uint64_t number);

// "%08x".
std::string FormatHex8(std::uint32_t number);

// "%02x".
std::string FormatHexByte(std::uint8_t byte);

// strtoul(text, NULL, 16).
std::uint32_t ParseUnsignedLong(std::string_view text);

// strtol(text, NULL, 16).
std::int32_t ParseLong(std::string_view text);

// wcstol(text, NULL, 16).
std::int32_t ParseLong(std::u16string_view text);

// The unsigned 64-bit conversion, truncated to its low 32 bits.
std::uint32_t ParseUnsigned64Low(std::string_view text);

}  // namespace borvan
