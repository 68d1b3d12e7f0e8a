// The four list jobs over a device that plays conversations: files on one side, every transfer on
// the other.

#include <gtest/gtest.h>

#include "jobs/job_starters.h"
#include "jobs/scripted_device.h"
#include "protocol/borvan_usb_q7.h"
#include "support/scripted_control.h"
#include "support/temporary_folder.h"

namespace borvan_test {
namespace {

using borvan::test::AnswersLengthQuery;
using borvan::test::Bytes;
using borvan::test::Gives;
using borvan::test::GivesNothing;
using borvan::test::ReportsLength;
using borvan::test::ScriptedControl;
using borvan::test::Takes;
using Conversation = std::vector<borvan::test::Transfer>;
using Expected = std::pair<std::uint32_t, std::int32_t>;

// The head of a block, then 56 values.
Bytes Block(Bytes head, const Bytes& values) {
  head.insert(head.end(), values.begin(), values.end());
  return head;
}

// A packet whose unused bytes are 0xFF.
Bytes Packet(Bytes bytes) {
  bytes.resize(64, 0xFF);
  return bytes;
}

class ListJobsDeviceTest : public testing::Test {
 protected:
  ListJobsDeviceTest() {
    Camera camera = MakeCamera(u'a');
    camera.vendor_nodes.push_back({control, 3});
    script->cameras = {camera};
    device->EnumerateDevices();
    SelectWithFeatures(0x00);
  }

  ~ListJobsDeviceTest() override { control->ExpectAllPlayed(); }

  // Selects the camera; its register 0x1A3 answers `features` (0x20: the fast I2C paths).
  void SelectWithFeatures(std::uint8_t features) {
    control->Play({ReportsLength(1, 4), Takes(1, 4, {0x24, 0xA3, 0x01, 0x18}),  // A0 A1
                   Takes(1, 4, {0x24, 0x00, 0x00, 0x58}),                       // A2 A3
                   Gives(1, 4, {0x24, features, 0x00, 0x28})});                 // the value
    ASSERT_EQ(device->SelectDevice(0), 0);
    control->ExpectAllPlayed();
    control->Play({});
  }

  void ReadRegisters(const std::string& name, const std::string& start, const std::string& end) {
    EXPECT_EQ(
        borvan::StartRegisterReadJob(device, folder.Path(name), start, end, recorder.Callback()),
        0);
    ASSERT_TRUE(recorder.JobsEnded());
  }

  void ReadI2c(const std::string& name, const std::string& start, const std::string& end,
               std::uint32_t mode) {
    EXPECT_EQ(borvan::StartI2cReadJob(device, folder.Path(name), "6c", start, end, mode,
                                      recorder.Callback()),
              0);
    ASSERT_TRUE(recorder.JobsEnded());
  }

  void WriteRegisters(std::string_view content) {
    EXPECT_EQ(
        borvan::StartRegisterWriteJob(device, folder.Put("list.txt", content), recorder.Callback()),
        0);
    ASSERT_TRUE(recorder.JobsEnded());
  }

  void WriteI2c(std::string_view content, std::uint32_t option) {
    EXPECT_EQ(borvan::StartI2cWriteJob(device, folder.Put("list.txt", content), option,
                                       recorder.Callback()),
              0);
    ASSERT_TRUE(recorder.JobsEnded());
  }

  void ExpectReport(Expected expected) {
    ASSERT_EQ(recorder.Reports().size(), 1U);
    EXPECT_EQ(recorder.Reports().at(0), expected)
        << std::hex << recorder.Reports().at(0).status << ", " << recorder.Reports().at(0).percent;
    EXPECT_FALSE(device->Jobs().job_running);
  }

