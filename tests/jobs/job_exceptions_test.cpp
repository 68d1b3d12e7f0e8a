// Exceptions that reach a job's thread: the host lives, the job reports, the flags are cleared.

#include <gtest/gtest.h>

#include <atomic>
#include <new>
#include <stdexcept>

#include "files/file.h"
#include "jobs/job_starters.h"
#include "jobs/scripted_device.h"
#include "support/temporary_folder.h"

namespace borvan_test {
namespace {

struct Thrown {
  const char* name;
  std::function<void()> raise;
  std::uint32_t status;
};

std::vector<Thrown> ThingsThrown() {
  return {
      {"no memory", [] { throw std::bad_alloc(); }, 0x8007000E},
      {"no memory for an array", [] { throw std::bad_array_new_length(); }, 0x8007000E},
      {"runtime error", [] { throw std::runtime_error("driver"); }, 0x80004005},
      {"message text", [] { throw "ERROR"; }, 0x80004005},
      {"number", [] { throw 42; }, 0x80004005},
      {"file error", [] { throw borvan::FileError("disk"); }, 0xE000000A},
  };
}

class JobExceptionsTest : public testing::Test {
 protected:
  using Start = std::function<borvan::Result(borvan::ProgressCallback)>;

  // Starts one job for each thing that its operation may throw.
  void ExpectEveryExceptionReported(const Start& start) {
    for (const Thrown& thrown : ThingsThrown()) {
      SCOPED_TRACE(thrown.name);
      device->SetEveryOperation([&] {
        device->Jobs().stop_requested = true;
        thrown.raise();
        return borvan::Result{0};
      });
      ReportRecorder recorder(device);
      EXPECT_EQ(start(recorder.Callback()), 0);
      ASSERT_TRUE(recorder.JobsEnded()) << "the record was not freed";
      const auto reports = recorder.Reports();
      ASSERT_EQ(reports.size(), 1U);
      EXPECT_EQ(reports.at(0), (std::pair{thrown.status, -1}));
      EXPECT_TRUE(reports.at(0).job_running) << "the flags are cleared after the report";
      EXPECT_FALSE(device->Jobs().job_running);
      EXPECT_FALSE(device->Jobs().stop_requested);
    }
  }

  const TemporaryFolder folder;
  const std::string input = folder.Put("list.txt", "0x01,0x02,\n");
  const std::string output = folder.Path("out.bin");
  const std::shared_ptr<ScriptedDevice> device = std::make_shared<ScriptedDevice>();
};

TEST_F(JobExceptionsTest, FlashWriteReportsThem) {
  ExpectEveryExceptionReported([&](borvan::ProgressCallback progress) {
    return borvan::StartFlashWriteJob(device, input, "0", std::move(progress));
  });
}

TEST_F(JobExceptionsTest, FlashReadReportsThem) {
  ExpectEveryExceptionReported([&](borvan::ProgressCallback progress) {
    return borvan::StartFlashQuickReadJob(device, output, "0", "0", std::move(progress));
  });
}

TEST_F(JobExceptionsTest, RegisterWriteReportsThem) {
  ExpectEveryExceptionReported([&](borvan::ProgressCallback progress) {
    return borvan::StartRegisterWriteJob(device, input, std::move(progress));
  });
}

TEST_F(JobExceptionsTest, RegisterReadReportsThem) {
  ExpectEveryExceptionReported([&](borvan::ProgressCallback progress) {
    return borvan::StartRegisterReadJob(device, output, "0", "0", std::move(progress));
  });
}

TEST_F(JobExceptionsTest, I2cWriteReportsThem) {
  ExpectEveryExceptionReported([&](borvan::ProgressCallback progress) {
    return borvan::StartI2cWriteJob(device, input, 0, std::move(progress));
  });
}

TEST_F(JobExceptionsTest, I2cReadReportsThem) {
  ExpectEveryExceptionReported([&](borvan::ProgressCallback progress) {
    return borvan::StartI2cReadJob(device, output, "0", "0", "0", 0, std::move(progress));
  });
}

TEST_F(JobExceptionsTest, JobWithoutACallbackSurvivesThemToo) {
  device->flash_write = [](auto&&...) -> borvan::Result { throw "ERROR"; };
  EXPECT_EQ(borvan::StartFlashWriteJob(device, input, "0", {}), 0);
  EXPECT_TRUE(WaitUntil([&] { return device.use_count() == 1; }));
  EXPECT_FALSE(device->Jobs().job_running);
}

TEST_F(JobExceptionsTest, CallbackThatThrowsAtTheReportOfAFailureEndsTheJobAllTheSame) {
  device->flash_write = [](auto&&...) -> borvan::Result { throw std::bad_alloc(); };
  std::atomic<int> reports = 0;
  const auto throwing = [&reports](std::int32_t, std::int32_t) {
    ++reports;
    throw std::runtime_error("the host's own");
  };
  EXPECT_EQ(borvan::StartFlashWriteJob(device, input, "0", throwing), 0);
  EXPECT_TRUE(WaitUntil([&] { return device.use_count() == 1; }));
  EXPECT_EQ(reports, 1);
  EXPECT_FALSE(device->Jobs().job_running);
}

TEST_F(JobExceptionsTest, AnotherJobRunsAfterwards) {
  device->flash_write = [](auto&&...) -> borvan::Result { throw std::bad_alloc(); };
  ReportRecorder recorder(device);
  borvan::StartFlashWriteJob(device, input, "0", recorder.Callback());
  ASSERT_TRUE(recorder.JobsEnded());
  device->flash_write = nullptr;
  EXPECT_EQ(borvan::StartFlashWriteJob(device, input, "0", recorder.Callback()), 0);
  ASSERT_TRUE(recorder.JobsEnded());
  ASSERT_EQ(recorder.Reports().size(), 2U);
  EXPECT_EQ(recorder.Reports().at(1), (std::pair{0U, 100}));
}

}  // namespace
}  // namespace borvan_test
