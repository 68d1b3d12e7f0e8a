#include "images/record_lines.h"

#include <algorithm>
#include <numeric>

#include "base/format.h"
#include "base/hex_bytes.h"

namespace borvanusb {

namespace {

constexpr std::string_view kByteOrderMark = "\xEF\xBB\xBF";

constexpr unsigned kBitsPerDigit = 4;

unsigned DigitValue(const FilePlace& place, char character) {
  if (character >= '0' && character <= '9') {
    return static_cast<unsigned>(character - '0');
  }
  const char small = static_cast<char>(character | ' ');
  if (small < 'a' || small > 'f') {
    throw ImageError(Format("{}: the byte {} in it is no hexadecimal digit", place.Text(),
                            Hex(static_cast<std::uint8_t>(character), 2)));
  }
  return static_cast<unsigned>(small - 'a') + 10U;
}

}  // namespace

void ForEachRecord(std::span<const std::uint8_t> file,
                   const std::function<void(const FilePlace& place, std::string_view text)>& take) {
  std::string_view rest(reinterpret_cast<const char*>(file.data()), file.size());
  if (rest.starts_with(kByteOrderMark)) {
    rest.remove_prefix(kByteOrderMark.size());
  }
  for (std::uint64_t number = 1; !rest.empty(); ++number) {
    const std::size_t end = std::min(rest.find_first_of("\r\n"), rest.size());
    std::string_view line = rest.substr(0, end);
    rest.remove_prefix(end);
    if (!rest.empty()) {
      rest.remove_prefix(rest.starts_with("\r\n") ? 2 : 1);
    }
    line = line.substr(0, line.find_last_not_of(" \t") + 1);
    if (!line.empty()) {
      take({"line", number}, line);
    }
  }
}

std::vector<std::uint8_t> RecordBytes(const FilePlace& place, std::string_view digits) {
  std::vector<std::uint8_t> bytes;
  bytes.reserve(digits.size() / 2);
  for (std::size_t i = 0; i < digits.size(); i += 2) {
    const unsigned high = DigitValue(place, digits[i]);
    if (i + 1 == digits.size()) {
      throw ImageError(Format("{}: the record has an odd number of digits", place.Text()));
    }
    bytes.push_back(
        static_cast<std::uint8_t>(high << kBitsPerDigit | DigitValue(place, digits[i + 1])));
  }
  return bytes;
}

std::uint8_t RecordSum(std::span<const std::uint8_t> bytes) {
  return static_cast<std::uint8_t>(std::accumulate(bytes.begin(), bytes.end(), 0U));
}

std::string RecordDigits(std::span<const std::uint8_t> bytes) {
  std::string digits = HexBytes(bytes);
  for (char& digit : digits) {
    digit = digit >= 'a' ? static_cast<char>(digit - 'a' + 'A') : digit;
  }
  return digits;
}

std::uint32_t HighFirst(std::span<const std::uint8_t> bytes) {
  std::uint32_t number = 0;
  for (const std::uint8_t byte : bytes) {
    number = number << 8U | byte;
  }
  return number;
}

}  // namespace borvanusb
