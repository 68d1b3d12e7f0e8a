#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

// Whether a dump by this name has the text form: the library looks for exactly "txt" behind the
// last dot.
bool IsTextDump(const std::string& file_name);

// The length in bytes that the dump file of `size` flash bytes has when it is whole.
std::uint64_t DumpFileLength(bool text, std::uint64_t size);

// Takes the flash bytes out of a text dump ("00001008h: 00 01 02 03 04 05 06 07;" and CR LF).
//   content  the whole file
//   address  flash address that the first line must show
//   size     number of flash bytes, which tells where the last line ends to count
// Returns the bytes; nothing when a line has another form or address, or lines are missing.
std::optional<std::vector<std::uint8_t>> ParseTextDump(const std::string& content,
                                                       std::uint32_t address, std::size_t size);

// The place of the first byte in which the two differ, the end of the shorter one included; nothing
// when they are equal.
std::optional<std::size_t> FirstDifference(const std::vector<std::uint8_t>& left,
                                           const std::vector<std::uint8_t>& right);
