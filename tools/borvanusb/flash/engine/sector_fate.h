#pragma once

#include <cstdint>
#include <span>

#include "flash/engine/byte_ranges.h"
#include "flash/engine/journal.h"

namespace borvanusb {

// What happened to a sector whose change was interrupted, determined from its content.
enum class SectorFate {
  kUnharmed,   // the bytes beside the change are unchanged
  kOnItsWay,   // they are changed, as an interruption can leave them
  kEither,     // the same, but a later change also wrote this content
  kOtherwise,  // they are changed, but not by a known interruption
};

// `named` are the addresses to change.
SectorFate FateOf(std::span<const std::uint8_t> found, const SharedSector& sector,
                  const Ranges& named);

// Whether an interruption can have left the whole sector, including the bytes to change, like this.
bool CanBeLeftByCut(std::span<const std::uint8_t> found, const SharedSector& sector);

// Whether an interrupted erase of `original` can have left this: bits are set all over the sector,
// and none is cleared.
bool IsHalfErased(std::span<const std::uint8_t> found, std::span<const std::uint8_t> original);

// Whether interrupted clearing of words, from `original` to `planned`, can have left this.
bool IsHalfCleared(std::span<const std::uint8_t> found, std::span<const std::uint8_t> original,
                   std::span<const std::uint8_t> planned);

// Whether interrupted programming of `planned` into the erased sector can have left this. Packets
// are sent in rising order: first written bytes, then at most one partial packet, then erased
// bytes.
bool IsHalfProgrammed(std::span<const std::uint8_t> found, std::span<const std::uint8_t> planned);

}  // namespace borvanusb
