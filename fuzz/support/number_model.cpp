#include "support/number_model.h"

namespace borvan_fuzz {
namespace {

struct Spelling {
  bool negative = false;
  std::string digits;  // without leading zeros
};

Spelling Spell(std::string text) {
  Spelling spelling;
  const std::size_t first = text.find_first_not_of(" \t\n\v\f\r");
  text = first == std::string::npos ? "" : text.substr(first);
  if (text.substr(0, 1) == "-" || text.substr(0, 1) == "+") {
    spelling.negative = text[0] == '-';
    text = text.substr(1);
  }
  if (text.substr(0, 2) == "0x" || text.substr(0, 2) == "0X") {
    text = text.substr(2);
  }
  text = text.substr(0, text.find_first_not_of("0123456789abcdefABCDEF"));
  const std::size_t significant = text.find_first_not_of('0');
  spelling.digits = significant == std::string::npos ? "" : text.substr(significant);
  return spelling;
}

std::uint64_t ValueOf(const std::string& digits) {
  return digits.empty() ? 0 : std::stoull(digits, nullptr, 16);
}

}  // namespace

std::uint32_t ModelUnsignedLong(const std::string& text) {
  const Spelling spelling = Spell(text);
  const std::uint64_t value = spelling.digits.size() > 8 ? 0xFFFFFFFF : ValueOf(spelling.digits);
  return static_cast<std::uint32_t>(spelling.negative ? -value : value);
}

std::int32_t ModelLong(const std::string& text) {
  const Spelling spelling = Spell(text);
  const std::uint64_t limit = spelling.negative ? 0x80000000 : 0x7FFFFFFF;
  const bool too_large = spelling.digits.size() > 8 || ValueOf(spelling.digits) > limit;
  const auto value = static_cast<std::int64_t>(too_large ? limit : ValueOf(spelling.digits));
  return static_cast<std::int32_t>(spelling.negative ? -value : value);
}

std::uint32_t ModelUnsigned64Low(const std::string& text) {
  const Spelling spelling = Spell(text);
  const std::uint64_t value =
      spelling.digits.size() > 16 ? 0xFFFFFFFFFFFFFFFF : ValueOf(spelling.digits);
  return static_cast<std::uint32_t>(spelling.negative ? -value : value);
}

}  // namespace borvan_fuzz
