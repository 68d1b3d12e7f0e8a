// The starters: checks of the input, results, flags, and on which thread things happen.

#include <gtest/gtest.h>

#include "jobs/job_starters.h"
#include "jobs/scripted_device.h"
#include "support/temporary_folder.h"

namespace borvan_test {
namespace {

constexpr auto kFileErrorResult = static_cast<borvan::Result>(0xE000000A);
constexpr std::pair<std::uint32_t, std::int32_t> kFileErrorReport{0xE000000A, -1};
constexpr std::pair<std::uint32_t, std::int32_t> kDoneReport{0, 100};

class JobStartersTest : public testing::Test {
 protected:
  using Starter = std::function<borvan::Result(std::string, borvan::ProgressCallback)>;
  struct NamedStarter {
    const char* name;
    Starter start;
  };

  std::vector<NamedStarter> ReadingStarters() {
    return {{"flash write",
             [this](std::string path, borvan::ProgressCallback progress) {
               return borvan::StartFlashWriteJob(device, path, "00000000", std::move(progress));
             }},
            {"register write",
             [this](std::string path, borvan::ProgressCallback progress) {
               return borvan::StartRegisterWriteJob(device, path, std::move(progress));
             }},
            {"i2c write", [this](std::string path, borvan::ProgressCallback progress) {
               return borvan::StartI2cWriteJob(device, path, 0, std::move(progress));
             }}};
  }

  std::vector<NamedStarter> WritingStarters() {
    return {{"flash read",
             [this](std::string path, borvan::ProgressCallback progress) {
               return borvan::StartFlashQuickReadJob(device, path, "0", "0", std::move(progress));
             }},
            {"register read",
             [this](std::string path, borvan::ProgressCallback progress) {
               return borvan::StartRegisterReadJob(device, path, "0", "0", std::move(progress));
             }},
            {"i2c read", [this](std::string path, borvan::ProgressCallback progress) {
               return borvan::StartI2cReadJob(device, path, "0", "0", "0", 0, std::move(progress));
             }}};
  }

  std::vector<NamedStarter> AllStarters() {
    auto all = ReadingStarters();
    for (auto& starter : WritingStarters()) {
      all.push_back(std::move(starter));
    }
    return all;
  }

  void ExpectRefusal(const NamedStarter& starter, const std::string& path) {
    SCOPED_TRACE(starter.name);
    ReportRecorder recorder(device);
    for (const bool flag : {false, true}) {
      device->Jobs().stop_requested = flag;
      device->Jobs().job_running = flag;
      EXPECT_EQ(starter.start(path, recorder.Callback()), kFileErrorResult);
      EXPECT_EQ(device->Jobs().stop_requested, flag) << "the flags are not the refusal's business";
      EXPECT_EQ(device->Jobs().job_running, flag);
    }
    const auto reports = recorder.Reports();
    ASSERT_EQ(reports.size(), 2U);
    EXPECT_EQ(reports.at(0), kFileErrorReport);
    EXPECT_EQ(reports.at(1), kFileErrorReport);
    EXPECT_EQ(reports.at(0).thread, std::this_thread::get_id());
    EXPECT_TRUE(recorder.JobsEnded()) << "the callback was not released";
  }

