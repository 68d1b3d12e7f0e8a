#include "base/hexadecimal_text.h"

#include <limits>

namespace borvan {
namespace {

constexpr std::string_view kDigits = "0123456789abcdef";
constexpr unsigned kBase = 16;

struct Magnitude {
  std::uint64_t value = 0;
  bool negative = false;
  bool overflow = false;  // more than 64 bits
};

template <typename Character>
constexpr bool IsWhiteSpace(Character c) {
  return c == ' ' || (c >= '\t' && c <= '\r');
}

template <typename Character>
constexpr int DigitValue(Character c) {
  if (c >= '0' && c <= '9') {
    return c - '0';
  }
  if (c >= 'a' && c <= 'f') {
    return c - 'a' + 10;
  }
  if (c >= 'A' && c <= 'F') {
    return c - 'A' + 10;
  }
  return -1;
}

template <typename Character>
Magnitude ReadMagnitude(std::basic_string_view<Character> text) {
  Magnitude read;
  std::size_t at = 0;
  while (at < text.size() && IsWhiteSpace(text[at])) {
    ++at;
  }
  if (at < text.size() && (text[at] == '+' || text[at] == '-')) {
    read.negative = text[at] == '-';
    ++at;
  }
  if (at + 1 < text.size() && text[at] == '0' && (text[at + 1] == 'x' || text[at + 1] == 'X')) {
    at += 2;
  }
  for (; at < text.size(); ++at) {
    const int digit = DigitValue(text[at]);
    if (digit < 0) {
      break;
    }
    if (read.value > std::numeric_limits<std::uint64_t>::max() / kBase) {
      read.overflow = true;
    }
    read.value = read.value * kBase + static_cast<unsigned>(digit);
  }
  return read;
}

template <typename Character>
std::int32_t SignedLong(std::basic_string_view<Character> text) {
  const Magnitude read = ReadMagnitude(text);
  constexpr std::uint64_t kLargest = std::numeric_limits<std::int32_t>::max();
  if (read.negative) {
    if (read.overflow || read.value > kLargest + 1) {
      return std::numeric_limits<std::int32_t>::min();
    }
    return static_cast<std::int32_t>(-static_cast<std::int64_t>(read.value));
  }
  if (read.overflow || read.value > kLargest) {
    return std::numeric_limits<std::int32_t>::max();
  }
  return static_cast<std::int32_t>(read.value);
}

}  // namespace

std::string FormatHex(std::uint64_t number) {
  std::string text;
  do {
    text.insert(text.begin(), kDigits[number % kBase]);
    number /= kBase;
  } while (number != 0);
  return text;
}

std::string FormatHex8(std::uint32_t number) {
  const std::string digits = FormatHex(number);
  return std::string(8 - digits.size(), '0') + digits;
}

std::string FormatHexByte(std::uint8_t byte) {
  return {kDigits[byte / kBase], kDigits[byte % kBase]};
}

std::uint32_t ParseUnsignedLong(std::string_view text) {
  const Magnitude read = ReadMagnitude(text);
  constexpr std::uint32_t kLargest = std::numeric_limits<std::uint32_t>::max();
  const std::uint32_t value =
      read.overflow || read.value > kLargest ? kLargest : static_cast<std::uint32_t>(read.value);
  return read.negative ? 0U - value : value;
}

std::int32_t ParseLong(std::string_view text) {
  return SignedLong(text);
}

std::int32_t ParseLong(std::u16string_view text) {
  return SignedLong(text);
}

std::uint32_t ParseUnsigned64Low(std::string_view text) {
  const Magnitude read = ReadMagnitude(text);
  const std::uint64_t value =
      read.overflow ? std::numeric_limits<std::uint64_t>::max() : read.value;
  return static_cast<std::uint32_t>(read.negative ? 0U - value : value);
}

}  // namespace borvan
