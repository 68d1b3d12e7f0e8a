// Who keeps what alive, and jobs beside one another.

#include <gtest/gtest.h>

#include "jobs/job_starters.h"
#include "jobs/progress.h"
#include "jobs/scripted_device.h"
#include "support/temporary_folder.h"

namespace borvan_test {
namespace {

class JobLifetimeTest : public testing::Test {
 protected:
  const TemporaryFolder folder;
  const std::string input = folder.Put("list.txt", "0x01,0x02,\n");
};

TEST_F(JobLifetimeTest, RunningJobKeepsADeviceThatItsOwnerGaveUp) {
  auto device = std::make_shared<ScriptedDevice>();
  const std::weak_ptr<ScriptedDevice> watched = device;
  Gate started;
  Gate gate;
  device->flash_write = [&](auto&&, auto&&, borvan::ProgressCallback progress) {
    started.Open();
    gate.Wait();
    progress(0, 60);
    return static_cast<borvan::Result>(0xE0000003);
  };
  borvan::StartFlashWriteJob(device, input, "0", borvan::MakeProgressCallback(device));
  ASSERT_TRUE(started.Wait());
  device.reset();
  EXPECT_FALSE(watched.expired());
  gate.Open();
  EXPECT_TRUE(WaitUntil([&] { return watched.expired(); }));
}

TEST_F(JobLifetimeTest, RecordIsFreedWhenTheWorkerReturns) {
  const auto device = std::make_shared<ScriptedDevice>();
  device->flash_write = [](auto&&...) { return static_cast<borvan::Result>(0xE0000003); };
  borvan::StartFlashWriteJob(device, input, "0", borvan::MakeProgressCallback(device));
  EXPECT_TRUE(WaitUntil([&] { return device.use_count() == 1; }));
}

TEST_F(JobLifetimeTest, PositiveRegisterWriteIsPublishedAndStartsNoClearTask) {
  const auto device = std::make_shared<ScriptedDevice>();
  device->register_write = [](auto&&...) { return 11; };
  borvan::StartRegisterWriteJob(device, input, borvan::MakeProgressCallback(device));
  EXPECT_TRUE(WaitUntil([&] { return device.use_count() == 1; }));
  EXPECT_EQ(borvan::ReadProgress(device->Jobs()), 0x0000000B00000000U);
}

TEST_F(JobLifetimeTest, OperationThatReportsHundredItselfLeavesTwoClearTasks) {
  const auto device = std::make_shared<ScriptedDevice>();
  device->flash_read = [](auto&&, auto&&, auto&&, borvan::ProgressCallback progress) {
    progress(0, 100);
    return 0;
  };
  borvan::StartFlashQuickReadJob(device, folder.Path("out.bin"), "0", "0",
                                 borvan::MakeProgressCallback(device));
  EXPECT_TRUE(
      WaitUntil([&] { return !device->Jobs().job_running && device.use_count() == 1 + 2; }));
  EXPECT_EQ(borvan::ReadProgress(device->Jobs()), 100U);
}

TEST_F(JobLifetimeTest, PercentageAboveHundredShowsStatusOneUntilTheNextReport) {
  const auto device = std::make_shared<ScriptedDevice>();
  Gate reported;
  Gate gate;
  device->flash_read = [&](auto&&, auto&&, auto&&, borvan::ProgressCallback progress) {
    progress(0, 112);
    reported.Open();
    gate.Wait();
    return 0;
  };
  borvan::StartFlashQuickReadJob(device, folder.Path("out.bin"), "0", "3f",
                                 borvan::MakeProgressCallback(device));
  ASSERT_TRUE(reported.Wait());
  EXPECT_EQ(borvan::ReadProgress(device->Jobs()), 0x0000000100000000U);
  gate.Open();
  EXPECT_TRUE(WaitUntil([&] { return borvan::ReadProgress(device->Jobs()) == 100; }));
  EXPECT_TRUE(WaitUntil([&] { return !device->Jobs().job_running; }));
}

TEST_F(JobLifetimeTest, TwoJobsRunAtOnceAndTheFirstToEndClearsTheFlagsOfBoth) {
  const auto device = std::make_shared<ScriptedDevice>();
  Gate both_started[2];
  Gate gates[2];
  bool stop_seen_after_the_other_ended = true;
  device->flash_write = [&](auto&&...) {
    both_started[0].Open();
    both_started[1].Wait();
    gates[0].Wait();
    return 0;
  };
  device->i2c_write = [&](auto&&...) {
    both_started[1].Open();
    both_started[0].Wait();
    gates[1].Wait();
    stop_seen_after_the_other_ended = device->IsStopRequested();
    return 0;
  };
  ReportRecorder first(device);
  ReportRecorder second(device);
  EXPECT_EQ(borvan::StartFlashWriteJob(device, input, "0", first.Callback()), 0);
  EXPECT_EQ(borvan::StartI2cWriteJob(device, input, 0, second.Callback()), 0);
  ASSERT_TRUE(both_started[0].Wait());
  ASSERT_TRUE(both_started[1].Wait());
  EXPECT_TRUE(device->Jobs().job_running);
  device->Jobs().stop_requested = true;
  gates[0].Open();
  ASSERT_TRUE(first.JobsEnded());
  EXPECT_FALSE(device->Jobs().job_running);
  EXPECT_FALSE(device->Jobs().stop_requested);
  gates[1].Open();
  ASSERT_TRUE(second.JobsEnded());
  EXPECT_FALSE(stop_seen_after_the_other_ended);
  ASSERT_EQ(first.Reports().size(), 1U);
  ASSERT_EQ(second.Reports().size(), 1U);
  EXPECT_NE(first.Reports().at(0).thread, second.Reports().at(0).thread);
}

TEST_F(JobLifetimeTest, ReportsGoToTheDeviceThatTheJobWasStartedOn) {
  const auto device = std::make_shared<ScriptedDevice>();
  const auto another = std::make_shared<ScriptedDevice>();
  device->flash_write = [](auto&&...) { return static_cast<borvan::Result>(0xE0000003); };
  borvan::StartFlashWriteJob(device, input, "0", borvan::MakeProgressCallback(device));
  EXPECT_TRUE(WaitUntil([&] { return device.use_count() == 1; }));
  EXPECT_EQ(borvan::ReadProgress(device->Jobs()), 0xE000000300000000U);
  EXPECT_EQ(borvan::ReadProgress(another->Jobs()), 0U);
}

TEST_F(JobLifetimeTest, ManyJobsInARowAllEnd) {
  const auto device = std::make_shared<ScriptedDevice>();
  device->flash_write = [](auto&&...) { return static_cast<borvan::Result>(0xE0000001); };
  ReportRecorder recorder(device);
  for (int i = 0; i < 50; ++i) {
    ASSERT_EQ(borvan::StartFlashWriteJob(device, input, "0", recorder.Callback()), 0);
  }
  ASSERT_TRUE(recorder.JobsEnded());
  EXPECT_EQ(recorder.Reports().size(), 50U);
  EXPECT_FALSE(device->Jobs().job_running);
}

}  // namespace
}  // namespace borvan_test
