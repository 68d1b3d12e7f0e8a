#include "flash/text_dump.h"

#include <cstddef>

#include "base/hex_bytes.h"
#include "base/numbers.h"

namespace borvanusb {

namespace {

constexpr std::size_t kBytesPerLine = 8;
constexpr int kDumpAddressDigits = 8;
constexpr std::size_t kPrefix = 2;  // "0x", which these lines do not have

}  // namespace

std::string TextDump(std::uint32_t address, std::span<const std::uint8_t> bytes) {
  std::string text;
  for (std::size_t offset = 0; offset < bytes.size(); offset += kBytesPerLine) {
    text += Hex(static_cast<std::uint32_t>(address + offset), kDumpAddressDigits).substr(kPrefix);
    text += "h:";
    for (std::size_t i = offset; i < offset + kBytesPerLine; ++i) {
      text += " ";
      text += i < bytes.size() ? HexBytes(bytes.subspan(i, 1)) : "00";
    }
    text += ";\r\n";
  }
  return text;
}

}  // namespace borvanusb
