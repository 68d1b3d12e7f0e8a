#include "flash/engine/flash_words.h"

#include <cstddef>

namespace borvanusb {

namespace {

constexpr std::size_t kWordSize = 4;
constexpr unsigned kBitsPerByte = 8;
constexpr std::uint32_t kErasedWord = 0xFFFFFFFF;

std::uint32_t WordAt(std::span<const std::uint8_t> bytes, std::size_t offset) {
  std::uint32_t value = 0;
  for (const std::uint8_t byte : bytes.subspan(offset, kWordSize)) {
    value = value << kBitsPerByte | byte;
  }
  return value;
}

}  // namespace

std::vector<FlashWord> TailWords(std::uint32_t address, std::span<const std::uint8_t> bytes) {
  std::vector<FlashWord> words;
  for (std::size_t offset = 0; offset < bytes.size(); offset += kWordSize) {
    const std::uint32_t value = WordAt(bytes, offset);
    if (value != kErasedWord) {
      words.push_back({static_cast<std::uint32_t>(address + offset), value});
    }
  }
  return words;
}

std::optional<std::vector<FlashWord>> ClearingWords(std::uint32_t address,
                                                    std::span<const std::uint8_t> now,
                                                    std::span<const std::uint8_t> after) {
  std::vector<FlashWord> words;
  for (std::size_t offset = 0; offset < now.size(); offset += kWordSize) {
    const std::uint32_t old_word = WordAt(now, offset);
    const std::uint32_t new_word = WordAt(after, offset);
    if ((old_word & new_word) != new_word) {
      return std::nullopt;
    }
    if (old_word != new_word) {
      words.push_back({static_cast<std::uint32_t>(address + offset), new_word});
    }
  }
  return words;
}

}  // namespace borvanusb
