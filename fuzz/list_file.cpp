// The reader of list files, compared with a reader that processes single lines.

#include <algorithm>
#include <cctype>
#include <optional>
#include <stdexcept>
#include <string>
#include <vector>

#include "files/list_file.h"
#include "support/check.h"
#include "support/memory_file.h"
#include "support/number_model.h"

namespace {

using borvan::ListEntry;
using borvan_fuzz::Check;
using borvan_fuzz::CheckEqual;

using List = std::vector<ListEntry>;

constexpr std::size_t kChunk = std::size_t{256} * 1024;  // the reader's chunk size

std::string WithoutBlanks(const std::string& text) {
  constexpr const char* kBlanks = " \t\n\v\f\r";
  const std::size_t first = text.find_first_not_of(kBlanks);
  return first == std::string::npos
             ? ""
             : text.substr(first, text.find_last_not_of(kBlanks) - first + 1);
}

std::string SmallLetters(std::string text) {
  std::transform(text.begin(), text.end(), text.begin(), [](unsigned char c) {
    return c < 0x80 ? static_cast<char>(std::tolower(c)) : static_cast<char>(c);
  });
  return text;
}

// If a comma follows the field, the text before "0x" is ignored.
std::uint32_t NumberBeforeComma(const std::string& field) {
  const std::string text = WithoutBlanks(field);
  const std::size_t prefix = text.find("0x");
  return borvan_fuzz::ModelUnsignedLong(prefix == std::string::npos ? text
                                                                    : text.substr(prefix + 2));
}

// Throws for a line with one field.
std::optional<ListEntry> ModelLine(const std::string& whole) {
  const std::string line = WithoutBlanks(whole);
  if (line.empty() || line.substr(0, 2) == "//" || line.find(',') == std::string::npos) {
    return std::nullopt;
  }
  const std::string address = line.substr(0, line.find(','));
  const std::string behind = line.substr(line.find(',') + 1);
  if (SmallLetters(address) == "0xfff2") {
    return std::nullopt;
  }
  if (behind.find(',') != std::string::npos) {
    return ListEntry{NumberBeforeComma(address),
                     NumberBeforeComma(behind.substr(0, behind.find(',')))};
  }
  if (WithoutBlanks(behind).empty()) {
    throw std::invalid_argument("one field");
  }
  return ListEntry{NumberBeforeComma(address),
                   borvan_fuzz::ModelUnsignedLong(WithoutBlanks(behind))};
}

// nullopt if a line makes the whole list invalid.
std::optional<List> ModelList(std::string text) {
  text = text.substr(0, text.find('\x1A'));
  List list;
  try {
    while (!text.empty()) {
      const std::size_t end = text.find('\n');
      if (const auto entry = ModelLine(text.substr(0, end))) {
        list.push_back(*entry);
      }
      text = end == std::string::npos ? "" : text.substr(end + 1);
    }
  } catch (const std::invalid_argument&) {
    return std::nullopt;
  }
  return list;
}

void CheckFile(const std::string& text, const std::optional<List>& expected) {
  static auto& file = *new borvan_fuzz::MemoryFile;
  file.Put({reinterpret_cast<const std::uint8_t*>(text.data()), text.size()});
  std::optional<List> read;
  try {
    read = borvan::ReadListFile(file.Path());
  } catch (const std::invalid_argument&) {
    read = std::nullopt;
  }
  Check(read.has_value() == expected.has_value(), "one of both refuses the list");
  if (!read.has_value()) {
    return;
  }
  for (std::size_t i = 0; i < std::min(read->size(), expected->size()); ++i) {
    const std::string place = "entry " + std::to_string(i);
    CheckEqual((*read)[i].address, (*expected)[i].address, place + ": address");
    CheckEqual((*read)[i].value, (*expected)[i].value, place + ": value");
  }
  CheckEqual(read->size(), expected->size(), "the number of entries");
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const std::string text(data, data + size);
  const std::optional<List> expected = ModelList(text);
  CheckFile(text, expected);

  // The same after a long comment, so that a border between two of the reader's chunks lies
  // somewhere in the text. Not for every input, because it takes as long as a hundred short lists.
  if (size % 8 == 7) {
    std::size_t sum = 0;
    for (const char c : text) {
      sum = sum * 31 + static_cast<unsigned char>(c);
    }
    const std::string remark = "//" + std::string(kChunk - 3 - sum % (size + 1), '-') + "\n";
    CheckFile(remark + text, expected);
  }
  return 0;
}
