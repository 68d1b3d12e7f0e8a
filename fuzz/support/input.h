#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <string>
#include <vector>

namespace borvan_fuzz {

// Takes values from the fuzzer's bytes, from front to back. After the end, everything is 0 or
// empty, so every input is valid.
class Input {
 public:
  Input(const std::uint8_t* data, std::size_t size) : rest_(data, size) {}

  bool Empty() const { return rest_.empty(); }

  std::uint8_t Byte();
  // Most significant byte first.
  std::uint16_t Half();
  std::uint32_t Word();
  // 0 to `choices` - 1, from one byte; `choices` is 1 to 256.
  std::uint32_t Choice(std::uint32_t choices) { return Byte() % choices; }
  // The next `count` bytes, or fewer at the end.
  std::vector<std::uint8_t> Bytes(std::size_t count);
  // A text: one byte for its length, then its characters.
  std::string Text();
  // All remaining bytes.
  std::vector<std::uint8_t> Rest() { return Bytes(rest_.size()); }

 private:
  std::span<const std::uint8_t> rest_;
};

}  // namespace borvan_fuzz
