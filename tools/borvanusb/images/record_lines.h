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

// What the text formats share: lines of records of hexadecimal digits.

// Calls `take` with each line that is not blank: its place and its text without blanks at
// its end. Lines end with CR LF, LF or CR; a UTF-8 byte-order mark is passed over.
void ForEachRecord(std::span<const std::uint8_t> file,
                   const std::function<void(const FilePlace& place, std::string_view text)>& take);

// The bytes of a record's digits, in either case. Throws ImageError that names `place`.
std::vector<std::uint8_t> RecordBytes(const FilePlace& place, std::string_view digits);

// How a format's records are checked.
struct RecordRule {
  std::size_t uncounted;   // bytes that the length in a record's first byte does not count
  std::uint8_t whole_sum;  // what all bytes of a record add up to, in 8 bits
};

// Throws ImageError for a record with another length than it says, or with a wrong checksum.
void CheckRecord(const RecordRule& rule, const FilePlace& place,
                 std::span<const std::uint8_t> bytes);

// A record's line: how it begins, then its bytes and their checksum as upper-case digits.
std::string RecordLine(const RecordRule& rule, std::string_view begin,
                       std::vector<std::uint8_t> bytes);

// Bytes as one number, the first one highest.
std::uint32_t HighFirst(std::span<const std::uint8_t> bytes);

// Appends the low `size` bytes of a number, the highest one first.
void AppendHighFirst(std::vector<std::uint8_t>& bytes, std::uint32_t number, std::size_t size);

}  // namespace borvanusb
