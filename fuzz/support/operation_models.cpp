// Single accesses. Lists and images are in bulk_models.cpp.

#include "support/operation_models.h"

#include <cstdio>

#include "protocol/register_blocks.h"

namespace borvan_fuzz {
namespace {

constexpr auto kNoLength = static_cast<borvan::Result>(0xE0000002);
constexpr borvan::Result kNoUsableAnswer = 1;

std::string TwoDigits(std::uint8_t byte) {
  char text[4];
  std::snprintf(text, sizeof text, "%02x", byte);
  return text;
}

}  // namespace

borvan::Result ModelRegisterRead(Dialogue& dialogue, std::uint32_t address, bool wide,
                                 std::string& value) {
  if (dialogue.Query(1, 4) < 0) {
    return kNoLength;
  }
  const borvan::Result sent = wide ? dialogue.SendAll(borvan::WideRegisterRead(address))
                                   : dialogue.SendAll(borvan::ByteRegisterRead(address));
  if (sent < 0) {
    return sent;
  }
  const Bytes& block = dialogue.Block();
  Bytes low(4);
  if (wide) {
    dialogue.Receive();  // its result is ignored
    low.assign(block.begin(), block.begin() + 4);
  }
  const borvan::Result result = dialogue.Receive();
  if (result < 0) {
    return result;
  }
  if (wide && low[3] == 0x11 && block[3] == 0x21) {
    value = TwoDigits(block[2]) + TwoDigits(block[1]) + TwoDigits(low[2]) + TwoDigits(low[1]);
  } else if (!wide && block[3] == 0x28) {
    value = TwoDigits(block[1]);
  }
  return result;
}

borvan::Result ModelRegisterWrite(Dialogue& dialogue, std::uint32_t address, std::uint32_t value,
                                  bool wide) {
  if (dialogue.Query(1, 4) < 0) {
    return kNoLength;
  }
  return wide ? dialogue.SendAll(borvan::WideRegisterWrite(address, value))
              : dialogue.SendAll(borvan::ByteRegisterWrite(address, value));
}

borvan::Result ModelI2cRead(Dialogue& dialogue, const borvan::I2cAccess& access,
                            std::string& value) {
  if (dialogue.QueryFixed(2, 12) < 0) {
    return kNoLength;
  }
  const borvan::Result sent = dialogue.Send(borvan::I2cReadBlock(access));
  if (sent < 0) {
    return sent;
  }
  const borvan::Result result = dialogue.Receive();
  if (result >= 0 && access.mode >= 0 && access.mode <= 5) {
    const std::size_t bytes = access.mode == 5 ? 4 : access.mode == 2 || access.mode == 4 ? 2 : 1;
    value.clear();
    for (std::size_t at = 12 - bytes; at < 12; ++at) {
      value += TwoDigits(dialogue.Block().at(at));
    }
  }
  return result;
}

borvan::Result ModelI2cWrite(Dialogue& dialogue, const borvan::I2cAccess& access,
                             std::uint32_t value) {
  if (dialogue.QueryFixed(2, 12) < 0) {
    return kNoLength;
  }
  return dialogue.Send(borvan::I2cWriteBlock(access, value));
}

borvan::Result ModelFlashRead(Dialogue& dialogue, std::uint32_t address, std::string& value) {
  const borvan::Result query = dialogue.Query(3, 11);
  if (query < 0) {
    return query;
  }
  const auto read = [&](std::uint32_t at) {
    dialogue.ClearBlock();
    dialogue.Send(borvan::FlashReadWord(at));
    return dialogue.Receive() >= 0;
  };
  // Bytes of the request remain where the reply has none. The replies of the repetitions are not
  // evaluated.
  if (!read(address)) {
    for (std::uint32_t k = 1; k < 4; ++k) {
      const bool below = read(address - k);
      const bool above = read(address - k + 4);
      if (below && above) {
        break;
      }
    }
    return kNoUsableAnswer;
  }
  const Bytes& block = dialogue.Block();
  if (block[0] != 0x34) {
    return kNoUsableAnswer;
  }
  value = TwoDigits(block[5]) + TwoDigits(block[6]) + TwoDigits(block[7]) + TwoDigits(block[8]);
  return 0;
}

borvan::Result ModelFlashCommand(Dialogue& dialogue, const borvan::FlashBlock& command) {
  const borvan::Result query = dialogue.Query(3, 11);
  return query < 0 ? query : dialogue.Send(command);
}

}  // namespace borvan_fuzz
