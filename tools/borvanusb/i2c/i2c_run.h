#pragma once

#include <cstdint>
#include <vector>

#include "base/numbers.h"
#include "camera/camera.h"
#include "command/context.h"

namespace borvanusb {

// Reads adjacent registers of a device on the I2C bus in parts, and shows progress. The user can
// stop it between two parts.
std::vector<std::uint32_t> ReadI2cRow(Context& context, Camera& camera, const I2cTarget& target,
                                      const Range& range);

}  // namespace borvanusb
