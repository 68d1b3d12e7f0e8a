#pragma once

#include <cstdint>
#include <span>
#include <vector>

namespace borvanusb {

// A flash word to be written.
struct TailWord {
  std::uint32_t address = 0;
  std::uint32_t value = 0;  // the byte at `address` in bits 24 to 31
};

// The words of some bytes, a multiple of 4, that erased flash does not hold already.
std::vector<TailWord> TailWords(std::uint32_t address, std::span<const std::uint8_t> bytes);

}  // namespace borvanusb
