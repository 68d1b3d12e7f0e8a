#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

#include "base/result.h"
#include "device/extension_unit_channel.h"
#include "protocol/chip_commands.h"

namespace borvan {

// The result of a length query.
struct LengthReport {
  Result result = kOk;
  std::uint32_t length = 0;  // 0 unless the query succeeded
};

// One step of a register or I2C command; each step is a separate transfer.
using CommandStep = std::array<std::uint8_t, kRegisterCommandLength>;
static_assert(kRegisterCommandLength == kI2cCommandLength);

// The transfers that the chip's commands consist of. Refers to the device object's channel, which
// must outlive this object. Transfers of several threads may interleave.
class CommandChannel {
 public:
  explicit CommandChannel(const ExtensionUnitChannel& channel) : channel_(channel) {}

  bool IsOpen() const { return channel_.IsOpen(); }

  // Queries a selector's length and rejects a length that no USB control can have.
  LengthReport QueryLength(Selector selector) const;

  // Makes a length query and returns only its result. Accepts any length.
  Result CheckAnswer(Selector selector) const;

  Result Set(Selector selector, std::uint32_t length, std::span<std::uint8_t> block) const;
  Result Get(Selector selector, std::uint32_t length, std::span<std::uint8_t> block) const;

  // Sends the steps in order, each copied to the start of `block`. Deliberately ignores the results
  // of earlier steps and returns that of the last one.
  Result SetSteps(Selector selector, std::span<const CommandStep> steps, std::uint32_t length,
                  std::span<std::uint8_t> block) const;

 private:
  const ExtensionUnitChannel& channel_;
};

// A zeroed buffer, long enough for the command and for the length that the device reported.
std::vector<std::uint8_t> MakeTransferBuffer(std::uint32_t length, std::size_t command_length);

}  // namespace borvan
