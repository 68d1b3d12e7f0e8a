// Chip registers, one at a time, on selector 1.

#include <algorithm>

#include "base/hexadecimal_text.h"
#include "protocol/borvan_usb_q7.h"
#include "protocol/register_blocks.h"

namespace borvan {
namespace {

// Reads take the wide form for this flag alone, writes for every flag but 0.
constexpr std::uint8_t kWideRead = 1;
constexpr std::uint8_t kByteWrite = 0;

}  // namespace

// Earlier steps of a command are deliberately not looked at: only the last one's result counts.
Result BorvanUsb_Q7::SendRegisterCommands(std::span<const RegisterCommand> commands,
                                          std::uint32_t length, std::span<std::uint8_t> block) {
  Result result = kOk;
  for (const RegisterCommand& command : commands) {
    std::copy(command.begin(), command.end(), block.begin());
    result = Set(Selector::kRegister, length, block);
  }
  return result;
}

Result BorvanUsb_Q7::RegisterWrite(std::string address, std::string value,
                                   std::uint8_t width_flag) {
  if (!Channel().IsOpen()) {
    return kNullPointer;
  }
  const LengthReport report = QueryLength(Selector::kRegister);
  if (HasFailed(report.result)) {
    return ToResult(StatusCode::kLengthQueryFailed);
  }
  std::vector<std::uint8_t> block = MakeBlock(report.length, kRegisterCommandLength);
  const std::uint32_t address_number = ParseUnsignedLong(address);
  const std::uint32_t value_number = ParseUnsignedLong(value);
  if (width_flag == kByteWrite) {
    return SendRegisterCommands(ByteRegisterWrite(address_number, value_number), report.length,
                                block);
  }
  return SendRegisterCommands(WideRegisterWrite(address_number, value_number), report.length,
                              block);
}

Result BorvanUsb_Q7::RegisterRead(std::string address, std::string& value,
                                  std::uint8_t width_flag) {
  if (!Channel().IsOpen()) {
    return kNullPointer;
  }
  const LengthReport report = QueryLength(Selector::kRegister);
  if (HasFailed(report.result)) {
    return ToResult(StatusCode::kLengthQueryFailed);
  }
  std::vector<std::uint8_t> block = MakeBlock(report.length, kRegisterCommandLength);
  const std::uint32_t address_number = ParseUnsignedLong(address);
  return width_flag == kWideRead ? ReadWideRegister(address_number, report.length, block, value)
                                 : ReadByteRegister(address_number, report.length, block, value);
}

Result BorvanUsb_Q7::ReadWideRegister(std::uint32_t address, std::uint32_t length,
                                      std::span<std::uint8_t> block, std::string& value) {
  const Result sent = SendRegisterCommands(WideRegisterRead(address), length, block);
  if (HasFailed(sent)) {
    return sent;
  }
  // The low half is taken from the block even when its get failed: the tag alone decides.
  static_cast<void>(Get(Selector::kRegister, length, block));
  const auto low = WideReadLowHalf(block);
  const Result result = Get(Selector::kRegister, length, block);
  if (HasFailed(result)) {
    return result;
  }
  const auto high = WideReadHighHalf(block);
  if (low.has_value() && high.has_value()) {
    value = *high + *low;
  }
  return result;
}

Result BorvanUsb_Q7::ReadByteRegister(std::uint32_t address, std::uint32_t length,
                                      std::span<std::uint8_t> block, std::string& value) {
  const Result sent = SendRegisterCommands(ByteRegisterRead(address), length, block);
  if (HasFailed(sent)) {
    return sent;
  }
  const Result result = Get(Selector::kRegister, length, block);
  if (HasFailed(result)) {
    return result;
  }
  if (auto answer = ByteReadValue(block)) {
    value = std::move(*answer);
  }
  return result;
}

}  // namespace borvan
