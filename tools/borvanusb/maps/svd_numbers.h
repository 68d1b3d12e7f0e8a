#pragma once

#include <cstdint>
#include <optional>
#include <string_view>
#include <utility>
#include <vector>

namespace borvanusb {

// Numbers and indexes in the notations of CMSIS-SVD. Each function reads the whole text or nothing.

// "419", "0x1a3", "0X1A3", "#1101", "0b1101", each with + in front or K, M, G or T (1024 and its
// powers) behind it, small letters too.
std::optional<std::uint64_t> ParseSvdNumber(std::string_view text);

// The same for the few digits, decimal or hexadecimal, that nearly all numbers of a map are.
// Nothing for any other text: it may be a number anyway.
std::optional<std::uint64_t> ParseShortSvdNumber(std::string_view text);

struct SvdPattern {
  std::uint64_t value = 0;
  std::uint64_t counting = 0;  // 0: a bit that is written as x
};
// The same without units; binary digits may be x: "0b1x0".
std::optional<SvdPattern> ParseSvdPattern(std::string_view text);

// "true", "false", "1", "0"
std::optional<bool> ParseSvdTruth(std::string_view text);

// "[7:4]" as most and least significant bit.
std::optional<std::pair<std::uint64_t, std::uint64_t>> ParseSvdBitRange(std::string_view text);

// The indexes of an array.
struct SvdIndexes {
  enum class Kind : std::uint8_t { kNumbers, kLetters, kNames };
  Kind kind = Kind::kNumbers;
  std::uint64_t first = 0;  // of numbers and letters
  std::uint64_t count = 0;
  std::vector<std::string_view> names;
};
// "0-3", "A-D", "A,B,C".
std::optional<SvdIndexes> ParseSvdIndexes(std::string_view text);

constexpr bool IsSvdBlank(char character) {
  return static_cast<unsigned char>(character) <= ' ' &&
         (character == ' ' || character == '\n' || character == '\t' || character == '\r');
}

// Inline: it is called for each text of a map, and few have blanks.
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
