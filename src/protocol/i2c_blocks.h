#pragma once

// The command blocks of selectors 2 and 6: devices on the chip's I2C bus.

#include <array>
#include <cstdint>
#include <optional>
#include <span>
#include <string>

#include "protocol/chip_commands.h"

namespace borvan {

using I2cBlock = std::array<std::uint8_t, kI2cBlockLength>;
using I2cCommand = std::array<std::uint8_t, kI2cCommandLength>;

// The parameters of a single I2C access. Only the low bytes of `slave`, `option` and `mode` are
// sent. A mode outside 0 to 5 sends an 8-bit address and 8-bit data.
struct I2cAccess {
  std::uint32_t slave = 0;
  std::uint32_t register_address = 0;
  std::int32_t mode = 0;
  std::uint32_t option = 0;
};

I2cBlock I2cWriteBlock(const I2cAccess& access, std::uint32_t value);

I2cBlock I2cReadBlock(const I2cAccess& access);

// The data of a read's reply as hexadecimal text, two digits for each byte of the mode's data
// width; nullopt for a mode outside 0 to 5.
std::optional<std::string> I2cReadValue(const I2cBlock& reply, std::int32_t mode);

// The two requests of a per-address read. In every mode they send the low 16 bits of the address.
std::array<I2cCommand, 2> I2cStepRead(std::uint32_t slave, std::uint32_t mode,
                                      std::uint32_t register_address);

// Writes the 8-byte head of a block read into `head`: 56 values, starting at `block_start`. A mode
// above 5 leaves bytes 2 to 7 unchanged.
void PutI2cBlockRead(std::span<std::uint8_t, kBlockReadHead> head, std::uint32_t slave,
                     std::uint32_t mode, std::uint32_t block_start);

}  // namespace borvan
