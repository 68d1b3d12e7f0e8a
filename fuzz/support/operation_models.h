#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "base/list_entry.h"
#include "protocol/flash_blocks.h"
#include "protocol/i2c_blocks.h"
#include "support/dialogue.h"

namespace borvan_fuzz {

// Simple models of the device object's operations: the bytes that they send, and how they evaluate
// the answers. Each one checks the dialogue and returns the expected result of the operation.

using Bytes = std::vector<std::uint8_t>;
using List = std::vector<borvan::ListEntry>;

// `value` is changed only if the operation must change it.
borvan::Result ModelRegisterRead(Dialogue& dialogue, std::uint32_t address, bool wide,
                                 std::string& value);
borvan::Result ModelRegisterWrite(Dialogue& dialogue, std::uint32_t address, std::uint32_t value,
                                  bool wide);
borvan::Result ModelI2cRead(Dialogue& dialogue, const borvan::I2cAccess& access,
                            std::string& value);
borvan::Result ModelI2cWrite(Dialogue& dialogue, const borvan::I2cAccess& access,
                             std::uint32_t value);
borvan::Result ModelFlashRead(Dialogue& dialogue, std::uint32_t address, std::string& value);
borvan::Result ModelFlashCommand(Dialogue& dialogue, const borvan::FlashBlock& command);

borvan::Result ModelRegisterReadList(Dialogue& dialogue, List& list, std::uint32_t start,
                                     std::uint32_t end);
borvan::Result ModelRegisterWriteList(Dialogue& dialogue, List list);
borvan::Result ModelI2cReadBlocks(Dialogue& dialogue, List& list, std::uint32_t slave,
                                  std::uint32_t start, std::uint32_t end, std::uint32_t mode);
borvan::Result ModelI2cReadSteps(Dialogue& dialogue, List& list, std::uint32_t slave,
                                 std::uint32_t start, std::uint32_t end, std::uint32_t mode);
borvan::Result ModelI2cWritePackets(Dialogue& dialogue, const List& list, std::uint32_t option);
borvan::Result ModelI2cWriteSteps(Dialogue& dialogue, const List& list);

borvan::Result ModelFlashReadImage(Dialogue& dialogue, Bytes& output, std::uint32_t start,
                                   std::uint32_t end);
borvan::Result ModelFlashWriteImage(Dialogue& dialogue, Bytes image, std::uint32_t start);

}  // namespace borvan_fuzz
