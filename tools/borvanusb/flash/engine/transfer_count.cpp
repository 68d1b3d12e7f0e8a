#include "flash/engine/transfer_count.h"

#include <algorithm>
#include <cstddef>

#include "base/flash_memory.h"
#include "camera/camera.h"
#include "camera/flash_readings.h"
#include "camera/register_readings.h"

namespace borvanusb {

namespace {

constexpr std::uint64_t kLengthQueries = 2;
constexpr std::uint64_t kWordReadTransfers = 3;

std::uint64_t PieceTransfers(const FlashPiece& piece) {
  const std::uint64_t job = piece.size - (piece.last_byte_apart ? 1 : 0);
  return kLengthQueries + 2 * (job / kReadPacket + 1) +
         (piece.last_byte_apart ? kWordReadTransfers : 0);
}

// One length query, and two transfers for each block.
std::uint64_t RunJobTransfers(const Range& run) {
  return 1 + 2 * ((run.Size() + kRunBlock - 1) / kRunBlock);
}

}  // namespace

std::uint64_t ReadTransfers(std::uint64_t size, std::uint32_t address) {
  std::uint64_t transfers = 0;
  for (std::uint64_t done = 0; done < size; done += kReadPart) {
    const std::uint64_t part = std::min(size - done, kReadPart);
    for (const std::uint32_t shift : {kReadingShifts[0], kReadingShifts[1]}) {
      for (const FlashPiece& piece : CutReading(static_cast<std::uint32_t>(address + done), part,
                                                shift, done + part == size)) {
        transfers += PieceTransfers(piece);
      }
    }
  }
  return transfers;
}

std::uint64_t RunTransfers(const Range& run) {
  std::uint64_t transfers = RunJobTransfers(run);
  for (const Range& range : CutSecondRun(run)) {
    transfers += RunJobTransfers(range);
  }
  return transfers;
}

std::uint64_t ProgramTransfers(std::span<const std::uint8_t> bytes) {
  std::uint64_t transfers = kLengthQueries + (bytes.size() + kSectorSize - 1) / kSectorSize;
  for (std::size_t offset = 0; offset < bytes.size(); offset += kWritePacket) {
    const auto packet =
        bytes.subspan(offset, std::min<std::size_t>(kWritePacket, bytes.size() - offset));
    // A shorter packet is padded with zeros, so it is not blank and must be sent.
    if (packet.size() < kWritePacket ||
        !std::ranges::all_of(packet, [](std::uint8_t byte) { return byte == kErased; })) {
      ++transfers;
    }
  }
  return transfers;
}

}  // namespace borvanusb
