#include "images/image_format.h"

#include <algorithm>
#include <array>
#include <numeric>
#include <string>
#include <string_view>
#include <vector>

#include "images/record_lines.h"

namespace borvanusb {

namespace {

using Bytes = std::vector<std::uint8_t>;

constexpr std::size_t kLookedAt = 16384;  // enough for eight records of maximum length
constexpr int kLinesLookedAt = 8;

std::uint32_t LittleEndian(std::span<const std::uint8_t> bytes, std::size_t place) {
  return bytes[place] | std::uint32_t{bytes[place + 1]} << 8U |
         std::uint32_t{bytes[place + 2]} << 16U | std::uint32_t{bytes[place + 3]} << 24U;
}

bool IsElf(std::span<const std::uint8_t> bytes) {
  constexpr std::size_t kShortestHeader = 52;
  constexpr std::array<std::uint8_t, 4> kMagic = {0x7F, 'E', 'L', 'F'};
  if (bytes.size() < kShortestHeader || !std::ranges::equal(bytes.first(kMagic.size()), kMagic)) {
    return false;
  }
  const std::uint8_t word_size = bytes[4];
  const std::uint8_t byte_order = bytes[5];
  const std::uint8_t version = bytes[6];
  return (word_size == 1 || word_size == 2) && (byte_order == 1 || byte_order == 2) && version == 1;
}

bool IsUf2(std::span<const std::uint8_t> bytes) {
  constexpr std::size_t kBlock = 512;
  return bytes.size() >= kBlock && LittleEndian(bytes, 0) == 0x0A324655 &&
         LittleEndian(bytes, 4) == 0x9E5D5157 && LittleEndian(bytes, kBlock - 4) == 0x0AB16F30;
}

int DigitValue(char character) {
  if (character >= '0' && character <= '9') {
    return character - '0';
  }
  const char small = static_cast<char>(character | ' ');
  return small >= 'a' && small <= 'f' ? small - 'a' + 10 : -1;
}

// The bytes of a text of hexadecimal digits, upper or lower case. Empty for any other text.
Bytes BytesOf(std::string_view digits) {
  Bytes bytes;
  for (std::size_t i = 0; i + 1 < digits.size(); i += 2) {
    const int high = DigitValue(digits[i]);
    const int low = DigitValue(digits[i + 1]);
    if (high < 0 || low < 0) {
      return {};
    }
    bytes.push_back(static_cast<std::uint8_t>(high * 16 + low));
  }
  return digits.size() % 2 == 0 ? bytes : Bytes();
}

std::uint8_t Sum(const Bytes& bytes) {
  return static_cast<std::uint8_t>(std::accumulate(bytes.begin(), bytes.end(), 0U));
}

// ":LLAAAATT…CC": length, address, type, data, checksum. The sum of all bytes is 0.
bool IsIntelHexRecord(std::string_view line) {
  constexpr std::size_t kBesideData = 5;
  if (!line.starts_with(':')) {
    return false;
  }
  const Bytes bytes = BytesOf(line.substr(1));
  if (bytes.size() < kBesideData || bytes.size() != kBesideData + bytes[0] || Sum(bytes) != 0) {
    return false;
  }
  constexpr std::array<std::size_t, 6> kLengthOfType = {0, 0, 2, 4, 2, 4};  // type 0: any length
  const std::uint8_t type = bytes[3];
  return type == 0 || (type < kLengthOfType.size() && bytes[0] == kLengthOfType.at(type));
}

// "STLL…CC": type, length of the rest, address, data, checksum. The sum of all bytes is 0xff.
bool IsSRecord(std::string_view line) {
  // Bytes of the address, by type. S4 does not exist.
  constexpr std::array<std::size_t, 10> kAddressOfType = {2, 2, 3, 4, 0, 2, 3, 4, 3, 2};
  if (line.size() < 2 || line[0] != 'S' || line[1] < '0' || line[1] > '9' || line[1] == '4') {
    return false;
  }
  const Bytes bytes = BytesOf(line.substr(2));
  const std::size_t address = kAddressOfType.at(static_cast<std::size_t>(line[1] - '0'));
  return bytes.size() >= 1 + address + 1 && bytes.size() == std::size_t{1} + bytes[0] &&
         Sum(bytes) == 0xFF;
}

// "00001008h: 00 01 02 03 04 05 06 07;", the format that `flash read` writes.
bool IsDumpLine(std::string_view line) {
  constexpr std::string_view kForm = "########h: ## ## ## ## ## ## ## ##;";
  return std::ranges::equal(line, kForm, [](char character, char form) {
    return form == '#' ? DigitValue(character) >= 0 : character == form;
  });
}

std::optional<ImageFormat> FormatOfLine(std::string_view line) {
  if (IsIntelHexRecord(line)) {
    return ImageFormat::kIntelHex;
  }
  if (IsSRecord(line)) {
    return ImageFormat::kSRecord;
  }
  if (IsDumpLine(line)) {
    return ImageFormat::kTextDump;
  }
  return std::nullopt;
}

bool IsText(std::string_view line) {
  return std::ranges::all_of(line, [](char character) {
    return (character >= ' ' && character <= '~') || character == '\t';
  });
}

std::optional<ImageFormat> FormatOfText(std::span<const std::uint8_t> bytes) {
  const auto start = bytes.first(std::min(bytes.size(), kLookedAt));
  std::string text(start.begin(), start.end());
  // Drops an incomplete last line: it could look like another format.
  const bool whole = start.size() == bytes.size();
  text.resize(whole ? text.size() : text.find_last_of("\r\n") + 1);
  std::string_view rest = text;
  if (rest.starts_with(kByteOrderMark)) {
    rest.remove_prefix(kByteOrderMark.size());
  }
  for (int lines = 0; lines < kLinesLookedAt && !rest.empty();) {
    const std::size_t end = std::min(rest.find_first_of("\r\n"), rest.size());
    std::string_view line = rest.substr(0, end);
    rest.remove_prefix(std::min(end + 1, rest.size()));
    if (!IsText(line)) {
      return std::nullopt;
    }
    line = line.substr(0, line.find_last_not_of(" \t") + 1);
    if (const auto format = FormatOfLine(line)) {
      return format;
    }
    lines += line.empty() ? 0 : 1;
  }
  return std::nullopt;
}

}  // namespace

std::optional<ImageFormat> RecogniseFormat(std::span<const std::uint8_t> bytes) {
  if (IsElf(bytes)) {
    return ImageFormat::kElf;
  }
  if (IsUf2(bytes)) {
    return ImageFormat::kUf2;
  }
  return FormatOfText(bytes);
}

}  // namespace borvanusb
