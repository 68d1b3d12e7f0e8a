#pragma once

#include <cstdint>
#include <vector>

#include "base/numbers.h"

namespace borvanusb {

// The number of registers that the chip returns in one block.
inline constexpr std::uint32_t kRunBlock = 56;

// Divides the second reading of consecutive registers into jobs. The first reading is one job. If
// the chip misses the address of a block, it returns the block before, and both readings must not
// contain the same stale block. The blocks of the second reading therefore start half a block
// later; only its last block is the same as in the first reading.
std::vector<Range> CutSecondRun(const Range& run);

}  // namespace borvanusb
