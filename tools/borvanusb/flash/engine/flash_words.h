#pragma once

#include <cstdint>
#include <optional>
#include <span>
#include <vector>

namespace borvanusb {

// A flash word to be written.
struct FlashWord {
  std::uint32_t address = 0;
  std::uint32_t value = 0;  // the byte at `address` in bits 24 to 31
};

// The words of some bytes, a multiple of 4, that erased flash does not hold already.
std::vector<FlashWord> TailWords(std::uint32_t address, std::span<const std::uint8_t> bytes);

// The words that make `now` become `after`, of the same size; nothing when a bit must be set for
// it, which takes an erase.
std::optional<std::vector<FlashWord>> ClearingWords(std::uint32_t address,
                                                    std::span<const std::uint8_t> now,
                                                    std::span<const std::uint8_t> after);

}  // namespace borvanusb
