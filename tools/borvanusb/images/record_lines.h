#pragma once

#include <cstdint>
#include <functional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "images/segments.h"

namespace borvanusb {

// What the text formats share: lines of records of hexadecimal digits.

// Calls `take` with each line that is not blank: its place and its text without blanks at
// its end. Lines end with CR LF, LF or CR; a UTF-8 byte-order mark is passed over.
void ForEachRecord(std::span<const std::uint8_t> file,
                   const std::function<void(const FilePlace& place, std::string_view text)>& take);

// The bytes of a record's digits, in either case. Throws ImageError that names `place`.
std::vector<std::uint8_t> RecordBytes(const FilePlace& place, std::string_view digits);

// What all bytes add up to, in 8 bits.
std::uint8_t RecordSum(std::span<const std::uint8_t> bytes);

// The bytes as two upper-case digits each.
std::string RecordDigits(std::span<const std::uint8_t> bytes);

// Bytes as one number, the first one highest.
std::uint32_t HighFirst(std::span<const std::uint8_t> bytes);

}  // namespace borvanusb
