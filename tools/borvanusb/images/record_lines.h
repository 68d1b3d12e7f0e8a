#pragma once

#include <cstdint>
#include <functional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "images/segments.h"

namespace borvanusb {

// Helpers for both text formats, which consist of lines with hexadecimal records.

// Calls `take` for each line that is not blank, with its place and its text without trailing
// blanks. Lines end with CR LF, LF or CR. A UTF-8 byte-order mark is skipped.
void ForEachRecord(std::span<const std::uint8_t> file,
                   const std::function<void(const FilePlace& place, std::string_view text)>& take);

// Converts hexadecimal digits, upper or lower case, to bytes. Throws ImageError that names `place`.
std::vector<std::uint8_t> RecordBytes(const FilePlace& place, std::string_view digits);

// The sum of all bytes, modulo 256.
std::uint8_t RecordSum(std::span<const std::uint8_t> bytes);

// Converts bytes to two upper-case digits each.
std::string RecordDigits(std::span<const std::uint8_t> bytes);

// Combines bytes to one number, most significant byte first.
std::uint32_t HighFirst(std::span<const std::uint8_t> bytes);

}  // namespace borvanusb
