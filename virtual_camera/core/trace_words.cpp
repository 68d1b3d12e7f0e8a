#include "core/trace_words.h"

#include <algorithm>

#include "core/blocks.h"
#include "core/bytes.h"
#include "core/format.h"

namespace virtual_camera {
namespace {

using Block = std::span<const std::uint8_t>;

unsigned Half(Block block) {
  return LittleEndian16(block[1], block[2]);
}
unsigned Number(Block block, std::size_t position, std::size_t count) {
  return BigEndian(block.subspan(position, count));
}

TransferWords Unknown() {
  return {"unknown block", "no block that the chip knows"};
}

TransferWords ExplainI2c(Block block) {
  if (block[0] == kI2cStepRead || block[0] == kI2cStepWrite) {
    const std::string purpose = block[0] == kI2cStepRead ? "I2C step read" : "I2C step write";
    switch (block[3]) {
      case kStepSlaveTag:
        return {purpose, Format("slave 0x{:02x}, width mode {}", block[1], block[2])};
      case kStepRegisterTag:
        return {purpose, Format("register 0x{:04x}", Half(block))};
      case kStepValueTag:
        return {purpose, Format("value 0x{:04x}", Half(block))};
      default:
        return Unknown();
    }
  }
  if (block[0] > kI2cRead || block.size() < kI2cSingleSize) {
    return Unknown();
  }
  std::string detail = Format("slave 0x{:02x}, width mode {}, option 0x{:02x}, register {:#x}",
                              block[1], block[3], block[2], Number(block, 4, 4));
  if (block[0] == kI2cWrite) {
    detail += Format(" = {:#x}", Number(block, 8, 4));
  }
  return {block[0] == kI2cWrite ? "I2C write" : "I2C read", detail};
}

TransferWords ExplainFlash(Block block) {
  const unsigned address = Number(block, 1, 4);
  switch (block[0]) {
    case kFlashWriteWord:
      return {"flash word write",
              Format("address 0x{:08x} = {:08x}", address, Number(block, 5, 4))};
    case kFlashReadWord:
      return {"flash word read", Format("address 0x{:08x}", address)};
    case kFlashErase:
      return {"flash erase", Format("sector of address 0x{:08x}", address)};
    default:
      return Unknown();
  }
}

TransferWords ExplainI2cBlock(Block block) {
  const unsigned slave = block[1];
  const unsigned count = block[3];
  switch (block[0]) {
    case kI2cBlockRead:
      return {"I2C block read", Format("slave 0x{:02x}, width code {}, {} values from {:#x}", slave,
                                       block[2], count, Number(block, 4, 4))};
    case kI2cRun: {
      const unsigned mode = block[2] & 0x0FU;
      const unsigned first = mode == 0 ? block[7] : Number(block, 6, 2);
      return {"I2C run write",
              Format("slave 0x{:02x}, width mode {}, option {}, {} values from {:#x}", slave, mode,
                     block[2] >> 4U, count, first)};
    }
    case kI2cScatter:
      return {"I2C scatter write", Format("slave 0x{:02x}, width mode {}, option {}, {} records",
                                          slave, block[2] & 0x0FU, block[2] >> 4U, count)};
    default:
      return Unknown();
  }
}

TransferWords ExplainRegisterBlock(Block block) {
  if (std::equal(kRegisterBlockRead.begin(), kRegisterBlockRead.end(), block.begin())) {
    return {"register block read", Format("56 values from 0x{:08x}", Number(block, 4, 4))};
  }
  if (block[0] != kRegisterBlockWrite || block[1] > kRegisterScatter) {
    return Unknown();
  }
  if (block[1] == kRegisterRun) {
    return {"register run write", Format("{} values from 0x{:04x}, header {}, {}, {}", block[3],
                                         Number(block, 6, 2), block[2], block[4], block[5])};
  }
  return {"register scatter write",
          Format("{} records, header {}, {}, {}", block[3], block[2], block[6], block[9])};
}

// The number of bytes that the descriptions read, for any command.
constexpr std::array<std::size_t, kSelectorCount> kShortest = {
    kRegisterCommandSize, kI2cStepSize,  kFlashCommandSize, kPacketLength,
    kPacketLength,        kPacketLength, kPacketLength};

}  // namespace

TransferWords TraceInterpreter::Explain(Direction direction, std::uint32_t selector,
                                        std::span<const std::uint8_t> bytes, std::uint32_t length) {
  if (direction == Direction::kLength) {
    return {"length query", Format("{} bytes", length)};
  }
  if (selector < 1 || selector > kSelectorCount) {
    return {"unknown selector", ""};
  }
  if (direction == Direction::kGet) {
    return ExplainGet(selector, bytes);
  }
  TransferWords words = bytes.size() < kShortest[selector - 1]
                            ? TransferWords{"unknown block", "shorter than its command"}
                            : ExplainSet(selector, bytes);
  last_purpose_[selector - 1] = words.purpose;
  return words;
}

TransferWords TraceInterpreter::ExplainSet(std::uint32_t selector, Block block) {
  switch (selector) {
    case kRegisterSelector:
      return ExplainRegister(block);
    case kI2cSelector:
      return ExplainI2c(block);
    case kFlashSelector:
      return ExplainFlash(block);
    case kFastWriteSelector:
      return {"flash program packet", Format("60 bytes at 0x{:08x}", Number(block, 0, 4))};
    case kFastReadSelector:
      return {"flash fast read", Format("64 bytes from 0x{:08x}", Number(block, 0, 4))};
    case kI2cBlockSelector:
      return ExplainI2cBlock(block);
    default:
      return ExplainRegisterBlock(block);
  }
}

TransferWords TraceInterpreter::ExplainRegister(Block block) {
  const unsigned half = Half(block);
  switch (block[0]) {
    case kWideWriteValueLow:
      return {"register wide write", Format("value bits 0 to 15 = 0x{:04x}", half)};
    case kWideWriteValueHigh:
      return {"register wide write", Format("value bits 16 to 31 = 0x{:04x}", half)};
    case kWideWriteAddressLow:
      return {"register wide write", Format("address bits 0 to 15 = 0x{:04x}", half)};
    case kWideWriteAddressHigh:
      return {"register wide write", Format("address bits 16 to 31 = 0x{:04x}, go", half)};
    case kWideReadAddressLow:
      return {"register wide read", Format("address bits 0 to 15 = 0x{:04x}", half)};
    case kWideReadAddressHigh:
      return {"register wide read", Format("address bits 16 to 31 = 0x{:04x}, go", half)};
    default:
      break;
  }
  if (block[0] == kByteWrite && block[3] == kByteWriteAddressLowTag) {
    return {"register byte write", Format("address bits 0 to 15 = 0x{:04x}", half)};
  }
  if (block[0] == kByteWrite && block[3] == kByteWriteAddressHighTag) {
    return {"register byte write", Format("address bits 16 to 31 = 0x{:04x}", half)};
  }
  if (block[0] == kByteWrite && block[3] == kByteWriteValueTag) {
    return {"register byte write", Format("value = 0x{:02x}, go", block[1])};
  }
  if (block[0] == kByteRead && block[3] == kByteReadAddressLowTag) {
    byte_address_low_ = static_cast<std::uint16_t>(half);
    return {"register byte read", Format("address bits 0 to 15 = 0x{:04x}", half),
            half == kFeatureRegister};
  }
  if (block[0] == kByteRead && block[3] == kByteReadAddressHighTag) {
    const bool is_feature = half == 0 && byte_address_low_ == kFeatureRegister;
    return {is_feature ? "feature register read" : "register byte read",
            Format("address bits 16 to 31 = 0x{:04x}, go", half)};
  }
  return Unknown();
}

TransferWords TraceInterpreter::ExplainGet(std::uint32_t selector, Block block) const {
  const std::string& asked = last_purpose_[selector - 1];
  const std::string purpose = asked.empty() ? "get without a command" : asked;
  if (block.size() < kShortest[selector - 1]) {
    return {purpose, Format("reply of {} bytes", block.size())};
  }
  switch (selector) {
    case kRegisterSelector:
      switch (block[3]) {
        case kWideReplyLowTag:
          return {purpose, Format("reply: value bits 0 to 15 = 0x{:04x}", Half(block))};
        case kWideReplyHighTag:
          return {purpose, Format("reply: value bits 16 to 31 = 0x{:04x}", Half(block))};
        case kByteReplyTag:
          return {purpose, Format("reply: value = 0x{:02x}", block[1])};
        default:
          return {purpose, Format("reply with tag 0x{:02x}", block[3])};
      }
    case kI2cSelector:
      if (block[0] == kI2cRead && block.size() >= kI2cSingleSize) {
        return {purpose, Format("reply: value = {:#x}", Number(block, 8, 4))};
      }
      return {purpose, Format("reply: value = 0x{:02x}", block[1])};
    case kFlashSelector:
      return {purpose, Format("{}bytes {:08x}",
                              block[0] == kFlashReadWord ? "reply: " : "reply without its tag, ",
                              Number(block, 5, 4))};
    default:
      return {purpose, Format("reply of {} bytes", block.size())};
  }
}

}  // namespace virtual_camera
