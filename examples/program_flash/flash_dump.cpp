#include "flash_dump.h"

#include <algorithm>
#include <charconv>
#include <string_view>

namespace {

constexpr std::size_t kBytesPerLine = 8;
constexpr std::size_t kAddressDigits = 8;
constexpr std::size_t kFirstByteColumn = 11;  // behind "00001008h: "
constexpr std::size_t kColumnsPerByte = 3;    // two digits and a blank or the ";"
constexpr std::size_t kLineLength = 37;       // with CR LF

// Reads a field of small hexadecimal digits, all of it.
std::optional<std::uint32_t> ParseField(std::string_view digits) {
  std::uint32_t number = 0;
  const auto result = std::from_chars(digits.data(), digits.data() + digits.size(), number, 16);
  if (result.ec != std::errc() || result.ptr != digits.data() + digits.size()) {
    return std::nullopt;
  }
  return number;
}

// Appends the bytes of one line, at most `wanted` of them.
bool AppendLine(std::string_view line, std::uint32_t address, std::size_t wanted,
                std::vector<std::uint8_t>& bytes) {
  if (ParseField(line.substr(0, kAddressDigits)) != address ||
      line.substr(kAddressDigits, 3) != "h: " || line.substr(kLineLength - 3) != ";\r\n") {
    return false;
  }
  for (std::size_t i = 0; i < std::min(wanted, kBytesPerLine); ++i) {
    const auto byte = ParseField(line.substr(kFirstByteColumn + i * kColumnsPerByte, 2));
    if (!byte) {
      return false;
    }
    bytes.push_back(static_cast<std::uint8_t>(*byte));
  }
  return true;
}

}  // namespace

bool IsTextDump(const std::string& file_name) {
  const std::size_t dot = file_name.rfind('.');
  return file_name.substr(dot == std::string::npos ? 0 : dot + 1) == "txt";
}

std::uint64_t DumpFileLength(bool text, std::uint64_t size) {
  return text ? (size + kBytesPerLine - 1) / kBytesPerLine * kLineLength : size;
}

std::optional<std::vector<std::uint8_t>> ParseTextDump(const std::string& content,
                                                       std::uint32_t address, std::size_t size) {
  if (content.size() != DumpFileLength(true, size)) {
    return std::nullopt;
  }
  std::vector<std::uint8_t> bytes;
  bytes.reserve(size);
  for (std::size_t offset = 0; offset < size; offset += kBytesPerLine) {
    const std::string_view line =
        std::string_view(content).substr(offset / kBytesPerLine * kLineLength, kLineLength);
    const auto line_address = static_cast<std::uint32_t>(address + offset);
    if (!AppendLine(line, line_address, size - offset, bytes)) {
      return std::nullopt;
    }
  }
  return bytes;
}

std::optional<std::size_t> FirstDifference(const std::vector<std::uint8_t>& left,
                                           const std::vector<std::uint8_t>& right) {
  const auto [at_left, at_right] =
      std::mismatch(left.begin(), left.end(), right.begin(), right.end());
  if (at_left == left.end() && at_right == right.end()) {
    return std::nullopt;
  }
  return static_cast<std::size_t>(at_left - left.begin());
}
