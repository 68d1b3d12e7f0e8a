// The exports that start jobs, and GetProgressInfo.

#include <algorithm>
#include <filesystem>
#include <functional>
#include <limits>

#include "api/api_fixture.h"
#include "jobs/scripted_device.h"
#include "support/temporary_folder.h"

namespace borvan_test {
namespace {

using Numbers = std::vector<std::uint32_t>;

constexpr std::uint64_t kFileErrorSeen = 0xE000000A00000000;

class JobArgumentsTest : public RecordedApiTest {
 protected:
  const TemporaryFolder folder;
  const std::string input = folder.Put("list.txt", "0xfffd,0x12,\n0x3012,0x5a,\n");
  const std::string output = folder.Path("out.bin");
};

TEST_F(JobArgumentsTest, UsbFlashWriteFilePassesFileAndAddress) {
  EXPECT_TRUE(UsbFlashWriteFile(folder.Put("image.bin", "ab").c_str(), 0xFFFFF000));
  ASSERT_TRUE(JobEnded());
  EXPECT_EQ(device->image, (std::vector<std::uint8_t>{'a', 'b'}));
  EXPECT_EQ(device->numbers, Numbers{0xFFFFF000});
  EXPECT_EQ(GetProgressInfo(), 100U);
}

TEST_F(JobArgumentsTest, UsbFlashQuickReadFilePassesTheRange) {
  EXPECT_TRUE(UsbFlashQuickReadFile(output.c_str(), 0x1000, 0xFFFFFFFF));
  ASSERT_TRUE(JobEnded());
  EXPECT_EQ(device->numbers, (Numbers{0x1000, 0xFFFFFFFF}));
  EXPECT_EQ(folder.Content("out.bin"), "\x11\x22");
}

TEST_F(JobArgumentsTest, UsbRegisterReadFilePassesTheRange) {
  EXPECT_TRUE(UsbRegisterReadFile(output.c_str(), 0x120000, 0x120070));
  ASSERT_TRUE(JobEnded());
  EXPECT_EQ(device->numbers, (Numbers{0x120000, 0x120070}));
}

TEST_F(JobArgumentsTest, UsbRegisterWriteFilePassesTheList) {
  EXPECT_TRUE(UsbRegisterWriteFile(input.c_str()));
  ASSERT_TRUE(JobEnded());
  EXPECT_EQ(device->list, (std::vector<borvan::ListEntry>{{0xFFFD, 0x12}, {0x3012, 0x5A}}));
  EXPECT_EQ(device->numbers, Numbers{0});
  EXPECT_EQ(GetProgressInfo(), 100U);
}

TEST_F(JobArgumentsTest, UsbI2CReadFilePassesSlaveRangeAndMode) {
  EXPECT_TRUE(UsbI2CReadFile(0x3000, 0x30FF, output.c_str(), 0x6C, 2));
  ASSERT_TRUE(JobEnded());
  EXPECT_EQ(device->numbers, (Numbers{0x6C, 0x3000, 0x30FF, 2}));
}

TEST_F(JobArgumentsTest, NegativeSlaveIsWidenedWithItsSign) {
  // 64-bit texts of f's: the 32-bit conversion gives the largest number for each, where a text
  // without the sign would give fffffffe and 80000000.
  for (const std::int32_t slave : {-1, -2, std::numeric_limits<std::int32_t>::min()}) {
    EXPECT_TRUE(UsbI2CReadFile(0, 1, output.c_str(), slave, 0xFFFFFFFF));
    ASSERT_TRUE(JobEnded());
    EXPECT_EQ(device->numbers, (Numbers{0xFFFFFFFF, 0, 1, 0xFFFFFFFF})) << slave;
  }
}

TEST_F(JobArgumentsTest, UsbI2CWriteFilePassesListAndOption) {
  EXPECT_TRUE(UsbI2CWriteFile(input.c_str(), 0x80000005));
  ASSERT_TRUE(JobEnded());
  EXPECT_EQ(device->list, (std::vector<borvan::ListEntry>{{0xFFFD, 0x12}, {0x3012, 0x5A}}));
  EXPECT_EQ(device->numbers, Numbers{0x80000005});
}

TEST_F(JobArgumentsTest, PositiveResultOfARegisterWriteIsShownAsStatus) {
  device->result = 11;
  EXPECT_TRUE(UsbRegisterWriteFile(input.c_str()));
  ASSERT_TRUE(JobEnded());
  EXPECT_EQ(GetProgressInfo(), 0x0000000B00000000U);
}

TEST_F(JobArgumentsTest, FailuresOfOperationsAreShownByGetProgressInfo) {
  device->result = static_cast<borvan::Result>(0x80004001);
  const auto expect_failure = [](bool started) {
    EXPECT_TRUE(started);
    ASSERT_TRUE(JobEnded());
    EXPECT_EQ(GetProgressInfo(), 0x8000400100000000U);
  };
  expect_failure(UsbFlashWriteFile(input.c_str(), 0));
  expect_failure(UsbFlashQuickReadFile(output.c_str(), 0, 1));
  expect_failure(UsbRegisterReadFile(output.c_str(), 0, 1));
  expect_failure(UsbRegisterWriteFile(input.c_str()));
  expect_failure(UsbI2CReadFile(0, 1, output.c_str(), 0, 0));
  expect_failure(UsbI2CWriteFile(input.c_str(), 0));
}

class JobExportsTest : public ApiTest {
 protected:
  const TemporaryFolder folder;
};

TEST_F(JobExportsTest, EmptyAndNullFileNamesAreFalseAndShownByGetProgressInfo) {
  for (const char* name : {"", static_cast<const char*>(nullptr)}) {
    const auto expect_refusal = [&](const std::function<bool()>& call) {
      UsbIniDevice();
      EXPECT_EQ(GetProgressInfo(), 0U);
      EXPECT_FALSE(call());
      EXPECT_EQ(GetProgressInfo(), kFileErrorSeen);
    };
    expect_refusal([&] { return UsbFlashWriteFile(name, 0); });
    expect_refusal([&] { return UsbFlashQuickReadFile(name, 0, 1); });
    expect_refusal([&] { return UsbRegisterReadFile(name, 0, 1); });
    expect_refusal([&] { return UsbRegisterWriteFile(name); });
    expect_refusal([&] { return UsbI2CReadFile(0, 1, name, 0, 0); });
    expect_refusal([&] { return UsbI2CWriteFile(name, 0); });
  }
}

TEST_F(JobExportsTest, MissingFileFailsAtOnceForTheJobsThatReadOne) {
  const std::string missing = folder.Path("missing.bin");
  for (const auto& call :
       std::vector<std::function<bool()>>{[&] { return UsbFlashWriteFile(missing.c_str(), 0); },
                                          [&] { return UsbRegisterWriteFile(missing.c_str()); },
                                          [&] { return UsbI2CWriteFile(missing.c_str(), 0); }}) {
    UsbIniDevice();
    EXPECT_FALSE(call());
    EXPECT_EQ(GetProgressInfo(), kFileErrorSeen);
  }
}

TEST_F(JobExportsTest, UsbFlashQuickReadFileCreatesAFileThatDoesNotExist) {
  StartWithChip();
  chip->PutFlash(0x100, {0x01, 0x02, 0x03});
  EXPECT_TRUE(UsbFlashQuickReadFile(folder.Path("new.bin").c_str(), 0x100, 0x102));
  ASSERT_TRUE(JobEnded());
  EXPECT_EQ(folder.Content("new.bin"), "\x01\x02\x03");
  EXPECT_EQ(GetProgressInfo(), 100U);
}

TEST_F(JobExportsTest, FileNameIsCopiedBeforeTheExportReturns) {
  StartWithChip();
  Gate gate;
  chip->Intercept([&](const Transfer&) -> std::optional<borvan::Result> {
    gate.Wait();
    return std::nullopt;
  });
  std::string path = folder.Put("image.bin", std::string(60, 'x'));
  EXPECT_TRUE(UsbFlashWriteFile(path.c_str(), 0));
  std::fill(path.begin(), path.end(), '#');
  gate.Open();
  ASSERT_TRUE(JobEnded());
  EXPECT_EQ(GetProgressInfo(), 100U);
  EXPECT_EQ(chip->Flash(0, 1), std::vector<std::uint8_t>{'x'});
}

TEST_F(JobExportsTest, ImageGoesInAndComesBack) {
  StartWithChip();
  std::string image(5000, '\0');
  for (std::size_t i = 0; i < image.size(); ++i) {
    image[i] = static_cast<char>(i % 241);
  }
  EXPECT_TRUE(UsbFlashWriteFile(folder.Put("image.bin", image).c_str(), 0x2000));
  ASSERT_TRUE(JobEnded());
  EXPECT_EQ(GetProgressInfo(), 100U);
  EXPECT_TRUE(UsbFlashQuickReadFile(folder.Path("dump.bin").c_str(), 0x2000, 0x2000 + 4999));
  ASSERT_TRUE(JobEnded());
  EXPECT_EQ(folder.Content("dump.bin"), image);
}

TEST_F(JobExportsTest, JobsWithoutAnOpenCameraFail) {
  UsbIniDevice();
  EXPECT_TRUE(UsbFlashWriteFile(folder.Put("image.bin", "x").c_str(), 0));
  ASSERT_TRUE(JobEnded());
  EXPECT_EQ(GetProgressInfo(), 0xE000000100000000U);
  EXPECT_TRUE(UsbFlashWriteFile(folder.Put("empty.bin", "").c_str(), 0));
  ASSERT_TRUE(JobEnded());
  EXPECT_EQ(GetProgressInfo(), 0xE000000700000000U);
  EXPECT_TRUE(UsbFlashQuickReadFile(folder.Path("dump.bin").c_str(), 0, 1));
  ASSERT_TRUE(JobEnded());
  EXPECT_EQ(GetProgressInfo(), 0xE000000200000000U);
}

TEST_F(JobExportsTest, ListJobsWithoutAnOpenCameraFail) {
  UsbIniDevice();
  const std::string list = folder.Put("list.txt", "0xfffd,0x12,\n0x3012,0x5a,\n");
  EXPECT_TRUE(UsbRegisterWriteFile(list.c_str()));
  ASSERT_TRUE(JobEnded());
  EXPECT_EQ(GetProgressInfo(), 0x8000400300000000U);
  EXPECT_TRUE(UsbRegisterReadFile(folder.Path("run.txt").c_str(), 0, 1));
  ASSERT_TRUE(JobEnded());
  EXPECT_EQ(GetProgressInfo(), 0x8000400300000000U);
  EXPECT_TRUE(UsbI2CWriteFile(list.c_str(), 0));
  ASSERT_TRUE(JobEnded());
  EXPECT_EQ(GetProgressInfo(), 0xE000000200000000U);
  EXPECT_TRUE(UsbI2CReadFile(0, 1, folder.Path("run.txt").c_str(), 0x6C, 0));
  ASSERT_TRUE(JobEnded());
  EXPECT_EQ(GetProgressInfo(), 0x8000400300000000U);
  EXPECT_EQ(folder.Content("run.txt"), "");
}

TEST_F(JobExportsTest, UsbRegisterWriteFileSendsTheListInBlocks) {
  StartWithChip();
  chip->ReportLength(7, 64);
  EXPECT_TRUE(UsbRegisterWriteFile(
      folder.Put("list.txt", "0xfffd, 0x05,\n0xfffe, 0x06,\n0x3012, 0x5a,\n").c_str()));
  ASSERT_TRUE(JobEnded());
  EXPECT_EQ(GetProgressInfo(), 100U);
  std::vector<std::uint8_t> block = {0x00, 0x01,         // scattered
                                     0x01, 0x02,         // delay flag, 2 records
                                     0xFF, 0xFD, 0x05,   // first delay value
                                     0xFF, 0xFE, 0x06,   // second delay value
                                     0x30, 0x12, 0x5A,   // the register
                                     0x30, 0x12, 0x5A};  // and again: records go in pairs
  block.resize(64, 0xFF);
  EXPECT_EQ(chip->Sent(7), std::vector<std::vector<std::uint8_t>>{block});
}

TEST_F(JobExportsTest, RegisterListWithoutItsHeaderShows11AndSendsNothing) {
  StartWithChip();
  chip->ReportLength(7, 64);
  EXPECT_TRUE(UsbRegisterWriteFile(folder.Put("list.txt", "0x3012, 0x5a,\n").c_str()));
  ASSERT_TRUE(JobEnded());
  EXPECT_EQ(GetProgressInfo(), 0x0000000B00000000U);
  EXPECT_TRUE(chip->Sent(7).empty());
}

TEST_F(JobExportsTest, UsbI2CWriteFileSendsTheListInSteps) {
  StartWithChip();
  EXPECT_TRUE(UsbI2CWriteFile(
      folder.Put("list.txt", "0xfff8,0x6c,\n0xfffe,0x04,\n0x3012,0x1234,\n").c_str(), 7));
  ASSERT_TRUE(JobEnded());
  EXPECT_EQ(GetProgressInfo(), 100U);
  std::vector<std::vector<std::uint8_t>> steps = {
      {0x18, 0x6C, 0x02, 0x01},  // slave, mode 2 (code 4)
      {0x18, 0xFE, 0xFF, 0x02},  // the width code itself, to register 0xFFFE
      {0x18, 0x04, 0x00, 0x04},  //
      {0x18, 0x6C, 0x02, 0x01},  //
      {0x18, 0x12, 0x30, 0x02},  // register 0x3012
      {0x18, 0x34, 0x12, 0x04}};
  for (auto& step : steps) {
    step.resize(12);  // the reported length
  }
  EXPECT_EQ(chip->Sent(2), steps);
}

TEST_F(JobExportsTest, UsbI2CReadFileWritesWhatTheChipAnswers) {
  StartWithChip();
  chip->PutI2cRegister(0x6C, 1, 0x3000, 0x5A);
  chip->PutI2cRegister(0x6C, 1, 0x3001, 0x5B);
  EXPECT_TRUE(UsbI2CReadFile(0x3000, 0x3001, folder.Path("run.txt").c_str(), 0x6C, 1));
  ASSERT_TRUE(JobEnded());
  EXPECT_EQ(GetProgressInfo(), 100U);
  EXPECT_EQ(folder.Content("run.txt"), "0x3000,0x5a,\r\n0x3001,0x5b,\r\n");
}

TEST_F(JobExportsTest, UsbRegisterReadFileWritesMarkersAndRegisters) {
  StartWithChip();
  chip->ReportLength(7, 64);
  chip->PutRegister(0x12340101, 0x5A);
  EXPECT_TRUE(UsbRegisterReadFile(folder.Path("run.txt").c_str(), 0x12340100, 0x12340101));
  ASSERT_TRUE(JobEnded());
  EXPECT_EQ(GetProgressInfo(), 100U);
  EXPECT_EQ(folder.Content("run.txt"),
            "0xfffd, 0x12,\r\n0xfffe, 0x34,\r\n0x0100, 0x00,\r\n0x0101, 0x5a,\r\n");
}

TEST_F(JobExportsTest, ListWithALineOfOneFieldIsAFileErrorOfBothListWrites) {
  const std::string list = folder.Put("list.txt", "0xfffd,0x00,\n0x3012,\n");
  StartWithChip();
  EXPECT_FALSE(UsbRegisterWriteFile(list.c_str()));
  EXPECT_EQ(GetProgressInfo(), kFileErrorSeen);
  UsbIniDevice();
  EXPECT_TRUE(UsbI2CWriteFile(list.c_str(), 0));
  ASSERT_TRUE(JobEnded());
  EXPECT_EQ(GetProgressInfo(), kFileErrorSeen);
}

// A job that waits at a gate while the host's thread goes on.
class RunningJobTest : public JobExportsTest {
 protected:
  void StartJobAtTheGate() {
    StartWithChip();
    // The job may outlast the test: it holds the gates itself.
    chip->Intercept([held = gates](const Transfer& transfer) -> std::optional<borvan::Result> {
      if (transfer.request.id == 3 && transfer.request.flags == kSetFlags) {
        held->reached.Open();
        held->leave.Wait();
      }
      return std::nullopt;
    });
    ASSERT_TRUE(UsbFlashWriteFile(folder.Put("image.bin", std::string(60, 'x')).c_str(), 0));
    ASSERT_TRUE(gates->reached.Wait());
    instance = borvan::GlobalInstance().Get();
  }

