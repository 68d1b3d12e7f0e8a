// Flash words and erases, one at a time, on selector 3.

#include <algorithm>

#include "base/hexadecimal_text.h"
#include "protocol/borvan_usb_q7.h"
#include "protocol/flash_blocks.h"

namespace borvan {
namespace {

constexpr std::uint32_t kWordSize = 4;

// A read that gave no usable answer; not negative, so hosts see the value 0 and no failure.
constexpr Result kNoUsableAnswer = 1;

void PutBlock(std::span<std::uint8_t> buffer, const FlashBlock& block) {
  std::copy(block.begin(), block.end(), buffer.begin());
}

}  // namespace

Result BorvanUsb_Q7::SendFlashBlock(const FlashBlock& command) {
  const LengthReport report = QueryLength(Selector::kFlash);
  if (HasFailed(report.result)) {
    return report.result;
  }
  std::vector<std::uint8_t> block = MakeBlock(report.length, kFlashBlockLength);
  PutBlock(block, command);
  return Set(Selector::kFlash, report.length, block);
}

Result BorvanUsb_Q7::FlashWrite(std::string address, std::string value) {
  if (!Channel().IsOpen()) {
    return kNullPointer;
  }
  return SendFlashBlock(FlashWriteWord(ParseUnsignedLong(address), ParseUnsignedLong(value)));
}

Result BorvanUsb_Q7::FlashErase(std::string address) {
  if (!Channel().IsOpen()) {
    return kNullPointer;
  }
  return SendFlashBlock(FlashEraseSector(ParseUnsignedLong(address)));
}

Result BorvanUsb_Q7::FlashRead(std::string address, std::string& value) {
  if (!Channel().IsOpen()) {
    return kNullPointer;
  }
  const LengthReport report = QueryLength(Selector::kFlash);
  if (HasFailed(report.result)) {
    return report.result;
  }
  const std::uint32_t address_number = ParseUnsignedLong(address);
  std::vector<std::uint8_t> block = MakeBlock(report.length, kFlashBlockLength);
  PutBlock(block, FlashReadWord(address_number));
  static_cast<void>(Set(Selector::kFlash, report.length, block));
  if (HasFailed(Get(Selector::kFlash, report.length, block))) {
    RetryFlashRead(address_number, report.length);
    return kNoUsableAnswer;
  }
  auto answer = FlashWordValue(block);
  if (!answer.has_value()) {
    return kNoUsableAnswer;
  }
  value = std::move(*answer);
  return kOk;
}

void BorvanUsb_Q7::RetryFlashRead(std::uint32_t address, std::uint32_t length) {
  std::vector<std::uint8_t> request = MakeBlock(length, kFlashBlockLength);
  std::vector<std::uint8_t> reply = MakeBlock(length, kFlashBlockLength);
  const auto read_word = [&](std::uint32_t word_address) {
    PutBlock(request, FlashReadWord(word_address));
    std::fill(reply.begin(), reply.end(), std::uint8_t{0});
    static_cast<void>(Set(Selector::kFlash, length, request));
    return Succeeded(Get(Selector::kFlash, length, reply));
  };
  // The two words that would hold the one asked for, were it not aligned. What they give is
  // deliberately not delivered: hosts know a failed read by the value 0.
  for (std::uint32_t k = 1; k < kWordSize; ++k) {
    const bool below = read_word(address - k);
    const bool above = read_word(address - k + kWordSize);
    if (below && above) {
      return;
    }
  }
}

}  // namespace borvan
