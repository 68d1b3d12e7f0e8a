#include "files/list_dump_file.h"

#include <string_view>
#include <vector>

#include "base/hexadecimal_text.h"

namespace borvan {
namespace {

constexpr std::string_view kPrefix = "0x";
constexpr std::string_view kLineEnd = "\r\n";
constexpr std::size_t kAddressDigits = 4;
constexpr std::size_t kByteDigits = 2;
constexpr std::size_t kWordDigits = 4;
constexpr std::uint32_t kModeWithWords = 2;

// Enough for a few large writes.
constexpr std::size_t kTextPerWrite = std::size_t{256} * 1024;

// `digits` is a minimum: larger numbers show all their digits.
void AppendNumber(std::string& text, std::uint32_t number, std::size_t digits) {
  const std::string shown = FormatHex(number);
  text += kPrefix;
  if (shown.size() < digits) {
    text.append(digits - shown.size(), '0');
  }
  text += shown;
}

void WriteText(File& file, std::string_view text) {
  file.Write({reinterpret_cast<const std::uint8_t*>(text.data()), text.size()});
}

template <typename AppendLine>
void WriteLines(File& file, std::span<const ListEntry> list, const AppendLine& append_line) {
  std::string text;
  for (const ListEntry& entry : list) {
    append_line(text, entry);
    if (text.size() >= kTextPerWrite) {
      WriteText(file, text);
      text.clear();
    }
  }
  WriteText(file, text);
}

}  // namespace

void AppendRegisterLine(std::string& text, const ListEntry& entry) {
  AppendNumber(text, entry.address, kAddressDigits);
  text += ", ";
  AppendNumber(text, entry.value, kByteDigits);
  text += ",";
  text += kLineEnd;
}

void AppendI2cLine(std::string& text, const ListEntry& entry, std::uint32_t mode) {
  if (mode > kModeWithWords) {
    return;
  }
  AppendNumber(text, entry.address, kAddressDigits);
  text += ",";
  AppendNumber(text, entry.value, mode == kModeWithWords ? kWordDigits : kByteDigits);
  text += ",";
  text += kLineEnd;
}

void WriteRegisterLines(File& file, std::span<const ListEntry> list) {
  WriteLines(file, list, AppendRegisterLine);
}

void WriteI2cLines(File& file, std::span<const ListEntry> list, std::uint32_t mode) {
  WriteLines(file, list, [mode](std::string& text, const ListEntry& entry) {
    AppendI2cLine(text, entry, mode);
  });
}

void WriteListValues(File& file, std::span<const ListEntry> list) {
  std::vector<std::uint8_t> values;
  values.reserve(list.size());
  for (const ListEntry& entry : list) {
    values.push_back(static_cast<std::uint8_t>(entry.value));
  }
  file.Write(values);
}

}  // namespace borvan
