#pragma once

#include <cstdint>
#include <vector>

#include "base/numbers.h"

namespace borvanusb {

// Registers that the chip delivers at once.
inline constexpr std::uint32_t kRunBlock = 56;

// The jobs of the second reading of a run of registers. Its blocks begin half a block later than
// those of the first, which is one job, but for the last one: where the chip did not get a block's
// address, it answers with the block before, and that must not look alike in both readings.
std::vector<Range> CutSecondRun(const Range& run);

}  // namespace borvanusb
