// watch.
#include "station/watch.h"
#include "support/command_desk.h"

namespace borvanusb::tool_test {
namespace {

class WatchTest : public testing::Test {
 protected:
  static WatchCommand Watch(std::optional<std::uint64_t> count) {
    WatchCommand command;
    command.registers = {{0x100, 0x101}};
    command.rate = 10;
    command.count = count;
    return command;
  }

  ExitCode Do(const WatchCommand& command) { return borvanusb::Run(command, desk_.context); }

  CommandDesk desk_;
  TestFolder folder_;
};

TEST_F(WatchTest, ShowsEveryValueFirstAndThenTheChanges) {
  desk_.Chip().registers = {{0x100, 0x12}, {0x101, 0x20}};
  int sleeps = 0;
  desk_.host.on_sleep = [&] {
    if (++sleeps == 2) {
      desk_.Chip().registers[0x100] = 0x13;
    }
  };
  EXPECT_EQ(Do(Watch(4)), ExitCode::kDone);
  EXPECT_EQ(desk_.output.out,
            "+0.000 s  0x0100  0x12\n"
            "+0.000 s  0x0101  0x20\n"
            "+0.200 s  0x0100  0x12 -> 0x13\n");
  EXPECT_EQ(desk_.output.notes, "4 polls in 0.300 s, 1 change\n");
  EXPECT_EQ(desk_.Chip().transfers, 8U);
}

TEST_F(WatchTest, JsonHasALineForEachValueAndChange) {
  desk_.Chip().registers = {{0x100, 0x12}};
  desk_.host.on_sleep = [&] { desk_.Chip().registers[0x101] = 0x21; };
  Do(Watch(2));
  ASSERT_EQ(desk_.output.json_lines.size(), 3U);
  EXPECT_EQ(desk_.output.json_lines[0],
            R"({"time":0.0,"kind":"register","slave":null,"address":256,"old":null,"new":18})");
  EXPECT_EQ(desk_.output.json_lines[2],
            R"({"time":0.1,"kind":"register","slave":null,"address":257,"old":0,"new":33})");
  for (const std::string& line : desk_.output.json_lines) {
    EXPECT_EQ(BreachOfSchema("watch", nlohmann::ordered_json::parse(line)), "") << line;
  }
}

TEST_F(WatchTest, RegistersOfTheBusAreShownAsSuch) {
  WatchCommand command;
  command.i2c_registers = {{0x300A, 0x300A}};
  command.i2c = {0x20, 2, 0};
  command.count = 1;
  desk_.Chip().sensors[0x20][0x300A] = 0x5678;
  Do(command);
  EXPECT_EQ(desk_.output.out, "+0.000 s  i2c 0x300a  0x5678\n");
  const std::string json = R"({"time":0.0,"kind":"i2c","slave":32,"address":12298,"old":null,)"
                           R"("new":22136})";
  EXPECT_EQ(desk_.output.json_lines, (std::vector<std::string>{json}));
  EXPECT_EQ(BreachOfSchema("watch", nlohmann::ordered_json::parse(json)), "");
  command.i2c.slave.reset();
  EXPECT_EQ(desk_.FailureOf(command).Code(), ExitCode::kUsage);
}

TEST_F(WatchTest, CsvIsWholeAtAnyMoment) {
  WatchCommand command = Watch(3);
  command.csv = folder_.Name("watch.csv");
  desk_.Chip().registers = {{0x100, 0x12}, {0x101, 0x20}};
  std::vector<std::string> states;
  desk_.host.on_sleep = [&] {
    states.push_back(folder_.Read("watch.csv"));
    desk_.Chip().registers[0x101] += 1;
  };
  Do(command);
  const std::string first =
      "time,kind,slave,address,value\n0.000,register,,0x0100,0x12\n0.000,register,,0x0101,0x20\n";
  EXPECT_EQ(states, (std::vector<std::string>{first, first + "0.100,register,,0x0101,0x21\n"}));
  EXPECT_EQ(folder_.Read("watch.csv"),
            first + "0.100,register,,0x0101,0x21\n0.200,register,,0x0101,0x22\n");
}

TEST_F(WatchTest, CsvTellsTheSlaveOfARegisterOnTheBus) {
  WatchCommand command = Watch(1);
  command.registers = {{0x100, 0x100}};
  command.i2c_registers = {{0x300A, 0x300A}};
  command.i2c = {0x6C, 1, 0};
  command.csv = folder_.Name("watch.csv");
  desk_.Chip().registers = {{0x100, 0x12}};
  desk_.Chip().sensors[0x6C][0x300A] = 0x56;
  Do(command);
  EXPECT_EQ(folder_.Read("watch.csv"),
            "time,kind,slave,address,value\n"
            "0.000,register,,0x0100,0x12\n"
            "0.000,i2c,0x6c,0x300a,0x56\n");
}

TEST_F(WatchTest, CsvThatCannotBeWrittenIsTold) {
  WatchCommand command = Watch(1);
  command.csv = folder_.Name("none/watch.csv");
  EXPECT_EQ(desk_.FailureOf(command).Code(), ExitCode::kFile);
}

TEST_F(WatchTest, StopEndsItWellAlsoInTheMiddleOfAPoll) {
  desk_.host.on_sleep = [&] { desk_.host.stop_requested = true; };
  EXPECT_EQ(Do(Watch({})), ExitCode::kDone);
  desk_.host.stop_requested = false;
  desk_.Chip().before_transfer = [](std::uint64_t number) {
    if (number == 4) {
      throw Failure(ExitCode::kStopped, "stopped by the user");
    }
  };
  EXPECT_EQ(Do(Watch({})), ExitCode::kDone);
}

TEST_F(WatchTest, LostOutputEndsIt) {
  desk_.host.on_sleep = [&] { desk_.output.takes_results = false; };
  EXPECT_EQ(Do(Watch({})), ExitCode::kDone);
  EXPECT_EQ(desk_.Chip().transfers, 2U);
}

TEST_F(WatchTest, CameraThatIsGoneEndsItWithItsFailure) {
  desk_.Chip().before_transfer = [](std::uint64_t number) {
    if (number == 4) {
      throw Failure(ExitCode::kDevice, "the camera is gone");
    }
  };
  EXPECT_EQ(desk_.FailureOf(Watch({})).Code(), ExitCode::kDevice);
}

TEST_F(WatchTest, PollsThatTakeTooLongAreLeftOutAndTold) {
  // A poll of two registers takes 250 ms, but the interval is 100 ms.
  desk_.Chip().before_transfer = [this](std::uint64_t) {
    desk_.host.clock += std::chrono::milliseconds(125);
  };
  Do(Watch(3));
  // Polls do not wait, and delays do not accumulate.
  EXPECT_EQ(desk_.output.notes,
            "3 polls in 0.750 s, 0 changes\n"
            "note: 2 polls were late: reading takes longer than --rate allows\n");
}

TEST_F(WatchTest, NothingOrTooMuchToWatchIsRefused) {
  EXPECT_EQ(desk_.FailureOf(WatchCommand{}).Code(), ExitCode::kUsage);
  WatchCommand command = Watch(1);
  command.registers = {{0, 0xFFF}, {0x1000, 0x1000}};
  const Failure failure = desk_.FailureOf(command);
  EXPECT_EQ(failure.Code(), ExitCode::kUsage);
  EXPECT_EQ(failure.Message(), "--reg: with 0x1000 there are more than 4096 registers");
}

}  // namespace
}  // namespace borvanusb::tool_test
