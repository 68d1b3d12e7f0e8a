// What happens when the system has no thread to give.

#include <gtest/gtest.h>
#include <pthread.h>

#include <system_error>

#include "jobs/job_starters.h"
#include "jobs/progress.h"
#include "jobs/scripted_device.h"
#include "support/temporary_folder.h"

namespace borvan_test {
namespace {

// While it lives no thread can be created: each would get a stack larger than the address space.
class NoMoreThreads {
 public:
  NoMoreThreads() {
    pthread_getattr_default_np(&former_);
    pthread_attr_t attributes;
    pthread_getattr_default_np(&attributes);
    pthread_attr_setstacksize(&attributes, std::size_t{1} << 60U);
    pthread_setattr_default_np(&attributes);
    pthread_attr_destroy(&attributes);
  }
  NoMoreThreads(const NoMoreThreads&) = delete;
  NoMoreThreads& operator=(const NoMoreThreads&) = delete;
  ~NoMoreThreads() {
    pthread_setattr_default_np(&former_);
    pthread_attr_destroy(&former_);
  }

 private:
  pthread_attr_t former_ = {};
};

class ThreadShortageTest : public testing::Test {
 protected:
  const TemporaryFolder folder;
  const std::string input = folder.Put("list.txt", "0x01,0x02,\n");
  const std::shared_ptr<ScriptedDevice> device = std::make_shared<ScriptedDevice>();
  ReportRecorder recorder{device};
};

TEST_F(ThreadShortageTest, StarterThrowsFreesTheRecordAndLeavesJobRunningSet) {
  device->Jobs().stop_requested = true;
  {
    const NoMoreThreads shortage;
    try {
      borvan::StartFlashWriteJob(device, input, "0", recorder.Callback());
      ADD_FAILURE() << "nothing was thrown";
    } catch (const std::system_error& error) {
      EXPECT_EQ(error.code(), std::errc::resource_unavailable_try_again);
    }
  }
  EXPECT_TRUE(device->Jobs().job_running);
  EXPECT_FALSE(device->Jobs().stop_requested);
  EXPECT_TRUE(recorder.JobsEnded()) << "the record was not freed";
  EXPECT_TRUE(recorder.Reports().empty());
}

TEST_F(ThreadShortageTest, ReportOfHundredStandsWhenNoClearTaskCanStart) {
  {
    const NoMoreThreads shortage;
    borvan::ReportProgress(device, 0, 100);
  }
  EXPECT_EQ(borvan::ReadProgress(device->Jobs()), 100U);
  borvan::ReportProgress(device, 0, 7);  // the mutex was left unlocked
  EXPECT_EQ(borvan::ReadProgress(device->Jobs()), 7U);
}

TEST_F(ThreadShortageTest, JobEndsWellWhenNoClearTaskCanStart) {
  Gate started;
  Gate leave;
  device->flash_write = [&](auto&&...) {
    started.Open();
    leave.Wait();
    return 0;
  };
  const auto report = borvan::MakeProgressCallback(device);
  borvan::StartFlashWriteJob(device, input, "0", report);
  ASSERT_TRUE(started.Wait());
  const NoMoreThreads shortage;
  leave.Open();
  EXPECT_TRUE(WaitUntil([&] { return !device->Jobs().job_running; }));
  EXPECT_EQ(borvan::ReadProgress(device->Jobs()), 100U);
}

}  // namespace
}  // namespace borvan_test
