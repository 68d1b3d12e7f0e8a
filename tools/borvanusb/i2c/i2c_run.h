#pragma once

#include <cstdint>
#include <vector>

#include "base/numbers.h"
#include "camera/camera.h"
#include "command/context.h"

namespace borvanusb {

// Reads registers of a device on the I2C bus that lie in a row, with progress; between two parts
// the user can stop it.
std::vector<std::uint32_t> ReadI2cRow(Context& context, Camera& camera, const I2cTarget& target,
                                      const Range& range);

}  // namespace borvanusb
