#pragma once

#include <cstdint>
#include <span>
#include <string>
#include <string_view>

#include "files/file.h"

namespace borvan {

// Returns the text after the last "." of a path, or the whole path if it has none.
std::string_view FileExtension(std::string_view path);

// True if files with this name are written as text: those with the extension "txt" in lower case.
bool IsTextFileName(std::string_view path);

// The length of a line of a text dump on disk, including its line end.
inline constexpr std::size_t kDumpLineLength = 37;

// Bytes that one line shows.
inline constexpr std::size_t kDumpLineBytes = 8;

// Formats "00001008h: 00 01 02 03 04 05 06 07;" CR LF. `address` is that of the first byte;
// positions past the end of `bytes` show 00. `bytes` holds 1 to 8 bytes.
void FormatDumpLine(std::uint32_t address, std::span<const std::uint8_t> bytes,
                    std::span<char, kDumpLineLength> line);

// The number of lines of a dump of `size` bytes. Omits a line whose offset in the dump exceeds
// `end_address`, and all lines after it: a flash address is deliberately compared with an offset,
// as it always has been, so a dump from a high start address is complete.
std::uint64_t DumpLineCount(std::uint64_t size, std::uint32_t end_address);

// Writes the bytes unchanged.
void WriteBinaryDump(File& file, std::span<const std::uint8_t> bytes);

// Writes the bytes as lines. Both throw FileError.
void WriteTextDump(File& file, std::span<const std::uint8_t> bytes, std::uint32_t start_address,
                   std::uint32_t end_address);

}  // namespace borvan
