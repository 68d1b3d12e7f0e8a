#pragma once

#include <cstdint>
#include <string>
#include <string_view>

namespace borvan {

// Numbers cross the device object's interface as hexadecimal text. The conversions give what the
// Windows runtime gives, on every build: a 32-bit `long`, leading white space and a sign accepted,
// an optional "0x", an end at the first character that is no digit, the largest number on
// overflow, and a minus sign that negates whatever was read, the largest number included.

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

// The unsigned 64-bit conversion, cut to its low 32 bits.
std::uint32_t ParseUnsigned64Low(std::string_view text);

}  // namespace borvan
