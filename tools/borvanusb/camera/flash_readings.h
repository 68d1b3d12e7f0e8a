#pragma once

#include <array>
#include <cstdint>
#include <optional>
#include <span>
#include <vector>

#include "base/agreement.h"

namespace borvanusb {

// Reads flash several times, so that the readings do not contain the same errors.
//
// The library reads packets of 64 bytes. If the chip misses the address of a packet, it returns the
// data of the packet before, and the library does not detect this. If two readings had the same
// packet boundaries, both could contain the same stale packet. Each reading therefore shifts the
// boundaries: the bytes of one packet belong to two packets of every other reading.

// Size of the packets that the library reads.
inline constexpr std::uint64_t kReadPacket = 64;

// A long read is divided into parts of this size. Each part is read until two readings agree. The
// user can stop the read between two parts.
inline constexpr std::uint64_t kReadPart = 128U << 10U;

// The shift of each reading: the number of bytes by which its packets start before those of the
// first reading.
inline constexpr std::array<std::uint32_t, kMostReadings> kReadingShifts = {0, 32, 16, 48, 8};

// A range that one job of the library reads: `size` bytes at `address`.
struct FlashPiece {
  std::uint32_t address = 0;
  std::uint64_t size = 0;
  // If true, the job reads all bytes but the last, and the last byte is read by a single access. A
  // job over the whole piece would also request the packet after it.
  bool last_byte_apart = false;

  bool operator==(const FlashPiece&) const = default;
};

// Divides one reading of `size` bytes at `address` into pieces, sorted by address. The first piece
// may start up to 48 bytes before `address`, but not below address 0.
//   shift       a value of kReadingShifts
//   ends_range  whether the reading must not request packets after its last byte. Its last packet
//               may still extend beyond that byte, because the library reads whole packets.
std::vector<FlashPiece> CutReading(std::uint32_t address, std::uint64_t size, std::uint32_t shift,
                                   bool ends_range);

// Collects the readings of one part of the flash, and the bytes that two readings agree on.
// Readings are compared by packets of 64 bytes, counted from the first byte of the part. If one
// byte of a packet differs, the whole packet counts as different.
class FlashReadings {
 public:
  explicit FlashReadings(std::uint64_t size);

  struct Section {
    std::uint64_t offset = 0;
    std::uint64_t size = 0;
  };
  // Returns the section that must be read again: from the first to the last packet without two
  // equal readings. Returns nothing if all packets have them.
  std::optional<Section> Open() const;

  // Adds a reading of the section that Open returned. `offset` is the section's offset.
  void Add(std::uint64_t offset, std::vector<std::uint8_t> bytes);

  // Returns all bytes. Requires that Open returns nothing.
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
