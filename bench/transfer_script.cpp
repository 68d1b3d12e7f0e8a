#include "transfer_script.h"

#include <algorithm>

namespace bench {
namespace {

constexpr std::uint32_t kSectorLength = 4096;
constexpr std::size_t kPieceLength = 60;
constexpr std::uint32_t kPacketLength = 64;

void PutAddress(std::uint8_t* bytes, std::size_t address) {
  bytes[0] = static_cast<std::uint8_t>(address >> 24U);
  bytes[1] = static_cast<std::uint8_t>(address >> 16U);
  bytes[2] = static_cast<std::uint8_t>(address >> 8U);
  bytes[3] = static_cast<std::uint8_t>(address);
}

}  // namespace

std::vector<ScriptedTransfer> ScriptProgramming(std::span<const std::uint8_t> image) {
  std::vector<ScriptedTransfer> script;
  for (std::size_t sector = 0; sector < image.size(); sector += kSectorLength) {
    ScriptedTransfer erase{3, false, 11, {}};
    erase.bytes[0] = 0x32;
    PutAddress(erase.bytes.data() + 1, sector);
    script.push_back(erase);
  }
  for (std::size_t at = 0; at < image.size(); at += kPieceLength) {
    ScriptedTransfer write{4, false, kPacketLength, {}};
    PutAddress(write.bytes.data(), at);
    const auto piece = image.subspan(at, std::min(kPieceLength, image.size() - at));
    std::copy(piece.begin(), piece.end(), write.bytes.begin() + 4);
    script.push_back(write);
  }
  return script;
}

std::vector<ScriptedTransfer> ScriptReading(std::uint32_t size) {
  std::vector<ScriptedTransfer> script;
  // One request more than there are whole packets, also when nothing is left for it.
  for (std::uint32_t packet = 0; packet <= size / kPacketLength; ++packet) {
    ScriptedTransfer request{5, false, kPacketLength, {}};
    PutAddress(request.bytes.data(), std::size_t{packet} * kPacketLength);
    script.push_back(request);
    script.push_back({5, true, kPacketLength, {}});
  }
  return script;
}

std::uint64_t ProgrammingTransfers(std::uint32_t size) {
  const std::uint64_t bytes = size;
  return (bytes + kSectorLength - 1) / kSectorLength + (bytes + kPieceLength - 1) / kPieceLength;
}

std::uint64_t ReadingTransfers(std::uint32_t size) {
  return (std::uint64_t{size} / kPacketLength + 1) * 2;
}

std::vector<std::uint8_t> MakeImage(std::size_t size) {
  std::vector<std::uint8_t> image(size);
  std::uint32_t state = 1;
  for (std::uint8_t& byte : image) {
    state = state * 1664525U + 1013904223U;
    byte = static_cast<std::uint8_t>(state >> 24U);
  }
  return image;
}

}  // namespace bench
