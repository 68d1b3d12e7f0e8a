// The whole tool with a command that each test defines.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <functional>
#include <nlohmann/json.hpp>
#include <stdexcept>

#include "command/command_rules.h"
#include "command/context.h"
#include "command/tool.h"
#include "command/values.h"
#include "output/output.h"
#include "output/progress.h"
#include "support/fake_camera.h"

namespace borvanusb::tool_test {
namespace {

using testing::HasSubstr;
using testing::StartsWith;

// A test command, with the words of several real commands.
struct Probe {
  std::uint64_t rounds = 0;
};

// The work of the test command.
std::function<ExitCode(const Probe&, Context&)>& TheCommand() {
  static std::function<ExitCode(const Probe&, Context&)> command;
  return command;
}

ExitCode Run(const Probe& probe, Context& context) {
  return TheCommand()(probe, context);
}

CommandRules ProbeRules() {
  CommandRules rules;
  for (const std::vector<std::string>& words : {std::vector<std::string>{"list"},
                                                {"bench"},
                                                {"info"},
                                                {"doctor"},
                                                {"reg", "read"},
                                                {"flash", "program"}}) {
    RuleOf<Probe> rule(words, "Tries the tool.");
    rule.Add(Optional(Argument("WHAT", "anything")), [](Probe&, const std::string&) {});
    rule.Add(Option("--rounds", "N", "how often"), [](Probe& probe, const std::string& text) {
      probe.rounds = NumberValue(text, 0, 100);
    });
    rules.push_back(rule.Take());
  }
  return rules;
}

class RunToolTest : public testing::Test {
 protected:
  int Run(const std::vector<std::string>& words) {
    return RunTool(words, host, Streams(), ProbeRules());
  }
  ToolStreams Streams() {
    return {[this](std::string_view text) {
              ++writes;
              if (problem) {
                return problem;
              }
              out += text;
              return std::optional<WriteProblem>();
            },
            [this](std::string_view text) { err += text; },
            terminal,
            terminal,
            [] { return 60; },
            [](int) {}};
  }
  void Command(std::function<ExitCode(Context&)> work) {
    TheCommand() = [work = std::move(work)](const Probe&, Context& context) {
      return work(context);
    };
  }
  void TearDown() override { TheCommand() = nullptr; }

