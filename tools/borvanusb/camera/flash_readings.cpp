#include "camera/flash_readings.h"

#include <algorithm>
#include <utility>

namespace borvanusb {

std::vector<FlashPiece> CutReading(std::uint32_t address, std::uint64_t size, std::uint32_t shift,
                                   bool ends_range) {
  const std::uint64_t end = std::uint64_t{address} + size;
  const std::uint64_t last_packet = address + (size - 1) / kReadPacket * kReadPacket;
  const FlashPiece tail{static_cast<std::uint32_t>(last_packet), end - last_packet,
                        end - last_packet == kReadPacket};
  if (shift == 0 || size <= kReadPacket) {
    return {{address, size, ends_range && tail.last_byte_apart}};
  }
  std::vector<FlashPiece> pieces;
  std::uint32_t start = address - shift;
  if (address < shift) {
    const auto head = static_cast<std::uint32_t>(kReadPacket - shift);
    pieces.push_back({address, head, false});
    start = address + head;
  }
  // Shifted packets would extend beyond the end of the range. The last packet is therefore read
  // separately, with the boundaries of the first reading.
  const std::uint64_t body_end = ends_range ? last_packet : end;
  if (body_end > start) {
    pieces.push_back({start, body_end - start, false});
  }
  if (ends_range) {
    pieces.push_back(tail);
  }
  return pieces;
}

FlashReadings::FlashReadings(std::uint64_t size)
    : bytes_(size), settled_((size + kReadPacket - 1) / kReadPacket) {}

std::optional<FlashReadings::Section> FlashReadings::Open() const {
  const auto first = std::find(settled_.begin(), settled_.end(), false);
  if (first == settled_.end()) {
    return std::nullopt;
  }
  const auto last = std::find(settled_.rbegin(), settled_.rend(), false);
  const auto begin = static_cast<std::uint64_t>(first - settled_.begin()) * kReadPacket;
  const auto end = static_cast<std::uint64_t>(settled_.rend() - last) * kReadPacket;
  return Section{begin, std::min<std::uint64_t>(end, bytes_.size()) - begin};
}

void FlashReadings::Add(std::uint64_t offset, std::vector<std::uint8_t> bytes) {
  for (std::uint64_t at = 0; at < bytes.size(); at += kReadPacket) {
    const std::uint64_t packet = (offset + at) / kReadPacket;
    const auto read = std::span(bytes).subspan(at, std::min(kReadPacket, bytes.size() - at));
    if (!settled_[packet] && Agrees(read, offset + at)) {
      std::copy(read.begin(), read.end(),
                bytes_.begin() + static_cast<std::ptrdiff_t>(offset + at));
      settled_[packet] = true;
    }
  }
  readings_.push_back({offset, std::move(bytes)});
}

bool FlashReadings::Agrees(std::span<const std::uint8_t> packet, std::uint64_t offset) const {
  return std::any_of(readings_.begin(), readings_.end(), [&](const Reading& reading) {
    // The open section never grows, so every earlier reading contains all packets of this one.
    const auto earlier = std::span(reading.bytes).subspan(offset - reading.offset, packet.size());
    return std::equal(packet.begin(), packet.end(), earlier.begin());
  });
}

std::vector<std::uint8_t> FlashReadings::Take() {
  return std::move(bytes_);
}

}  // namespace borvanusb
