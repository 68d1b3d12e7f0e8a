// Selectors 3, 4 and 5: the SPI flash.
#include <algorithm>

#include "core/blocks.h"
#include "core/bytes.h"
#include "core/chip.h"
#include "core/result_codes.h"

namespace virtual_camera {

std::int32_t Chip::Program(std::uint32_t address, Block bytes) {
  const auto busy = flash_.Program(address, bytes, stuck_words_);
  if (!busy) {
    return kGeneralFailure;
  }
  busy_us_ = *busy;
  return kSuccess;
}

std::int32_t Chip::FlashCommand(Block block) {
  const std::uint32_t address = BigEndian(block.subspan(1, 4));
  switch (block[0]) {
    case kFlashWriteWord:
      return Program(address, block.subspan(5, 4));
    case kFlashErase: {
      const auto busy = flash_.Erase(address);
      if (!busy) {
        return kGeneralFailure;
      }
      busy_us_ = *busy;
      return kSuccess;
    }
    case kFlashReadWord: {
      Reply& reply = ReplyOf(kFlashSelector);
      std::copy_n(block.begin(), 5, reply.bytes.begin());
      if (!flash_.Read(address, std::span(reply.bytes).subspan(5, 4))) {
        reply.result = kGeneralFailure;
      }
      return kSuccess;
    }
    default:
      return kGeneralFailure;
  }
}

std::int32_t Chip::FastWrite(Block block) {
  return Program(BigEndian(block.first(kFastWriteHead)),
                 block.subspan(kFastWriteHead, kPacketLength - kFastWriteHead));
}

std::int32_t Chip::FastRead(Block block) {
  Reply& reply = ReplyOf(kFastReadSelector);
  if (!flash_.Read(BigEndian(block.first(4)), reply.bytes)) {
    reply.result = kGeneralFailure;
  }
  return kSuccess;
}

}  // namespace virtual_camera