  const TemporaryFolder folder;
  const std::shared_ptr<ScriptedDevice> device = std::make_shared<ScriptedDevice>();
};

TEST_F(JobStartersTest, EmptyPathIsRefusedByAllSix) {
  for (const auto& starter : AllStarters()) {
    ExpectRefusal(starter, "");
  }
}

TEST_F(JobStartersTest, MissingInputFileIsRefusedAtOnce) {
  for (const auto& starter : ReadingStarters()) {
    ExpectRefusal(starter, folder.Path("missing.txt"));
  }
}

TEST_F(JobStartersTest, RegisterListWithoutAnEntryIsRefused) {
  const auto register_write = ReadingStarters().at(1);
  ExpectRefusal(register_write, folder.Put("empty.txt", ""));
  ExpectRefusal(register_write, folder.Put("remarks.txt", "// nothing\r\n\r\n0xfff2,0x01,\r\n"));
}

TEST_F(JobStartersTest, RegisterListWithALineOfOneFieldIsRefused) {
  ExpectRefusal(ReadingStarters().at(1),
                folder.Put("broken.txt", "0xfffd,0x00,\n0x3012,\n0x3013,0x01,\n"));
}

TEST_F(JobStartersTest, RefusalBearsAnEmptyCallback) {
  for (const auto& starter : AllStarters()) {
    EXPECT_EQ(starter.start("", {}), kFileErrorResult) << starter.name;
  }
}

TEST_F(JobStartersTest, StartedJobsReturnZeroAndReportDone) {
  const std::string input = folder.Put("list.txt", "0xfffd,0x00,\n");
  for (const auto& starter : AllStarters()) {
    SCOPED_TRACE(starter.name);
    ReportRecorder recorder(device);
    EXPECT_EQ(starter.start(input, recorder.Callback()), 0);
    ASSERT_TRUE(recorder.JobsEnded());
    const auto reports = recorder.Reports();
    ASSERT_EQ(reports.size(), 1U);
    EXPECT_EQ(reports.at(0), kDoneReport);
    EXPECT_NE(reports.at(0).thread, std::this_thread::get_id());
    folder.Put("list.txt", "0xfffd,0x00,\n");  // the reads replaced it
  }
}

TEST_F(JobStartersTest, OutputFileNeedNotExist) {
  for (const auto& starter : WritingStarters()) {
    ReportRecorder recorder(device);
    const std::string path = folder.Path(std::string("new ") + starter.name + ".bin");
    EXPECT_EQ(starter.start(path, recorder.Callback()), 0) << starter.name;
    ASSERT_TRUE(recorder.JobsEnded());
    EXPECT_TRUE(std::filesystem::exists(path)) << starter.name;
  }
}

TEST_F(JobStartersTest, OutputFileThatCannotBeCreatedIsReportedByTheWorker) {
  for (const auto& starter : WritingStarters()) {
    SCOPED_TRACE(starter.name);
    ReportRecorder recorder(device);
    bool reached = false;
    device->SetEveryOperation([&] {
      reached = true;
      return borvan::Result{0};
    });
    EXPECT_EQ(starter.start(folder.Path("no folder/out.bin"), recorder.Callback()), 0);
    ASSERT_TRUE(recorder.JobsEnded());
    const auto reports = recorder.Reports();
    ASSERT_EQ(reports.size(), 1U);
    EXPECT_EQ(reports.at(0), kFileErrorReport);
    EXPECT_NE(reports.at(0).thread, std::this_thread::get_id());
    EXPECT_TRUE(reports.at(0).job_running) << "the flags are cleared after the report";
    EXPECT_FALSE(device->Jobs().job_running);
    EXPECT_FALSE(reached) << "nothing is read from the device";
  }
}

TEST_F(JobStartersTest, FolderAsOutputIsReportedByTheWorker) {
  const TemporaryFolder other;
  for (const auto& starter : WritingStarters()) {
    ReportRecorder recorder(device);
    EXPECT_EQ(starter.start(other.Path(""), recorder.Callback()), 0) << starter.name;
    ASSERT_TRUE(recorder.JobsEnded());
    ASSERT_EQ(recorder.Reports().size(), 1U) << starter.name;
    EXPECT_EQ(recorder.Reports().at(0), kFileErrorReport) << starter.name;
  }
}

TEST_F(JobStartersTest, I2cListWithoutAnEntryIsReportedByTheWorker) {
  const auto i2c_write = ReadingStarters().at(2);
  bool reached = false;
  device->i2c_write = [&](auto&&...) { return reached = true, 0; };
  for (const char* content : {"", "// nothing\n", "0x3012,\n", "0x3012,0x01,\n,\n"}) {
    ReportRecorder recorder(device);
    EXPECT_EQ(i2c_write.start(folder.Put("list.txt", content), recorder.Callback()), 0) << content;
    ASSERT_TRUE(recorder.JobsEnded());
    ASSERT_EQ(recorder.Reports().size(), 1U) << content;
    EXPECT_EQ(recorder.Reports().at(0), kFileErrorReport) << content;
    EXPECT_NE(recorder.Reports().at(0).thread, std::this_thread::get_id()) << content;
    EXPECT_FALSE(device->Jobs().job_running) << content;
  }
  EXPECT_FALSE(reached);
}

TEST_F(JobStartersTest, RegisterListIsReadBeforeTheStarterReturns) {
  const std::string path = folder.Put("list.txt", "0xfffd,0x00,\n0x3012,0x5a,\n");
  Gate gate;
  std::vector<borvan::ListEntry> written;
  device->register_write = [&](std::vector<borvan::ListEntry> list, auto&&...) {
    gate.Wait();
    written = std::move(list);
    return 0;
  };
  ReportRecorder recorder(device);
  EXPECT_EQ(borvan::StartRegisterWriteJob(device, path, recorder.Callback()), 0);
  std::filesystem::remove(path);
  gate.Open();
  ASSERT_TRUE(recorder.JobsEnded());
  EXPECT_EQ(written, (std::vector<borvan::ListEntry>{{0xFFFD, 0x00}, {0x3012, 0x5A}}));
}

TEST_F(JobStartersTest, StarterReturnsWhileTheJobRuns) {
  Gate gate;
  device->flash_write = [&](auto&&...) {
    gate.Wait();
    return 0;
  };
  ReportRecorder recorder(device);
  const std::string path = folder.Put("image.bin", "x");
  EXPECT_EQ(borvan::StartFlashWriteJob(device, path, "0", recorder.Callback()), 0);
  EXPECT_TRUE(recorder.Reports().empty());
  EXPECT_TRUE(device->Jobs().job_running);
  gate.Open();
  EXPECT_TRUE(recorder.JobsEnded());
}

TEST_F(JobStartersTest, FlagsDuringAndAfterEachJob) {
  struct FlagsSeen {
    bool stop = true;
    bool running = false;
  };
  std::vector<FlagsSeen> in_operation;
  // Whatever a stop request during the operation says, it is gone after the job.
  device->SetEveryOperation([&] {
    in_operation.push_back({device->IsStopRequested(), device->Jobs().job_running});
    device->Jobs().stop_requested = true;
    return borvan::Result{0};
  });
  for (const auto& starter : AllStarters()) {
    SCOPED_TRACE(starter.name);
    const std::string path = folder.Put("list.txt", "0xfffd,0x00,\n");
    ReportRecorder recorder(device);
    device->Jobs().stop_requested = true;  // a left-over: starting clears it
    in_operation.clear();
    EXPECT_EQ(starter.start(path, recorder.Callback()), 0);
    ASSERT_TRUE(recorder.JobsEnded());
    ASSERT_EQ(in_operation.size(), 1U);
    EXPECT_FALSE(in_operation.at(0).stop);
    EXPECT_TRUE(in_operation.at(0).running);
    ASSERT_EQ(recorder.Reports().size(), 1U);
    EXPECT_TRUE(recorder.Reports().at(0).job_running) << "cleared before the final report";
    EXPECT_TRUE(recorder.Reports().at(0).stop_requested) << "cleared before the final report";
    EXPECT_FALSE(device->Jobs().job_running);
    EXPECT_FALSE(device->Jobs().stop_requested);
  }
}

}  // namespace
}  // namespace borvan_test
