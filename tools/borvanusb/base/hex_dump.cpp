#include "base/hex_dump.h"

#include <algorithm>

#include "base/hex_bytes.h"
#include "base/numbers.h"

namespace borvanusb {

namespace {

constexpr std::uint64_t kPerLine = 16;
constexpr std::uint64_t kPerGroup = 8;
constexpr int kAddressDigits = 8;
constexpr std::size_t kPrefix = 2;  // length of "0x", which is omitted

char Shown(std::uint8_t byte) {
  constexpr std::uint8_t kFirstVisible = 0x20;
  constexpr std::uint8_t kLastVisible = 0x7E;
  return byte >= kFirstVisible && byte <= kLastVisible ? static_cast<char>(byte) : '.';
}

// Returns the dump line for the 16 addresses from `line`. `bytes` start at `address`; the line
// shows blanks for addresses outside of them.
std::string Line(std::uint64_t line, std::uint64_t address, std::span<const std::uint8_t> bytes) {
  std::string text = Hex(line, kAddressDigits).substr(kPrefix);
  std::string beside;
  for (std::uint64_t at = line; at < line + kPerLine; ++at) {
    text += (at - line) % kPerGroup == 0 ? "  " : " ";
    const bool there = at >= address && at - address < bytes.size();
    text += there ? HexBytes(bytes.subspan(at - address, 1)) : "  ";
    beside += there ? Shown(bytes[at - address]) : ' ';
  }
  return text + "  |" + beside + "|\n";
}

}  // namespace

std::string HexDump(std::uint32_t address, std::span<const std::uint8_t> bytes) {
  std::string text;
  const std::uint64_t end = std::uint64_t{address} + bytes.size();
  bool starred = false;
  for (std::uint64_t line = address / kPerLine * kPerLine; line < end; line += kPerLine) {
    const bool repeated = line >= address + kPerLine && line + kPerLine < end &&
                          std::ranges::equal(bytes.subspan(line - address, kPerLine),
                                             bytes.subspan(line - address - kPerLine, kPerLine));
    if (!repeated) {
      text += Line(line, address, bytes);
    } else if (!starred) {
      text += "*\n";
    }
    starred = repeated;
  }
  return text;
}

}  // namespace borvanusb
