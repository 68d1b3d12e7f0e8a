#include "memory_flash.h"

#include <cstring>

#include "cycle_clock.h"

namespace bench {
namespace {

constexpr std::uint32_t kRegisterSelector = 1;
constexpr std::uint32_t kFlashSelector = 3;
constexpr std::uint32_t kFastWriteSelector = 4;
constexpr std::uint32_t kFastReadSelector = 5;

constexpr std::uint32_t kPacketLength = 64;
constexpr std::uint32_t kPieceLength = 60;
constexpr std::uint32_t kFlashBlockLength = 11;
constexpr std::uint32_t kRegisterLength = 4;
constexpr std::uint8_t kEraseOpcode = 0x32;
constexpr std::uint8_t kReadWordOpcode = 0x34;
constexpr std::uint8_t kWriteWordOpcode = 0x38;
constexpr std::uint32_t kWordOffset = 5;
constexpr std::uint32_t kWordLength = 4;
constexpr std::uint32_t kRegisterTagOffset = 3;
constexpr std::uint8_t kByteReadTag = 0x28;
constexpr std::size_t kSectorLength = 4096;
constexpr std::uint8_t kErased = 0xFF;

// An erase at the last address still has its sector inside.
constexpr std::size_t kRoomPastEnd = kSectorLength;

std::uint32_t BigEndian32(const std::uint8_t* bytes) {
  return std::uint32_t{bytes[0]} << 24U | std::uint32_t{bytes[1]} << 16U |
         std::uint32_t{bytes[2]} << 8U | std::uint32_t{bytes[3]};
}

std::uint32_t LengthOf(std::uint32_t selector) {
  if (selector == kRegisterSelector) {
    return kRegisterLength;
  }
  return selector == kFlashSelector ? kFlashBlockLength : kPacketLength;
}

}  // namespace

MemoryFlash::MemoryFlash(std::size_t size)
    : mask_(size - 1), bytes_(size + kRoomPastEnd, kErased) {}

std::int32_t MemoryFlash::MoveWord(bool is_get, std::uint8_t* data) {
  if (is_get) {
    data[0] = kReadWordOpcode;
    std::memcpy(data + kWordOffset, bytes_.data() + (read_address_ & mask_), kWordLength);
    return kAnswerOk;
  }
  const std::uint32_t address = BigEndian32(data + 1);
  switch (data[0]) {
    case kEraseOpcode:
      std::memset(bytes_.data() + (address & mask_), kErased, kSectorLength);
      return kAnswerOk;
    case kReadWordOpcode:
      read_address_ = address;
      return kAnswerOk;
    case kWriteWordOpcode:
      std::memcpy(bytes_.data() + (address & mask_), data + kWordOffset, kWordLength);
      return kAnswerOk;
    default:
      return kAnswerInvalid;
  }
}

std::int32_t MemoryFlash::Move(std::uint32_t selector, bool is_get, std::uint8_t* data,
                               std::uint32_t length) {
  if (selector == kFlashSelector) {
    return length >= kFlashBlockLength ? MoveWord(is_get, data) : kAnswerInvalid;
  }
  if (length < kPacketLength) {
    return kAnswerInvalid;
  }
  if (selector == kFastWriteSelector && !is_get) {
    std::memcpy(bytes_.data() + (BigEndian32(data) & mask_), data + 4, kPieceLength);
    return kAnswerOk;
  }
  if (selector == kFastReadSelector) {
    if (is_get) {
      std::memcpy(data, bytes_.data() + (read_address_ & mask_), kPacketLength);
    } else {
      read_address_ = BigEndian32(data);
    }
    return kAnswerOk;
  }
  return kAnswerInvalid;
}

std::int32_t MemoryFlash::Transfer(std::uint32_t selector, bool is_get, void* data,
                                   std::uint32_t length, std::uint32_t& bytes_returned) {
  if (data == nullptr) {
    bytes_returned = LengthOf(selector);
    return kAnswerMoreData;
  }
  bytes_returned = length;
  if (selector == kRegisterSelector) {
    if (is_get) {
      std::memset(data, 0, length);
      if (length > kRegisterTagOffset) {
        static_cast<std::uint8_t*>(data)[kRegisterTagOffset] = kByteReadTag;
      }
    }
    return kAnswerOk;
  }

  if (clock_.transfers == 0) {
    clock_.first_cycle = Cycles();
  }
  if (clock_.wait_cycles != 0) {
    const std::uint64_t start = Cycles();
    std::uint64_t now = start;
    while (now - start < clock_.wait_cycles) {
      now = Cycles();
    }
    clock_.waited_cycles += now - start;
  }
  const std::int32_t result = Move(selector, is_get, static_cast<std::uint8_t*>(data), length);
  if (++clock_.transfers == clock_.expected_transfers) {
    clock_.last_cycle = Cycles();
    clock_.done.store(true);
  }
  return result;
}

}  // namespace bench
