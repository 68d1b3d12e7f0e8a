#pragma once

// Describes a transfer in words.

#include <array>
#include <cstdint>
#include <span>
#include <string>

#include "core/configuration.h"

namespace virtual_camera {

struct TransferWords {
  std::string purpose;  // such as "flash erase"; the summary counts by it
  std::string detail;
  // The first step of a byte read does not show yet whether it reads the feature register.
  bool undecided = false;
};

// Interprets the transfers of one camera, in their order. The meaning of replies and later steps
// depends on the transfers before them.
class TraceInterpreter {
 public:
  TransferWords Explain(Direction direction, std::uint32_t selector,
                        std::span<const std::uint8_t> bytes, std::uint32_t length);

 private:
  using Block = std::span<const std::uint8_t>;

  TransferWords ExplainSet(std::uint32_t selector, Block block);
  TransferWords ExplainGet(std::uint32_t selector, Block block) const;
  TransferWords ExplainRegister(Block block);

  std::uint16_t byte_address_low_ = 0;
  std::array<std::string, kSelectorCount> last_purpose_;
};

}  // namespace virtual_camera
