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

// The words of some bytes that differ from erased flash. The size must be a multiple of 4.
std::vector<FlashWord> TailWords(std::uint32_t address, std::span<const std::uint8_t> bytes);

// The words to write to change `now` to `after`, which have the same size. Returns nothing if a bit
// must be set, because this requires an erase.
std::optional<std::vector<FlashWord>> ClearingWords(std::uint32_t address,
                                                    std::span<const std::uint8_t> now,
                                                    std::span<const std::uint8_t> after);

}  // namespace borvanusb
