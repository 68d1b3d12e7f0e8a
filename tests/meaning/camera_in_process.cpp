#include "camera_in_process.h"

#include <stdexcept>

#include "support/scripted_platform.h"

namespace borvan_test {
namespace {

// Hands every transfer to the camera, as the system's driver does.
class CameraControl : public borvan::ExtensionUnitControl {
 public:
  CameraControl(virtual_camera::Camera& camera, const CameraInProcess::Tampering& tampering)
      : camera_(camera), tampering_(tampering) {}

  borvan::Result KsProperty(const borvan::NodePropertyRequest& request, void* data,
                            std::uint32_t length, std::uint32_t& bytes_returned) override {
    const std::span bytes(static_cast<std::uint8_t*>(data), data == nullptr ? 0 : length);
    virtual_camera::Answer answer;
    if (data == nullptr) {
      answer = camera_.QueryLength(request.id);
    } else if (request.flags == kSetFlags) {
      std::vector<std::uint8_t> block(bytes.begin(), bytes.end());
      if (tampering_) {
        tampering_(request.id, block);
      }
      answer = camera_.Set(request.id, block);
    } else {
      answer = camera_.Get(request.id, bytes);
    }
    bytes_returned = answer.bytes;
    return answer.result;
  }

 private:
  virtual_camera::Camera& camera_;
  const CameraInProcess::Tampering& tampering_;
};

constexpr std::uint32_t kFeatureRegister = 0x1A3;
constexpr std::uint32_t kFeatureFastI2c = 0x20;

}  // namespace

CameraInProcess::CameraInProcess(const CameraSetup& setup) {
  virtual_camera::CameraConfiguration configuration;
  configuration.path = "\\\\?\\usb#vid_1234&pid_5678#a";
  configuration.flash.size = virtual_camera::kFlashMinimum;
  configuration.flash.file = folder_.Path("flash");
  configuration.state_file = folder_.Path("state");
  configuration.registers = setup.registers;
  configuration.registers[kFeatureRegister] = setup.fast_i2c ? kFeatureFastI2c : 0;
  for (const auto& [slave, mode] : setup.sensors) {
    configuration.sensors.push_back({.slave = slave, .mode = mode, .registers = {}});
  }
  configuration.list_header = setup.markers_are_page ? virtual_camera::ListHeader::kPage
                                                     : virtual_camera::ListHeader::kIgnored;
  configuration.absent_slave = setup.absent_slave_fails ? virtual_camera::AbsentSlave::kFailure
                                                        : virtual_camera::AbsentSlave::kZeros;
  camera_.emplace(configuration);
  state_.emplace(configuration.state_file, true);

  const auto script = std::make_shared<PlatformScript>();
  script->cameras.push_back(MakeCamera(u'a'));
  script->cameras.back().vendor_nodes.push_back(
      {std::make_shared<CameraControl>(*camera_, tampering_), 2});
  device_ = std::make_shared<borvan::BorvanUsb_Q7>(std::make_unique<ScriptedPlatform>(script));
  if (device_->EnumerateDevices() < 0 || device_->SelectDevice(0) < 0) {
    throw std::runtime_error("the camera can't be selected");
  }
}

void CameraInProcess::PowerCycle() {
  const virtual_camera::StateLock lock(*state_);
  state_->State().LosePower();
  state_->Commit();
}

Registers CameraInProcess::Written() {
  const virtual_camera::StateLock lock(*state_);
  Registers registers;
  for (const auto& [key, value] : state_->State().registers.Values()) {
    registers[{static_cast<std::uint32_t>(key >> 32), static_cast<std::uint32_t>(key)}] = value;
  }
  return registers;
}

}  // namespace borvan_test
