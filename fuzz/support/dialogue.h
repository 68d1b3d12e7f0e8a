#pragma once

#include <cstdint>
#include <span>
#include <string>
#include <vector>

#include "support/hostile_control.h"

namespace borvan_fuzz {

// Walks the exchanges of one operation beside what the operation should have said: each step fails
// the property when another transfer was made, or other bytes were sent.
class Dialogue {
 public:
  explicit Dialogue(const std::vector<Exchange>& exchanges) : exchanges_(exchanges) {}

  // A length query. Afterwards Block() is zeroed and holds `minimum` bytes or the reported length.
  // A length that no USB control can have is a failure, and the length is 0.
  borvan::Result Query(std::uint32_t selector, std::size_t minimum);
  // For accesses whose length is fixed: the report plays no part.
  borvan::Result QueryFixed(std::uint32_t selector, std::uint32_t length);

  // A set of the block, with `command` put at its begin.
  borvan::Result Send(std::span<const std::uint8_t> command);
  // The same for each command; the last one's result.
  template <typename Commands>
  borvan::Result SendAll(const Commands& commands) {
    borvan::Result result = 0;
    for (const auto& command : commands) {
      result = Send(command);
    }
    return result;
  }

  // A get into the block.
  borvan::Result Receive();

  std::vector<std::uint8_t>& Block() { return block_; }
  void ClearBlock() { block_.assign(block_.size(), 0); }

  // Fails unless every exchange was walked.
  void End() const;

 private:
  const Exchange& Next(Direction direction);

  const std::vector<Exchange>& exchanges_;
  std::size_t at_ = 0;
  std::uint32_t selector_ = 0;
  std::uint32_t length_ = 0;
  std::vector<std::uint8_t> block_;
};

}  // namespace borvan_fuzz
