// Runs and lists of registers on the I2C bus: fast on selector 6, else step by step on selector 2.

#include <algorithm>
#include <chrono>
#include <thread>

#include "base/hexadecimal_text.h"
#include "protocol/borvan_usb_q7.h"
#include "protocol/i2c_blocks.h"
#include "protocol/i2c_list_plan.h"

namespace borvan {
namespace {

void Sleep(std::uint32_t milliseconds) {
  std::this_thread::sleep_for(std::chrono::milliseconds(milliseconds));
}

}  // namespace

bool BorvanUsb_Q7::HasFastI2c() const {
  return (ParseLong(feature_text_) & kFeatureFastI2c) != 0;
}

Result BorvanUsb_Q7::I2cReadList(std::vector<ListEntry>& list, std::uint32_t slave_address,
                                 std::uint32_t start_address, std::uint32_t end_address,
                                 std::uint32_t mode, ProgressCallback /*progress*/) {
  return HasFastI2c() ? ReadI2cBlocks(list, slave_address, start_address, end_address, mode)
                      : ReadI2cSteps(list, slave_address, start_address, end_address, mode);
}

Result BorvanUsb_Q7::ReadI2cBlocks(std::vector<ListEntry>& list, std::uint32_t slave_address,
                                   std::uint32_t start_address, std::uint32_t end_address,
                                   std::uint32_t mode) {
  // Deliberately not checked: with a failed query the reads go on with length 0.
  const LengthReport report = QueryLength(Selector::kI2cBlock);
  // Zeroed once: later requests carry the reply before them behind their head.
  std::vector<std::uint8_t> block = MakeBlock(report.length, kPacketLength);
  Result result = report.result;
  for (std::uint64_t block_start = start_address; block_start <= end_address;
       block_start += kBlockReadCount) {
    if (IsStopRequested()) {
      return ToResult(StatusCode::kTerminated);
    }
    const auto first = static_cast<std::uint32_t>(block_start);
    PutI2cBlockRead(std::span(block).first<kBlockReadHead>(), slave_address, mode, first);
    static_cast<void>(Set(Selector::kI2cBlock, report.length, block));
    result = Get(Selector::kI2cBlock, report.length, block);
    // Whether or not the get succeeded.
    const std::uint64_t count =
        std::min<std::uint64_t>(kBlockReadCount, end_address - block_start + 1);
    for (std::uint32_t i = 0; i < count; ++i) {
      list.push_back({first + i, block[kBlockReadHead + i]});
    }
  }
  return result;
}

Result BorvanUsb_Q7::ReadI2cSteps(std::vector<ListEntry>& list, std::uint32_t slave_address,
                                  std::uint32_t start_address, std::uint32_t end_address,
                                  std::uint32_t mode) {
  constexpr std::size_t kValueByte = 1;
  const LengthReport report = QueryLength(Selector::kI2c);
  Result result = report.result;
  std::vector<std::uint8_t> block = MakeBlock(report.length, kI2cCommandLength);
  for (std::uint64_t address = start_address; address <= end_address; ++address) {
    if (IsStopRequested()) {
      return ToResult(StatusCode::kTerminated);
    }
    // After a failure the remaining addresses are passed over; a stop request still counts.
    if (HasFailed(result)) {
      continue;
    }
    const auto register_address = static_cast<std::uint32_t>(address);
    std::fill(block.begin(), block.end(), std::uint8_t{0});
    SendI2cCommands(I2cStepRead(slave_address, mode, register_address), report.length, block);
    result = Get(Selector::kI2c, report.length, block);
    if (Succeeded(result)) {
      list.push_back({register_address, block[kValueByte]});
    }
  }
  return result;
}

// Only the last command's result counts.
Result BorvanUsb_Q7::SendI2cCommands(std::span<const I2cCommand> commands, std::uint32_t length,
                                     std::span<std::uint8_t> block) {
  Result result = kOk;
  for (const I2cCommand& command : commands) {
    std::copy(command.begin(), command.end(), block.begin());
    result = Set(Selector::kI2c, length, block);
  }
  return result;
}

Result BorvanUsb_Q7::I2cWriteList(std::vector<ListEntry> list, std::uint32_t option,
                                  ProgressCallback /*progress*/) {
  return HasFastI2c() ? WriteI2cPackets(list, option) : WriteI2cSteps(list);
}

Result BorvanUsb_Q7::WriteI2cSteps(const std::vector<ListEntry>& list) {
  const LengthReport report = QueryLength(Selector::kI2c);
  if (HasFailed(report.result)) {
    return ToResult(StatusCode::kLengthQueryFailed);
  }
  std::vector<std::uint8_t> block = MakeBlock(report.length, kI2cCommandLength);
  Result result = report.result;
  for (const I2cListStep& step : PlanI2cSteps(list)) {
    if (IsStopRequested()) {
      return ToResult(StatusCode::kTerminated);
    }
    switch (step.kind) {
      case I2cListStep::Kind::kNothing:
        break;
      case I2cListStep::Kind::kPause:
        Sleep(step.value);
        break;
      case I2cListStep::Kind::kIncomplete:
        return ToResult(StatusCode::kSlaveOrWidthMissing);
      case I2cListStep::Kind::kWidth:
      case I2cListStep::Kind::kWrite:
        result = SendI2cCommands(I2cStepWrite(step), report.length, block);
        if (HasFailed(result)) {
          return result;
        }
        break;
    }
  }
  return result;
}

Result BorvanUsb_Q7::WriteI2cPackets(const std::vector<ListEntry>& list, std::uint32_t option) {
  const LengthReport report = QueryLength(Selector::kI2cBlock);
  if (HasFailed(report.result)) {
    return ToResult(StatusCode::kFastInterfaceFailed);
  }
  std::vector<std::uint8_t> block = MakeBlock(report.length, kPacketLength);
  Result result = report.result;
  const I2cListPlan plan = PlanI2cPackets(list, option);
  auto packet = plan.packets.begin();
  for (const I2cListAction& action : plan.actions) {
    for (std::uint32_t poll = 0; poll < action.polls; ++poll) {
      if (IsStopRequested()) {
        return ToResult(StatusCode::kTerminated);
      }
    }
    switch (action.kind) {
      case I2cListAction::Kind::kSend:
        std::copy(packet->begin(), packet->end(), block.begin());
        ++packet;
        result = Set(Selector::kI2cBlock, report.length, block);
        if (HasFailed(result)) {
          return result;
        }
        break;
      case I2cListAction::Kind::kPause:
        Sleep(action.pause);
        break;
      case I2cListAction::Kind::kIncomplete:
        result = ToResult(StatusCode::kSlaveOrWidthMissing);
        break;
      case I2cListAction::Kind::kEnd:
        break;
    }
  }
  return result;
}

}  // namespace borvan