 public:
  FakeHost host;
  bool terminal = false;
  std::optional<WriteProblem> problem;  // of all writes to standard output
  int writes = 0;                       // to standard output
  std::string out;
  std::string err;
};

TEST_F(RunToolTest, CommandGetsItsValuesAndGivesTheExitCode) {
  TheCommand() = [](const Probe& probe, Context& context) {
    EXPECT_EQ(probe.rounds, 7U);
    EXPECT_EQ(context.common.cameras, (std::vector<std::string>{"1"}));
    context.output.Line("7 rounds");
    context.result["rounds"] = 7;
    return ExitCode::kVerify;
  };
  EXPECT_EQ(Run({"bench", "--rounds", "7", "--camera", "1"}), 7);
  EXPECT_EQ(out, "7 rounds\n");
  EXPECT_EQ(err, "");
}

TEST_F(RunToolTest, JsonIsOneCompactObject) {
  Command([](Context& context) {
    context.output.Line("text");
    context.result["name"] = "a\xFF";
    context.result["size"] = 1;
    return ExitCode::kDone;
  });
  EXPECT_EQ(Run({"list", "--json"}), 0);
  EXPECT_EQ(out, "{\"name\":\"a\xEF\xBF\xBD\",\"size\":1}\n");
}

TEST_F(RunToolTest, CommandOfEventsHasNoResultOfItsOwn) {
  Command([](Context& context) {
    context.output.JsonLine("{\"event\":1}");
    return ExitCode::kDone;
  });
  EXPECT_EQ(Run({"list", "--json"}), 0);
  EXPECT_EQ(out, "{\"event\":1}\n");
}

TEST_F(RunToolTest, FailureIsALineWithAHint) {
  Command([](Context&) -> ExitCode {
    throw Failure(ExitCode::kFile, "can't read x", "Check the name.");
  });
  EXPECT_EQ(Run({"flash", "program", "x"}), 5);
  EXPECT_EQ(out, "");
  EXPECT_EQ(err, "borvanusb: flash program: can't read x\n  Check the name.\n");
}

TEST_F(RunToolTest, FailureIsAnObjectWithJson) {
  Command([](Context& context) -> ExitCode {
    context.result["half"] = true;
    throw Failure(ExitCode::kNoCamera, "no USB camera is found");
  });
  EXPECT_EQ(Run({"info", "--json"}), 2);
  EXPECT_EQ(out,
            "{\"error\":{\"code\":2,\"kind\":\"no-camera\",\"message\":\"no USB camera is found\","
            "\"hint\":\"\"}}\n");
  EXPECT_EQ(err, "borvanusb: info: no USB camera is found\n");
}

TEST_F(RunToolTest, WrongCommandLineIsOneLineAndAHint) {
  EXPECT_EQ(Run({"lits"}), 1);
  EXPECT_EQ(out, "");
  EXPECT_EQ(err,
            "borvanusb: unknown command \"lits\"; did you mean list?\n"
            "  borvanusb --help shows more.\n");
}

TEST_F(RunToolTest, WrongCommandLineIsAnObjectToo) {
  EXPECT_EQ(Run({"--json"}), 1);
  EXPECT_THAT(out, StartsWith("{\"error\":{\"code\":1,\"kind\":\"usage\","));
  out.clear();
  EXPECT_EQ(Run({"lits", "--", "--json"}), 1);
  EXPECT_EQ(out, "");
}

TEST_F(RunToolTest, AnyOtherExceptionIsInternal) {
  Command([](Context&) -> ExitCode { throw std::runtime_error("odd"); });
  EXPECT_EQ(Run({"list"}), 10);
  EXPECT_THAT(err, StartsWith("borvanusb: list: internal error: odd\n  "));
  Command([](Context&) -> ExitCode { throw 5; });
  EXPECT_EQ(Run({"list"}), 10);
  err.clear();
  Command([](Context&) -> ExitCode { throw std::bad_alloc(); });
  EXPECT_EQ(Run({"list"}), 10);
  EXPECT_THAT(err, StartsWith("borvanusb: list: there is not enough memory\n"));
}

TEST_F(RunToolTest, OpenBarIsClosedBeforeTheFailureIsTold) {
  terminal = true;
  Command([](Context& context) -> ExitCode {
    context.progress.Begin("read", 100);
    throw Failure(ExitCode::kDevice, "the camera is gone");
  });
  EXPECT_EQ(Run({"info"}), 6);
  EXPECT_THAT(err,
              testing::EndsWith("0/100 bytes            \nborvanusb: info: the camera is gone\n"));
}

TEST_F(RunToolTest, TextNeverStandsInTheBarsLine) {
  terminal = true;
  Command([](Context& context) {
    context.progress.Begin("read", 100);
    context.output.Note("note");
    context.progress.Done();
    return ExitCode::kDone;
  });
  EXPECT_EQ(Run({"info"}), 0);
  EXPECT_THAT(err, HasSubstr("   \rnote\n\rread "));
}

TEST_F(RunToolTest, QuietHasNoProgressAndNoRemarks) {
  Command([](Context& context) {
    context.progress.Begin("read", 100);
    context.output.Note("note");
    context.progress.Done();
    return ExitCode::kDone;
  });
  EXPECT_EQ(Run({"bench", "--quiet", "--progress", "lines"}), 0);
  EXPECT_EQ(err, "");
  EXPECT_EQ(Run({"bench", "--progress", "lines"}), 0);
  EXPECT_EQ(err, "read: 100 bytes\nnote\nread: done, 100 bytes in 0.0 s\n");
}

TEST_F(RunToolTest, VerboseTellsAtTheEndWhatWasUsed) {
  host.details = {"library  b.dll, version 1.2.3", "calls    listing the cameras 1"};
  Command([](Context& context) {
    context.output.Line("line");
    context.output.Note("note");
    return ExitCode::kDone;
  });
  EXPECT_EQ(Run({"info", "--verbose"}), 0);
  EXPECT_EQ(out, "line\n");
  EXPECT_EQ(err, "note\nlibrary  b.dll, version 1.2.3\ncalls    listing the cameras 1\n");
  err.clear();
  Command([](Context&) -> ExitCode { throw Failure(ExitCode::kDevice, "the camera is gone"); });
  EXPECT_EQ(Run({"info", "--verbose"}), 6);
  EXPECT_EQ(err,
            "library  b.dll, version 1.2.3\ncalls    listing the cameras 1\n"
            "borvanusb: info: the camera is gone\n");
  err.clear();
  EXPECT_EQ(Run({"info"}), 6);
  EXPECT_EQ(err, "borvanusb: info: the camera is gone\n");
}

TEST_F(RunToolTest, HelpAndVersionAreAnswersAndNoFailures) {
  EXPECT_EQ(Run({"--help"}), 0);
  EXPECT_THAT(out, HasSubstr("Usage: borvanusb COMMAND"));
  out.clear();
  EXPECT_EQ(Run({"--version"}), 0);
  EXPECT_EQ(out, "borvanusb " BORVAN_VERSION "\n");
  EXPECT_EQ(err, "");
}

TEST_F(RunToolTest, OutputThatCannotBeWrittenIsAFailureOfTheFile) {
  problem = WriteProblem{false, "There is not enough space on the disk"};
  const std::string message =
      "borvanusb: standard output can't be written: There is not enough space on the disk; the "
      "output is incomplete\n"
      "  Check that there is room on the disk, and repeat the command.\n";
  Command([](Context& context) {
    context.output.Line("first");
    EXPECT_FALSE(context.output.TakesResults());
    context.output.Line("second");
    context.output.Note("note");
    return ExitCode::kDone;
  });
  EXPECT_EQ(Run({"info"}), 5);
  EXPECT_EQ(err, "note\n" + message);
  // After a failed write, nothing more is written, because a part in the middle would be missing.
  EXPECT_EQ(writes, 1);
  for (const std::vector<std::string>& words :
       {std::vector<std::string>{"info", "--json"}, {"--help"}, {"--version"}}) {
    err.clear();
    Command([](Context& context) {
      context.result["size"] = 1;
      return ExitCode::kDone;
    });
    EXPECT_EQ(Run(words), 5);
    EXPECT_EQ(err, message);
  }
}

TEST_F(RunToolTest, FailureOfTheCommandStandsBesideThatOfTheOutput) {
  problem = WriteProblem{false, "No room"};
  Command([](Context& context) {
    context.output.Line("2 registers differ");
    return ExitCode::kVerify;
  });
  EXPECT_EQ(Run({"info"}), 7);
  EXPECT_THAT(err, HasSubstr("borvanusb: standard output can't be written: No room; "));
  err.clear();
  Command([](Context&) -> ExitCode { throw Failure(ExitCode::kDevice, "the camera is gone"); });
  EXPECT_EQ(Run({"info", "--json"}), 6);
  EXPECT_THAT(err, StartsWith("borvanusb: info: the camera is gone\n"));
  EXPECT_THAT(err, HasSubstr("borvanusb: standard output can't be written: No room; "));
}

TEST_F(RunToolTest, ReaderThatIsGoneEndsItWithoutAWordAndWithoutSuccess) {
  problem = WriteProblem{true, "The pipe is being closed"};
  Command([](Context& context) {
    context.output.Line("first");
    EXPECT_FALSE(context.output.TakesResults());
    return ExitCode::kDone;
  });
  EXPECT_EQ(Run({"info"}), 5);
  EXPECT_EQ(err, "");
}

TEST_F(RunToolTest, OutputThatArrivesIsTakenToTheEnd) {
  Command([](Context& context) {
    context.output.Line("first");
    EXPECT_TRUE(context.output.TakesResults());
    return ExitCode::kDone;
  });
  EXPECT_EQ(Run({"info"}), 0);
  EXPECT_EQ(out, "first\n");
}

TEST_F(RunToolTest, FailureFromOutsideTheCommandEndsWithItsLastWords) {
  const Failure failure(ExitCode::kStopped, "stopped by the user in the middle");
  ReportFailure({"flash", "program", "x", "--json"}, failure, {"sector 0x1000 is half written"},
                Streams());
  EXPECT_EQ(err,
            "borvanusb: flash program: stopped by the user in the middle\n"
            "  sector 0x1000 is half written\n");
  EXPECT_THAT(out, StartsWith("{\"error\":{\"code\":9,\"kind\":\"stopped\","));
}

}  // namespace
}  // namespace borvanusb::tool_test
