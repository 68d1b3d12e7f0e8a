#include "maps/svd_numbers.h"

#include <algorithm>
#include <charconv>
#include <limits>

namespace borvanusb {

namespace {

constexpr std::string_view kBlanks = " \t\r\n";
constexpr unsigned kUnitShift = 10;
constexpr std::size_t kMostBits = 64;

std::optional<std::uint64_t> Digits(std::string_view digits, int base) {
  std::uint64_t number = 0;
  const char* const end = digits.data() + digits.size();
  const auto result = std::from_chars(digits.data(), end, number, base);
  if (digits.empty() || result.ec != std::errc() || result.ptr != end) {
    return std::nullopt;
  }
  return number;
}

bool TakePrefix(std::string_view& text, std::string_view small, std::string_view large) {
  if (!text.starts_with(small) && !text.starts_with(large)) {
    return false;
  }
  text.remove_prefix(small.size());
  return true;
}

std::optional<std::uint64_t> Unscaled(std::string_view text) {
  if (TakePrefix(text, "0x", "0X")) {
    return Digits(text, 16);
  }
  if (TakePrefix(text, "#", "#") || TakePrefix(text, "0b", "0B")) {
    return Digits(text, 2);
  }
  return Digits(text, 10);
}

// How far a unit shifts: 10 for K; 0 for anything else.
unsigned ShiftOf(char unit) {
  constexpr std::string_view kUnits = "kmgtKMGT";
  const std::size_t place = kUnits.find(unit);
  return place == std::string_view::npos ? 0 : kUnitShift * (static_cast<unsigned>(place % 4) + 1);
}

bool IsLetter(std::string_view text) {
  return text.size() == 1 &&
         ((text[0] >= 'A' && text[0] <= 'Z') || (text[0] >= 'a' && text[0] <= 'z'));
}

std::optional<SvdIndexes> IndexRange(std::string_view from, std::string_view to) {
  SvdIndexes indexes;
  std::uint64_t last = 0;
  constexpr unsigned kSmall = 0x20;
  if (IsLetter(from) && IsLetter(to) &&
      (static_cast<unsigned char>(from[0]) & kSmall) ==
          (static_cast<unsigned char>(to[0]) & kSmall)) {
    indexes.kind = SvdIndexes::Kind::kLetters;
    indexes.first = static_cast<unsigned char>(from[0]);
    last = static_cast<unsigned char>(to[0]);
  } else {
    const auto first_number = Digits(from, 10);
    const auto last_number = Digits(to, 10);
    if (!first_number || !last_number) {
      return std::nullopt;
    }
    indexes.first = *first_number;
    last = *last_number;
  }
  if (last < indexes.first || last - indexes.first == std::numeric_limits<std::uint64_t>::max()) {
    return std::nullopt;
  }
  indexes.count = last - indexes.first + 1;
  return indexes;
}

}  // namespace

std::string_view TrimmedSvd(std::string_view text) {
  const auto blank = [](char character) {
    return kBlanks.find(character) != std::string_view::npos;
  };
  while (!text.empty() && blank(text.front())) {
    text.remove_prefix(1);
  }
  while (!text.empty() && blank(text.back())) {
    text.remove_suffix(1);
  }
  return text;
}

std::optional<std::uint64_t> ParseSvdNumber(std::string_view text) {
  if (text.starts_with('+')) {
    text.remove_prefix(1);
  }
  const unsigned shift = text.empty() ? 0 : ShiftOf(text.back());
  if (shift != 0) {
    text.remove_suffix(1);
  }
  const auto number = Unscaled(text);
  if (!number || *number > std::numeric_limits<std::uint64_t>::max() >> shift) {
    return std::nullopt;
  }
  return *number << shift;
}

std::optional<SvdPattern> ParseSvdPattern(std::string_view text) {
  if (text.starts_with('+')) {
    text.remove_prefix(1);
  }
  std::string_view digits = text;
  if (!TakePrefix(digits, "#", "#") && !TakePrefix(digits, "0b", "0B")) {
    const auto number = Unscaled(text);
    return number ? std::optional(SvdPattern{*number, std::numeric_limits<std::uint64_t>::max()})
                  : std::nullopt;
  }
  if (digits.empty() || digits.size() > kMostBits) {
    return std::nullopt;
  }
  SvdPattern pattern{0, std::numeric_limits<std::uint64_t>::max()};
  for (const char digit : digits) {
    const bool open = digit == 'x' || digit == 'X';
    if (digit != '0' && digit != '1' && !open) {
      return std::nullopt;
    }
    pattern.value = pattern.value << 1U | (digit == '1' ? 1U : 0U);
    pattern.counting = pattern.counting << 1U | (open ? 0U : 1U);
  }
  return pattern;
}

std::optional<bool> ParseSvdTruth(std::string_view text) {
  if (text == "true" || text == "1") {
    return true;
  }
  if (text == "false" || text == "0") {
    return false;
  }
  return std::nullopt;
}

std::optional<std::pair<std::uint64_t, std::uint64_t>> ParseSvdBitRange(std::string_view text) {
  const std::size_t colon = text.find(':');
  if (!text.starts_with('[') || !text.ends_with(']') || colon == std::string_view::npos) {
    return std::nullopt;
  }
  const auto msb = Digits(TrimmedSvd(text.substr(1, colon - 1)), 10);
  const auto lsb = Digits(TrimmedSvd(text.substr(colon + 1, text.size() - colon - 2)), 10);
  if (!msb || !lsb || *msb < *lsb) {
    return std::nullopt;
  }
  return std::pair(*msb, *lsb);
}

std::optional<SvdIndexes> ParseSvdIndexes(std::string_view text) {
  const std::size_t dash = text.find('-');
  if (dash != std::string_view::npos && text.find(',') == std::string_view::npos) {
    return IndexRange(TrimmedSvd(text.substr(0, dash)), TrimmedSvd(text.substr(dash + 1)));
  }
  SvdIndexes indexes;
  indexes.kind = SvdIndexes::Kind::kNames;
  for (;;) {
    const std::size_t comma = text.find(',');
    indexes.names.push_back(TrimmedSvd(text.substr(0, comma)));
    if (indexes.names.back().empty()) {
      return std::nullopt;
    }
    if (comma == std::string_view::npos) {
      break;
    }
    text.remove_prefix(comma + 1);
  }
  indexes.count = indexes.names.size();
  return indexes;
}

}  // namespace borvanusb
