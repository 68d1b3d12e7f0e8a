#include "protocol/flash_blocks.h"

#include <algorithm>

#include "base/byte_order.h"
#include "base/hexadecimal_text.h"

namespace borvan {
namespace {

constexpr std::size_t kBlockAddress = 1;
constexpr std::size_t kBlockData = 5;
constexpr std::size_t kWordSize = 4;

constexpr std::size_t kPacketAddress = 0;
constexpr std::size_t kPacketData = 4;
static_assert(kPacketData + flash::kPieceSize == kPacketLength);

FlashBlock MakeFlashBlock(std::uint8_t opcode, std::uint32_t address, std::uint32_t value) {
  FlashBlock block{};
  block[0] = opcode;
  PutBigEndian32(std::span(block).subspan<kBlockAddress, kWordSize>(), address);
  PutBigEndian32(std::span(block).subspan<kBlockData, kWordSize>(), value);
  return block;
}

}  // namespace

FlashBlock FlashWriteWord(std::uint32_t address, std::uint32_t value) {
  return MakeFlashBlock(flash::kWriteWord, address, value);
}

FlashBlock FlashReadWord(std::uint32_t address) {
  return MakeFlashBlock(flash::kReadWord, address, 0);
}

FlashBlock FlashEraseSector(std::uint32_t address) {
  return MakeFlashBlock(flash::kErase, address, 0);
}

std::optional<std::string> FlashWordValue(std::span<const std::uint8_t> reply) {
  if (reply[0] != flash::kReadWord) {
    return std::nullopt;
  }
  std::string text;
  for (const std::uint8_t byte : reply.subspan(kBlockData, kWordSize)) {
    text += FormatHexByte(byte);
  }
  return text;
}

Packet FlashWritePacket(std::uint32_t address,
                        std::span<const std::uint8_t, flash::kPieceSize> piece) {
  Packet packet{};
  PutBigEndian32(std::span(packet).subspan<kPacketAddress, kWordSize>(), address);
  std::copy(piece.begin(), piece.end(), packet.begin() + kPacketData);
  return packet;
}

Packet FlashReadRequest(std::uint32_t address) {
  Packet packet{};
  PutBigEndian32(std::span(packet).subspan<kPacketAddress, kWordSize>(), address);
  return packet;
}

}  // namespace borvan
