#include "flash/engine/tail_words.h"

#include <cstddef>

namespace borvanusb {

namespace {

constexpr std::size_t kWordSize = 4;
constexpr unsigned kBitsPerByte = 8;
constexpr std::uint32_t kErasedWord = 0xFFFFFFFF;

}  // namespace

std::vector<TailWord> TailWords(std::uint32_t address, std::span<const std::uint8_t> bytes) {
  std::vector<TailWord> words;
  for (std::size_t offset = 0; offset < bytes.size(); offset += kWordSize) {
    std::uint32_t value = 0;
    for (const std::uint8_t byte : bytes.subspan(offset, kWordSize)) {
      value = value << kBitsPerByte | byte;
    }
    if (value != kErasedWord) {
      words.push_back({static_cast<std::uint32_t>(address + offset), value});
    }
  }
  return words;
}

}  // namespace borvanusb
