#include "registers/list_text.h"

#include <charconv>
#include <optional>
#include <utility>

#include "base/format.h"
#include "base/numbers.h"
#include "base/text_lines.h"

namespace borvanusb {

namespace {

constexpr std::string_view kRemark = "//";
constexpr std::size_t kLongestQuote = 40;

// Lists are 8-bit text in any code page, or no text at all. Shows only printable ASCII.
std::string Quoted(std::string_view text) {
  std::string quoted = "\"";
  for (const char character : text.substr(0, kLongestQuote)) {
    quoted += character >= ' ' && character <= '~' ? character : '?';
  }
  return Format("{}{}", quoted, text.size() > kLongestQuote ? "...\"" : "\"");
}

struct Number {
  std::optional<std::uint32_t> value;
  std::string problem;
};

Number ReadNumber(std::string_view field, const std::string& what) {
  std::string_view digits = field;
  if (digits.starts_with("0x") || digits.starts_with("0X")) {
    digits.remove_prefix(2);
  }
  std::uint32_t value = 0;
  const char* const end = digits.data() + digits.size();
  const auto result = std::from_chars(digits.data(), end, value, 16);
  if (digits.empty() || digits.front() == '-' || result.ptr != end) {
    return {{}, Format("{} {} is not a valid hexadecimal number", what, Quoted(field))};
  }
  if (result.ec != std::errc()) {
    return {{}, Format("{} {} has more than 32 bits", what, Quoted(field))};
  }
  return {value, {}};
}

bool IsNumber(std::string_view field) {
  return ReadNumber(field, "").value.has_value();
}

class Reader {
 public:
  void TakeLine(std::string_view text, std::uint64_t line) {
    line_ = line;
    const std::string_view trimmed = Trimmed(text);
    if (trimmed.empty() || trimmed.starts_with(kRemark)) {
      return;
    }
    const std::size_t comma = trimmed.find(',');
    if (comma == std::string_view::npos) {
      Problem(
          Format("no comma in {}: the line would be ignored; write ADDRESS, VALUE, or begin a "
                 "comment with //",
                 Quoted(trimmed)));
      return;
    }
    const std::string_view address_field = trimmed.substr(0, comma);
    const std::string_view rest = trimmed.substr(comma + 1);
    const Number address = ReadNumber(Trimmed(address_field), "address");
    const std::optional<std::uint32_t> value = ReadValue(rest);
    if (!address.value) {
      Problem(address.problem);
    } else if (*address.value == kDroppedMarker) {
      TakeDropped(address_field);
    } else if (value) {
      list_.entries.push_back({*address.value, *value, line});
    }
  }

  void Problem(std::string text) { list_.problems.push_back({line_, std::move(text)}); }

  // Returns the result, including problems of the whole file.
  ListText Take(const std::vector<ListProblem>& of_file) {
    list_.problems.insert(list_.problems.end(), of_file.begin(), of_file.end());
    SortByLine(list_.problems);
    return std::move(list_);
  }

 private:
  std::optional<std::uint32_t> ReadValue(std::string_view rest) {
    const std::size_t comma = rest.find(',');
    const std::string_view field = Trimmed(rest.substr(0, comma));
    const std::string_view meant = Trimmed(field.substr(0, field.find(kRemark)));
    if (meant.empty()) {
      Problem("no value after the address: such a line makes the whole list invalid");
      return std::nullopt;
    }
    const Number number = ReadNumber(meant, "value");
    if (!number.value) {
      Problem(number.problem);
      return std::nullopt;
    }
    // The library searches for 0x in everything before the second comma.
    if (comma != std::string_view::npos && !meant.starts_with("0x") &&
        field.find("0x", meant.size()) != std::string_view::npos) {
      Problem("a comment after the value would be read as the value: put a comma before the //");
      return std::nullopt;
    }
    if (comma != std::string_view::npos) {
      const std::string_view behind = rest.substr(comma + 1);
      const std::string_view third = Trimmed(behind.substr(0, behind.find(',')));
      if (IsNumber(third)) {
        Remark(Format("nothing after the second comma is read: {} is ignored", Quoted(third)));
      }
    }
    return number.value;
  }

  // The library compares the address as text, including blanks.
  void TakeDropped(std::string_view field) {
    constexpr std::size_t kAsWritten = 6;  // "0xfff2"
    if (field.size() == kAsWritten && field[1] == 'x') {
      Remark("lines with 0xfff2 are ignored, this one too");
    } else {
      Problem(
          Format("an address 0xfff2 is ignored when written so, and a register when written as {}: "
                 "remove the line",
                 Quoted(field)));
    }
  }

  void Remark(std::string text) { list_.remarks.push_back({line_, std::move(text)}); }

  ListText list_;
  std::uint64_t line_ = 0;
};

}  // namespace

ListText ReadListText(std::string_view text) {
  const TextLines split = SplitLines(text, "list");
  Reader reader;
  for (const TextLine& line : split.lines) {
    reader.TakeLine(line.text, line.number);
  }
  return reader.Take(split.problems);
}

std::string ListLine(std::uint32_t address, std::uint32_t value, int address_digits,
                     int value_digits) {
  return Format("{}, {},", Hex(address, address_digits), Hex(value, value_digits));
}

std::string PauseProblem(const ListEntry& pause) {
  if (pause.value <= kLongestPause) {
    return {};
  }
  return Format(
      "a pause of {} ms would be ignored: at most 0xff (255 ms), longer ones as several lines",
      pause.value);
}

}  // namespace borvanusb
