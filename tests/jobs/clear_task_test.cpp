// What becomes of a finished job's 100. These tests really wait the three seconds, all of them the
// same three: the reports are made before the first of them.

#include <gtest/gtest.h>

#include <chrono>

#include "jobs/progress.h"
#include "jobs/scripted_device.h"

namespace borvan_test {
namespace {

using Clock = std::chrono::steady_clock;
using DevicePointer = std::shared_ptr<borvan::BorvanUSBBase>;

constexpr std::chrono::seconds kShown{3};

std::uint64_t Seen(const DevicePointer& device) {
  return borvan::ReadProgress(device->Jobs());
}

class ClearTaskTest : public testing::Test {
 protected:
  struct Devices {
    DevicePointer left_alone = std::make_shared<ScriptedDevice>();
    DevicePointer progressed = std::make_shared<ScriptedDevice>();
    DevicePointer failed = std::make_shared<ScriptedDevice>();
    DevicePointer done_twice = std::make_shared<ScriptedDevice>();
    DevicePointer never_done = std::make_shared<ScriptedDevice>();
    std::weak_ptr<borvan::BorvanUSBBase> destroyed;
    Clock::time_point reported;
  };

  static void SetUpTestSuite() {
    devices_ = std::make_unique<Devices>();
    devices_->reported = Clock::now();
    for (const auto& device : {devices_->left_alone, devices_->progressed, devices_->failed,
                               devices_->done_twice, devices_->done_twice}) {
      borvan::ReportProgress(device, 0, 100);
    }
    borvan::ReportProgress(devices_->progressed, 0, 42);
    borvan::ReportProgress(devices_->failed, static_cast<std::int32_t>(0xE0000003), -1);
    borvan::ReportProgress(devices_->never_done, static_cast<std::int32_t>(0xE0000007), -1);
    const DevicePointer destroyed = std::make_shared<ScriptedDevice>();
    borvan::ReportProgress(destroyed, 0, 100);
    devices_->destroyed = destroyed;
  }
  static void TearDownTestSuite() { devices_.reset(); }

  static std::unique_ptr<Devices> devices_;
};

std::unique_ptr<ClearTaskTest::Devices> ClearTaskTest::devices_;

TEST_F(ClearTaskTest, DoneIsShownForThreeSecondsAndThenCleared) {
  while (Seen(devices_->left_alone) == 100 && Clock::now() < devices_->reported + kShown) {
    std::this_thread::sleep_for(std::chrono::milliseconds(5));
  }
  // The deadline is taken after the report, so nothing may go before.
  EXPECT_GE(Clock::now(), devices_->reported + kShown) << "cleared too early";
  EXPECT_TRUE(WaitUntil([&] { return Seen(devices_->left_alone) == 0; }));
}

TEST_F(ClearTaskTest, LaterProgressIsClearedToo) {
  EXPECT_TRUE(WaitUntil([&] { return Seen(devices_->progressed) == 0; }));
  EXPECT_GE(Clock::now(), devices_->reported + kShown);
}

TEST_F(ClearTaskTest, LaterFailureIsClearedToo) {
  EXPECT_TRUE(WaitUntil([&] { return Seen(devices_->failed) == 0; }));
  EXPECT_GE(Clock::now(), devices_->reported + kShown);
}

TEST_F(ClearTaskTest, EveryTaskEndsAndLetsGoOfTheDevice) {
  EXPECT_TRUE(WaitUntil([&] { return devices_->done_twice.use_count() == 1; }));
  EXPECT_EQ(Seen(devices_->done_twice), 0U);
}

TEST_F(ClearTaskTest, FailureAloneIsNeverCleared) {
  EXPECT_TRUE(WaitUntil([&] { return Clock::now() > devices_->reported + kShown; }));
  EXPECT_TRUE(WaitUntil([&] { return Seen(devices_->left_alone) == 0; }));
  EXPECT_EQ(Seen(devices_->never_done), 0xE000000700000000U);
}

TEST_F(ClearTaskTest, TaskKeepsADeviceThatNobodyElseHoldsUntilItHasCleared) {
  EXPECT_TRUE(WaitUntil([&] { return devices_->destroyed.expired(); }));
  EXPECT_GE(Clock::now(), devices_->reported + kShown);
}

}  // namespace
}  // namespace borvan_test
