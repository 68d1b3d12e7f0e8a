#pragma once

#include <gtest/gtest.h>

#include <memory>
#include <utility>

#include "protocol/borvan_usb_q7.h"
#include "support/scripted_platform.h"

namespace borvan_test {

// The library's own failures of the system's kind, as hosts see them.
constexpr auto kNotImplementedResult = static_cast<borvan::Result>(0x80004001);
constexpr auto kNullPointerResult = static_cast<borvan::Result>(0x80004003);
constexpr auto kFailedResult = static_cast<borvan::Result>(0x80004005);

// A device object on a scripted system.
class DeviceTest : public testing::Test {
 protected:
  void List(std::vector<Camera> cameras) {
    script->cameras = std::move(cameras);
    script->outcome = borvan::VideoInputListing::Outcome::kWalked;
    device->EnumerateDevices();
  }

  static Camera CameraAt(std::u16string path, std::u16string name = u"Camera") {
    Camera camera;
    camera.path = std::move(path);
    camera.friendly_name = std::move(name);
    return camera;
  }

 public:
  const std::shared_ptr<PlatformScript> script = std::make_shared<PlatformScript>();
  std::unique_ptr<borvan::BorvanUsb_Q7> device =
      std::make_unique<borvan::BorvanUsb_Q7>(std::make_unique<ScriptedPlatform>(script));
};

}  // namespace borvan_test
