#pragma once

#include <cstdint>
#include <vector>

#include "base/numbers.h"
#include "camera/camera.h"
#include "command/context.h"

namespace borvanusb {

// Values of chip registers in a row.
struct RegisterRead {
  std::vector<std::uint32_t> values;
  // Each value is the chip's answer to its own read. False for registers read in blocks, where
  // nothing tells an answer from what was in the block before.
  bool checked = true;
};

// Reads chip registers, long rows of 8-bit ones in blocks. Says so on standard error when values
// are not checked.
RegisterRead ReadRegisters(Context& context, Camera& camera, const Range& range, bool wide);

}  // namespace borvanusb
