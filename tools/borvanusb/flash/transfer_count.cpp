#include "flash/transfer_count.h"

#include <algorithm>
#include <cstddef>

#include "camera.h"

namespace {

constexpr std::uint64_t kReadPacket = 64;
constexpr std::size_t kWritePacket = 60;
constexpr std::uint64_t kLengthQueries = 2;
constexpr std::uint64_t kReadPart = std::uint64_t{4} << 20U;  // of each job
constexpr std::uint64_t kWordReadTransfers = 3;
constexpr std::uint8_t kErased = 0xFF;

}  // namespace

std::uint64_t ReadTransfers(std::uint64_t size) {
  std::uint64_t transfers = 0;
  for (std::uint64_t left = size; left > 0;) {
    const std::uint64_t part = std::min(left, kReadPart);
    const bool ends_with_packet = part == left && part % kReadPacket == 0;
    transfers += kLengthQueries + 2 * (part / kReadPacket + (ends_with_packet ? 0 : 1));
    transfers += ends_with_packet ? kWordReadTransfers : 0;
    left -= part;
  }
  return transfers;
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
