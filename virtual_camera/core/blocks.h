#pragma once

// The command blocks of the seven control selectors, as the chip reads them: opcodes, tags, sizes.

#include <array>
#include <cstddef>
#include <cstdint>

namespace virtual_camera {

enum Selector : std::uint32_t {
  kRegisterSelector = 1,
  kI2cSelector = 2,
  kFlashSelector = 3,
  kFastWriteSelector = 4,
  kFastReadSelector = 5,
  kI2cBlockSelector = 6,
  kRegisterBlockSelector = 7,
};

// Selector 1. Byte 0 opcode, bytes 1 and 2 a 16-bit half (low byte first), byte 3 step tag.
// Wide commands: the high nibble says which half, the low nibble the direction.
inline constexpr std::uint8_t kWideWriteValueLow = 0x12;
inline constexpr std::uint8_t kWideWriteValueHigh = 0x22;
inline constexpr std::uint8_t kWideWriteAddressLow = 0x42;
inline constexpr std::uint8_t kWideWriteAddressHigh = 0x82;
inline constexpr std::uint8_t kWideReadAddressLow = 0x41;
inline constexpr std::uint8_t kWideReadAddressHigh = 0x81;
inline constexpr std::uint8_t kWideTag = 0x00;
inline constexpr std::uint8_t kWideReplyLowTag = 0x11;
inline constexpr std::uint8_t kWideReplyHighTag = 0x21;
inline constexpr std::uint8_t kByteWrite = 0x28;
inline constexpr std::uint8_t kByteWriteAddressLowTag = 0x08;
inline constexpr std::uint8_t kByteWriteAddressHighTag = 0x38;
inline constexpr std::uint8_t kByteWriteValueTag = 0x48;
inline constexpr std::uint8_t kByteRead = 0x24;
inline constexpr std::uint8_t kByteReadAddressLowTag = 0x18;
inline constexpr std::uint8_t kByteReadAddressHighTag = 0x58;
inline constexpr std::uint8_t kByteReplyTag = 0x28;
inline constexpr std::size_t kRegisterCommandSize = 4;

// Bit 0x20 of this register tells hosts that the fast I2C blocks of selector 6 may be used.
inline constexpr std::uint32_t kFeatureRegister = 0x1A3;

// Selector 2. Single transfers: direction, slave, option, width mode, address, data.
inline constexpr std::uint8_t kI2cWrite = 0x00;
inline constexpr std::uint8_t kI2cRead = 0x01;
inline constexpr std::size_t kI2cSingleSize = 12;
// Steps: opcode, two bytes, step tag.
inline constexpr std::uint8_t kI2cStepRead = 0x14;
inline constexpr std::uint8_t kI2cStepWrite = 0x18;
inline constexpr std::uint8_t kStepSlaveTag = 0x01;
inline constexpr std::uint8_t kStepRegisterTag = 0x02;
inline constexpr std::uint8_t kStepValueTag = 0x04;
inline constexpr std::size_t kI2cStepSize = 4;

// Selector 3. Opcode, address and data, most significant byte first, two spare bytes.
inline constexpr std::uint8_t kFlashWriteWord = 0x38;
inline constexpr std::uint8_t kFlashReadWord = 0x34;
inline constexpr std::uint8_t kFlashErase = 0x32;
inline constexpr std::size_t kFlashCommandSize = 11;

// Selectors 4 to 7 move whole packets.
inline constexpr std::size_t kPacketLength = 64;
inline constexpr std::size_t kFastWriteHead = 4;

// Selector 6.
inline constexpr std::uint8_t kI2cBlockRead = 0x10;
inline constexpr std::uint8_t kI2cRun = 0x00;
inline constexpr std::uint8_t kI2cScatter = 0x01;
inline constexpr std::uint8_t kWide32Code = 0x05;  // width code of every 32-bit address mode
inline constexpr std::size_t kRunHead = 8;
inline constexpr std::size_t kRunBytes = 56;
inline constexpr std::size_t kI2cScatterHead = 4;

// Selector 7.
inline constexpr std::array<std::uint8_t, 4> kRegisterBlockRead = {0x01, 0x00, 0x00, 0x38};
inline constexpr std::uint8_t kRegisterBlockWrite = 0x00;  // byte 0; byte 1 is the kind:
inline constexpr std::uint8_t kRegisterRun = 0x00;
inline constexpr std::uint8_t kRegisterScatter = 0x01;
inline constexpr std::size_t kRegisterScatterHead = 10;
inline constexpr std::size_t kRegisterScatterRecords = 18;

// Address and data bytes on the I2C bus in a width mode.
struct WidthMode {
  std::size_t address_bytes;
  std::size_t data_bytes;
};
inline constexpr std::array<WidthMode, 6> kWidthModes = {
    {{1, 1}, {2, 1}, {2, 2}, {4, 1}, {4, 2}, {4, 4}}};

// A mode that is not in the table uses an 8-bit address and 8-bit data.
constexpr std::uint8_t KnownMode(std::uint8_t mode) {
  return mode < kWidthModes.size() ? mode : std::uint8_t{0};
}

constexpr std::uint32_t LowBytes(std::uint32_t value, std::size_t bytes) {
  return bytes >= 4 ? value : value & ((1U << (8 * bytes)) - 1);
}

}  // namespace virtual_camera
