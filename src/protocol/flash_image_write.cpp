#include "protocol/flash_image_write.h"

#include <algorithm>
#include <chrono>
#include <thread>

#include "protocol/flash_blocks.h"
#include "protocol/flash_image.h"

namespace borvan {
namespace {

constexpr int kRetries = 3;
constexpr std::chrono::milliseconds kRetryPause{1};

Result EraseSectors(const CommandChannel& channel, std::uint32_t start_address,
                    std::uint32_t sector_count) {
  // A failed query counts as length 0 here; the erases then report the failure.
  const std::uint32_t length = channel.QueryLength(Selector::kFlash).length;
  std::vector<std::uint8_t> block = MakeTransferBuffer(length, kPacketLength);
  for (std::uint32_t index = 0; index < sector_count; ++index) {
    const FlashBlock erase = FlashEraseSector(SectorAddress(start_address, index));
    std::copy(erase.begin(), erase.end(), block.begin());
    if (HasFailed(channel.Set(Selector::kFlash, length, block))) {
      return ToResult(StatusCode::kFlashEraseFailed);
    }
  }
  return kOk;
}

// Repeats the transfer until its result is 0, a few times at most.
Result SetWithRetries(const CommandChannel& channel, std::uint32_t length,
                      std::span<std::uint8_t> block) {
  Result result = channel.Set(Selector::kFlashFastWrite, length, block);
  for (int retry = 0; retry < kRetries && result != kOk; ++retry) {
    std::this_thread::sleep_for(kRetryPause);
    result = channel.Set(Selector::kFlashFastWrite, length, block);
  }
  return result;
}

}  // namespace

Result ProgramFlash(const CommandChannel& channel, std::vector<std::uint8_t> image,
                    std::uint32_t start_address, const StopQuery& stop_requested,
                    const ProgressCallback& progress) {
  const FlashImageLayout layout = LayOutFlashImage(static_cast<std::uint32_t>(image.size()));
  const Result erased = EraseSectors(channel, start_address, layout.sector_count);
  if (HasFailed(erased)) {
    return erased;
  }
  PadFlashImage(image, layout);

  // Stricter than the query before the erases: any result but 0 ends the work here.
  const LengthReport report = channel.QueryLength(Selector::kFlashFastWrite);
  if (report.result != kOk) {
    return ToResult(StatusCode::kFastInterfaceFailed);
  }
  std::vector<std::uint8_t> block = MakeTransferBuffer(report.length, kPacketLength);
  FlashWriteProgress percentages(layout.padded_size);
  std::uint32_t address = start_address;
  Result result = kOk;
  for (std::uint64_t offset = 0; offset < layout.padded_size; offset += flash::kPieceSize) {
    if (stop_requested()) {
      return ToResult(StatusCode::kTerminated);
    }
    const std::span<const std::uint8_t, flash::kPieceSize> piece(image.data() + offset,
                                                                 flash::kPieceSize);
    if (!IsBlankPiece(piece)) {
      const Packet packet = FlashWritePacket(address, piece);
      std::copy(packet.begin(), packet.end(), block.begin());
      result = SetWithRetries(channel, report.length, block);
      if (HasFailed(result)) {
        return ToResult(StatusCode::kFlashWriteFailed);
      }
    }
    address += static_cast<std::uint32_t>(flash::kPieceSize);
    if (const auto percent = percentages.NextPiece(); percent && progress) {
      progress(kOk, *percent);
    }
  }
  return result;
}

}  // namespace borvan
