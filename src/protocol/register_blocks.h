#pragma once

// The command blocks of selectors 1 and 7: chip registers.

#include <array>
#include <cstdint>
#include <optional>
#include <span>
#include <string>

#include "protocol/chip_commands.h"

namespace borvan {

using RegisterCommand = std::array<std::uint8_t, kRegisterCommandLength>;

// A 32-bit register value; the chip takes the value before the address.
std::array<RegisterCommand, 4> WideRegisterWrite(std::uint32_t address, std::uint32_t value);

std::array<RegisterCommand, 2> WideRegisterRead(std::uint32_t address);

// An 8-bit register value; the address goes before the value. The value's low 8 bits are sent.
std::array<RegisterCommand, 3> ByteRegisterWrite(std::uint32_t address, std::uint32_t value);

std::array<RegisterCommand, 2> ByteRegisterRead(std::uint32_t address);

// The data of the replies, as lower-case hexadecimal text; nullopt for a reply with a foreign tag.
// `reply` has at least 4 bytes.
std::optional<std::string> WideReadLowHalf(std::span<const std::uint8_t> reply);
std::optional<std::string> WideReadHighHalf(std::span<const std::uint8_t> reply);
std::optional<std::string> ByteReadValue(std::span<const std::uint8_t> reply);

// Writes the 8-byte head of a block read into `head`: 56 registers, starting at `block_start`, in
// the page (bits 16 to 31) of `run_start`.
void PutRegisterBlockRead(std::span<std::uint8_t, kBlockReadHead> head, std::uint32_t run_start,
                          std::uint16_t block_start);

}  // namespace borvan
