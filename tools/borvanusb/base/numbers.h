#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace borvanusb {

// Numbers as people write them on a command line. Each function reads the whole text or nothing.

// Decimal, or hexadecimal with 0x: "419", "0x1a3".
std::optional<std::uint64_t> ParseNumber(std::string_view text);

// A number that may end in K or M (1024, 1024 * 1024; small letters too): "256K", "0x100", "4M".
std::optional<std::uint64_t> ParseSize(std::string_view text);

// Addresses from first to last, both included.
struct Range {
  std::uint32_t first = 0;
  std::uint32_t last = 0;

  std::uint64_t Size() const { return std::uint64_t{last} - first + 1; }
  bool operator==(const Range&) const = default;
};

// "0x1000" (one address), "0x1000-0x1fff" (both included) or "0x1000+256" (first and size). Nothing
// when the text is something else, empty, backwards or goes beyond 0xffffffff.
std::optional<Range> ParseRange(std::string_view text);

// A number as 0x and at least `digits` lower-case digits: Hex(0x1a3) is "0x1a3".
std::string Hex(std::uint64_t number, int digits = 1);

// "0x1000-0x1fff", or "0x1000" for one address.
std::string Text(const Range& range);

// A size as people write it on a command line: "4M", "256K", "300".
std::string SizeArgument(std::uint64_t bytes);

// Bytes as people read them: "262144 bytes (256 KiB)", "300 bytes", "1 byte".
std::string SizeText(std::uint64_t bytes);

}  // namespace borvanusb
