#include "maps/svd_numbers.h"

#include <array>
#include <charconv>
#include <limits>

namespace borvanusb {

namespace {

constexpr unsigned kUnitShift = 10;
constexpr std::size_t kMostDigits = 64;

constexpr std::size_t kShortNumber = 12;
constexpr std::uint8_t kNoDigit = 0xFF;

constexpr std::array<std::uint8_t, 256> DigitValues() {
  std::array<std::uint8_t, 256> values = {};
  for (unsigned i = 0; i < values.size(); ++i) {
    const bool small = i >= 'a' && i <= 'f';
    const bool large = i >= 'A' && i <= 'F';
    values[i] = static_cast<std::uint8_t>(i >= '0' && i <= '9' ? i - '0'
                                          : small              ? i - 'a' + 10
                                          : large              ? i - 'A' + 10
                                                               : kNoDigit);
  }
  return values;
}
constexpr std::array<std::uint8_t, 256> kDigitValues = DigitValues();

template <unsigned base>
std::optional<std::uint64_t> Digits(std::string_view digits) {
  // A number with up to this many digits always fits into 64 bits.
  constexpr std::size_t kShort = base == 2 ? 64 : (base == 10 ? 19 : 16);
  std::uint64_t number = 0;
  if (digits.empty()) {
    return std::nullopt;
  }
  if (digits.size() > kShort) {
    const char* const end = digits.data() + digits.size();
    const auto result = std::from_chars(digits.data(), end, number, base);
    return result.ec == std::errc() && result.ptr == end ? std::optional(number) : std::nullopt;
  }
  for (const char digit : digits) {
    const unsigned value = kDigitValues[static_cast<unsigned char>(digit)];
    if (value >= base) {
      return std::nullopt;
    }
    number = number * base + value;
  }
  return number;
}

bool TakeBinaryPrefix(std::string_view& text) {
  const std::size_t size = text.starts_with('#') ? 1 : 2;
  if (size == 2 && !text.starts_with("0b") && !text.starts_with("0B")) {
    return false;
  }
  text.remove_prefix(size);
  return true;
}

std::optional<std::uint64_t> Unscaled(std::string_view text) {
  if (text.size() > 2 && text[0] == '0' && (text[1] == 'x' || text[1] == 'X')) {
    return Digits<16>(text.substr(2));
  }
  return TakeBinaryPrefix(text) ? Digits<2>(text) : Digits<10>(text);
}

// The shift of a unit: 10 for K. Returns 0 for an unknown unit.
unsigned ShiftOf(char unit) {
  switch (unit) {
    case 'k':
    case 'K':
      return kUnitShift;
    case 'm':
    case 'M':
      return kUnitShift * 2;
    case 'g':
    case 'G':
      return kUnitShift * 3;
    case 't':
    case 'T':
      return kUnitShift * 4;
    default:
      return 0;
  }
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
    const auto first_number = Digits<10>(from);
    const auto last_number = Digits<10>(to);
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

// A number with a sign, a unit or many digits, or a binary number.
std::optional<std::uint64_t> LongNumber(std::string_view text) {
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

}  // namespace

std::optional<std::uint64_t> ParseShortSvdNumber(std::string_view text) {
  const bool is_hex = text.size() > 2 && text[0] == '0' && (text[1] == 'x' || text[1] == 'X');
  text.remove_prefix(is_hex ? 2 : 0);
  const unsigned base = is_hex ? 16 : 10;
  std::uint64_t number = 0;
  bool wrong = text.empty() || text.size() > kShortNumber;
  for (const char digit : text.substr(0, kShortNumber)) {
    const unsigned value = kDigitValues[static_cast<unsigned char>(digit)];
    wrong |= value >= base;
    number = number * base + value;
  }
  return wrong ? std::nullopt : std::optional(number);
}

std::optional<std::uint64_t> ParseSvdNumber(std::string_view text) {
  const auto short_number = ParseShortSvdNumber(text);
  return short_number ? short_number : LongNumber(text);
}

std::optional<SvdPattern> ParseSvdPattern(std::string_view text) {
  if (text.starts_with('+')) {
    text.remove_prefix(1);
  }
  std::string_view digits = text;
  if (!TakeBinaryPrefix(digits)) {
    const auto number = Unscaled(text);
    return number ? std::optional(SvdPattern{*number, std::numeric_limits<std::uint64_t>::max()})
                  : std::nullopt;
  }
  if (digits.empty() || digits.size() > kMostDigits) {
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
  const auto msb = Digits<10>(TrimmedSvd(text.substr(1, colon - 1)));
  const auto lsb = Digits<10>(TrimmedSvd(text.substr(colon + 1, text.size() - colon - 2)));
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
