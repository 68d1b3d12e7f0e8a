#pragma once

#include <cstdint>
#include <span>

#include "flash/engine/byte_ranges.h"
#include "flash/engine/journal.h"

namespace borvanusb {

// What became of a sector whose change was cut off, by what it holds now.
enum class SectorFate {
  kUnharmed,   // the bytes beside the change are as they were
  kOnItsWay,   // they are not, and a cut can leave just this behind
  kEither,     // likewise, but a later change has put just this there, too
  kOtherwise,  // they are not, and no cut known leaves this behind
};

// `named` are the addresses that the change names.
SectorFate FateOf(std::span<const std::uint8_t> found, const SharedSector& sector,
                  const Ranges& named);

// Whether the whole sector, the named bytes included, is as a cut can leave it.
bool CanBeLeftByCut(std::span<const std::uint8_t> found, const SharedSector& sector);

// Whether an erase that was cut off can have left this of `original`: bits are set all over the
// sector, none is cleared.
bool IsHalfErased(std::span<const std::uint8_t> found, std::span<const std::uint8_t> original);

// Whether words that were being cleared, from `original` to `planned`, can have been left so.
bool IsHalfCleared(std::span<const std::uint8_t> found, std::span<const std::uint8_t> original,
                   std::span<const std::uint8_t> planned);

// Whether programming `planned` into the erased sector can have been cut off here: packets go out
// in rising order, so there are written bytes, at most one packet in between, and erased ones.
bool IsHalfProgrammed(std::span<const std::uint8_t> found, std::span<const std::uint8_t> planned);

}  // namespace borvanusb
