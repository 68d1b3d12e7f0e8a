#include "protocol/register_list.h"

#include <algorithm>
#include <chrono>
#include <thread>

#include "base/byte_order.h"
#include "protocol/register_blocks.h"
#include "protocol/register_list_plan.h"

namespace borvan {
namespace {

// The result for a list without its header. Not negative, so the job counts as done. Hosts know the
// number.
constexpr Result kNoListHeader = 11;

}  // namespace

Result ReadRegisterRun(const CommandChannel& channel, std::uint32_t start_address,
                       std::uint32_t end_address, std::vector<ListEntry>& list) {
  const LengthReport report = channel.QueryLength(Selector::kRegisterBlock);
  if (HasFailed(report.result)) {
    return report.result;
  }
  // Zeroed only once: after their head, later requests contain the previous reply.
  std::vector<std::uint8_t> block = MakeTransferBuffer(report.length, kPacketLength);
  Result result = report.result;
  const std::uint32_t first = start_address & 0xFFFFU;
  const std::uint32_t last = end_address & 0xFFFFU;
  for (std::uint32_t block_start = first; block_start <= last; block_start += kBlockReadCount) {
    PutRegisterBlockRead(std::span(block).first<kBlockReadHead>(), start_address,
                         static_cast<std::uint16_t>(block_start));
    static_cast<void>(channel.Set(Selector::kRegisterBlock, report.length, block));
    result = channel.Get(Selector::kRegisterBlock, report.length, block);
    if (block_start == first) {
      list.push_back({list_marker::kFirstDelay, ByteOf(start_address, 3)});
      list.push_back({list_marker::kSecondDelay, ByteOf(start_address, 2)});
    }
    // Appended whether or not the get succeeded.
    const std::uint32_t count = std::min(kBlockReadCount, last - block_start + 1);
    for (std::uint32_t i = 0; i < count; ++i) {
      list.push_back({block_start + i, block[kBlockReadHead + i]});
    }
  }
  return result;
}

Result WriteRegisterList(const CommandChannel& channel, std::vector<ListEntry> list) {
  DropTrailingMarks(list);
  if (list.empty()) {
    return kOk;
  }
  const LengthReport report = channel.QueryLength(Selector::kRegisterBlock);
  if (HasFailed(report.result)) {
    return report.result;
  }
  if (!HasListHeader(list)) {
    return kNoListHeader;
  }
  const RegisterListPlan plan = PlanRegisterList(list);
  for (const std::uint32_t pause : plan.pauses) {
    std::this_thread::sleep_for(std::chrono::milliseconds(pause));
  }
  std::vector<std::uint8_t> block = MakeTransferBuffer(report.length, kPacketLength);
  Result result = report.result;
  for (const RegisterListBlock& planned : plan.blocks) {
    std::copy(planned.packet.begin(), planned.packet.end(), block.begin());
    const Result sent = channel.Set(Selector::kRegisterBlock, report.length, block);
    if (HasFailed(sent)) {
      return ToResult(StatusCode::kFastInterfaceFailed);
    }
    if (planned.keeps_result) {
      result = sent;
    }
  }
  return result;
}

}  // namespace borvan
