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

// What a length query gave.
struct LengthReport {
  Result result = kOk;
  std::uint32_t length = 0;  // 0 unless the query succeeded
};

// One step of a register or I2C command; each step is a transfer of its own.
using CommandStep = std::array<std::uint8_t, kRegisterCommandLength>;
static_assert(kRegisterCommandLength == kI2cCommandLength);

// The transfers that the chip's commands are made of. It refers to the device object's channel,
// which must outlive it. Transfers of several threads may interleave.
class CommandChannel {
 public:
  explicit CommandChannel(const ExtensionUnitChannel& channel) : channel_(channel) {}

  bool IsOpen() const { return channel_.IsOpen(); }

  // Asks for a selector's length and refuses what no USB control can have.
  LengthReport QueryLength(Selector selector) const;

  // The answer to a length query whose length plays no part: any passes.
  Result CheckAnswer(Selector selector) const;

  Result Set(Selector selector, std::uint32_t length, std::span<std::uint8_t> block) const;
  Result Get(Selector selector, std::uint32_t length, std::span<std::uint8_t> block) const;

  // Sends the steps in order, each copied to the start of `block`. Earlier steps are deliberately
  // not looked at: only the last one's result counts.
  Result SetSteps(Selector selector, std::span<const CommandStep> steps, std::uint32_t length,
                  std::span<std::uint8_t> block) const;

 private:
  const ExtensionUnitChannel& channel_;
};

// A zeroed buffer that holds the command and whatever length the device wants.
std::vector<std::uint8_t> MakeTransferBuffer(std::uint32_t length, std::size_t command_length);

}  // namespace borvan
