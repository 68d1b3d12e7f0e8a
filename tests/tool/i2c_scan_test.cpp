// i2c scan.
#include "i2c/scan.h"
#include "support/command_desk.h"

namespace borvanusb::tool_test {
namespace {

class I2cScanTest : public testing::Test {
 protected:
  I2cScanTest() { desk_.Chip().sensors = {{0x20, {{0, 0xFF}}}, {0x48, {{0, 0x77}}}, {0x6C, {}}}; }

  static I2cScanCommand Scan(Range slaves = {0, 255}) { return {{{}, 1, 0}, slaves, 0, true}; }

  CommandDesk desk_;
};

TEST_F(I2cScanTest, AsksBeforeAnythingIsRead) {
  I2cScanCommand command = Scan();
  command.yes = false;
  const Failure failure = desk_.FailureOf(command);
  EXPECT_EQ(failure.Code(), ExitCode::kStopped);
  EXPECT_EQ(failure.Message(), "nothing was read");
  EXPECT_EQ(desk_.host.questions,
            (std::vector<std::string>{
                "This reads register 0x0 of 256 slaves. Reading can disturb a device, such as one "
                "that clears a register when it is read. Continue?"}));
  EXPECT_EQ(desk_.Chip().transfers, 0U);
  desk_.host.answer = true;
  EXPECT_EQ(desk_.Do(command, "i2c-scan"), ExitCode::kDone);
}

TEST_F(I2cScanTest, ShowsWhatAnswersAndDoubtsZerosAndOnes) {
  EXPECT_EQ(desk_.Do(Scan(), "i2c-scan"), ExitCode::kDone);
  EXPECT_NE(desk_.output.out.find("      0  1  2  3  4  5  6  7  8  9  a  b  c  d  e  f\n"
                                  "0x00 -- -- -- -- -- -- -- -- -- -- -- -- -- -- -- --\n"
                                  "0x10 -- -- -- -- -- -- -- -- -- -- -- -- -- -- -- --\n"
                                  "0x20 ?? -- -- -- -- -- -- -- -- -- -- -- -- -- -- --\n"
                                  "0x30 -- -- -- -- -- -- -- -- -- -- -- -- -- -- -- --\n"
                                  "0x40 -- -- -- -- -- -- -- -- 48 -- -- -- -- -- -- --\n"),
            std::string::npos)
      << desk_.output.out;
  EXPECT_NE(desk_.output.out.find("\n0x20  0xff  answers, but only ones: maybe nothing is there\n"
                                  "0x48  0x77\n"
                                  "0x6c  0x00  answers, but only zeros: maybe nothing is there\n"),
            std::string::npos)
      << desk_.output.out;
  EXPECT_EQ(desk_.result["answers"][0]["doubt"], "ones");
  EXPECT_EQ(desk_.result["answers"][1].dump(), R"({"slave":72,"value":119,"doubt":null})");
}

TEST_F(I2cScanTest, SeveralModesTellWhichOneADeviceSeemsToHave) {
  // 0x10 answers only in 16/8, 0x30 in two modes, 0x40 with ones.
  desk_.Chip().sensors = {{0x10, {{0, 0x56}}}, {0x30, {{0, 0x12}}}, {0x40, {{0, 0xFF}}}};
  desk_.Chip().sensor_modes = {{0x10, {1}}, {0x40, {0}}};
  I2cScanCommand command = Scan({0x10, 0x4F});
  command.modes = {1, 0};
  EXPECT_EQ(desk_.Do(command, "i2c-scan"), ExitCode::kDone);
  EXPECT_EQ(desk_.output.out.substr(desk_.output.out.find("\n\n")),
            "\n\n0x10  16/8   0x56\n      seems to have width mode 16/8\n"
            "0x30  8/8    0x12\n0x30  16/8   0x12\n      may have width mode 8/8 or 16/8\n"
            "0x40  8/8    0xff  answers, but only ones: maybe nothing is there\n"
            "      no mode gives more than zeros or ones\n");
  EXPECT_EQ(desk_.result["mode"], nullptr);
  EXPECT_EQ(desk_.result["modes"].dump(), R"(["16/8","8/8"])");
  EXPECT_EQ(desk_.result["devices"].dump(),
            R"([{"slave":16,"modes":["16/8"]},{"slave":48,"modes":["8/8","16/8"]},)"
            R"({"slave":64,"modes":[]}])");
  EXPECT_EQ(desk_.result["answers"][0].dump(),
            R"({"slave":16,"value":86,"doubt":null,"mode":"16/8"})");
}

TEST_F(I2cScanTest, SeveralModesAreAskedForWithTheirDanger) {
  I2cScanCommand command = Scan({0x10, 0x10});
  command.modes = {0, 1};
  command.yes = false;
  desk_.FailureOf(command);
  ASSERT_EQ(desk_.host.questions.size(), 1U);
  EXPECT_NE(desk_.host.questions[0].find("of 1 slave in 2 width modes. "), std::string::npos);
  EXPECT_NE(desk_.host.questions[0].find("may write it. Continue?"), std::string::npos);
}

TEST_F(I2cScanTest, PartOfTheBusLeavesTheRestEmpty) {
  desk_.Do(Scan({0x46, 0x49}), "i2c-scan");
  EXPECT_NE(desk_.output.out.find("0x30\n0x40                   -- -- 48 --\n0x50\n"),
            std::string::npos)
      << desk_.output.out;
}

TEST_F(I2cScanTest, EmptyBusIsNoFailure) {
  desk_.Chip().sensors.clear();
  EXPECT_EQ(desk_.Do(Scan(), "i2c-scan"), ExitCode::kDone);
  EXPECT_NE(desk_.output.out.find("no slave answers"), std::string::npos);
}

TEST_F(I2cScanTest, CameraIsOnlyLookedForIfNothingAnswers) {
  desk_.Do(Scan({0x11, 0x11}), "i2c-scan");
  EXPECT_EQ(desk_.Chip().transfers, 3U);  // the slave twice, then a register of the chip
  desk_.Do(Scan({0x48, 0x48}), "i2c-scan");
  EXPECT_EQ(desk_.Chip().transfers, 3U + 1U);
}

TEST_F(I2cScanTest, CameraThatIsGoneIsNoEmptyBus) {
  desk_.Chip().before_transfer = [](std::uint64_t number) {
    if (number > 0x50) {
      throw Failure(ExitCode::kDevice, "the camera is gone");
    }
  };
  const Failure failure = desk_.FailureOf(Scan());
  EXPECT_EQ(failure.Code(), ExitCode::kDevice);
  EXPECT_EQ(failure.Message(),
            "while scanning, the camera itself stopped answering: the camera is gone");
  // Detected at the end of the row, not at the end of the bus.
  EXPECT_LT(desk_.Chip().transfers, 0x70U);
}

TEST_F(I2cScanTest, TimeLimitAndStopEndTheScan) {
  for (const ExitCode code : {ExitCode::kTimeout, ExitCode::kStopped}) {
    desk_.Chip().before_transfer = [code](std::uint64_t) { throw Failure(code, "no more"); };
    EXPECT_EQ(desk_.FailureOf(Scan()).Code(), code);
  }
}

TEST_F(I2cScanTest, SlavesBeyondAByteAreRefused) {
  EXPECT_EQ(desk_.FailureOf(Scan({0, 256})).Code(), ExitCode::kUsage);
}

}  // namespace
}  // namespace borvanusb::tool_test
