#include "protocol/i2c_list.h"

#include <algorithm>
#include <chrono>
#include <thread>

#include "protocol/i2c_blocks.h"
#include "protocol/i2c_list_plan.h"

namespace borvan {
namespace {

void Pause(std::uint32_t milliseconds) {
  std::this_thread::sleep_for(std::chrono::milliseconds(milliseconds));
}

}  // namespace

Result ReadI2cBlocks(const CommandChannel& channel, const I2cRun& run,
                     const StopQuery& stop_requested, std::vector<ListEntry>& list) {
  // Deliberately not checked: after a failed query the reads continue with length 0.
  const LengthReport report = channel.QueryLength(Selector::kI2cBlock);
  // Zeroed only once: after their head, later requests contain the previous reply.
  std::vector<std::uint8_t> block = MakeTransferBuffer(report.length, kPacketLength);
  Result result = report.result;
  for (std::uint64_t block_start = run.start_address; block_start <= run.end_address;
       block_start += kBlockReadCount) {
    if (stop_requested()) {
      return ToResult(StatusCode::kTerminated);
    }
    const auto first = static_cast<std::uint32_t>(block_start);
    PutI2cBlockRead(std::span(block).first<kBlockReadHead>(), run.slave, run.mode, first);
    static_cast<void>(channel.Set(Selector::kI2cBlock, report.length, block));
    result = channel.Get(Selector::kI2cBlock, report.length, block);
    // Appended whether or not the get succeeded.
    const std::uint64_t count =
        std::min<std::uint64_t>(kBlockReadCount, run.end_address - block_start + 1);
    for (std::uint32_t i = 0; i < count; ++i) {
      list.push_back({first + i, block[kBlockReadHead + i]});
    }
  }
  return result;
}

Result ReadI2cSteps(const CommandChannel& channel, const I2cRun& run,
                    const StopQuery& stop_requested, std::vector<ListEntry>& list) {
  constexpr std::size_t kValueByte = 1;
  const LengthReport report = channel.QueryLength(Selector::kI2c);
  Result result = report.result;
  std::vector<std::uint8_t> block = MakeTransferBuffer(report.length, kI2cCommandLength);
  for (std::uint64_t address = run.start_address; address <= run.end_address; ++address) {
    if (stop_requested()) {
      return ToResult(StatusCode::kTerminated);
    }
    // After a failure the remaining addresses are skipped; a stop request still counts.
    if (HasFailed(result)) {
      continue;
    }
    const auto register_address = static_cast<std::uint32_t>(address);
    std::fill(block.begin(), block.end(), std::uint8_t{0});
    static_cast<void>(channel.SetSteps(
        Selector::kI2c, I2cStepRead(run.slave, run.mode, register_address), report.length, block));
    result = channel.Get(Selector::kI2c, report.length, block);
    if (Succeeded(result)) {
      list.push_back({register_address, block[kValueByte]});
    }
  }
  return result;
}

Result WriteI2cPackets(const CommandChannel& channel, const std::vector<ListEntry>& list,
                       std::uint32_t option, const StopQuery& stop_requested) {
  const LengthReport report = channel.QueryLength(Selector::kI2cBlock);
  if (HasFailed(report.result)) {
    return ToResult(StatusCode::kFastInterfaceFailed);
  }
  std::vector<std::uint8_t> block = MakeTransferBuffer(report.length, kPacketLength);
  Result result = report.result;
  const I2cListPlan plan = PlanI2cPackets(list, option);
  auto packet = plan.packets.begin();
  for (const I2cListAction& action : plan.actions) {
    for (std::uint32_t poll = 0; poll < action.polls; ++poll) {
      if (stop_requested()) {
        return ToResult(StatusCode::kTerminated);
      }
    }
    switch (action.kind) {
      case I2cListAction::Kind::kSend:
        std::copy(packet->begin(), packet->end(), block.begin());
        ++packet;
        result = channel.Set(Selector::kI2cBlock, report.length, block);
        if (HasFailed(result)) {
          return result;
        }
        break;
      case I2cListAction::Kind::kPause:
        Pause(action.pause);
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

Result WriteI2cSteps(const CommandChannel& channel, const std::vector<ListEntry>& list,
                     const StopQuery& stop_requested) {
  const LengthReport report = channel.QueryLength(Selector::kI2c);
  if (HasFailed(report.result)) {
    return ToResult(StatusCode::kLengthQueryFailed);
  }
  std::vector<std::uint8_t> block = MakeTransferBuffer(report.length, kI2cCommandLength);
  Result result = report.result;
  for (const I2cListStep& step : PlanI2cSteps(list)) {
    if (stop_requested()) {
      return ToResult(StatusCode::kTerminated);
    }
    switch (step.kind) {
      case I2cListStep::Kind::kNothing:
        break;
      case I2cListStep::Kind::kPause:
        Pause(step.value);
        break;
      case I2cListStep::Kind::kIncomplete:
        return ToResult(StatusCode::kSlaveOrWidthMissing);
      case I2cListStep::Kind::kWidth:
      case I2cListStep::Kind::kWrite:
        result = channel.SetSteps(Selector::kI2c, I2cStepWrite(step), report.length, block);
        if (HasFailed(result)) {
          return result;
        }
        break;
    }
  }
  return result;
}

}  // namespace borvan
