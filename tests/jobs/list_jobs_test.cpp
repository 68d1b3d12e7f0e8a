// The four list jobs: what stands in their files, what they report, and in which order.

#include <gtest/gtest.h>

#include "jobs/job_starters.h"
#include "jobs/scripted_device.h"
#include "support/temporary_folder.h"

namespace borvan_test {
namespace {

using Entries = std::vector<borvan::ListEntry>;
using Expected = std::pair<std::uint32_t, std::int32_t>;

class ListJobsTest : public ReportedJobsTest {
 protected:
  // Both run reads hand out `list` and answer `result`.
  void RunReadsGive(const Entries& list, borvan::Result result = 0) {
    device->register_read = [=](Entries& output, auto&&...) {
      output = list;
      return result;
    };
    device->i2c_read = [=](Entries& output, auto&&...) {
      output = list;
      return result;
    };
  }

  void ReadRegisters(const std::string& name) {
    EXPECT_EQ(
        borvan::StartRegisterReadJob(device, folder.Path(name), "100", "101", recorder.Callback()),
        0);
    ASSERT_TRUE(recorder.JobsEnded());
  }

  void ReadI2c(const std::string& name, std::uint32_t mode) {
    EXPECT_EQ(borvan::StartI2cReadJob(device, folder.Path(name), "6c", "3000", "3001", mode,
                                      recorder.Callback()),
              0);
    ASSERT_TRUE(recorder.JobsEnded());
  }

