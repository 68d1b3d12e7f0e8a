#include "command/values.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <sstream>

#include "base/format.h"
#include "camera/camera.h"

namespace borvanusb {

namespace {

// Longer than real arguments. A file that is not a script may be a single long word.
constexpr std::size_t kLongestQuote = 256;
constexpr std::uint64_t kLargestFlash = std::uint64_t{1} << 32U;

// Formats a number: small ones are easier to read in decimal.
std::string Shown(std::uint64_t number) {
  constexpr std::uint64_t kLargestDecimal = 1000000;
  return number <= kLargestDecimal ? std::to_string(number) : Hex(number);
}

std::string Shown(double number) {
  std::ostringstream text;
  text << number;
  return text.str();
}

}  // namespace

std::uint32_t AddressValue(const std::string& text) {
  const auto number = ParseSize(text);
  if (!number || *number > kHighestNumber) {
    throw WrongValue("is not a valid address: a number from 0 to 0xffffffff, decimal or with 0x");
  }
  return static_cast<std::uint32_t>(*number);
}

std::uint64_t NumberValue(const std::string& text, std::uint64_t lowest, std::uint64_t highest) {
  const auto number = ParseNumber(text);
  const std::string allowed =
      Format("a number from {} to {}, decimal or with 0x", Shown(lowest), Shown(highest));
  if (!number) {
    throw WrongValue(Format("is not a valid number: {}", allowed));
  }
  if (*number < lowest || *number > highest) {
    throw WrongValue(Format("is not allowed: {}", allowed));
  }
  return *number;
}

std::uint32_t WordValue(const std::string& text) {
  return static_cast<std::uint32_t>(NumberValue(text, 0, kHighestNumber));
}

Range RangeValue(const std::string& text) {
  const auto range = ParseRange(text);
  if (!range) {
    throw WrongValue(
        "is not a valid address or range: 0x1000, 0x1000-0x1fff or 0x1000+256, up to 0xffffffff");
  }
  return *range;
}

Range FlashRangeValue(const std::string& text) {
  const auto address = ParseSize(text);
  if (address && *address <= kHighestNumber) {
    const std::uint64_t last = std::min<std::uint64_t>(*address + kSectorSize - 1, kHighestNumber);
    throw WrongValue(
        Format("is a single address; a range has a size or a last address, too: {}+4K or {}-{}",
               text, text, Hex(last)));
  }
  const auto range = ParseRange(text);
  if (!range) {
    throw WrongValue(
        "is not a valid range: 1M+4K (first address and size) or 0-0xfffff (first and last "
        "address), up to 0xffffffff");
  }
  return *range;
}

Range EraseRangeValue(const std::string& text) {
  const Range range = FlashRangeValue(text);
  if (const std::string remark = RemarkOnEnd(text); !remark.empty()) {
    throw WrongValue(remark);
  }
  return range;
}

std::string RemarkOnEnd(const std::string& text) {
  const std::size_t mark = text.find('-');
  const auto range = ParseRange(text);
  if (mark == std::string::npos || !range || range->first == range->last ||
      range->last % kSectorSize != 0) {
    return {};
  }
  const std::uint64_t size = range->last - range->first;
  return Format("includes the byte at {}; {}+{} means {}", text.substr(mark + 1),
                text.substr(0, mark), SizeArgument(size), SizeText(size));
}

std::uint64_t FlashSizeValue(const std::string& text) {
  const auto size = ParseSize(text);
  if (!size || *size == 0 || *size > kLargestFlash || *size % kSectorSize != 0) {
    throw WrongValue(
        "is not a valid flash size: a multiple of 4096, such as 512K or 4M, up to 4096M");
  }
  return *size;
}

double DecimalValue(const std::string& text, double lowest, double highest) {
  double number = 0;
  const char* const end = text.data() + text.size();
  const auto result = std::from_chars(text.data(), end, number, std::chars_format::fixed);
  // This form also rejects NaN, which from_chars accepts.
  const bool good =
      result.ec == std::errc() && result.ptr == end && number >= lowest && number <= highest;
  if (!good) {
    throw WrongValue(Format("is not allowed: a number from {} to {}, decimals with a point",
                            Shown(lowest), Shown(highest)));
  }
  return number;
}

std::chrono::milliseconds DurationValue(const std::string& text) {
  constexpr double kMillisecondsPerSecond = 1000;
  constexpr double kLongest = 24.0 * 3600 * kMillisecondsPerSecond;
  const bool in_milliseconds = text.ends_with("ms");
  double number = 0;
  const char* const end = text.data() + text.size() - (in_milliseconds ? 2 : 1);
  if (in_milliseconds || text.ends_with('s')) {
    const auto result = std::from_chars(text.data(), end, number, std::chars_format::fixed);
    number *= in_milliseconds ? 1 : kMillisecondsPerSecond;
    const bool good =
        result.ec == std::errc() && result.ptr == end && number >= 1 && number <= kLongest;
    if (good) {
      return std::chrono::milliseconds(std::llround(number));
    }
  }
  throw WrongValue(
      "is not a valid time: a number with ms or s, such as 100ms or 1.5s, up to 86400s");
}

std::string FileOrStreamValue(const std::string& text) {
  if (text.empty()) {
    throw WrongValue("is not a valid file name");
  }
  return text;
}

std::string FileValue(const std::string& text) {
  if (text == "-") {
    throw WrongValue(
        "means standard input or output, which is not possible here; a file of that name is ./-");
  }
  return FileOrStreamValue(text);
}

std::string CameraValue(const std::string& text) {
  if (text.empty()) {
    throw WrongValue(
        "is not a valid camera: its index, path, vid:pid or name, or 3 or more characters of path "
        "or name");
  }
  return text;
}

std::size_t ChoiceValue(const std::string& text, std::initializer_list<std::string_view> choices) {
  return ChoiceValue(text, std::span(choices.begin(), choices.size()));
}

std::size_t ChoiceValue(const std::string& text, std::span<const std::string_view> choices) {
  std::string allowed;
  std::size_t place = 0;
  for (const std::string_view choice : choices) {
    if (text == choice) {
      return place;
    }
    ++place;
    if (place > 1) {
      allowed += place == choices.size() ? " or " : ", ";
    }
    allowed += choice;
  }
  throw WrongValue(Format("is not allowed: {}", allowed));
}

std::string Quoted(std::string_view text) {
  std::size_t length = text.size();
  if (length > kLongestQuote) {
    length = kLongestQuote;
    // Does not split a UTF-8 character.
    while (length > 0 && (static_cast<unsigned char>(text[length]) & 0xC0U) == 0x80U) {
      --length;
    }
  }
  std::string quoted = "\"";
  for (const char character : text.substr(0, length)) {
    const bool control = static_cast<unsigned char>(character) < ' ' || character == '\x7F';
    quoted += control ? '?' : character;
  }
  return Format("{}{}", quoted, length < text.size() ? "...\"" : "\"");
}

}  // namespace borvanusb
