#pragma once

#include <gtest/gtest.h>

#include <memory>
#include <vector>

#include "protocol/borvan_usb_q7.h"
#include "support/scripted_control.h"

namespace borvan::test {

// Codes as hosts see them.
constexpr Result Code(std::uint32_t bits) {
  return static_cast<Result>(bits);
}
constexpr Result kEraseFailed = Code(0xE0000001);
constexpr Result kLengthQueryFailed = Code(0xE0000002);
constexpr Result kWriteFailed = Code(0xE0000003);
constexpr Result kInvalidAddress = Code(0xE0000004);
constexpr Result kTerminated = Code(0xE0000006);
constexpr Result kFastInterfaceFailed = Code(0xE0000007);
constexpr Result kIncomplete = Code(0xE0000008);
constexpr Result kNoChannel = Code(0x80004003);
constexpr Result kDeviceGone = Code(0x80070017);  // any failure of a driver
constexpr Result kBadLength = Code(0x8007000D);

// What the system shows of the one camera that a test has.
struct Camera {
  std::shared_ptr<ExtensionUnitControl> control;  // null: a camera without a vendor node
  const char* refusal = nullptr;                  // thrown at opening, after the node
};

// A platform with `camera` alone. It is looked at anew at each opening.
std::unique_ptr<DevicePlatform> PlatformWith(std::shared_ptr<const Camera> camera);

// A device object whose selected camera plays the scripts of the tests. Each test's script must
// have been played to its end.
class CameraWithScript : public ::testing::Test {
 protected:
  // Selects the camera; the feature register answers 0.
  CameraWithScript();

  void TearDown() override { control_->ExpectAllPlayed(); }

  void Play(std::vector<Transfer> script) { control_->Play(std::move(script)); }

  // Asks for a stop while transfer `index` of the script is under way.
  void StopDuring(std::size_t index);

  // Reports as a callback gets them.
  struct Report {
    std::int32_t status;
    std::int32_t percent;
    friend bool operator==(const Report&, const Report&) = default;
  };
  ProgressCallback Recorder();
  std::vector<std::int32_t> Percentages() const;

  std::shared_ptr<ScriptedControl> control_ = std::make_shared<ScriptedControl>();
  std::shared_ptr<Camera> camera_ = std::make_shared<Camera>();
  BorvanUsb_Q7 device_;
  std::vector<Report> reports_;
};

// The same with no channel open: whatever reaches a device is a failure.
class CameraWithoutChannel : public ::testing::Test {
 protected:
  BorvanUsb_Q7 device_{PlatformWith(std::make_shared<Camera>())};
};

// The read of the feature register as a selection makes it, answered with `value`.
std::vector<Transfer> FeatureRead(std::uint8_t value);

}  // namespace borvan::test