  const Entries register_run = {{0xFFFD, 0x00}, {0xFFFE, 0x00}, {0x0100, 0x5A}, {0x0101, 0xA5}};
  const Entries i2c_run = {{0x3000, 0x0A}, {0x3001, 0x1234}};
};

TEST_F(ListJobsTest, RegisterReadIntoTxtWritesTheMarkersAndTheRegisters) {
  RunReadsGive(register_run);
  ReadRegisters("run.txt");
  ExpectReports({{0, 100}});
  EXPECT_EQ(folder.Content("run.txt"),
            "0xfffd, 0x00,\r\n"
            "0xfffe, 0x00,\r\n"
            "0x0100, 0x5a,\r\n"
            "0x0101, 0xa5,\r\n");
}

TEST_F(ListJobsTest, RegisterReadIntoBinWritesOneByteForEachRegister) {
  RunReadsGive(register_run);
  ReadRegisters("run.bin");
  ExpectReports({{0, 100}});
  EXPECT_EQ(folder.Content("run.bin"), "\x5A\xA5");
}

TEST_F(ListJobsTest, ExtensionTxtInCapitalsIsWrittenAsBinary) {
  RunReadsGive(register_run);
  for (const char* name : {"run.TXT", "run.Txt", "run.txt.bin", "run.", "run"}) {
    ReadRegisters(name);
    EXPECT_EQ(folder.Content(name), "\x5A\xA5") << name;
  }
  RunReadsGive(i2c_run);
  for (const char* name : {"i2c.TXT", "i2c"}) {
    ReadI2c(name, 0);
    EXPECT_EQ(folder.Content(name), "\x0A\x34") << name;
  }
}

TEST_F(ListJobsTest, BinaryRegisterFileOfARunWithoutRegistersIsEmpty) {
  for (const std::size_t size : {0U, 1U, 2U}) {
    RunReadsGive(Entries(size, {0xFFFD, 0x12}));
    ReadRegisters("run.bin");
    EXPECT_EQ(folder.Content("run.bin"), "") << size;
  }
  ExpectReports({{0, 100}, {0, 100}, {0, 100}});
}

TEST_F(ListJobsTest, BinaryI2cFileHoldsTheFirstTwoEntriesToo) {
  RunReadsGive({{0x3000, 1}, {0x3001, 2}, {0x3002, 3}});
  ReadI2c("run.bin", 1);
  ExpectReports({{0, 100}});
  EXPECT_EQ(folder.Content("run.bin"), "\x01\x02\x03");
}

TEST_F(ListJobsTest, BinaryI2cFileHoldsTheLowBytesInEveryMode) {
  RunReadsGive(i2c_run);
  for (const std::uint32_t mode : {0U, 1U, 2U, 3U, 4U, 5U, 6U, 0xFFFFFFFFU}) {
    ReadI2c("run.bin", mode);
    EXPECT_EQ(folder.Content("run.bin"), "\x0A\x34") << mode;
  }
}

TEST_F(ListJobsTest, I2cReadIntoTxtShowsValuesInTheWidthOfTheMode) {
  RunReadsGive({{0x3000, 0x0A}, {0x3001, 0xFF}});
  ReadI2c("run0.txt", 0);
  ReadI2c("run1.txt", 1);
  ReadI2c("run2.txt", 2);
  ExpectReports({{0, 100}, {0, 100}, {0, 100}});
  EXPECT_EQ(folder.Content("run0.txt"), "0x3000,0x0a,\r\n0x3001,0xff,\r\n");
  EXPECT_EQ(folder.Content("run1.txt"), "0x3000,0x0a,\r\n0x3001,0xff,\r\n");
  EXPECT_EQ(folder.Content("run2.txt"), "0x3000,0x000a,\r\n0x3001,0x00ff,\r\n");
}

TEST_F(ListJobsTest, I2cReadInMode5IntoTxtLeavesAnEmptyFileAndSaysDone) {
  RunReadsGive(i2c_run);
  folder.Put("run.txt", "old");
  ReadI2c("run.txt", 5);
  ExpectReports({{0, 100}});
  EXPECT_TRUE(std::filesystem::exists(folder.Path("run.txt")));
  EXPECT_EQ(folder.Content("run.txt"), "");
}

TEST_F(ListJobsTest, I2cReadInModes3And4AndUnknownOnesIntoTxtLeavesAnEmptyFileToo) {
  RunReadsGive(i2c_run);
  for (const std::uint32_t mode : {3U, 4U, 6U, 0xFFFFFFFFU}) {
    folder.Put("run.txt", "old");
    ReadI2c("run.txt", mode);
    EXPECT_EQ(folder.Content("run.txt"), "") << mode;
  }
  ExpectReports({{0, 100}, {0, 100}, {0, 100}, {0, 100}});
}

TEST_F(ListJobsTest, AddressAboveFFFFIsShownWithMoreThanFourDigits) {
  RunReadsGive({{0x12345, 0x5A}});
  ReadI2c("run.txt", 1);
  EXPECT_EQ(folder.Content("run.txt"), "0x12345,0x5a,\r\n");
}

TEST_F(ListJobsTest, DoneIsReportedBeforeTheFileIsWritten) {
  std::string path;
  std::vector<std::uintmax_t> sizes_at_report;
  recorder.on_report = [&](const Report&) {
    sizes_at_report.push_back(std::filesystem::file_size(path));
  };
  const auto expect_empty_at_report = [&](const std::string& name, bool is_i2c) {
    path = folder.Path(name);
    sizes_at_report.clear();
    RunReadsGive(register_run);
    if (is_i2c) {
      ReadI2c(name, 1);
    } else {
      ReadRegisters(name);
    }
    EXPECT_EQ(sizes_at_report, std::vector<std::uintmax_t>{0}) << name;
    EXPECT_NE(folder.Content(name), "") << name;
  };
  expect_empty_at_report("register.txt", false);
  expect_empty_at_report("register.bin", false);
  expect_empty_at_report("i2c.txt", true);
  expect_empty_at_report("i2c.bin", true);
}

TEST_F(ListJobsTest, FileIsEmptiedBeforeTheDeviceIsRead) {
  std::vector<std::uintmax_t> sizes;
  device->register_read = [&](auto&&...) {
    sizes.push_back(std::filesystem::file_size(folder.Path("run.txt")));
    return 0;
  };
  device->i2c_read = [&](auto&&...) {
    sizes.push_back(std::filesystem::file_size(folder.Path("run.bin")));
    return 0;
  };
  folder.Put("run.txt", "left from before");
  folder.Put("run.bin", "left from before");
  ReadRegisters("run.txt");
  ReadI2c("run.bin", 0);
  EXPECT_EQ(sizes, (std::vector<std::uintmax_t>{0, 0}));
}

TEST_F(ListJobsTest, FailedRunReadLeavesTheFileCreatedAndEmpty) {
  RunReadsGive(register_run, kDriverFailure);
  for (const char* name : {"register.txt", "register.bin"}) {
    ReadRegisters(name);
    EXPECT_TRUE(std::filesystem::exists(folder.Path(name))) << name;
    EXPECT_EQ(folder.Content(name), "") << name;
  }
  for (const char* name : {"i2c.txt", "i2c.bin"}) {
    ReadI2c(name, 1);
    EXPECT_TRUE(std::filesystem::exists(folder.Path(name))) << name;
    EXPECT_EQ(folder.Content(name), "") << name;
  }
  ExpectReports({{0x8007001F, -1}, {0x8007001F, -1}, {0x8007001F, -1}, {0x8007001F, -1}});
}

TEST_F(ListJobsTest, ProgressOfAnOperationIsHandedOn) {
  device->register_read = [](Entries&, std::uint32_t, std::uint32_t, auto progress) {
    progress(0, 11);
    return 0;
  };
  device->i2c_read = [](Entries&, std::uint32_t, std::uint32_t, std::uint32_t, std::uint32_t,
                        auto progress) {
    progress(0, 22);
    return 0;
  };
  device->i2c_write = [](Entries, std::uint32_t, auto progress) {
    progress(0, 33);
    return 0;
  };
  ReadRegisters("run.bin");
  ReadI2c("run.bin", 0);
  borvan::StartI2cWriteJob(device, folder.Put("list.txt", "1,2\n"), 0, recorder.Callback());
  ExpectReports({{0, 11}, {0, 100}, {0, 22}, {0, 100}, {0, 33}, {0, 100}});
}

TEST_F(ListJobsTest, ListsWithALineOfOneFieldReachNoDevice) {
  bool reached = false;
  device->SetEveryOperation([&] {
    reached = true;
    return borvan::Result{0};
  });
  for (const char* content : {"0x3012,\n", "1,2\n3,\n", ",\n", "1,2\n0x3012,   "}) {
    const std::string path = folder.Put("list.txt", content);
    ReportRecorder of_registers(device);
    EXPECT_EQ(borvan::StartRegisterWriteJob(device, path, of_registers.Callback()),
              static_cast<borvan::Result>(0xE000000A))
        << content;
    ASSERT_EQ(of_registers.Reports().size(), 1U) << content;
    EXPECT_EQ(of_registers.Reports().at(0), (Expected{0xE000000A, -1})) << content;
    EXPECT_EQ(of_registers.Reports().at(0).thread, std::this_thread::get_id()) << content;
    ReportRecorder of_i2c(device);
    EXPECT_EQ(borvan::StartI2cWriteJob(device, path, 0, of_i2c.Callback()), 0) << content;
    ASSERT_TRUE(of_i2c.JobsEnded());
    ASSERT_EQ(of_i2c.Reports().size(), 1U) << content;
    EXPECT_EQ(of_i2c.Reports().at(0), (Expected{0xE000000A, -1})) << content;
    EXPECT_NE(of_i2c.Reports().at(0).thread, std::this_thread::get_id()) << content;
  }
  EXPECT_FALSE(reached);
  EXPECT_FALSE(device->Jobs().job_running);
}

TEST_F(ListJobsTest, PositiveResultOfARegisterWriteIsPassedOnWithAHundred) {
  for (const borvan::Result result : {0, 1, 11}) {
    device->register_write = [=](auto&&...) { return result; };
    borvan::StartRegisterWriteJob(device, folder.Put("list.txt", "1,2\n"), recorder.Callback());
    ASSERT_TRUE(recorder.JobsEnded());
  }
  ExpectReports({{0, 100}, {1, 100}, {11, 100}});
}

TEST_F(ListJobsTest, RegisterWriteHandsOverTheWholeList) {
  Entries written;
  device->register_write = [&](Entries list, auto&&...) {
    written = std::move(list);
    return 0;
  };
  borvan::StartRegisterWriteJob(
      device, folder.Put("list.txt", "// head\r\n0xfffd, 0x12,\r\n0xffff,10\r\n0x12345,0x1ff,\r\n"),
      recorder.Callback());
  ExpectReports({{0, 100}});
  EXPECT_EQ(written, (Entries{{0xFFFD, 0x12}, {0xFFFF, 0x10}, {0x12345, 0x1FF}}));
}

}  // namespace
}  // namespace borvan_test
