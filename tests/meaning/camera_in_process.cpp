#include "camera_in_process.h"

#include <stdexcept>

#include "support/scripted_platform.h"

namespace borvan_test {
namespace {

constexpr std::uint32_t kFeatureRegister = 0x1A3;
constexpr std::uint32_t kFeatureFastI2c = 0x20;

}  // namespace

CameraInProcess::CameraInProcess(const CameraSetup& setup) {
  virtual_camera::CameraConfiguration configuration = UsualCamera();
  configuration.registers = setup.registers;
  configuration.registers[kFeatureRegister] = setup.fast_i2c ? kFeatureFastI2c : 0;
  for (const auto& [slave, mode] : setup.sensors) {
    configuration.sensors.push_back({.slave = slave, .mode = mode, .registers = {}});
  }
  configuration.list_header = setup.markers_are_page ? virtual_camera::ListHeader::kPage
                                                     : virtual_camera::ListHeader::kIgnored;
  configuration.absent_slave = setup.absent_slave_fails ? virtual_camera::AbsentSlave::kFailure
                                                        : virtual_camera::AbsentSlave::kZeros;
  chip_ = std::make_shared<MemoryChip>(configuration);

  const auto script = std::make_shared<PlatformScript>();
  script->cameras.push_back(MakeCamera(u'a', chip_));
  device_ = std::make_shared<borvan::BorvanUsb_Q7>(std::make_unique<ScriptedPlatform>(script));
  if (device_->EnumerateDevices() < 0 || device_->SelectDevice(0) < 0) {
    throw std::runtime_error("the camera can't be selected");
  }
}

void CameraInProcess::PowerCycle() {
  chip_->PowerCycle();
  chip_->ForgetTransfers();
}

Registers CameraInProcess::Written() {
  Registers registers;
  const virtual_camera::RegisterStore written = chip_->Written();
  for (const auto& [key, value] : written.Values()) {
    registers[{static_cast<std::uint32_t>(key >> 32), static_cast<std::uint32_t>(key)}] = value;
  }
  return registers;
}

}  // namespace borvan_test
