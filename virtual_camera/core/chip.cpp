#include "core/chip.h"

#include "core/blocks.h"
#include "core/result_codes.h"

namespace virtual_camera {
namespace {

// The minimum number of bytes of the command in `block`.
std::size_t CommandSize(std::uint32_t selector, std::span<const std::uint8_t> block) {
  switch (selector) {
    case kRegisterSelector:
      return kRegisterCommandSize;
    case kI2cSelector: {
      const bool is_step =
          !block.empty() && (block[0] == kI2cStepRead || block[0] == kI2cStepWrite);
      return is_step ? kI2cStepSize : kI2cSingleSize;
    }
    case kFlashSelector:
      return kFlashCommandSize;
    default:
      return kPacketLength;
  }
}

}  // namespace

std::int32_t Chip::Execute(std::uint32_t selector, std::span<const std::uint8_t> data,
                           std::span<const std::uint32_t> stuck_words) {
  busy_us_ = 0;
  stuck_words_ = stuck_words;
  if (data.size() < CommandSize(selector, data)) {
    return kGeneralFailure;
  }
  ReplyOf(selector) = {};
  return Dispatch(selector, data);
}

std::int32_t Chip::Dispatch(std::uint32_t selector, Block block) {
  switch (selector) {
    case kRegisterSelector:
      return RegisterCommand(block);
    case kI2cSelector:
      return I2cCommand(block);
    case kFlashSelector:
      return FlashCommand(block);
    case kFastWriteSelector:
      return FastWrite(block);
    case kFastReadSelector:
      return FastRead(block);
    case kI2cBlockSelector:
      return I2cBlock(block);
    case kRegisterBlockSelector:
      return RegisterBlock(block);
    default:
      return kNotFound;
  }
}

}  // namespace virtual_camera
