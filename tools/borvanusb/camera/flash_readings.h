#pragma once

#include <array>
#include <cstdint>
#include <optional>
#include <span>
#include <vector>

#include "base/agreement.h"

namespace borvanusb {

// How flash is read more than once, so that two readings of the same bytes can't be wrong alike.
//
// The library reads packets of 64 bytes. When the chip does not get the address of a packet, it
// answers with the packet before, and the library does not notice. Each reading therefore cuts the
// range into other packets: the bytes that one stale packet of a reading replaces belong to two
// packets of every other reading.

inline constexpr std::uint64_t kReadPacket = 64;

// Parts of a long read. Each is read until two readings agree; between two a stop is obeyed.
inline constexpr std::uint64_t kReadPart = 64U << 10U;

// By how many bytes the packets of each reading begin before those of the first.
inline constexpr std::array<std::uint32_t, kMostReadings> kReadingShifts = {0, 32, 16, 48, 8};

// What is read by one job of the library, with `size` bytes from `address` on.
struct FlashPiece {
  std::uint32_t address = 0;
  std::uint64_t size = 0;
  // The job would ask for a packet behind its range; so it reads one byte less, and that byte is
  // read on its own.
  bool last_byte_apart = false;

  bool operator==(const FlashPiece&) const = default;
};

// The pieces of one reading of `size` bytes from `address` on, in the order of their addresses. The
// first may begin up to 48 bytes before, where there is flash. `ends_range`: nothing behind the
// last byte may be asked for, as far as whole packets allow.
std::vector<FlashPiece> CutReading(std::uint32_t address, std::uint64_t size, std::uint32_t shift,
                                   bool ends_range);

// The readings of one part of the flash, and the bytes that two of them agree on. Packets count as
// a whole, from the part's first byte on: one that differs in a byte does not agree.
class FlashReadings {
 public:
  explicit FlashReadings(std::uint64_t size);

  struct Section {
    std::uint64_t offset = 0;
    std::uint64_t size = 0;
  };
  // From the first packet to the last that are still without two readings that agree.
  std::optional<Section> Open() const;

  // A reading of an open section, from `offset` on.
  void Add(std::uint64_t offset, std::vector<std::uint8_t> bytes);

  // All bytes. Nothing may be open.
  std::vector<std::uint8_t> Take();

 private:
  struct Reading {
    std::uint64_t offset;
    std::vector<std::uint8_t> bytes;
  };
  bool Agrees(std::span<const std::uint8_t> packet, std::uint64_t offset) const;

  std::vector<std::uint8_t> bytes_;
  std::vector<bool> settled_;  // by packet
  std::vector<Reading> readings_;
};

}  // namespace borvanusb
