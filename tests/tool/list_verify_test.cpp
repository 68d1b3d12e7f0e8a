// reg load --verify and i2c load --verify.
#include "base/numbers.h"
#include "i2c/bus_options.h"
#include "i2c/load.h"
#include "registers/load.h"
#include "support/command_desk.h"

namespace borvanusb::tool_test {
namespace {

class ListVerifyTest : public testing::Test {
 protected:
  RegLoadCommand RegLoad(const std::string& text) {
    RegLoadCommand command;
    command.file = folder_.Write("list.txt", text);
    command.verify = true;
    return command;
  }
  I2cLoadCommand I2cLoad(const std::string& text, const I2cOptions& options = {}) {
    I2cLoadCommand command;
    command.i2c = options;
    command.file = folder_.Write("list.txt", text);
    command.verify = true;
    return command;
  }

  CommandDesk desk_;
  TestFolder folder_;
};

TEST_F(ListVerifyTest, RegistersThatHoldTheListAreToldSo) {
  desk_.Chip().registers = {{0x100, 0x33}, {0x101, 0x22}};
  const RegLoadCommand command = RegLoad("fffd,0\n100,11\n101,22\n100,33\n");
  EXPECT_EQ(desk_.Do(command, "reg-load"), ExitCode::kDone);
  EXPECT_EQ(desk_.output.out,
            "3 registers written from " + command.file + ", 2 registers read back equal\n");
  EXPECT_EQ(desk_.result["verified"], true);
  EXPECT_EQ(desk_.result["compared"], 2);
  EXPECT_EQ(desk_.result["wrong"].dump(), "[]");
  EXPECT_EQ(desk_.progress.bars.back().stage, "verify");
  EXPECT_EQ(desk_.progress.bars.back().unit, ProgressUnit::kRegisters);
  EXPECT_TRUE(desk_.progress.bars.back().complete);
}

TEST_F(ListVerifyTest, RegisterThatHoldsSomethingElseIsNamedAndEndsWithVerify) {
  desk_.Chip().registers = {{0x100, 0x11}, {0x101, 0x23}};
  const RegLoadCommand command = RegLoad("fffd,0\n100,11\n101,22\n");
  EXPECT_EQ(desk_.Do(command, "reg-load"), ExitCode::kVerify);
  EXPECT_EQ(desk_.output.out, "2 registers written from " + command.file + "\n");
  EXPECT_EQ(desk_.output.errors,
            "borvanusb: reg load: " + command.file +
                ": 1 of 2 registers read back differently: 0x0101 is 0x23 (expected 0x22)\n");
  EXPECT_EQ(desk_.result["written"], true);
  EXPECT_EQ(desk_.result["verified"], false);
  EXPECT_EQ(desk_.result["wrong"].dump(), R"([{"address":257,"expected":34,"found":35}])");
}

TEST_F(ListVerifyTest, OfManyWrongRegistersTheFirstAreNamedAndAllAreInTheJson) {
  const RegLoadCommand command = RegLoad("fffd,0\n10,1\n12,1\n14,1\n16,1\n18,1\n1a,1\n");
  EXPECT_EQ(desk_.Do(command, "reg-load"), ExitCode::kVerify);
  EXPECT_NE(
      desk_.output.errors.find(
          "6 of 6 registers read back differently: 0x0010 is 0x00 (expected 0x01), 0x0012 is"),
      std::string::npos);
  EXPECT_NE(desk_.output.errors.find("0x0016 is 0x00 (expected 0x01), and 2 more\n"),
            std::string::npos);
  EXPECT_EQ(desk_.result["wrong"].size(), 6U);
}

TEST_F(ListVerifyTest, LongRowsAreReadInBlocks) {
  std::string list = "fffd,0\n";
  for (std::uint32_t i = 0; i < 65; ++i) {
    list += Hex(0x200 + i) + ",0\n";
  }
  desk_.Chip().registers[0x210] = 5;
  std::vector<FakeRead> reads;
  desk_.Chip().after_read = [&](FakeRead read, std::uint32_t, std::uint32_t&) {
    reads.push_back(read);
  };
  EXPECT_EQ(desk_.Do(RegLoad(list + "300,0\n"), "reg-load"), ExitCode::kVerify);
  ASSERT_EQ(reads.size(), 66U);
  EXPECT_EQ(reads.front(), FakeRead::kRegisterRun);
  EXPECT_EQ(reads.back(), FakeRead::kByteRegister);
  EXPECT_EQ(desk_.result["wrong"].dump(), R"([{"address":528,"expected":0,"found":5}])");
}

TEST_F(ListVerifyTest, WithoutItNothingIsReadAndNothingIsClaimed) {
  RegLoadCommand command = RegLoad("fffd,0\n100,11\n");
  command.verify = false;
  EXPECT_EQ(desk_.Do(command, "reg-load"), ExitCode::kDone);
  EXPECT_EQ(desk_.Chip().transfers, 1U);
  EXPECT_EQ(desk_.result["verified"], nullptr);
  EXPECT_EQ(desk_.result["compared"], nullptr);
  command.check_only = true;
  EXPECT_EQ(desk_.Do(command, "reg-load"), ExitCode::kDone);
  EXPECT_EQ(desk_.result["verified"], nullptr);
}

TEST_F(ListVerifyTest, ListWhosePlaceDependsOnTheChipIsNotSentBeforeItIsSaid) {
  desk_.Chip().registers = {{0x100, 0x11}, {0x50100, 0x22}};
  RegLoadCommand command = RegLoad("fffd,0\nfffe,5\n100,22\n");
  const Failure failure = desk_.FailureOf(command);
  EXPECT_EQ(failure.Code(), ExitCode::kUsage);
  EXPECT_NE(failure.Message().find("--verify: "), std::string::npos);
  EXPECT_NE(failure.Message().find("the register in line 3"), std::string::npos);
  EXPECT_NE(failure.Hint().find("--markers page"), std::string::npos);
  EXPECT_TRUE(desk_.Chip().register_lists.empty());

  command.markers = ListMarkers::kPage;
  EXPECT_EQ(desk_.Do(command, "reg-load"), ExitCode::kDone);
  command.markers = ListMarkers::kDelays;
  EXPECT_EQ(desk_.Do(command, "reg-load"), ExitCode::kVerify);
  EXPECT_EQ(desk_.result["wrong"].dump(), R"([{"address":256,"expected":34,"found":17}])");
}

TEST_F(ListVerifyTest, RegisterThatCanNotBeReadIsNoDifference) {
  desk_.Chip().after_read = [](FakeRead, std::uint32_t, std::uint32_t&) {
    throw Failure(ExitCode::kDevice, "the chip did not answer the read");
  };
  const Failure failure = desk_.FailureOf(RegLoad("fffd,0\n100,11\n"));
  EXPECT_EQ(failure.Code(), ExitCode::kDevice);
  EXPECT_EQ(failure.Message(),
            "the chip did not answer the read; the list is written, but could not be read back "
            "completely");
}

TEST_F(ListVerifyTest, EachSlaveIsReadInItsWidth) {
  desk_.Chip().sensors = {
      {0x6C, {{0x3012, 0x5A}}}, {0x48, {{0x12, 0x5C}}}, {0x20, {{0x12, 0x1234}}}};
  const I2cLoadCommand command =
      I2cLoad("fff8,6c\nfffe,3\n3012,5a\nfff8,48\nfffe,1\n12,5b\nfff8,20\nfffe,4\n12,1234\n");
  EXPECT_EQ(desk_.Do(command, "i2c-load"), ExitCode::kVerify);
  EXPECT_EQ(
      desk_.output.errors,
      "borvanusb: i2c load: " + command.file +
          ": 1 of 3 registers read back differently: 0x12 of slave 0x48 is 0x5c (expected 0x5b)\n");
  EXPECT_EQ(desk_.result["compared"], 3);
  EXPECT_EQ(desk_.result["wrong"].dump(),
            R"([{"slave":72,"mode":"8/8","address":18,"expected":91,"found":92}])");
  EXPECT_EQ(desk_.progress.bars.back().unit, ProgressUnit::kRegisters);
}

TEST_F(ListVerifyTest, ListOfAWideModeIsReadBackToo) {
  desk_.Chip().sensors[0x6C] = {};
  EXPECT_EQ(desk_.Do(I2cLoad("12345678,89abcdef\n", {0x6C, 5, 0}), "i2c-load"), ExitCode::kDone);
  EXPECT_EQ(desk_.result["verified"], true);
  desk_.Chip().after_read = [](FakeRead, std::uint32_t, std::uint32_t& value) { value ^= 1; };
  EXPECT_EQ(desk_.Do(I2cLoad("12345678,89abcdef\n", {0x6C, 5, 0}), "i2c-load"), ExitCode::kVerify);
}

TEST_F(ListVerifyTest, RegisterThatAWidthCodeMayOverwriteIsToldAndNotCompared) {
  desk_.Chip().sensors[0x48] = {{0xFE, 1}, {0x10, 2}};
  EXPECT_EQ(desk_.Do(I2cLoad("fff8,48\nfffe,1\nfe,5a\nfff8,48\nfffe,1\n10,2\n"), "i2c-load"),
            ExitCode::kDone);
  EXPECT_EQ(desk_.result["compared"], 1);
  EXPECT_NE(desk_.output.notes.find("line 5 overwrites register 0xfe of slave 0x48"),
            std::string::npos);
}

}  // namespace
}  // namespace borvanusb::tool_test
