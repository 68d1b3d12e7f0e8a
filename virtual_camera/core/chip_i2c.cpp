// Selectors 2 and 6: the registers of the sensors on the chip's I2C bus.
#include <algorithm>

#include "core/blocks.h"
#include "core/bytes.h"
#include "core/chip.h"
#include "core/result_codes.h"

namespace virtual_camera {
namespace {

constexpr std::size_t kSingleAddress = 4;
constexpr std::size_t kSingleData = 8;
constexpr std::uint8_t kHighestListMode = 2;  // list blocks support modes 0 to 2

// Records that fit a scatter packet, and values that fit a run, in a list mode.
constexpr std::size_t ScatterRecordSize(const WidthMode& width) {
  return width.address_bytes + width.data_bytes;
}
constexpr std::size_t ScatterCapacity(const WidthMode& width) {
  return (kPacketLength - kI2cScatterHead) / ScatterRecordSize(width);
}
constexpr std::size_t RunCapacity(const WidthMode& width) {
  return kRunBytes / width.data_bytes;
}

}  // namespace

std::int32_t Chip::BusWrite(std::uint8_t slave, std::uint8_t mode, std::uint32_t address,
                            std::uint32_t value) {
  const bool acknowledged = bus_.Write(slave, mode, address, value);
  return acknowledged || configuration_.absent_slave != AbsentSlave::kFailure ? kSuccess
                                                                              : kGeneralFailure;
}

std::uint32_t Chip::BusRead(std::uint8_t slave, std::uint8_t mode, std::uint32_t address,
                            Reply& reply) const {
  if (const auto value = bus_.Read(slave, mode, address); value) {
    return *value;
  }
  if (configuration_.absent_slave == AbsentSlave::kFailure) {
    reply.result = kGeneralFailure;
  }
  return configuration_.absent_slave == AbsentSlave::kOnes ? 0xFFFFFFFF : 0;
}

std::int32_t Chip::I2cCommand(Block block) {
  switch (block[0]) {
    case kI2cWrite:
    case kI2cRead:
      return I2cSingle(block);
    case kI2cStepRead:
      return I2cStepRead(block);
    case kI2cStepWrite:
      return I2cStepWrite(block);
    default:
      return kGeneralFailure;
  }
}

std::int32_t Chip::I2cSingle(Block block) {
  const std::uint8_t slave = block[1];
  const std::uint8_t mode = KnownMode(block[3]);
  const WidthMode width = kWidthModes[mode];
  const std::uint32_t address =
      BigEndian(block.subspan(kSingleAddress + 4 - width.address_bytes, width.address_bytes));
  if (block[0] == kI2cWrite) {
    const std::uint32_t value =
        BigEndian(block.subspan(kSingleData + 4 - width.data_bytes, width.data_bytes));
    return BusWrite(slave, mode, address, value);
  }
  Reply& reply = ReplyOf(kI2cSelector);
  std::copy_n(block.begin(), kSingleData, reply.bytes.begin());
  PutBigEndian(
      BusRead(slave, mode, address, reply),
      std::span(reply.bytes).subspan(kSingleData + 4 - width.data_bytes, width.data_bytes));
  return kSuccess;
}

std::int32_t Chip::I2cStepRead(Block block) {
  Latches& latches = state_.fields.latches;
  switch (block[3]) {
    case kStepSlaveTag:
      latches.read_slave = block[1];
      latches.read_mode = block[2];
      return kSuccess;
    case kStepRegisterTag: {
      Reply& reply = ReplyOf(kI2cSelector);
      reply.bytes[0] = kI2cStepRead;
      reply.bytes[1] =
          static_cast<std::uint8_t>(BusRead(latches.read_slave, KnownMode(latches.read_mode),
                                            LittleEndian16(block[1], block[2]), reply));
      return kSuccess;
    }
    default:
      return kGeneralFailure;
  }
}

std::int32_t Chip::I2cStepWrite(Block block) {
  Latches& latches = state_.fields.latches;
  const std::uint16_t half = LittleEndian16(block[1], block[2]);
  switch (block[3]) {
    case kStepSlaveTag:
      latches.step_slave = block[1];
      latches.step_mode = block[2];
      return kSuccess;
    case kStepRegisterTag:
      latches.step_register = half;
      return kSuccess;
    case kStepValueTag:
      return BusWrite(latches.step_slave, KnownMode(latches.step_mode), latches.step_register,
                      half);
    default:
      return kGeneralFailure;
  }
}

std::int32_t Chip::I2cBlock(Block block) {
  switch (block[0]) {
    case kI2cBlockRead:
      return I2cBlockRead(block);
    case kI2cRun:
      return I2cRun(block);
    case kI2cScatter:
      return I2cScatter(block);
    default:
      return kGeneralFailure;
  }
}

std::int32_t Chip::I2cBlockRead(Block block) {
  const std::uint8_t slave = block[1];
  const std::uint8_t code = block[2];
  const std::size_t count = block[3];
  if ((code > kHighestListMode && code != kWide32Code) || count > kRunBytes) {
    return kGeneralFailure;
  }
  // One code stands for all modes with 32-bit addresses: the sensor's own mode is used.
  std::uint8_t mode = code;
  if (const auto own = bus_.ModeOf(slave);
      code == kWide32Code && own && kWidthModes[*own].address_bytes == 4) {
    mode = *own;
  }
  const std::size_t address_bytes = kWidthModes[mode].address_bytes;
  const std::uint32_t start = BigEndian(block.subspan(kRunHead - address_bytes, address_bytes));
  Reply& reply = ReplyOf(kI2cBlockSelector);
  std::copy_n(block.begin(), kRunHead, reply.bytes.begin());
  for (std::size_t i = 0; i < count; ++i) {
    reply.bytes[kRunHead + i] = static_cast<std::uint8_t>(
        BusRead(slave, mode, start + static_cast<std::uint32_t>(i), reply));
  }
  return kSuccess;
}

std::int32_t Chip::I2cRun(Block block) {
  const std::uint8_t mode = block[2] & 0x0F;  // the high nibble is the host's option
  const std::size_t count = block[3];
  if (mode > kHighestListMode || count == 0 || count > RunCapacity(kWidthModes[mode])) {
    return kGeneralFailure;
  }
  const WidthMode width = kWidthModes[mode];
  const std::uint32_t start =
      BigEndian(block.subspan(kRunHead - width.address_bytes, width.address_bytes));
  std::int32_t result = kSuccess;
  for (std::size_t i = 0; i < count; ++i) {
    const std::uint32_t value =
        BigEndian(block.subspan(kRunHead + width.data_bytes * i, width.data_bytes));
    result = BusWrite(block[1], mode, start + static_cast<std::uint32_t>(i), value);
  }
  return result;
}

std::int32_t Chip::I2cScatter(Block block) {
  const std::uint8_t mode = block[2] & 0x0F;
  const std::size_t count = block[3];
  if (mode > kHighestListMode || count == 0 || count > ScatterCapacity(kWidthModes[mode])) {
    return kGeneralFailure;
  }
  const WidthMode width = kWidthModes[mode];
  std::int32_t result = kSuccess;
  for (std::size_t i = 0; i < count; ++i) {
    const Block record =
        block.subspan(kI2cScatterHead + ScatterRecordSize(width) * i, ScatterRecordSize(width));
    result = BusWrite(block[1], mode, BigEndian(record.first(width.address_bytes)),
                      BigEndian(record.subspan(width.address_bytes)));
  }
  return result;
}

}  // namespace virtual_camera
