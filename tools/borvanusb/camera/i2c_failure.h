#pragma once

// Why an access over I2C was refused: a failure of the camera and one of the sensor look the same.

#include "base/failure.h"
#include "camera/camera.h"

namespace borvanusb {

// Asks the camera itself, by reading its feature register, and returns the failure with what that
// told: whether the camera answers, and what to check then.
Failure ExplainedI2cFailure(Camera& camera, const I2cTarget& target, const Failure& failure);

// Does an access to the device. Throws as the access does; where that is kDevice, explained.
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
