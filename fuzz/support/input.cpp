#include "support/input.h"

#include <algorithm>

namespace borvan_fuzz {

std::uint8_t Input::Byte() {
  if (rest_.empty()) {
    return 0;
  }
  const std::uint8_t byte = rest_.front();
  rest_ = rest_.subspan(1);
  return byte;
}

std::uint16_t Input::Half() {
  const std::uint8_t high = Byte();
  return static_cast<std::uint16_t>(high << 8 | Byte());
}

std::uint32_t Input::Word() {
  const std::uint32_t high = Half();
  return high << 16 | Half();
}

std::vector<std::uint8_t> Input::Bytes(std::size_t count) {
  const auto taken = rest_.first(std::min(count, rest_.size()));
  rest_ = rest_.subspan(taken.size());
  return {taken.begin(), taken.end()};
}

std::string Input::Text() {
  const std::vector<std::uint8_t> bytes = Bytes(Byte());
  return {bytes.begin(), bytes.end()};
}

}  // namespace borvan_fuzz
