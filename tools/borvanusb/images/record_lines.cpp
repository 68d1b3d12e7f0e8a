#include "images/record_lines.h"

#include <algorithm>
#include <numeric>

#include "base/format.h"
#include "base/hex_bytes.h"

namespace borvanusb {

namespace {

constexpr unsigned kBitsPerDigit = 4;

unsigned DigitValue(const FilePlace& place, char character) {
  if (character >= '0' && character <= '9') {
    return static_cast<unsigned>(character - '0');
  }
  const char small = static_cast<char>(character | ' ');
  if (small < 'a' || small > 'f') {
    throw ImageError(Format("{}: the byte {} in it is not a valid hexadecimal digit", place.Text(),
                            Hex(static_cast<std::uint8_t>(character), 2)));
  }
  return static_cast<unsigned>(small - 'a') + 10U;
}

std::uint8_t SumOf(std::span<const std::uint8_t> bytes) {
  return static_cast<std::uint8_t>(std::accumulate(bytes.begin(), bytes.end(), 0U));
}

std::string Digits(std::span<const std::uint8_t> bytes) {
  std::string digits = HexBytes(bytes);
  for (char& digit : digits) {
    digit = digit >= 'a' ? static_cast<char>(digit - 'a' + 'A') : digit;
  }
  return digits;
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

void CheckRecord(const RecordRule& rule, const FilePlace& place,
                 std::span<const std::uint8_t> bytes) {
  if (bytes.empty()) {
    throw ImageError(Format("{}: the record is empty", place.Text()));
  }
  const std::size_t size = rule.uncounted + bytes[0];
  if (bytes.size() != size) {
    throw ImageError(Format("{}: the record has {} bytes; its length field {} requires {}",
                            place.Text(), bytes.size(), bytes[0], size));
  }
  const std::uint8_t found = bytes.back();
  const auto made = static_cast<std::uint8_t>(rule.whole_sum - SumOf(bytes.first(size - 1)));
  if (found != made) {
    throw ImageError(Format("{}: the checksum is {}, but the calculated checksum is {}",
                            place.Text(), Hex(found, 2), Hex(made, 2)));
  }
}

std::string RecordLine(const RecordRule& rule, std::string_view begin,
                       std::vector<std::uint8_t> bytes) {
  bytes.push_back(static_cast<std::uint8_t>(rule.whole_sum - SumOf(bytes)));
  return Format("{}{}\r\n", begin, Digits(bytes));
}

std::uint32_t HighFirst(std::span<const std::uint8_t> bytes) {
  std::uint32_t number = 0;
  for (const std::uint8_t byte : bytes) {
    number = number << 8U | byte;
  }
  return number;
}

void AppendHighFirst(std::vector<std::uint8_t>& bytes, std::uint32_t number, std::size_t size) {
  for (std::size_t i = size; i > 0; --i) {
    bytes.push_back(static_cast<std::uint8_t>(number >> 8U * (i - 1)));
  }
}

}  // namespace borvanusb
