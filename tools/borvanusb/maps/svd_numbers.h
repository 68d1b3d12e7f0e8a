#pragma once

#include <cstdint>
#include <optional>
#include <string_view>
#include <utility>
#include <vector>

namespace borvanusb {

// Parses numbers and indexes in the notations of CMSIS-SVD. Each function requires that the whole
// text is valid.

// "419", "0x1a3", "0X1A3", "#1101", "0b1101". A leading + is allowed, and a unit K, M, G or T
// (powers of 1024), in upper or lower case.
std::optional<std::uint64_t> ParseSvdNumber(std::string_view text);

// A faster version for short decimal or hexadecimal numbers, the usual case. Returns nothing for
// any other text, even if it is a valid number.
std::optional<std::uint64_t> ParseShortSvdNumber(std::string_view text);

struct SvdPattern {
  std::uint64_t value = 0;
  std::uint64_t counting = 0;  // 0 for each bit that is written as x
};
// A number without a unit. Binary digits may be x: "0b1x0".
std::optional<SvdPattern> ParseSvdPattern(std::string_view text);

// "true", "false", "1", "0"
std::optional<bool> ParseSvdTruth(std::string_view text);

// "[7:4]". Returns the most and the least significant bit.
std::optional<std::pair<std::uint64_t, std::uint64_t>> ParseSvdBitRange(std::string_view text);

// The indexes of an array (dimIndex).
struct SvdIndexes {
  enum class Kind : std::uint8_t { kNumbers, kLetters, kNames };
  Kind kind = Kind::kNumbers;
  std::uint64_t first = 0;  // for kNumbers and kLetters
  std::uint64_t count = 0;
  std::vector<std::string_view> names;
};
// "0-3", "A-D", "A,B,C".
std::optional<SvdIndexes> ParseSvdIndexes(std::string_view text);

constexpr bool IsSvdBlank(char character) {
  return static_cast<unsigned char>(character) <= ' ' &&
         (character == ' ' || character == '\n' || character == '\t' || character == '\r');
}

// Inline for speed: it is called for each text of a map, and few of them have blanks.
constexpr std::string_view TrimmedSvd(std::string_view text) {
  while (!text.empty() && IsSvdBlank(text.front())) {
    text.remove_prefix(1);
  }
  while (!text.empty() && IsSvdBlank(text.back())) {
    text.remove_suffix(1);
  }
  return text;
}

}  // namespace borvanusb
