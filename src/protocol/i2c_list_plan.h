#pragma once

// Plans an I2C list: what to send and where to pause, as values, before anything is sent.

#include <array>
#include <cstdint>
#include <vector>

#include "base/list_entry.h"
#include "base/packet.h"
#include "protocol/i2c_blocks.h"

namespace borvan {

// One entry of a list on the step path. Each is preceded by a check for a stop request.
struct I2cListStep {
  enum class Kind : std::uint8_t {
    kNothing,     // an ignored entry, or one that is only remembered
    kPause,       // `value` in milliseconds
    kWidth,       // writes the width code to the register of its own address
    kWrite,       // writes a register
    kIncomplete,  // a register before the slave and width: ends the list
  };
  Kind kind = Kind::kNothing;
  std::uint8_t slave = 0;
  std::uint8_t mode = 0;
  std::uint16_t register_address = 0;
  std::uint32_t value = 0;
};

// The step path, one step per entry. Ends early after a step kIncomplete.
std::vector<I2cListStep> PlanI2cSteps(const std::vector<ListEntry>& list);

// The three commands of a step kWidth or kWrite.
std::array<I2cCommand, 3> I2cStepWrite(const I2cListStep& step);

// One action of the fast path. `polls` checks for a stop request precede it: one for each list
// entry that was taken since the previous action.
struct I2cListAction {
  enum class Kind : std::uint8_t {
    kSend,        // the next packet
    kPause,       // `pause` in milliseconds
    kIncomplete,  // slave and width missing: ends the list
    kEnd,         // the end of the list
  };
  Kind kind = Kind::kEnd;
  std::uint32_t polls = 0;
  std::uint32_t pause = 0;
};

struct I2cListPlan {
  std::vector<I2cListAction> actions;
  std::vector<Packet> packets;  // one for each kSend, in order
};

// The fast path: runs of consecutive registers and scattered ones in 64-byte packets. The low 4
// bits of `option` are sent to the chip.
I2cListPlan PlanI2cPackets(const std::vector<ListEntry>& list, std::uint32_t option);

}  // namespace borvan
