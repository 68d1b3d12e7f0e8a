#pragma once

// The command blocks of selectors 3, 4 and 5: the SPI flash.

#include <array>
#include <cstdint>
#include <optional>
#include <span>
#include <string>

#include "base/packet.h"
#include "protocol/chip_commands.h"

namespace borvan {

using FlashBlock = std::array<std::uint8_t, kFlashBlockLength>;

FlashBlock FlashWriteWord(std::uint32_t address, std::uint32_t value);
FlashBlock FlashReadWord(std::uint32_t address);
FlashBlock FlashEraseSector(std::uint32_t address);

// The data bytes of a word read's reply as eight hexadecimal digits, in flash order; nullopt for a
// reply that does not echo the command. `reply` has at least 11 bytes.
std::optional<std::string> FlashWordValue(std::span<const std::uint8_t> reply);

// A fast write packet: the address of its 60 bytes, then the bytes.
Packet FlashWritePacket(std::uint32_t address,
                        std::span<const std::uint8_t, flash::kPieceSize> piece);

// A fast read request. The reply contains 64 bytes of flash, starting at `address`.
Packet FlashReadRequest(std::uint32_t address);

}  // namespace borvan
