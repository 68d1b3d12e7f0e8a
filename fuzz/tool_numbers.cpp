// The tool's numbers, sizes and ranges, compared with a reader that processes single characters.

#include <optional>
#include <string>

#include "base/numbers.h"
#include "support/check.h"

namespace {
using namespace borvanusb;

using borvan_fuzz::Check;
using borvan_fuzz::CheckEqual;

constexpr std::uint64_t kAll = 0xFFFFFFFFFFFFFFFF;

// number * factor + more; nullopt beyond 64 bits.
std::optional<std::uint64_t> Step(std::uint64_t number, std::uint64_t factor, std::uint64_t more) {
  if (number > kAll / factor || number * factor > kAll - more) {
    return std::nullopt;
  }
  return number * factor + more;
}

std::optional<std::uint64_t> ModelNumber(const std::string& text) {
  const bool hexadecimal = text.substr(0, 2) == "0x" || text.substr(0, 2) == "0X";
  const std::string digits = hexadecimal ? text.substr(2) : text;
  const std::string allowed = hexadecimal ? "0123456789abcdefABCDEF" : "0123456789";
  if (digits.empty() || digits.find_first_not_of(allowed) != std::string::npos) {
    return std::nullopt;
  }
  std::optional<std::uint64_t> number = 0;
  for (const char digit : digits) {
    const std::size_t place = allowed.find(digit);
    number = Step(*number, hexadecimal ? 16 : 10, place < 16 ? place : place - 6);
    if (!number) {
      return std::nullopt;
    }
  }
  return number;
}

std::optional<std::uint64_t> ModelSize(const std::string& text) {
  const char last = text.empty() ? '\0' : text.back();
  const bool kibi = last == 'K' || last == 'k';
  const bool mebi = last == 'M' || last == 'm';
  if (!kibi && !mebi) {
    return ModelNumber(text);
  }
  const auto number = ModelNumber(text.substr(0, text.size() - 1));
  return number ? Step(*number, kibi ? 1024 : 1024 * 1024, 0) : std::nullopt;
}

std::optional<Range> ModelRange(const std::string& text) {
  const std::size_t mark = text.find_first_of("-+");
  const auto first = ModelSize(text.substr(0, mark));
  auto last = first;
  if (mark != std::string::npos) {
    last = ModelSize(text.substr(mark + 1));
    if (text[mark] == '+') {
      last = first && last && *last > 0 && *last <= 0x100000000 && *first <= 0xFFFFFFFF
                 ? std::optional(*first + *last - 1)
                 : std::nullopt;
    }
  }
  if (!first || !last || *last < *first || *last > 0xFFFFFFFF) {
    return std::nullopt;
  }
  return Range{static_cast<std::uint32_t>(*first), static_cast<std::uint32_t>(*last)};
}

void CheckSame(const std::optional<std::uint64_t>& found,
               const std::optional<std::uint64_t>& expected, const std::string& what) {
  Check(found.has_value() == expected.has_value(), what + ": only one of both takes it");
  CheckEqual(found.value_or(0), expected.value_or(0), what);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const std::string text(data, data + size);
  CheckSame(ParseNumber(text), ModelNumber(text), "number");
  CheckSame(ParseSize(text), ModelSize(text), "size");
  const auto range = ParseRange(text);
  Check(range == ModelRange(text), "range");

  // The tool can parse what it prints.
  if (range) {
    Check(ParseRange(Text(*range)) == range, "a printed range reads back as another one");
    CheckEqual(range->Size(), std::uint64_t{range->last} - range->first + 1, "size of a range");
  }
  if (const auto number = ParseSize(text)) {
    for (int digits = 0; digits <= 20; ++digits) {
      const std::string hex = Hex(*number, digits);
      CheckSame(ParseNumber(hex), number, "a printed number reads back as another one");
      Check(hex.size() >= 2U + static_cast<std::size_t>(digits), "too few digits");
    }
    Check(SizeText(*number).starts_with(std::to_string(*number) + " byte"), "size text");
  }
  return 0;
}
