#include "protocol/register_blocks.h"

#include "base/byte_order.h"
#include "base/hexadecimal_text.h"

namespace borvan {
namespace {

// Register commands contain 16-bit halves, low byte first.
constexpr RegisterCommand LowHalf(std::uint8_t opcode, std::uint32_t number, std::uint8_t tag) {
  return {opcode, ByteOf(number, 0), ByteOf(number, 1), tag};
}

constexpr RegisterCommand HighHalf(std::uint8_t opcode, std::uint32_t number, std::uint8_t tag) {
  return {opcode, ByteOf(number, 2), ByteOf(number, 3), tag};
}

constexpr std::size_t kReplyLow = 1;
constexpr std::size_t kReplyHigh = 2;
constexpr std::size_t kReplyTag = 3;

std::optional<std::string> WideReadHalf(std::span<const std::uint8_t> reply, std::uint8_t tag) {
  if (reply[kReplyTag] != tag) {
    return std::nullopt;
  }
  return FormatHexByte(reply[kReplyHigh]) + FormatHexByte(reply[kReplyLow]);
}

// The start of a register block read: the 32-bit little-endian word 0x38000001; 0x38 is the count.
constexpr std::array<std::uint8_t, 4> kBlockReadOpening = {
    0x01, 0x00, 0x00, static_cast<std::uint8_t>(kBlockReadCount)};

}  // namespace

std::array<RegisterCommand, 4> WideRegisterWrite(std::uint32_t address, std::uint32_t value) {
  return {LowHalf(wide_register::kWriteValueLow, value, wide_register::kNoTag),
          HighHalf(wide_register::kWriteValueHigh, value, wide_register::kNoTag),
          LowHalf(wide_register::kWriteAddressLow, address, wide_register::kNoTag),
          HighHalf(wide_register::kWriteAddressHigh, address, wide_register::kNoTag)};
}

std::array<RegisterCommand, 2> WideRegisterRead(std::uint32_t address) {
  return {LowHalf(wide_register::kReadAddressLow, address, wide_register::kNoTag),
          HighHalf(wide_register::kReadAddressHigh, address, wide_register::kNoTag)};
}

std::array<RegisterCommand, 3> ByteRegisterWrite(std::uint32_t address, std::uint32_t value) {
  return {LowHalf(byte_register::kWrite, address, byte_register::kWriteAddressLowTag),
          HighHalf(byte_register::kWrite, address, byte_register::kWriteAddressHighTag),
          RegisterCommand{byte_register::kWrite, ByteOf(value, 0), 0x00,
                          byte_register::kWriteValueTag}};
}

std::array<RegisterCommand, 2> ByteRegisterRead(std::uint32_t address) {
  return {LowHalf(byte_register::kRead, address, byte_register::kReadAddressLowTag),
          HighHalf(byte_register::kRead, address, byte_register::kReadAddressHighTag)};
}

std::optional<std::string> WideReadLowHalf(std::span<const std::uint8_t> reply) {
  return WideReadHalf(reply, wide_register::kReplyLowTag);
}

std::optional<std::string> WideReadHighHalf(std::span<const std::uint8_t> reply) {
  return WideReadHalf(reply, wide_register::kReplyHighTag);
}

std::optional<std::string> ByteReadValue(std::span<const std::uint8_t> reply) {
  if (reply[kReplyTag] != byte_register::kReplyTag) {
    return std::nullopt;
  }
  return FormatHexByte(reply[kReplyLow]);
}

void PutRegisterBlockRead(std::span<std::uint8_t, kBlockReadHead> head, std::uint32_t run_start,
                          std::uint16_t block_start) {
  head[0] = kBlockReadOpening[0];
  head[1] = kBlockReadOpening[1];
  head[2] = kBlockReadOpening[2];
  head[3] = kBlockReadOpening[3];
  head[4] = ByteOf(run_start, 3);
  head[5] = ByteOf(run_start, 2);
  head[6] = ByteOf(block_start, 1);
  head[7] = ByteOf(block_start, 0);
}

}  // namespace borvan
