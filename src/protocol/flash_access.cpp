#include "protocol/flash_access.h"

#include <algorithm>

#include "protocol/flash_blocks.h"

namespace borvan {
namespace {

constexpr std::uint32_t kWordSize = 4;

// The result of a read without a usable reply. Not negative, so hosts see the value 0 and no
// failure.
constexpr Result kNoUsableAnswer = 1;

void PutBlock(std::span<std::uint8_t> buffer, const FlashBlock& block) {
  std::copy(block.begin(), block.end(), buffer.begin());
}

Result SendFlashBlock(const CommandChannel& channel, const FlashBlock& command) {
  if (!channel.IsOpen()) {
    return kNullPointer;
  }
  const LengthReport report = channel.QueryLength(Selector::kFlash);
  if (HasFailed(report.result)) {
    return report.result;
  }
  std::vector<std::uint8_t> block = MakeTransferBuffer(report.length, kFlashBlockLength);
  PutBlock(block, command);
  return channel.Set(Selector::kFlash, report.length, block);
}

// Repeats the exchange of a failed read at the words around its address.
void RetryFlashRead(const CommandChannel& channel, std::uint32_t address, std::uint32_t length) {
  std::vector<std::uint8_t> request = MakeTransferBuffer(length, kFlashBlockLength);
  std::vector<std::uint8_t> reply = MakeTransferBuffer(length, kFlashBlockLength);
  const auto read_word = [&](std::uint32_t word_address) {
    PutBlock(request, FlashReadWord(word_address));
    std::fill(reply.begin(), reply.end(), std::uint8_t{0});
    static_cast<void>(channel.Set(Selector::kFlash, length, request));
    return Succeeded(channel.Get(Selector::kFlash, length, reply));
  };
  // The two words that would contain the requested one if it were not aligned. Their values are
  // deliberately not returned: hosts recognise a failed read by the value 0.
  for (std::uint32_t k = 1; k < kWordSize; ++k) {
    const bool below = read_word(address - k);
    const bool above = read_word(address - k + kWordSize);
    if (below && above) {
      return;
    }
  }
}

}  // namespace

Result WriteFlash(const CommandChannel& channel, std::uint32_t address, std::uint32_t value) {
  return SendFlashBlock(channel, FlashWriteWord(address, value));
}

Result EraseFlash(const CommandChannel& channel, std::uint32_t address) {
  return SendFlashBlock(channel, FlashEraseSector(address));
}

Result ReadFlash(const CommandChannel& channel, std::uint32_t address, std::string& value) {
  if (!channel.IsOpen()) {
    return kNullPointer;
  }
  const LengthReport report = channel.QueryLength(Selector::kFlash);
  if (HasFailed(report.result)) {
    return report.result;
  }
  std::vector<std::uint8_t> block = MakeTransferBuffer(report.length, kFlashBlockLength);
  PutBlock(block, FlashReadWord(address));
  static_cast<void>(channel.Set(Selector::kFlash, report.length, block));
  if (HasFailed(channel.Get(Selector::kFlash, report.length, block))) {
    RetryFlashRead(channel, address, report.length);
    return kNoUsableAnswer;
  }
  auto answer = FlashWordValue(block);
  if (!answer.has_value()) {
    return kNoUsableAnswer;
  }
  value = std::move(*answer);
  return kOk;
}

}  // namespace borvan