  const TemporaryFolder folder;
  const std::shared_ptr<ScriptedControl> control = std::make_shared<ScriptedControl>();
  const std::shared_ptr<PlatformScript> script = std::make_shared<PlatformScript>();
  const std::shared_ptr<borvan::BorvanUsb_Q7> device =
      std::make_shared<borvan::BorvanUsb_Q7>(std::make_unique<ScriptedPlatform>(script));
  ReportRecorder recorder{device};
};

// The read of the registers 0x0100 and on, which answers 0x5A and 0xA5.
Conversation ReadOf0100() {
  return {ReportsLength(7, 64),
          // 56 values, page 0x0000, from 0x0100
          Takes(7, 64, {0x01, 0x00, 0x00, 0x38, 0x00, 0x00, 0x01, 0x00}),
          Gives(7, 64, {0x01, 0x00, 0x00, 0x38, 0x00, 0x00, 0x01, 0x00, 0x5A, 0xA5, 0xEE})};
}

TEST_F(ListJobsDeviceTest, RegisterReadOf0100To0101IntoTxtWritesFourLines) {
  control->Play(ReadOf0100());
  ReadRegisters("run.txt", "100", "101");
  ExpectReport({0, 100});
  EXPECT_EQ(folder.Content("run.txt"),
            "0xfffd, 0x00,\r\n"
            "0xfffe, 0x00,\r\n"
            "0x0100, 0x5a,\r\n"
            "0x0101, 0xa5,\r\n");
}

TEST_F(ListJobsDeviceTest, RegisterReadOf0100To0101IntoBinWritesTwoBytes) {
  control->Play(ReadOf0100());
  ReadRegisters("run.bin", "100", "101");
  ExpectReport({0, 100});
  EXPECT_EQ(folder.Content("run.bin"), "\x5A\xA5");
}

TEST_F(ListJobsDeviceTest, RegisterReadShowsThePageOfItsStart) {
  control->Play({ReportsLength(7, 64),
                 // page 0x8012, from 0xFFFF
                 Takes(7, 64, {0x01, 0x00, 0x00, 0x38, 0x80, 0x12, 0xFF, 0xFF}),
                 Gives(7, 64, {0x01, 0x00, 0x00, 0x38, 0x80, 0x12, 0xFF, 0xFF, 0x77})});
  ReadRegisters("run.txt", "8012ffff", "8012ffff");
  ExpectReport({0, 100});
  EXPECT_EQ(folder.Content("run.txt"),
            "0xfffd, 0x80,\r\n"
            "0xfffe, 0x12,\r\n"
            "0xffff, 0x77,\r\n");
}

TEST_F(ListJobsDeviceTest, RegisterReadThatFailsAtItsEndLeavesAnEmptyFile) {
  const Bytes reply(64, 0x11);
  Bytes second_request = reply;  // behind its head, a request carries the reply before it
  const Bytes head = {0x01, 0x00, 0x00, 0x38, 0x00, 0x00, 0x00, 0x38};
  std::copy(head.begin(), head.end(), second_request.begin());
  control->Play(
      {ReportsLength(7, 64), Takes(7, 64, {0x01, 0x00, 0x00, 0x38, 0x00, 0x00, 0x00, 0x00}),
       Gives(7, 64, reply), Takes(7, 64, second_request), GivesNothing(7, 64, kDriverFailure)});
  ReadRegisters("run.txt", "0", "38");
  ExpectReport({0x8007001F, -1});
  EXPECT_TRUE(std::filesystem::exists(folder.Path("run.txt")));
  EXPECT_EQ(folder.Content("run.txt"), "");
}

TEST_F(ListJobsDeviceTest, RegisterReadThatEndsBeforeItStartsWritesNothingAndSaysDone) {
  control->Play({ReportsLength(7, 64)});
  ReadRegisters("run.txt", "101", "100");
  ExpectReport({0, 100});
  EXPECT_EQ(folder.Content("run.txt"), "");
}

TEST_F(ListJobsDeviceTest, RegisterReadPassesAFailingLengthQueryOn) {
  control->Play({AnswersLengthQuery(7, kDriverFailure)});
  ReadRegisters("run.bin", "100", "101");
  ExpectReport({0x8007001F, -1});
  EXPECT_EQ(folder.Content("run.bin"), "");
}

TEST_F(ListJobsDeviceTest, RegisterReadIntoAFolderThatIsMissingAsksTheDeviceNothing) {
  control->Play({});
  ReadRegisters("missing/run.bin", "100", "101");
  ExpectReport({0xE000000A, -1});
}

TEST_F(ListJobsDeviceTest, I2cReadWithoutTheFastPathAsksForOneRegisterAtATime) {
  control->Play({ReportsLength(2, 12), Takes(2, 12, {0x14, 0x6C, 0x01, 0x01}),  // slave, mode
                 Takes(2, 12, {0x14, 0x00, 0x30, 0x02}),                        // register 0x3000
                 Gives(2, 12, {0x14, 0x0A}),                                    // value
                 Takes(2, 12, {0x14, 0x6C, 0x01, 0x01}),                        //
                 Takes(2, 12, {0x14, 0x01, 0x30, 0x02}),                        // register 0x3001
                 Gives(2, 12, {0x14, 0xFF})});
  ReadI2c("run.txt", "3000", "3001", 1);
  ExpectReport({0, 100});
  EXPECT_EQ(folder.Content("run.txt"), "0x3000,0x0a,\r\n0x3001,0xff,\r\n");
}

TEST_F(ListJobsDeviceTest, I2cReadThatFailsAtItsEndLeavesAnEmptyFile) {
  control->Play({ReportsLength(2, 12), Takes(2, 12, {0x14, 0x6C, 0x00, 0x01}),
                 Takes(2, 12, {0x14, 0x10, 0x00, 0x02}), Gives(2, 12, {0x14, 0x0A}),
                 Takes(2, 12, {0x14, 0x6C, 0x00, 0x01}), Takes(2, 12, {0x14, 0x11, 0x00, 0x02}),
                 GivesNothing(2, 12, kDriverFailure)});
  ReadI2c("run.bin", "10", "11", 0);
  ExpectReport({0x8007001F, -1});
  EXPECT_EQ(folder.Content("run.bin"), "");
}

TEST_F(ListJobsDeviceTest, I2cReadOnTheFastPathTakes56ValuesAtATime) {
  SelectWithFeatures(0x20);
  Bytes first_values(56, 0x11);
  first_values.back() = 0x38;
  control->Play(
      {ReportsLength(6, 64),
       // slave 0x6C, 16-bit addresses with 8-bit data, 56 values from 0x3000
       Takes(6, 64, {0x10, 0x6C, 0x01, 0x38, 0x00, 0x00, 0x30, 0x00}),
       Gives(6, 64, Block({0x10, 0x6C, 0x01, 0x38, 0x00, 0x00, 0x30, 0x00}, first_values)),
       // from 0x3038; behind the head the reply before
       Takes(6, 64, Block({0x10, 0x6C, 0x01, 0x38, 0x00, 0x00, 0x30, 0x38}, first_values)),
       Gives(6, 64, {0x10, 0x6C, 0x01, 0x38, 0x00, 0x00, 0x30, 0x38, 0x77})});
  ReadI2c("run.bin", "3000", "3038", 1);
  ExpectReport({0, 100});
  EXPECT_EQ(folder.Content("run.bin"), std::string(55, '\x11') + "\x38\x77");
}

TEST_F(ListJobsDeviceTest, I2cReadInMode5IntoTxtLeavesAnEmptyFileWhileItSaysDone) {
  SelectWithFeatures(0x20);
  control->Play({ReportsLength(6, 64),
                 // 32-bit addresses, from 0x12345678
                 Takes(6, 64, {0x10, 0x6C, 0x05, 0x38, 0x12, 0x34, 0x56, 0x78}),
                 Gives(6, 64, {0x10, 0x6C, 0x05, 0x38, 0x12, 0x34, 0x56, 0x78, 0x5A})});
  folder.Put("run.txt", "old");
  ReadI2c("run.txt", "12345678", "12345678", 5);
  ExpectReport({0, 100});
  EXPECT_EQ(folder.Content("run.txt"), "");
}

TEST_F(ListJobsDeviceTest, RegisterListGoesOutInBlocks) {
  control->Play({ReportsLength(7, 64),
                 // scattered, no delay flag (the second value is 0), 2 records
                 Takes(7, 64,
                       Packet({0x00, 0x01, 0x00, 0x02, 0xFF, 0xFD, 0x05, 0xFF, 0xFE, 0x00,  //
                               0x30, 0x12, 0x5A,                                            //
                               0x30, 0x20, 0xA5}))});
  WriteRegisters("0xfffd, 0x05,\n0x3012, 0x5a,\n0x3020, 0xa5,\n");
  ExpectReport({0, 100});
}

TEST_F(ListJobsDeviceTest, RegisterListWithoutItsHeaderIsReportedAs11WithAHundred) {
  control->Play({ReportsLength(7, 64)});
  WriteRegisters("0x3012, 0x5a,\n");
  ExpectReport({11, 100});
}

TEST_F(ListJobsDeviceTest, RegisterListOfMarksOnlyIsDoneAtOnce) {
  control->Play({});
  WriteRegisters("0xfffd, 0x05,\n0xfffe, 0x06,\n");
  ExpectReport({0, 100});
}

TEST_F(ListJobsDeviceTest, RegisterListThatTheDeviceRefusesIsAFailureOfTheFastInterface) {
  control->Play({ReportsLength(7, 64),
                 Takes(7, 64,
                       Packet({0x00, 0x01, 0x00, 0x02, 0xFF, 0xFD, 0x05, 0xFF, 0xFE, 0x00,  //
                               0x30, 0x12, 0x5A,                                            //
                               0x30, 0x12, 0x5A}),  // repeated: records go in pairs
                       kDriverFailure)});
  WriteRegisters("0xfffd, 0x05,\n0x3012, 0x5a,\n");
  ExpectReport({0xE0000007, -1});
}

TEST_F(ListJobsDeviceTest, I2cListWithoutTheFastPathGoesOutInSteps) {
  control->Play({ReportsLength(2, 12),
                 Takes(2, 12, {0x18, 0x6C, 0x01, 0x01}),  // slave 0x6C, mode 1 (code 3)
                 Takes(2, 12, {0x18, 0xFE, 0xFF, 0x02}),  // the width code itself, to 0xFFFE
                 Takes(2, 12, {0x18, 0x03, 0x00, 0x04}),  //
                 Takes(2, 12, {0x18, 0x6C, 0x01, 0x01}),  //
                 Takes(2, 12, {0x18, 0x12, 0x30, 0x02}),  // register 0x3012
                 Takes(2, 12, {0x18, 0x5A, 0x00, 0x04})});
  WriteI2c("0xfff8,0x6c,\n0xfffe,0x03,\n0x3012,0x5a,\n", 0);
  ExpectReport({0, 100});
}

TEST_F(ListJobsDeviceTest, I2cListOnTheFastPathGoesOutInPacketsWithTheOption) {
  SelectWithFeatures(0x20);
  control->Play(
      {ReportsLength(6, 64),
       // run, slave, option 5 and mode 1, 2 values, from 0x3012
       Takes(6, 64, Packet({0x00, 0x6C, 0x51, 0x02, 0xFF, 0xFF, 0x30, 0x12, 0x5A, 0xA5}))});
  WriteI2c("0xfff8,0x6c,\r\n0xfffe,0x03,\r\n0x3012,0x5a,\r\n0x3013,0xa5,\r\n", 5);
  ExpectReport({0, 100});
}

TEST_F(ListJobsDeviceTest, I2cListWithoutSlaveAndWidthIsReported) {
  control->Play({ReportsLength(2, 12)});
  WriteI2c("0x3012,0x5a,\n", 0);
  ExpectReport({0xE0000008, -1});
}

TEST_F(ListJobsDeviceTest, I2cListReportsAFailingLengthQueryOfEachPath) {
  control->Play({AnswersLengthQuery(2, kDriverFailure)});
  WriteI2c("0x3012,0x5a,\n", 0);
  ExpectReport({0xE0000002, -1});
  SelectWithFeatures(0x20);
  control->Play({AnswersLengthQuery(6, kDriverFailure)});
  WriteI2c("0x3012,0x5a,\n", 0);
  ASSERT_EQ(recorder.Reports().size(), 2U);
  EXPECT_EQ(recorder.Reports().at(1), (Expected{0xE0000007, -1}));
}

TEST_F(ListJobsDeviceTest, RunThatWasReadIsAListThatCanBeWritten) {
  control->Play(ReadOf0100());
  ReadRegisters("run.txt", "100", "101");
  control->ExpectAllPlayed();
  control->Play({ReportsLength(7, 64),
                 Takes(7, 64,
                       Packet({0x00, 0x01, 0x00, 0x02, 0xFF, 0xFD, 0x00, 0xFF, 0xFE, 0x00,  //
                               0x01, 0x00, 0x5A,                                            //
                               0x01, 0x01, 0xA5}))});
  WriteRegisters(folder.Content("run.txt"));
  ASSERT_EQ(recorder.Reports().size(), 2U);
  EXPECT_EQ(recorder.Reports().at(1), (Expected{0, 100}));
}

}  // namespace
}  // namespace borvan_test
