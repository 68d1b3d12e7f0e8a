#pragma once

// The constants of the chip's command protocol: control selectors, opcodes, tags, lengths.

#include <cstddef>
#include <cstdint>

namespace borvan {

// Control selectors of the vendor extension unit.
enum class Selector : std::uint32_t {
  kRegister = 1,
  kI2c = 2,
  kFlash = 3,
  kFlashFastWrite = 4,
  kFlashFastRead = 5,
  kI2cBlock = 6,
  kRegisterBlock = 7,
};

// The length field of a USB control transfer has 16 bits: a larger reported length can't be true.
constexpr std::uint32_t kLargestControlLength = 0xFFFF;

constexpr std::size_t kRegisterCommandLength = 4;
constexpr std::size_t kI2cCommandLength = 4;
constexpr std::size_t kI2cBlockLength = 12;
constexpr std::size_t kFlashBlockLength = 11;

// Wide register commands: the high nibble says which half is sent, the low nibble the direction.
namespace wide_register {
constexpr std::uint8_t kWriteValueLow = 0x12;
constexpr std::uint8_t kWriteValueHigh = 0x22;
constexpr std::uint8_t kWriteAddressLow = 0x42;
constexpr std::uint8_t kWriteAddressHigh = 0x82;
constexpr std::uint8_t kReadAddressLow = 0x41;
constexpr std::uint8_t kReadAddressHigh = 0x81;
constexpr std::uint8_t kNoTag = 0x00;
constexpr std::uint8_t kReplyLowTag = 0x11;
constexpr std::uint8_t kReplyHighTag = 0x21;
}  // namespace wide_register

// Byte register commands: one opcode per direction; the tag contains the step.
namespace byte_register {
constexpr std::uint8_t kWrite = 0x28;
constexpr std::uint8_t kWriteAddressLowTag = 0x08;
constexpr std::uint8_t kWriteAddressHighTag = 0x38;
constexpr std::uint8_t kWriteValueTag = 0x48;
constexpr std::uint8_t kRead = 0x24;
constexpr std::uint8_t kReadAddressLowTag = 0x18;
constexpr std::uint8_t kReadAddressHighTag = 0x58;
constexpr std::uint8_t kReplyTag = 0x28;
}  // namespace byte_register

namespace i2c {
constexpr std::uint8_t kWrite = 0x00;
constexpr std::uint8_t kRead = 0x01;
// Per-address read of a run.
constexpr std::uint8_t kStepRead = 0x14;
constexpr std::uint8_t kStepSlaveTag = 0x01;
constexpr std::uint8_t kStepAddressTag = 0x02;
// Step commands of a list write.
constexpr std::uint8_t kStepWrite = 0x18;
constexpr std::uint8_t kStepValueTag = 0x04;
// Blocks of a list write.
constexpr std::uint8_t kListRun = 0x00;
constexpr std::uint8_t kListScatter = 0x01;
// Block read.
constexpr std::uint8_t kBlockRead = 0x10;
constexpr std::uint8_t kBlockWidthFor32BitAddress = 0x05;
}  // namespace i2c

namespace flash {
constexpr std::uint8_t kWriteWord = 0x38;
constexpr std::uint8_t kReadWord = 0x34;
constexpr std::uint8_t kErase = 0x32;
constexpr std::uint32_t kSectorSize = 4096;
constexpr std::size_t kPieceSize = 60;
constexpr std::uint8_t kErasedByte = 0xFF;
}  // namespace flash

// Reserved addresses of list entries.
namespace list_marker {
constexpr std::uint32_t kPause = 0xFFFF;
constexpr std::uint32_t kFirstDelay = 0xFFFD;   // register lists; in dumps bits 24 to 31
constexpr std::uint32_t kSecondDelay = 0xFFFE;  // register lists; in dumps bits 16 to 23
constexpr std::uint32_t kSlave = 0xFFF8;        // I2C lists
constexpr std::uint32_t kWidthCode = 0xFFFE;    // I2C lists, after kSlave
constexpr std::uint32_t kIgnoredA = 0xFEF0;     // I2C lists
constexpr std::uint32_t kIgnoredB = 0xFEF1;     // I2C lists
constexpr std::uint32_t kLongestPause = 255;    // ms
}  // namespace list_marker

// Blocks of a register list write.
namespace register_list {
constexpr std::uint8_t kRun = 0x00;
constexpr std::uint8_t kScatter = 0x01;
constexpr std::size_t kScatterRecords = 18;
constexpr std::uint32_t kLongestRun = 56;
constexpr std::uint32_t kShortestRun = 21;
}  // namespace register_list

// Block reads of I2C and chip registers return 56 values after an 8-byte head.
constexpr std::uint32_t kBlockReadCount = 56;
constexpr std::size_t kBlockReadHead = 8;

// Width modes of I2C accesses: bits of the register address and of the data.
namespace i2c_mode {
constexpr std::int32_t kAddress8Data8 = 0;
constexpr std::int32_t kAddress16Data8 = 1;
constexpr std::int32_t kAddress16Data16 = 2;
constexpr std::int32_t kAddress32Data8 = 3;
constexpr std::int32_t kAddress32Data16 = 4;
constexpr std::int32_t kAddress32Data32 = 5;
}  // namespace i2c_mode

// The chip register that shows which fast paths its firmware supports.
constexpr std::uint32_t kFeatureRegister = 0x1A3;
constexpr std::int32_t kFeatureFastI2c = 0x20;

}  // namespace borvan
