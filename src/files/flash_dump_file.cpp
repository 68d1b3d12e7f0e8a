#include "files/flash_dump_file.h"

#include <algorithm>
#include <array>
#include <cstring>
#include <vector>

namespace borvan {
namespace {

constexpr std::string_view kTextExtension = "txt";

constexpr std::size_t kByteValues = 256;
constexpr std::string_view kDigits = "0123456789abcdef";

// The two digits of each byte: a dump of a large flash is formatted only by table look-ups.
constexpr std::array<std::array<char, 2>, kByteValues> kBytePairs = [] {
  std::array<std::array<char, 2>, kByteValues> pairs{};
  for (std::size_t byte = 0; byte < kByteValues; ++byte) {
    pairs[byte] = {kDigits[byte / 16], kDigits[byte % 16]};
  }
  return pairs;
}();

// The text around the digits, and what a position past the end of the data shows.
constexpr std::string_view kTemplate = "00000000h: 00 00 00 00 00 00 00 00;\r\n";
static_assert(kTemplate.size() == kDumpLineLength);
constexpr std::size_t kAddressBytes = 4;
constexpr std::size_t kFirstByte = 11;
constexpr std::size_t kByteDistance = 3;

// Enough lines for a few large writes instead of many small ones.
constexpr std::uint64_t kLinesPerWrite = 8192;

void PutByte(std::span<char, kDumpLineLength> line, std::size_t at, std::uint8_t byte) {
  // Copies both digits at once: this runs a dozen times for each line of a dump.
  std::memcpy(line.data() + at, kBytePairs[byte].data(), kBytePairs[byte].size());
}

}  // namespace

std::string_view FileExtension(std::string_view path) {
  return path.substr(path.rfind('.') + 1);
}

bool IsTextFileName(std::string_view path) {
  return FileExtension(path) == kTextExtension;
}

void FormatDumpLine(std::uint32_t address, std::span<const std::uint8_t> bytes,
                    std::span<char, kDumpLineLength> line) {
  std::copy(kTemplate.begin(), kTemplate.end(), line.begin());
  for (std::size_t i = 0; i < kAddressBytes; ++i) {
    PutByte(line, 2 * i, static_cast<std::uint8_t>(address >> (8 * (kAddressBytes - 1 - i))));
  }
  const std::size_t shown = std::min(bytes.size(), kDumpLineBytes);
  for (std::size_t i = 0; i < shown; ++i) {
    PutByte(line, kFirstByte + kByteDistance * i, bytes[i]);
  }
}

std::uint64_t DumpLineCount(std::uint64_t size, std::uint32_t end_address) {
  const std::uint64_t all = (size + kDumpLineBytes - 1) / kDumpLineBytes;
  return std::min<std::uint64_t>(all, std::uint64_t{end_address} / kDumpLineBytes + 1);
}

void WriteBinaryDump(File& file, std::span<const std::uint8_t> bytes) {
  file.Write(bytes);
}

void WriteTextDump(File& file, std::span<const std::uint8_t> bytes, std::uint32_t start_address,
                   std::uint32_t end_address) {
  const std::uint64_t lines = DumpLineCount(bytes.size(), end_address);
  std::vector<char> text(std::min(lines, kLinesPerWrite) * kDumpLineLength);
  for (std::uint64_t first = 0; first < lines; first += kLinesPerWrite) {
    const std::uint64_t count = std::min(kLinesPerWrite, lines - first);
    for (std::uint64_t i = 0; i < count; ++i) {
      const std::uint64_t offset = (first + i) * kDumpLineBytes;
      const std::size_t shown = std::min<std::uint64_t>(kDumpLineBytes, bytes.size() - offset);
      FormatDumpLine(
          start_address + static_cast<std::uint32_t>(offset), bytes.subspan(offset, shown),
          std::span<char, kDumpLineLength>(text.data() + i * kDumpLineLength, kDumpLineLength));
    }
    const std::span<const char> written(text.data(), count * kDumpLineLength);
    file.Write({reinterpret_cast<const std::uint8_t*>(written.data()), written.size()});
  }
}

}  // namespace borvan
