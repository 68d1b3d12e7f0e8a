#pragma once

// A device object on the Windows platform whose list of cameras is the test's.

#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "device/windows_platform.h"
#include "protocol/borvan_usb_q7.h"
#include "scripted_camera.h"

namespace test {

class ScriptedPlatform : public borvan::WindowsPlatform {
 public:
  explicit ScriptedPlatform(std::vector<ScriptedCamera*> cameras) : cameras_(std::move(cameras)) {}

  borvan::VideoInputListing ListVideoInputs() override {
    borvan::VideoInputListing listing;
    listing.outcome = borvan::VideoInputListing::Outcome::kWalked;
    listing.result = S_FALSE;
    for (ScriptedCamera* const camera : cameras_) {
      borvan::VideoInputDevice device;
      device.path = u"\\\\?\\usb#vid_1234&pid_0001#" + std::u16string(1, NextLetter());
      device.friendly_name = u"Scripted camera";
      device.moniker = std::make_shared<borvan::WindowsMoniker>(&camera->moniker);
      listing.devices.push_back(std::move(device));
    }
    return listing;
  }

 private:
  char16_t NextLetter() { return static_cast<char16_t>(u'a' + count_++); }

  const std::vector<ScriptedCamera*> cameras_;
  int count_ = 0;
};

// A device object that has listed `cameras` and selected none.
inline std::unique_ptr<borvan::BorvanUsb_Q7> MakeDevice(std::vector<ScriptedCamera*> cameras) {
  auto device = std::make_unique<borvan::BorvanUsb_Q7>(
      std::make_unique<ScriptedPlatform>(std::move(cameras)));
  device->EnumerateDevices();
  return device;
}

}  // namespace test
