#include "base/numbers.h"

#include <charconv>
#include <limits>
#include <utility>

#include "base/format.h"

namespace borvanusb {

namespace {

constexpr std::uint64_t kHighestAddress = 0xFFFFFFFF;
constexpr std::uint64_t kKibi = 1024;

}  // namespace

std::optional<std::uint64_t> ParseNumber(std::string_view text) {
  int base = 10;
  if (text.starts_with("0x") || text.starts_with("0X")) {
    text.remove_prefix(2);
    base = 16;
  }
  std::uint64_t number = 0;
  const char* const end = text.data() + text.size();
  const auto result = std::from_chars(text.data(), end, number, base);
  if (text.empty() || result.ec != std::errc() || result.ptr != end) {
    return std::nullopt;
  }
  return number;
}

std::optional<std::uint64_t> ParseSize(std::string_view text) {
  std::uint64_t unit = 1;
  if (text.ends_with('K') || text.ends_with('k')) {
    unit = kKibi;
  } else if (text.ends_with('M') || text.ends_with('m')) {
    unit = kKibi * kKibi;
  }
  if (unit != 1) {
    text.remove_suffix(1);
  }
  const auto number = ParseNumber(text);
  if (!number || *number > std::numeric_limits<std::uint64_t>::max() / unit) {
    return std::nullopt;
  }
  return *number * unit;
}

std::optional<Range> ParseRange(std::string_view text) {
  const std::size_t mark = text.find_first_of("-+");
  const auto first = ParseSize(text.substr(0, mark));
  if (!first || *first > kHighestAddress) {
    return std::nullopt;
  }
  std::uint64_t last = *first;
  if (mark != std::string_view::npos) {
    const auto second = ParseSize(text.substr(mark + 1));
    if (!second || *second > kHighestAddress + 1) {
      return std::nullopt;
    }
    if (text[mark] == '-') {
      last = *second;
    } else if (*second > 0) {
      last = *first + *second - 1;
    } else {
      return std::nullopt;
    }
  }
  if (last < *first || last > kHighestAddress) {
    return std::nullopt;
  }
  return Range{static_cast<std::uint32_t>(*first), static_cast<std::uint32_t>(last)};
}

std::string Hex(std::uint64_t number, int digits) {
  return Format("0x{:0{}x}", number, digits);
}

std::string Text(const Range& range) {
  return range.first == range.last ? Hex(range.first)
                                   : Format("{}-{}", Hex(range.first), Hex(range.last));
}

std::string SizeArgument(std::uint64_t bytes) {
  for (const auto& [unit, letter] : {std::pair(kKibi * kKibi, 'M'), std::pair(kKibi, 'K')}) {
    if (bytes >= unit && bytes % unit == 0) {
      return Format("{}{}", bytes / unit, letter);
    }
  }
  return std::to_string(bytes);
}

std::string SizeText(std::uint64_t bytes) {
  std::string text = Format("{}{}", bytes, bytes == 1 ? " byte" : " bytes");
  if (bytes >= kKibi * kKibi && bytes % (kKibi * kKibi) == 0) {
    text += Format(" ({} MiB)", bytes / kKibi / kKibi);
  } else if (bytes >= kKibi && bytes % kKibi == 0) {
    text += Format(" ({} KiB)", bytes / kKibi);
  }
  return text;
}

}  // namespace borvanusb
