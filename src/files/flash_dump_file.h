#pragma once

#include <cstdint>
#include <span>
#include <string>
#include <string_view>

#include "files/file.h"

namespace borvan {

// The text behind the last "." of a path; the whole path when it has none.
std::string_view FileExtension(std::string_view path);

// True when files of this name are written as text: for the extension "txt" in small letters.
bool IsTextFileName(std::string_view path);

// One line of a text dump with its line end, as it stands on disk.
inline constexpr std::size_t kDumpLineLength = 37;

// Bytes that one line shows.
inline constexpr std::size_t kDumpLineBytes = 8;

// Formats "00001008h: 00 01 02 03 04 05 06 07;" CR LF. `address` is that of the first byte;
// positions past the end of `bytes` show 00. `bytes` holds 1 to 8 bytes.
void FormatDumpLine(std::uint32_t address, std::span<const std::uint8_t> bytes,
                    std::span<char, kDumpLineLength> line);

// The number of lines of a dump of `size` bytes. A line whose offset into the dump exceeds
// `end_address` and all behind it are left out: a flash address is deliberately compared with an
// offset, as it always was, so a dump from a high start address is shown whole.
std::uint64_t DumpLineCount(std::uint64_t size, std::uint32_t end_address);

// Writes the bytes as they are.
void WriteBinaryDump(File& file, std::span<const std::uint8_t> bytes);

// Writes the bytes as lines. Both throw FileError.
void WriteTextDump(File& file, std::span<const std::uint8_t> bytes, std::uint32_t start_address,
                   std::uint32_t end_address);

}  // namespace borvan
