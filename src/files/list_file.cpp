#include "files/list_file.h"

#include <array>
#include <cstdint>
#include <stdexcept>

#include "device/hexadecimal_text.h"
#include "files/file.h"

namespace borvan {
namespace {

constexpr std::string_view kWhiteSpace = " \t\n\v\f\r";
constexpr std::string_view kRemark = "//";
constexpr std::string_view kDroppedAddress = "0xfff2";
constexpr std::string_view kPrefix = "0x";
constexpr char kEndOfFile = 0x1A;

std::string_view Trim(std::string_view text) {
  const std::size_t first = text.find_first_not_of(kWhiteSpace);
  if (first == std::string_view::npos) {
    return {};
  }
  return text.substr(first, text.find_last_not_of(kWhiteSpace) - first + 1);
}

bool IsDroppedAddress(std::string_view text) {
  if (text.size() != kDroppedAddress.size()) {
    return false;
  }
  for (std::size_t i = 0; i < text.size(); ++i) {
    const char c =
        text[i] >= 'A' && text[i] <= 'Z' ? static_cast<char>(text[i] - 'A' + 'a') : text[i];
    if (c != kDroppedAddress[i]) {
      return false;
    }
  }
  return true;
}

// A field before a comma: what stands before its first "0x" is dropped.
std::uint32_t ParseField(std::string_view field) {
  const std::string_view text = Trim(field);
  const std::size_t prefix = text.find(kPrefix);
  return ParseUnsignedLong(prefix == std::string_view::npos ? text
                                                            : text.substr(prefix + kPrefix.size()));
}

}  // namespace

std::optional<ListEntry> ParseListLine(std::string_view line) {
  const std::string_view text = Trim(line);
  const std::size_t first_comma = text.find(',');
  if (text.starts_with(kRemark) || first_comma == std::string_view::npos) {
    return std::nullopt;
  }
  const std::string_view address = text.substr(0, first_comma);
  // Compared as it stands: a blank before the comma keeps the line.
  if (IsDroppedAddress(address)) {
    return std::nullopt;
  }
  const std::string_view rest = text.substr(first_comma + 1);
  const std::size_t second_comma = rest.find(',');
  if (second_comma != std::string_view::npos) {
    return ListEntry{ParseField(address), ParseField(rest.substr(0, second_comma))};
  }
  const std::string_view last = Trim(rest);
  if (last.empty()) {
    throw std::invalid_argument("a line of the list has an address and no value");
  }
  return ListEntry{ParseField(address), ParseUnsignedLong(last)};
}

std::vector<ListEntry> ReadListFile(const std::string& path) {
  std::vector<ListEntry> list;
  auto file = File::OpenToRead(path);
  if (!file.has_value()) {
    return list;
  }
  std::string line;
  const auto end_line = [&] {
    if (const auto entry = ParseListLine(line)) {
      list.push_back(*entry);
    }
    line.clear();
  };
  constexpr std::size_t kChunk = 65536;
  std::array<std::uint8_t, kChunk> chunk{};
  while (const std::size_t read = file->ReadSome(chunk)) {
    for (std::size_t i = 0; i < read; ++i) {
      const char c = static_cast<char>(chunk[i]);
      if (c == kEndOfFile) {
        end_line();
        return list;
      }
      if (c == '\n') {
        end_line();
      } else {
        line.push_back(c);
      }
    }
  }
  end_line();
  return list;
}

}  // namespace borvan
