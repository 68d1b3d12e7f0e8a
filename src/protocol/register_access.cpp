#include "protocol/register_access.h"

#include "protocol/register_blocks.h"

namespace borvan {
namespace {

// Reads use the wide form only for this flag, writes for every flag but 0.
constexpr std::uint8_t kWideRead = 1;
constexpr std::uint8_t kByteWrite = 0;

Result ReadWideRegister(const CommandChannel& channel, std::uint32_t address, std::uint32_t length,
                        std::span<std::uint8_t> block, std::string& value) {
  const Result sent =
      channel.SetSteps(Selector::kRegister, WideRegisterRead(address), length, block);
  if (HasFailed(sent)) {
    return sent;
  }
  // The low half is taken from the block even if its get failed: only the tag decides.
  static_cast<void>(channel.Get(Selector::kRegister, length, block));
  const auto low = WideReadLowHalf(block);
  const Result result = channel.Get(Selector::kRegister, length, block);
  if (HasFailed(result)) {
    return result;
  }
  const auto high = WideReadHighHalf(block);
  if (low.has_value() && high.has_value()) {
    value = *high + *low;
  }
  return result;
}

Result ReadByteRegister(const CommandChannel& channel, std::uint32_t address, std::uint32_t length,
                        std::span<std::uint8_t> block, std::string& value) {
  const Result sent =
      channel.SetSteps(Selector::kRegister, ByteRegisterRead(address), length, block);
  if (HasFailed(sent)) {
    return sent;
  }
  const Result result = channel.Get(Selector::kRegister, length, block);
  if (HasFailed(result)) {
    return result;
  }
  if (auto answer = ByteReadValue(block)) {
    value = std::move(*answer);
  }
  return result;
}

}  // namespace

Result WriteRegister(const CommandChannel& channel, std::uint32_t address, std::uint32_t value,
                     std::uint8_t width_flag) {
  if (!channel.IsOpen()) {
    return kNullPointer;
  }
  const LengthReport report = channel.QueryLength(Selector::kRegister);
  if (HasFailed(report.result)) {
    return ToResult(StatusCode::kLengthQueryFailed);
  }
  std::vector<std::uint8_t> block = MakeTransferBuffer(report.length, kRegisterCommandLength);
  if (width_flag == kByteWrite) {
    return channel.SetSteps(Selector::kRegister, ByteRegisterWrite(address, value), report.length,
                            block);
  }
  return channel.SetSteps(Selector::kRegister, WideRegisterWrite(address, value), report.length,
                          block);
}

Result ReadRegister(const CommandChannel& channel, std::uint32_t address, std::uint8_t width_flag,
                    std::string& value) {
  if (!channel.IsOpen()) {
    return kNullPointer;
  }
  const LengthReport report = channel.QueryLength(Selector::kRegister);
  if (HasFailed(report.result)) {
    return ToResult(StatusCode::kLengthQueryFailed);
  }
  std::vector<std::uint8_t> block = MakeTransferBuffer(report.length, kRegisterCommandLength);
  return width_flag == kWideRead ? ReadWideRegister(channel, address, report.length, block, value)
                                 : ReadByteRegister(channel, address, report.length, block, value);
}

}  // namespace borvan
