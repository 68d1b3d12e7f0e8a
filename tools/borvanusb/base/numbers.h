#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace borvanusb {

// Numbers as users write them on a command line. A parsing function returns nothing unless the
// whole text is valid.

// Parses a decimal number, or a hexadecimal number with 0x: "419", "0x1a3".
std::optional<std::uint64_t> ParseNumber(std::string_view text);

// Parses a number that may end in K (times 1024) or M (times 1024 * 1024), in upper or lower case:
// "256K", "0x100", "4M".
std::optional<std::uint64_t> ParseSize(std::string_view text);

// The addresses from `first` to `last`, inclusive.
struct Range {
  std::uint32_t first = 0;
  std::uint32_t last = 0;

  std::uint64_t Size() const { return std::uint64_t{last} - first + 1; }
  bool operator==(const Range&) const = default;
};

// Parses "0x1000" (one address), "0x1000-0x1fff" (first and last) or "0x1000+256" (first and size).
// Returns nothing if the text has another form, the size is 0, the last address is below the first,
// or the range exceeds 0xffffffff.
std::optional<Range> ParseRange(std::string_view text);

// Returns 0x and at least `digits` lower-case hexadecimal digits: Hex(0x1a3) is "0x1a3".
std::string Hex(std::uint64_t number, int digits = 1);

// Returns "0x1000-0x1fff", or "0x1000" for a single address.
std::string Text(const Range& range);

// Returns a size in the notation that ParseSize accepts: "4M", "256K", "300".
std::string SizeArgument(std::uint64_t bytes);

// Returns a size for messages: "262144 bytes (256 KiB)", "300 bytes", "1 byte".
std::string SizeText(std::uint64_t bytes);

}  // namespace borvanusb
