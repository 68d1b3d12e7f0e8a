#include "camera/i2c_failure.h"

#include "base/format.h"
#include "base/numbers.h"

namespace borvanusb {

namespace {

constexpr int kSlaveDigits = 2;
// The 7-bit addresses that a device may have. All others are reserved.
constexpr std::uint32_t kLowest7Bits = 0x08;
constexpr std::uint32_t kHighest7Bits = 0x77;

}  // namespace

Failure ExplainedI2cFailure(Camera& camera, const I2cTarget& target, const Failure& failure) {
  try {
    camera.ReadRegister(kFeatureRegister, RegisterWidth::kByte);
  } catch (const Failure& of_camera) {
    if (of_camera.Code() != ExitCode::kDevice) {
      return of_camera;
    }
    return {failure.Code(),
            Format("{}; the camera itself does not answer either", failure.Message()),
            failure.Hint()};
  }
  const std::string slave = Hex(target.slave, kSlaveDigits);
  std::string hint = Format(
      "Check that the device at {} has power and is not in reset; borvanusb i2c scan finds the "
      "devices.",
      slave);
  if (target.slave >= kLowest7Bits && target.slave <= kHighest7Bits) {
    hint += Format("\nIf {} is the 7-bit form of the address, use its 8-bit form: --slave {}.",
                   slave, Hex(std::uint64_t{target.slave} * 2, kSlaveDigits));
  }
  return {failure.Code(),
          Format("{}; the camera itself answers, so there may be no device at slave {}, or it "
                 "refused this access",
                 failure.Message(), slave),
          hint};
}

}  // namespace borvanusb
