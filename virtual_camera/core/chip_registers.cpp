// Selectors 1 and 7: the chip's own registers.
#include <algorithm>

#include "core/blocks.h"
#include "core/bytes.h"
#include "core/chip.h"
#include "core/result_codes.h"

namespace virtual_camera {
namespace {

constexpr std::uint32_t Join(std::uint16_t low, std::uint16_t high) {
  return (static_cast<std::uint32_t>(high) << 16) | low;
}

// Wide commands have no step tag, so opcode and tag together identify each command.
constexpr std::uint32_t Command(std::uint8_t opcode, std::uint8_t tag) {
  return (static_cast<std::uint32_t>(opcode) << 8) | tag;
}

}  // namespace

std::uint32_t Chip::ReadRegister(std::uint32_t address) const {
  if (const auto written = state_.registers.Find(RegisterSpace::Chip(), address); written) {
    return *written;
  }
  const auto initial = configuration_.registers.find(address);
  return initial == configuration_.registers.end() ? 0 : initial->second;
}

void Chip::WriteByteRegister(std::uint32_t address, std::uint8_t value) {
  state_.registers.Write(RegisterSpace::Chip(), address,
                         (ReadRegister(address) & 0xFFFFFF00) | value);
}

std::int32_t Chip::RegisterCommand(Block block) {
  Latches& latches = state_.fields.latches;
  const std::uint16_t half = LittleEndian16(block[1], block[2]);
  switch (Command(block[0], block[3])) {
    case Command(kWideWriteValueLow, kWideTag):
      latches.wide_value_low = half;
      return kSuccess;
    case Command(kWideWriteValueHigh, kWideTag):
      latches.wide_value_high = half;
      return kSuccess;
    case Command(kWideWriteAddressLow, kWideTag):
    case Command(kWideReadAddressLow, kWideTag):
      latches.wide_address_low = half;
      return kSuccess;
    case Command(kWideWriteAddressHigh, kWideTag):
      state_.registers.Write(RegisterSpace::Chip(), Join(latches.wide_address_low, half),
                             Join(latches.wide_value_low, latches.wide_value_high));
      return kSuccess;
    case Command(kWideReadAddressHigh, kWideTag):
      PrepareWideReply(ReadRegister(Join(latches.wide_address_low, half)));
      return kSuccess;
    case Command(kByteWrite, kByteWriteAddressLowTag):
    case Command(kByteRead, kByteReadAddressLowTag):
      latches.byte_address_low = half;
      return kSuccess;
    case Command(kByteWrite, kByteWriteAddressHighTag):
      latches.byte_address_high = half;
      return kSuccess;
    case Command(kByteWrite, kByteWriteValueTag):
      WriteByteRegister(Join(latches.byte_address_low, latches.byte_address_high), block[1]);
      return kSuccess;
    case Command(kByteRead, kByteReadAddressHighTag): {
      const std::uint32_t value = ReadRegister(Join(latches.byte_address_low, half));
      std::copy_n(
          std::array<std::uint8_t, 4>{kByteRead, static_cast<std::uint8_t>(value), 0, kByteReplyTag}
              .begin(),
          4, ReplyOf(kRegisterSelector).bytes.begin());
      return kSuccess;
    }
    default:
      return kGeneralFailure;
  }
}

void Chip::PrepareWideReply(std::uint32_t value) {
  Reply& reply = ReplyOf(kRegisterSelector);
  reply.bytes[0] = kWideReadAddressHigh;
  reply.bytes[1] = static_cast<std::uint8_t>(value);
  reply.bytes[2] = static_cast<std::uint8_t>(value >> 8);
  reply.bytes[3] = kWideReplyLowTag;
  reply.second = {kWideReadAddressHigh, static_cast<std::uint8_t>(value >> 16),
                  static_cast<std::uint8_t>(value >> 24), kWideReplyHighTag};
  reply.has_second = true;
}

std::int32_t Chip::RegisterBlock(Block block) {
  if (std::equal(kRegisterBlockRead.begin(), kRegisterBlockRead.end(), block.begin())) {
    Reply& reply = ReplyOf(kRegisterBlockSelector);
    std::copy_n(block.begin(), kRunHead, reply.bytes.begin());
    const std::uint32_t start = BigEndian(block.subspan(4, 4));
    for (std::uint32_t i = 0; i < kRunBytes; ++i) {
      reply.bytes[kRunHead + i] = static_cast<std::uint8_t>(ReadRegister(start + i));
    }
    return kSuccess;
  }
  if (block[0] != kRegisterBlockWrite) {
    return kGeneralFailure;
  }
  switch (block[1]) {
    case kRegisterRun:
      return RegisterRun(block);
    case kRegisterScatter:
      return RegisterScatter(block);
    default:
      return kGeneralFailure;
  }
}

std::uint32_t Chip::ListPage(std::uint8_t first, std::uint8_t second) const {
  if (configuration_.list_header == ListHeader::kIgnored) {
    return 0;
  }
  return (static_cast<std::uint32_t>(first) << 24) | (static_cast<std::uint32_t>(second) << 16);
}

std::int32_t Chip::RegisterRun(Block block) {
  const std::size_t count = block[3];
  if (count == 0 || count > kRunBytes) {
    return kGeneralFailure;
  }
  const std::uint32_t page = ListPage(block[4], block[5]);
  const std::uint32_t start = BigEndian(block.subspan(6, 2));
  for (std::size_t i = 0; i < count; ++i) {
    // A run stays in its page, as scattered registers do.
    WriteByteRegister(page | ((start + static_cast<std::uint32_t>(i)) & 0xFFFF),
                      block[kRunHead + i]);
  }
  return kSuccess;
}

std::int32_t Chip::RegisterScatter(Block block) {
  const std::size_t count = block[3];
  const bool has_markers =
      BigEndian(block.subspan(4, 2)) == 0xFFFD && BigEndian(block.subspan(7, 2)) == 0xFFFE;
  if (count == 0 || count > kRegisterScatterRecords || !has_markers) {
    return kGeneralFailure;
  }
  const std::uint32_t page = ListPage(block[6], block[9]);
  for (std::size_t i = 0; i < count; ++i) {
    const Block record = block.subspan(kRegisterScatterHead + 3 * i, 3);
    WriteByteRegister(page | BigEndian(record.first(2)), record[2]);
  }
  return kSuccess;
}

}  // namespace virtual_camera