  struct Gates {
    Gate reached;
    Gate leave;
  };
  // The job goes on to its end, and reports to nobody.
  void ExpectUnseenEnd() {
    gates->leave.Open();
    EXPECT_TRUE(WaitUntil([&] { return chip->Flash(0, 1).at(0) == 'x'; }));
    EXPECT_TRUE(WaitUntil([&] {
      const auto device = instance.lock();
      return device == nullptr || !device->Jobs().job_running;
    }));
    EXPECT_EQ(GetProgressInfo(), 0U);
  }

  const std::shared_ptr<Gates> gates = std::make_shared<Gates>();
  std::weak_ptr<borvan::BorvanUsb_Q7> instance;
};

TEST_F(RunningJobTest, UsbDestroyUSBReturnsWhileAJobRunsWhichGoesOnUnwatched) {
  StartJobAtTheGate();
  EXPECT_TRUE(UsbDestroyUSB());
  EXPECT_EQ(GetProgressInfo(), 0U);
  EXPECT_FALSE(instance.expired()) << "the job still uses it";
  ExpectUnseenEnd();
}

TEST_F(RunningJobTest, UsbIniDeviceReturnsWhileAJobRunsWhichReportsToNobody) {
  StartJobAtTheGate();
  EXPECT_EQ(UsbIniDevice(), 1);
  EXPECT_EQ(GetProgressInfo(), 0U);
  ExpectUnseenEnd();
}

TEST_F(RunningJobTest, SingleAccessesGoOnBesideAJob) {
  StartJobAtTheGate();
  EXPECT_TRUE(UsbRegisterWrite(0x10, 0x5A, 0));
  EXPECT_EQ(chip->Register(0x10), 0x5AU);
  EXPECT_EQ(GetProgressInfo(), 0U);
  gates->leave.Open();
  ASSERT_TRUE(JobEnded());
  EXPECT_EQ(GetProgressInfo(), 100U);
}

TEST_F(RunningJobTest, SecondJobStartsAtOnceBesideTheFirst) {
  StartJobAtTheGate();
  const auto device = instance.lock();
  ASSERT_NE(device, nullptr);
  EXPECT_TRUE(UsbFlashQuickReadFile(folder.Path("dump.bin").c_str(), 1, 0));
  // Whichever ends first clears the flags of both.
  EXPECT_TRUE(WaitUntil([&] { return !device->Jobs().job_running; }));
  EXPECT_EQ(GetProgressInfo(), 0xE000000400000000U);
  EXPECT_EQ(chip->Flash(0, 1).at(0), 0xFF) << "the first has not ended";
  gates->leave.Open();
  EXPECT_TRUE(WaitUntil([&] { return GetProgressInfo() == 100; }));
  EXPECT_EQ(chip->Flash(0, 1).at(0), 'x');
}

}  // namespace
}  // namespace borvan_test
