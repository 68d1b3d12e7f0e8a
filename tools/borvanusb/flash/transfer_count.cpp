#include "flash/transfer_count.h"

#include <algorithm>
#include <cstddef>

#include "camera.h"

namespace {

constexpr std::uint64_t kReadPacket = 64;
constexpr std::size_t kWritePacket = 60;
constexpr std::uint64_t kLengthQueries = 2;
constexpr std::uint8_t kErased = 0xFF;

}  // namespace

std::uint64_t ReadTransfers(std::uint64_t size) {
  return kLengthQueries + 2 * (size / kReadPacket + 1);
}

std::uint64_t ProgramTransfers(std::span<const std::uint8_t> bytes) {
  std::uint64_t transfers = kLengthQueries + (bytes.size() + kSectorSize - 1) / kSectorSize;
  for (std::size_t offset = 0; offset < bytes.size(); offset += kWritePacket) {
    const auto packet = bytes.subspan(offset, std::min(kWritePacket, bytes.size() - offset));
    // The zeros that fill up a shorter packet make it one that is sent.
    if (packet.size() < kWritePacket ||
        !std::ranges::all_of(packet, [](std::uint8_t byte) { return byte == kErased; })) {
      ++transfers;
    }
  }
  return transfers;
}
