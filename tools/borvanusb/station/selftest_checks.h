#pragma once

#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "base/exit_code.h"
#include "camera/camera.h"

namespace borvanusb {

// A check of the self-test. No check changes the camera.
struct SelftestCheck {
  std::string name;
  // Returns an empty text on success, else the problem. Throws the exceptions of Camera.
  std::function<std::string()> run;
  std::string skip_reason;  // if set, the check is not run
};

// All checks in order. The first one finds out whether the camera answers at all.
//   target  the device on the I2C bus; without one, its checks are skipped
std::vector<SelftestCheck> SelftestChecks(Camera& camera, const std::optional<I2cTarget>& target);

}  // namespace borvanusb
