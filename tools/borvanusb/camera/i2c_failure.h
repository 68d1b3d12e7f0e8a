#pragma once

// Explains why an I2C access was refused. The access itself does not show whether the camera or the
// device on the I2C bus caused the failure.

#include "base/failure.h"
#include "camera/camera.h"

namespace borvanusb {

// Reads the camera's feature register to find out whether the camera answers. Returns the failure
// with this result added, and with a hint what to check. If that read ends for another reason, such
// as a stop, returns its failure instead.
Failure ExplainedI2cFailure(Camera& camera, const I2cTarget& target, const Failure& failure);

// Calls `access` and returns its result. If it throws Failure kDevice, the failure is explained;
// any other exception is passed on unchanged.
template <typename Access>
auto ExplainingI2c(Camera& camera, const I2cTarget& target, Access access) -> decltype(access()) {
  try {
    return access();
  } catch (const Failure& failure) {
    if (failure.Code() != ExitCode::kDevice) {
      throw;
    }
    throw ExplainedI2cFailure(camera, target, failure);
  }
}

}  // namespace borvanusb
