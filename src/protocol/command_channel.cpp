#include "protocol/command_channel.h"

#include <algorithm>

namespace borvan {

LengthReport CommandChannel::QueryLength(Selector selector) const {
  LengthReport report;
  report.result = channel_.GetLength(static_cast<std::uint32_t>(selector), &report.length);
  if (HasFailed(report.result)) {
    report.length = 0;
  } else if (report.length > kLargestControlLength) {
    report = {kInvalidData, 0};
  }
  return report;
}

Result CommandChannel::CheckAnswer(Selector selector) const {
  std::uint32_t ignored_length = 0;
  return channel_.GetLength(static_cast<std::uint32_t>(selector), &ignored_length);
}

Result CommandChannel::Set(Selector selector, std::uint32_t length,
                           std::span<std::uint8_t> block) const {
  return channel_.Set(static_cast<std::uint32_t>(selector), length, block.data());
}

Result CommandChannel::Get(Selector selector, std::uint32_t length,
                           std::span<std::uint8_t> block) const {
  return channel_.Get(static_cast<std::uint32_t>(selector), length, block.data());
}

Result CommandChannel::SetSteps(Selector selector, std::span<const CommandStep> steps,
                                std::uint32_t length, std::span<std::uint8_t> block) const {
  Result result = kOk;
  for (const CommandStep& step : steps) {
    std::copy(step.begin(), step.end(), block.begin());
    result = Set(selector, length, block);
  }
  return result;
}

std::vector<std::uint8_t> MakeTransferBuffer(std::uint32_t length, std::size_t command_length) {
  return std::vector<std::uint8_t>(std::max<std::size_t>(length, command_length));
}

}  // namespace borvan
