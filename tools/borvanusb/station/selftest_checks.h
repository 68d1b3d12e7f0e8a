#pragma once

#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "base/exit_code.h"
#include "camera/camera.h"

namespace borvanusb {

// One thing that the self test tries. Nothing of it changes the camera.
struct SelftestCheck {
  std::string name;
  // Empty when all is well, else why it is not. Throws Failure when the camera does.
  std::function<std::string()> run;
  std::string skip_reason;  // set: not run
};

// In the order in which they are run; the first tells whether the camera answers at all.
//   target  the device on the I2C bus; without one its checks are skipped
std::vector<SelftestCheck> SelftestChecks(Camera& camera, const std::optional<I2cTarget>& target);

}  // namespace borvanusb
