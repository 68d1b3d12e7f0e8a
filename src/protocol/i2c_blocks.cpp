#include "protocol/i2c_blocks.h"

#include "base/byte_order.h"
#include "base/hexadecimal_text.h"

namespace borvan {
namespace {

constexpr std::size_t kModes = 6;

// Bytes that each width mode moves, in the order of the modes.
struct Width {
  unsigned address_bytes;
  unsigned data_bytes;
};
constexpr std::array<Width, kModes> kWidths = {{{1, 1}, {2, 1}, {2, 2}, {4, 1}, {4, 2}, {4, 4}}};
constexpr Width kOtherWidth = {1, 1};

constexpr bool IsKnownMode(std::int32_t mode) {
  return mode >= 0 && mode < static_cast<std::int32_t>(kModes);
}

constexpr Width WidthOf(std::int32_t mode) {
  return IsKnownMode(mode) ? kWidths[static_cast<std::size_t>(mode)] : kOtherWidth;
}

// Both number fields of a block are 4 bytes, big-endian and right-aligned.
constexpr std::size_t kAddressFieldEnd = 8;
constexpr std::size_t kDataFieldEnd = 12;

void PutRightAligned(I2cBlock& block, std::size_t field_end, unsigned bytes, std::uint32_t number) {
  for (unsigned i = 0; i < bytes; ++i) {
    block[field_end - 1 - i] = ByteOf(number, i);
  }
}

I2cBlock OpenBlock(std::uint8_t direction, const I2cAccess& access) {
  I2cBlock block{};
  block[0] = direction;
  block[1] = ByteOf(access.slave, 0);
  block[2] = ByteOf(access.option, 0);
  block[3] = ByteOf(static_cast<std::uint32_t>(access.mode), 0);
  PutRightAligned(block, kAddressFieldEnd, WidthOf(access.mode).address_bytes,
                  access.register_address);
  return block;
}

}  // namespace

I2cBlock I2cWriteBlock(const I2cAccess& access, std::uint32_t value) {
  I2cBlock block = OpenBlock(i2c::kWrite, access);
  PutRightAligned(block, kDataFieldEnd, WidthOf(access.mode).data_bytes, value);
  return block;
}

I2cBlock I2cReadBlock(const I2cAccess& access) {
  return OpenBlock(i2c::kRead, access);
}

std::optional<std::string> I2cReadValue(const I2cBlock& reply, std::int32_t mode) {
  if (!IsKnownMode(mode)) {
    return std::nullopt;
  }
  std::string text;
  for (std::size_t at = kDataFieldEnd - WidthOf(mode).data_bytes; at < kDataFieldEnd; ++at) {
    text += FormatHexByte(reply[at]);
  }
  return text;
}

std::array<I2cCommand, 2> I2cStepRead(std::uint32_t slave, std::uint32_t mode,
                                      std::uint32_t register_address) {
  return {I2cCommand{i2c::kStepRead, ByteOf(slave, 0), ByteOf(mode, 0), i2c::kStepSlaveTag},
          I2cCommand{i2c::kStepRead, ByteOf(register_address, 0), ByteOf(register_address, 1),
                     i2c::kStepAddressTag}};
}

void PutI2cBlockRead(std::span<std::uint8_t, kBlockReadHead> head, std::uint32_t slave,
                     std::uint32_t mode, std::uint32_t block_start) {
  head[0] = i2c::kBlockRead;
  head[1] = ByteOf(slave, 0);
  if (mode >= kModes) {
    return;
  }
  // One code serves all modes with a 32-bit address.
  head[2] = mode <= static_cast<std::uint32_t>(i2c_mode::kAddress16Data16)
                ? ByteOf(mode, 0)
                : i2c::kBlockWidthFor32BitAddress;
  head[3] = static_cast<std::uint8_t>(kBlockReadCount);
  const unsigned address_bytes = kWidths[mode].address_bytes;
  for (unsigned i = 0; i < 4; ++i) {
    head[kBlockReadHead - 1 - i] = i < address_bytes ? ByteOf(block_start, i) : std::uint8_t{0};
  }
}

}  // namespace borvan
