#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "images/segments.h"

namespace borvanusb {

// Helpers for both text formats, which consist of lines with hexadecimal records.

inline constexpr std::string_view kByteOrderMark = "\xEF\xBB\xBF";
inline constexpr std::size_t kBytesPerRecord = 16;  // in files that the tool writes

// Calls `take` for each line that is not blank, with its place and its text without trailing
// blanks. Lines end with CR LF, LF or CR. A UTF-8 byte-order mark is skipped.
void ForEachRecord(std::span<const std::uint8_t> file,
                   const std::function<void(const FilePlace& place, std::string_view text)>& take);

// Converts hexadecimal digits, upper or lower case, to bytes. Throws ImageError that names `place`.
std::vector<std::uint8_t> RecordBytes(const FilePlace& place, std::string_view digits);

// How to check the records of a format.
struct RecordRule {
  std::size_t uncounted;   // bytes that the length in a record's first byte does not count
  std::uint8_t whole_sum;  // the sum of all bytes of a record, modulo 256
};

// Throws ImageError if the length or the checksum of a record is wrong.
void CheckRecord(const RecordRule& rule, const FilePlace& place,
                 std::span<const std::uint8_t> bytes);

// Returns the line of a record: `begin`, then the bytes and their checksum as upper-case digits.
std::string RecordLine(const RecordRule& rule, std::string_view begin,
                       std::vector<std::uint8_t> bytes);

// Combines bytes to one number, most significant byte first.
std::uint32_t HighFirst(std::span<const std::uint8_t> bytes);

// Appends the low `size` bytes of a number, most significant byte first.
void AppendHighFirst(std::vector<std::uint8_t>& bytes, std::uint32_t number, std::size_t size);

}  // namespace borvanusb
