#include "flash/engine/flash_words.h"

#include <cstddef>

#include "base/flash_memory.h"

namespace borvanusb {

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
