// i2c read, write, dump and load.
#include "i2c/bus_options.h"
#include "i2c/dump.h"
#include "i2c/load.h"
#include "i2c/read.h"
#include "i2c/write.h"
#include "support/command_desk.h"

namespace borvanusb::tool_test {
namespace {

class I2cCommandsTest : public testing::Test {
 protected:
  static I2cOptions Sensor(std::int32_t mode) { return {0x6C, mode, 0}; }

  std::map<std::uint32_t, std::uint32_t>& Registers() { return desk_.Chip().sensors[0x6C]; }

  CommandDesk desk_;
  TestFolder folder_;
};

TEST_F(I2cCommandsTest, RefusedAccessTellsThatTheCameraAnswers) {
  I2cReadCommand command;
  command.i2c.slave = 0x36;
  command.range = {0x300A, 0x300A};
  const Failure failure = desk_.FailureOf(command);
  EXPECT_EQ(failure.Code(), ExitCode::kDevice);
  EXPECT_EQ(failure.Message(),
            "nothing answers; the camera itself answers, so there may be no device at slave 0x36, "
            "or it refused this access");
  EXPECT_EQ(failure.Hint(),
            "Check that the device at 0x36 has power and is not in reset; borvanusb i2c scan finds "
            "the devices.\n"
            "If 0x36 is the 7-bit form of the address, use its 8-bit form: --slave 0x6c.");
  // An address above 7 bits has no other notation.
  command.i2c.slave = 0x78;
  EXPECT_EQ(desk_.FailureOf(command).Hint().find("7-bit"), std::string::npos);
}

TEST_F(I2cCommandsTest, RefusedAccessOfASilentCameraIsNotTheSensors) {
  desk_.Chip().before_transfer = [](std::uint64_t) {
    throw Failure(ExitCode::kDevice, "the camera refused a transfer", "Plug it in again.");
  };
  I2cWriteCommand command;
  command.i2c.slave = 0x36;
  const Failure failure = desk_.FailureOf(command);
  EXPECT_EQ(failure.Message(),
            "the camera refused a transfer; the camera itself does not answer either");
  EXPECT_EQ(failure.Hint(), "Plug it in again.");
}

TEST_F(I2cCommandsTest, HexDumpShowsRowsWithText) {
  desk_.Chip().sensors[0x6C] = {{0x300A, 0x56}, {0x300B, 0x40}};
  I2cDumpCommand command;
  command.i2c.slave = 0x6C;
  command.range = {0x300A, 0x300B};
  command.hex = true;
  desk_.Do(command, "i2c-dump");
  EXPECT_EQ(desk_.output.out,
            "00003000                                 56 40              |          V@    |\n");
}

TEST_F(I2cCommandsTest, ReadShowsTheWidthOfTheMode) {
  Registers() = {{0x300A, 0x56}, {0x300B, 0x40}};
  desk_.Do(I2cReadCommand{Sensor(1), {0x300A, 0x300B}}, "i2c-read");
  EXPECT_EQ(desk_.output.out, "0x300a  0x56\n0x300b  0x40\n");
  EXPECT_EQ(desk_.result.dump(),
            R"({"slave":108,"mode":"16/8","option":0,"registers":[{"address":12298,"value":86},)"
            R"({"address":12299,"value":64}]})");
  desk_.Do(I2cReadCommand{Sensor(0), {0xA, 0xA}}, "i2c-read");
  EXPECT_EQ(desk_.output.out, "0x0a  0x00\n");
  desk_.Do(I2cReadCommand{Sensor(4), {0x300A, 0x300A}}, "i2c-read");
  EXPECT_EQ(desk_.output.out, "0x0000300a  0x0056\n");
}

TEST_F(I2cCommandsTest, SlaveMustBeGiven) {
  const Failure failure = desk_.FailureOf(I2cReadCommand{{}, {0, 0}});
  EXPECT_EQ(failure.Code(), ExitCode::kUsage);
  EXPECT_EQ(failure.Message(), "--slave: the device on the I2C bus is not given");
}

TEST_F(I2cCommandsTest, MaskedWriteChangesItsBitsAlone) {
  Registers() = {{0x300A, 0x5656}};
  desk_.Do(I2cWriteCommand{Sensor(2), 0x300A, 0x0F00, 0x0F00, true}, "i2c-write");
  EXPECT_EQ(Registers()[0x300A], 0x5F56U);
  EXPECT_EQ(desk_.output.out, "0x300a  0x5656 -> 0x5f56  verified\n");
}

TEST_F(I2cCommandsTest, VerifyNamesTheSlaveThatDoesNotTakeItsValue) {
  Registers() = {};
  desk_.Chip().after_read = [](FakeRead, std::uint32_t, std::uint32_t& value) { value = 0; };
  const Failure failure = desk_.FailureOf(I2cWriteCommand{Sensor(1), 0x300A, 0x56, {}, true});
  EXPECT_EQ(failure.Code(), ExitCode::kVerify);
  EXPECT_EQ(failure.Message(),
            "slave 0x6c, register 0x300a reads back as 0x00 after 0x56 was written");
}

TEST_F(I2cCommandsTest, DumpLoadsBackWithoutSayingTheDeviceAgain) {
  Registers() = {{0x300A, 0x1234}, {0x300B, 0x40}};
  const std::string file = folder_.Name("dump.txt");
  desk_.Do(I2cDumpCommand{Sensor(2), {0x300A, 0x300B}, file}, "i2c-dump");
  EXPECT_EQ(desk_.output.out, "2 registers 0x300a-0x300b of slave 0x6c in " + file + "\n");
  desk_.Do(I2cLoadCommand{{}, file, false}, "i2c-load");
  EXPECT_EQ(
      desk_.Chip().i2c_lists,
      (std::vector<std::string>{"0xfff8, 0x6c,\n0xfffe, 0x04,\n0x300a, 0x1234,\n0x300b, 0x40,\n"}));
}

TEST_F(I2cCommandsTest, DumpThatCannotBeWrittenReadsNothing) {
  const Failure failure =
      desk_.FailureOf(I2cDumpCommand{Sensor(2), {0x300A, 0x300B}, folder_.Name("none/dump.txt")});
  EXPECT_EQ(failure.Code(), ExitCode::kFile);
  EXPECT_EQ(desk_.Chip().transfers, 0U);
}

TEST_F(I2cCommandsTest, RawDumpHasTheHighByteFirst) {
  Registers() = {{0x300A, 0x1234}, {0x300B, 0x40}};
  desk_.Do(I2cDumpCommand{Sensor(2), {0x300A, 0x300B}, folder_.Name("dump.bin")}, "i2c-dump");
  EXPECT_EQ(folder_.Read("dump.bin"), std::string("\x12\x34\0\x40", 4));
}

TEST_F(I2cCommandsTest, DumpToStandardOutputIsAList) {
  Registers() = {{0xA, 0x77}};
  desk_.Do(I2cDumpCommand{Sensor(0), {0xA, 0xA}, ""}, "i2c-dump");
  EXPECT_EQ(desk_.output.out, "0xfff8, 0x6c,\n0xfffe, 0x01,\n0x0a, 0x77,\n");
}

TEST_F(I2cCommandsTest, ListWithoutAnOpeningNeedsASlave) {
  const std::string file = folder_.Write("list.txt", "3012,5a\n");
  const Failure failure = desk_.FailureOf(I2cLoadCommand{{}, file, false});
  EXPECT_EQ(failure.Code(), ExitCode::kUsage);
  EXPECT_EQ(failure.Message(),
            "--slave: " + file +
                " does not begin with 0xfff8 and 0xfffe, so it does not name its "
                "device");
  EXPECT_EQ(desk_.FailureOf(I2cLoadCommand{{}, file, true}).Code(), ExitCode::kUsage);
}

TEST_F(I2cCommandsTest, OpeningIsPutInFrontOfAListWithoutOne) {
  const std::string file = folder_.Write("list.txt", "3012,5a\nffff,a\n3013,5b");
  desk_.Do(I2cLoadCommand{Sensor(1), file, false}, "i2c-load");
  EXPECT_EQ(desk_.Chip().i2c_lists,
            (std::vector<std::string>{"0xfff8, 0x6c,\n0xfffe, 0x03,\n0x3012, 0x5a,\n0xffff, "
                                      "0x0a,\n0x3013, 0x5b,\n"}));
  EXPECT_EQ(desk_.output.out, "2 registers written from " + file + "\n");
}

TEST_F(I2cCommandsTest, ListThatNamesItsDeviceIsNotTurnedToAnother) {
  const std::string file = folder_.Write("list.txt", "fff8,48\nfffe,01\n0a,5a\n");
  desk_.Do(I2cLoadCommand{Sensor(1), file, false}, "i2c-load");
  EXPECT_EQ(desk_.Chip().i2c_lists,
            (std::vector<std::string>{"0xfff8, 0x48,\n0xfffe, 0x01,\n0x000a, 0x5a,\n"}));
  EXPECT_NE(desk_.output.notes.find("slave 0x48; --slave is ignored"), std::string::npos);
  EXPECT_EQ(desk_.FailureOf(I2cLoadCommand{Sensor(4), file, false}).Code(), ExitCode::kUsage);
}

TEST_F(I2cCommandsTest, BadListIsNotSent) {
  const std::string file = folder_.Write("list.txt", "fff8,6c\nfffe,03\n3012,5a5\n");
  const Failure failure = desk_.FailureOf(I2cLoadCommand{{}, file, false});
  EXPECT_EQ(failure.Code(), ExitCode::kFile);
  EXPECT_EQ(failure.Message(),
            file + ":3: value 0x5a5 is beyond 0xff, the highest in mode 16/8; nothing was sent");
  EXPECT_EQ(desk_.Do(I2cLoadCommand{{}, file, true}, "i2c-load"), ExitCode::kFile);
  EXPECT_EQ(desk_.Chip().transfers, 0U);
}

TEST_F(I2cCommandsTest, ListOfAWideModeIsWrittenEntryByEntryWithItsPauses) {
  const std::string file =
      folder_.Write("list.txt", "12345678,89abcdef\nffff,c8\nfef0,1\n12345679,1\n");
  const auto start = desk_.host.clock;
  std::vector<std::int64_t> times;
  desk_.Chip().before_transfer = [&](std::uint64_t) {
    times.push_back(
        std::chrono::duration_cast<std::chrono::milliseconds>(desk_.host.clock - start).count());
  };
  desk_.Do(I2cLoadCommand{Sensor(5), file, false}, "i2c-load");
  EXPECT_EQ(Registers(),
            (std::map<std::uint32_t, std::uint32_t>{{0x12345678, 0x89ABCDEF}, {0x12345679, 1}}));
  EXPECT_EQ(times, (std::vector<std::int64_t>{0, 200}));
  EXPECT_EQ(desk_.result["registers"], 2);
  EXPECT_TRUE(desk_.Chip().i2c_lists.empty());
}

TEST_F(I2cCommandsTest, FailureInTheMiddleNamesTheLine) {
  const std::string file = folder_.Write("list.txt", "10000,1\n10001,1\n");
  desk_.Chip().before_transfer = [](std::uint64_t number) {
    if (number == 2) {
      throw Failure(ExitCode::kDevice, "the transfer failed");
    }
  };
  const Failure failure = desk_.FailureOf(I2cLoadCommand{Sensor(3), file, false});
  EXPECT_EQ(failure.Code(), ExitCode::kDevice);
  EXPECT_EQ(
      failure.Message(),
      "line 2, register 0x10001: the transfer failed; the camera itself answers, so there may "
      "be no device at slave 0x6c, or it refused this access; the lines before it are written");
}

}  // namespace
}  // namespace borvanusb::tool_test
