#pragma once

#include <cstdint>
#include <vector>

#include "base/numbers.h"
#include "camera/camera.h"
#include "command/context.h"

namespace borvanusb {

// Values of adjacent chip registers.
struct RegisterRead {
  std::vector<std::uint32_t> values;
  // True if each register was read separately, so each value is the chip's answer to its own read.
  // In a block, an answer can't be distinguished from the previous content of the buffer.
  bool checked = true;
};

// Reads chip registers, 8-bit ones in blocks if there are many. Prints a note to standard error if
// values are not checked.
RegisterRead ReadRegisters(Context& context, Camera& camera, const Range& range, bool wide);

}  // namespace borvanusb
