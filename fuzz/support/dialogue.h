#pragma once

#include <cstdint>
#include <span>
#include <string>
#include <vector>

#include "support/hostile_control.h"

namespace borvan_fuzz {

// Compares the recorded exchanges of one operation with the expected ones. Each step fails the
// property if another transfer was made, or if other bytes were sent.
class Dialogue {
 public:
  explicit Dialogue(const std::vector<Exchange>& exchanges) : exchanges_(exchanges) {}

  // A length query. Afterwards Block() is zeroed and has `minimum` bytes or the reported length. A
  // length that is impossible for a USB control is a failure and counts as 0.
  borvan::Result Query(std::uint32_t selector, std::size_t minimum);
  // A length query for accesses with a fixed length: the reported length is ignored.
  borvan::Result QueryFixed(std::uint32_t selector, std::uint32_t length);

  // A set of the block, which starts with `command`.
  borvan::Result Send(std::span<const std::uint8_t> command);
  // The same for each command. Returns the result of the last one.
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

  // Fails unless all exchanges were compared.
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
