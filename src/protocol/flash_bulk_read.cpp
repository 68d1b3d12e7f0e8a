#include "protocol/flash_bulk_read.h"

#include <algorithm>

#include "protocol/flash_blocks.h"
#include "protocol/flash_image.h"

namespace borvan {
namespace {

constexpr std::uint32_t kGroupSize = 8;
constexpr std::uint32_t kGroupsPerPacket = kPacketLength / kGroupSize;

// Memory for ranges up to the size of a large flash is reserved at once. For larger ranges it grows
// as data arrives: a wrong end address must not allocate gigabytes first.
constexpr std::uint64_t kLargestReserve = 64U << 20U;

}  // namespace

Result ReadFlashRange(const CommandChannel& channel, std::uint32_t start_address,
                      std::uint32_t end_address, const StopQuery& stop_requested,
                      const ProgressCallback& progress, std::vector<std::uint8_t>& output) {
  // Only checks that the unit answers; the reads use another selector.
  if (HasFailed(channel.CheckAnswer(Selector::kFlash))) {
    return ToResult(StatusCode::kLengthQueryFailed);
  }
  if (end_address < start_address) {
    return ToResult(StatusCode::kInvalidAddress);
  }
  const LengthReport report = channel.QueryLength(Selector::kFlashFastRead);
  if (HasFailed(report.result)) {
    return ToResult(StatusCode::kFastInterfaceFailed);
  }
  const std::uint64_t size = std::uint64_t{end_address} - start_address + 1;
  const auto group_count = static_cast<std::uint32_t>(size / kGroupSize);
  output.reserve(output.size() + std::min(size, kLargestReserve));

  Result result = report.result;
  std::vector<std::uint8_t> block = MakeTransferBuffer(report.length, kPacketLength);
  FlashReadProgress percentages(group_count);
  std::uint32_t address = start_address;
  std::uint32_t group = 0;
  while (group <= group_count) {
    if (stop_requested()) {
      return ToResult(StatusCode::kTerminated);
    }
    const Packet request = FlashReadRequest(address);
    std::fill(std::copy(request.begin(), request.end(), block.begin()), block.end(),
              std::uint8_t{0});
    static_cast<void>(channel.Set(Selector::kFlashFastRead, report.length, block));
    result = channel.Get(Selector::kFlashFastRead, report.length, block);
    // After any result but 0 the same address is read again, without limit or pause, until a stop
    // request or a success.
    if (result == kOk) {
      // A packet starts at every eighth group. All groups but the last are complete.
      const std::uint32_t groups = std::min(kGroupsPerPacket, group_count - group + 1);
      const std::uint32_t bytes =
          group + groups <= group_count
              ? groups * kGroupSize
              : (groups - 1) * kGroupSize + static_cast<std::uint32_t>(size % kGroupSize);
      output.insert(output.end(), block.begin(), block.begin() + bytes);
      group += groups;
      address += groups * kGroupSize;
    }
    if (group_count == 0) {
      progress(kOk, kDonePercent);
      break;
    }
    if (const auto percent = percentages.After(group); percent && progress) {
      progress(kOk, *percent);
    }
  }
  return result;
}

}  // namespace borvan
