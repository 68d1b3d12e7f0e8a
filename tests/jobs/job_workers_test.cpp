// What each job hands to the device object and what it reports.

#include <gtest/gtest.h>

#include <atomic>

#include "jobs/job_starters.h"
#include "jobs/scripted_device.h"
#include "support/temporary_folder.h"

namespace borvan_test {
namespace {

using Expected = std::pair<std::uint32_t, std::int32_t>;

class JobWorkersTest : public ReportedJobsTest {};

TEST_F(JobWorkersTest, FlashWriteHandsOverTheFileAndTheAddress) {
  ScriptedDevice::Bytes image;
  std::uint32_t address = 0;
  device->flash_write = [&](ScriptedDevice::Bytes bytes, std::uint32_t start, auto progress) {
    image = std::move(bytes);
    address = start;
    progress(0, 17);
    progress(0, 83);
    return 0;
  };
  const std::string path = folder.Put("image.bin", std::string_view("\x00\x0D\x0A\x1A\xFF", 5));
  EXPECT_EQ(borvan::StartFlashWriteJob(device, path, "0001f000", recorder.Callback()), 0);
  ExpectReports({{0, 17}, {0, 83}, {0, 100}});
  EXPECT_EQ(image, (ScriptedDevice::Bytes{0x00, 0x0D, 0x0A, 0x1A, 0xFF}));
  EXPECT_EQ(address, 0x1F000U);
}

TEST_F(JobWorkersTest, FlashWriteReportsANegativeResultAsItIs) {
  device->flash_write = [](auto&&...) { return static_cast<borvan::Result>(0xE0000003); };
  borvan::StartFlashWriteJob(device, folder.Put("image.bin", "x"), "0", recorder.Callback());
  ExpectReports({{0xE0000003, -1}});
}

TEST_F(JobWorkersTest, PositiveResultsCountAsDone) {
  device->flash_write = [](auto&&...) { return 5; };
  device->flash_read = [](auto&&...) { return 6; };
  device->i2c_write = [](auto&&...) { return 7; };
  device->i2c_read = [](auto&&...) { return 8; };
  device->register_read = [](auto&&...) { return 9; };
  const std::string list = folder.Put("list.txt", "0x01,0x02,\n");
  const std::string output = folder.Path("out.bin");
  borvan::StartFlashWriteJob(device, list, "0", recorder.Callback());
  ASSERT_TRUE(recorder.JobsEnded());
  borvan::StartFlashQuickReadJob(device, output, "0", "0", recorder.Callback());
  ASSERT_TRUE(recorder.JobsEnded());
  borvan::StartI2cWriteJob(device, list, 0, recorder.Callback());
  ASSERT_TRUE(recorder.JobsEnded());
  borvan::StartI2cReadJob(device, output, "0", "0", "0", 0, recorder.Callback());
  ASSERT_TRUE(recorder.JobsEnded());
  borvan::StartRegisterReadJob(device, output, "0", "0", recorder.Callback());
  ExpectReports({{0, 100}, {0, 100}, {0, 100}, {0, 100}, {0, 100}});
}

TEST_F(JobWorkersTest, RegisterWritePublishesAPositiveResultAsStatus) {
  device->register_write = [](auto&&...) { return 11; };
  borvan::StartRegisterWriteJob(device, folder.Put("list.txt", "0x01,0x02,\n"),
                                recorder.Callback());
  ExpectReports({{11, 100}});
}

TEST_F(JobWorkersTest, RegisterWriteReportsZeroAsDoneAndFailuresAsTheyAre) {
  const std::string list = folder.Put("list.txt", "0x01,0x02,\n");
  borvan::StartRegisterWriteJob(device, list, recorder.Callback());
  ASSERT_TRUE(recorder.JobsEnded());
  device->register_write = [](auto&&...) { return static_cast<borvan::Result>(0x80004001); };
  borvan::StartRegisterWriteJob(device, list, recorder.Callback());
  ExpectReports({{0, 100}, {0x80004001, -1}});
}

TEST_F(JobWorkersTest, RegisterWriteGetsNoProgressAndTheWordZero) {
  bool has_progress = true;
  std::uint32_t word = 99;
  device->register_write = [&](auto&&, std::uint32_t ignored, borvan::ProgressCallback progress) {
    word = ignored;
    has_progress = static_cast<bool>(progress);
    return 0;
  };
  borvan::StartRegisterWriteJob(device, folder.Put("list.txt", "0x01,0x02,\n"),
                                recorder.Callback());
  ASSERT_TRUE(recorder.JobsEnded());
  EXPECT_FALSE(has_progress);
  EXPECT_EQ(word, 0U);
}

TEST_F(JobWorkersTest, I2cWriteHandsOverTheListAndTheOption) {
  std::vector<borvan::ListEntry> written;
  std::uint32_t option = 0;
  device->i2c_write = [&](std::vector<borvan::ListEntry> list, std::uint32_t given, auto progress) {
    written = std::move(list);
    option = given;
    progress(0, 50);
    return 0;
  };
  const std::string path = folder.Put("list.txt", "0xfff8,0x6c,\r\n0xfffe,0x01,\r\n3012,5A\r\n");
  borvan::StartI2cWriteJob(device, path, 0xFFFFFFF5, recorder.Callback());
  ExpectReports({{0, 50}, {0, 100}});
  EXPECT_EQ(written,
            (std::vector<borvan::ListEntry>{{0xFFF8, 0x6C}, {0xFFFE, 0x01}, {0x3012, 0x5A}}));
  EXPECT_EQ(option, 0xFFFFFFF5U);
}

TEST_F(JobWorkersTest, I2cWriteReportsANegativeResultAsItIs) {
  device->i2c_write = [](auto&&...) { return static_cast<borvan::Result>(0xE0000008); };
  borvan::StartI2cWriteJob(device, folder.Put("list.txt", "0x01,0x02,\n"), 0, recorder.Callback());
  ExpectReports({{0xE0000008, -1}});
}

TEST_F(JobWorkersTest, RunReadsGetTheirNumbersFromTheTexts) {
  std::vector<std::uint32_t> numbers;
  device->flash_read = [&](auto&&, std::uint32_t start, std::uint32_t end, auto&&) {
    numbers = {start, end};
    return 0;
  };
  device->register_read = [&](auto&&, std::uint32_t start, std::uint32_t end, auto&&) {
    numbers = {start, end};
    return 0;
  };
  device->i2c_read = [&](auto&&, std::uint32_t slave, std::uint32_t start, std::uint32_t end,
                         std::uint32_t mode, auto&&) {
    numbers = {slave, start, end, mode};
    return 0;
  };
  const std::string output = folder.Path("out.bin");
  borvan::StartFlashQuickReadJob(device, output, "1000", "ffffffff", recorder.Callback());
  ASSERT_TRUE(recorder.JobsEnded());
  EXPECT_EQ(numbers, (std::vector<std::uint32_t>{0x1000, 0xFFFFFFFF}));
  borvan::StartRegisterReadJob(device, output, "120000", "120070", recorder.Callback());
  ASSERT_TRUE(recorder.JobsEnded());
  EXPECT_EQ(numbers, (std::vector<std::uint32_t>{0x120000, 0x120070}));
  // A negative slave comes widened to 64 bits; 32-bit conversion gives the largest number.
  borvan::StartI2cReadJob(device, output, "fffffffffffffffe", "3000", "30ff", 5,
                          recorder.Callback());
  ASSERT_TRUE(recorder.JobsEnded());
  EXPECT_EQ(numbers, (std::vector<std::uint32_t>{0xFFFFFFFF, 0x3000, 0x30FF, 5}));
}

TEST_F(JobWorkersTest, FlashReadReportsDoneBeforeItWritesTheFile) {
  const std::string path = folder.Path("dump.bin");
  device->flash_read = [&](ScriptedDevice::Bytes& output, auto&&...) {
    output = {1, 2, 3, 4, 5};
    return 0;
  };
  std::vector<std::uintmax_t> sizes_at_report;
  recorder.on_report = [&](const Report&) {
    sizes_at_report.push_back(std::filesystem::file_size(path));
  };
  borvan::StartFlashQuickReadJob(device, path, "0", "4", recorder.Callback());
  ExpectReports({{0, 100}});
  EXPECT_EQ(sizes_at_report, std::vector<std::uintmax_t>{0});
  EXPECT_EQ(folder.Content("dump.bin"), "\x01\x02\x03\x04\x05");
}

TEST_F(JobWorkersTest, OutputFileIsEmptiedBeforeTheDeviceIsRead) {
  const std::string path = folder.Put("dump.bin", "left from before");
  std::uintmax_t size_in_operation = 99;
  device->flash_read = [&](auto&&...) {
    size_in_operation = std::filesystem::file_size(path);
    return 0;
  };
  borvan::StartFlashQuickReadJob(device, path, "0", "4", recorder.Callback());
  ExpectReports({{0, 100}});
  EXPECT_EQ(size_in_operation, 0U);
  EXPECT_EQ(folder.Content("dump.bin"), "");
}

TEST_F(JobWorkersTest, FailedFlashReadStillWritesWhatWasRead) {
  device->flash_read = [&](ScriptedDevice::Bytes& output, auto&&...) {
    output = {0xAA, 0xBB};
    return static_cast<borvan::Result>(0xE0000006);
  };
  borvan::StartFlashQuickReadJob(device, folder.Path("dump.bin"), "0", "ff", recorder.Callback());
  ExpectReports({{0xE0000006, -1}});
  EXPECT_EQ(folder.Content("dump.bin"), "\xAA\xBB");
}

TEST_F(JobWorkersTest, FailedListReadsLeaveAnEmptyFile) {
  device->register_read = [](std::vector<borvan::ListEntry>& list, auto&&...) {
    list.push_back({1, 2});
    return static_cast<borvan::Result>(0x80004003);
  };
  device->i2c_read = [](std::vector<borvan::ListEntry>& list, auto&&...) {
    list.push_back({1, 2});
    return static_cast<borvan::Result>(0xE0000006);
  };
  borvan::StartRegisterReadJob(device, folder.Put("r.txt", "old"), "0", "1", recorder.Callback());
  ASSERT_TRUE(recorder.JobsEnded());
  borvan::StartI2cReadJob(device, folder.Put("i.txt", "old"), "0", "0", "1", 0,
                          recorder.Callback());
  ExpectReports({{0x80004003, -1}, {0xE0000006, -1}});
  EXPECT_EQ(folder.Content("r.txt"), "");
  EXPECT_EQ(folder.Content("i.txt"), "");
}

TEST_F(JobWorkersTest, JobsRunWithoutACallback) {
  std::atomic<int> ran = 0;
  device->SetEveryOperation([&] {
    ++ran;
    return borvan::Result{0};
  });
  const std::string list = folder.Put("list.txt", "0x01,0x02,\n");
  const std::string output = folder.Path("out.bin");
  EXPECT_EQ(borvan::StartFlashWriteJob(device, list, "0", {}), 0);
  EXPECT_EQ(borvan::StartRegisterWriteJob(device, list, {}), 0);
  EXPECT_EQ(borvan::StartI2cWriteJob(device, list, 0, {}), 0);
  EXPECT_EQ(borvan::StartFlashQuickReadJob(device, output, "0", "0", {}), 0);
  EXPECT_EQ(borvan::StartRegisterReadJob(device, output, "0", "0", {}), 0);
  EXPECT_EQ(borvan::StartI2cReadJob(device, output, "0", "0", "0", 0, {}), 0);
  EXPECT_TRUE(WaitUntil([&] { return ran == 6 && device.use_count() == 2; }));
}

TEST_F(JobWorkersTest, OperationsThatTheDeviceObjectLacksAreReportedAsNotImplemented) {
  const auto plain = std::make_shared<borvan::BorvanUSBBase>(
      std::make_unique<ScriptedPlatform>(std::make_shared<PlatformScript>()));
  ReportRecorder plain_recorder(plain);
  const auto progress = [&] { return plain_recorder.Callback(); };
  const std::string list = folder.Put("list.txt", "0x01,0x02,\n");
  const std::string output = folder.Path("out.bin");
  EXPECT_EQ(borvan::StartFlashWriteJob(plain, list, "0", progress()), 0);
  EXPECT_EQ(borvan::StartRegisterWriteJob(plain, list, progress()), 0);
  EXPECT_EQ(borvan::StartI2cWriteJob(plain, list, 0, progress()), 0);
  EXPECT_EQ(borvan::StartFlashQuickReadJob(plain, output, "0", "0", progress()), 0);
  EXPECT_EQ(borvan::StartRegisterReadJob(plain, output, "0", "0", progress()), 0);
  EXPECT_EQ(borvan::StartI2cReadJob(plain, output, "0", "0", "0", 0, progress()), 0);
  ASSERT_TRUE(plain_recorder.JobsEnded());
  ASSERT_EQ(plain_recorder.Reports().size(), 6U);
  for (const Report& report : plain_recorder.Reports()) {
    EXPECT_EQ(report, (Expected{0x80004001, -1}));
  }
}

}  // namespace
}  // namespace borvan_test
