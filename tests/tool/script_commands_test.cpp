// Script lines that are not commands of the tool, and variables.
#include "station/script_commands.h"

#include "command/values.h"
#include "station/operand.h"
#include "station/run.h"
#include "station/script_variables.h"
#include "support/command_desk.h"

namespace borvanusb::tool_test {
namespace {

class ScriptCommandsTest : public testing::Test {
 protected:
  ExitCode Do(const std::string& text, RunCommand command = {}) {
    command.file = folder_.Write("work.txt", text);
    desk_.output.errors.clear();
    return desk_.Do(command, "run");
  }
  Failure FailureOf(const std::string& text, RunCommand command = {}) {
    command.file = folder_.Write("work.txt", text);
    return desk_.FailureOf(command);
  }
  const nlohmann::ordered_json& Line(std::size_t number) {
    return desk_.result["commands"][number];
  }

  CommandDesk desk_;
  TestFolder folder_;
};

TEST_F(ScriptCommandsTest, SleepWaitsAsLongAsItSays) {
  const auto begin = desk_.host.Clock();
  EXPECT_EQ(Do("sleep 100ms\nsleep 1.5s\n"), ExitCode::kDone);
  EXPECT_EQ(desk_.host.Clock() - begin, std::chrono::milliseconds(1600));
  EXPECT_EQ(desk_.Chip().transfers, 0U);
}

TEST_F(ScriptCommandsTest, StopWhileSleepingEndsTheScript) {
  desk_.host.on_sleep = [this] { desk_.host.stop_requested = true; };
  EXPECT_EQ(Do("sleep 10s\nreg read 1\n"), ExitCode::kStopped);
  EXPECT_EQ(desk_.result["commands"].size(), 1U);
}

TEST_F(ScriptCommandsTest, ExpectComparesARegisterOfTheChip) {
  desk_.Chip().registers[0x1A3] = 0x21;
  EXPECT_EQ(Do("expect 0x1a3 == 0x21\nexpect 0x1a3&0x20 == 0x20\nexpect 0x1a3 != 0\n"
               "expect 0x1a3 < 0x22\nexpect 0x1a3 <= 0x21\nexpect 0x1a3 > 0x20\n"
               "expect 0x1a3 >= 33\n"),
            ExitCode::kDone);
  EXPECT_EQ(Line(1)["result"].dump(),
            R"({"what":"0x1a3","mask":32,"comparison":"==","expected":32,"value":33,"met":true})");
  EXPECT_EQ(desk_.output.out.substr(0, desk_.output.out.find("> expect 0x1a3 != 0")),
            "> expect 0x1a3 == 0x21\nregister 0x01a3 holds 0x21\n"
            "> expect 0x1a3&0x20 == 0x20\n"
            "register 0x01a3 holds 0x21, which is 0x20 with mask 0x20\n");
}

TEST_F(ScriptCommandsTest, ExpectThatIsNotMetEndsTheScriptWithWhatWasFound) {
  desk_.Chip().registers[0x1A3] = 0x21;
  for (const char* line : {"expect 0x1a3 == 0x20", "expect 0x1a3 != 0x21", "expect 0x1a3 < 0x21",
                           "expect 0x1a3 <= 0x20", "expect 0x1a3 > 0x21", "expect 0x1a3 >= 0x22"}) {
    EXPECT_EQ(Do(std::string(line) + "\nreg read 1\n"), ExitCode::kVerify) << line;
    EXPECT_EQ(desk_.result["commands"].size(), 1U);
    EXPECT_EQ(Line(0)["result"]["value"], 0x21);
    EXPECT_EQ(Line(0)["result"]["met"], false);
  }
  Do("expect 0x1a3 == 0x20\n");
  EXPECT_TRUE(desk_.output.errors.starts_with(
      "borvanusb: expect: register 0x01a3 holds 0x21; expected == 0x20\n"))
      << desk_.output.errors;
}

TEST_F(ScriptCommandsTest, OperandsNameWideRegistersAndDevicesOnTheBus) {
  desk_.Chip().registers[0x1000] = 0x12345678;
  desk_.Chip().sensors[0x6C][0x300A] = 0x56;
  desk_.Chip().sensors[0x20][0x0A] = 0x1234;
  EXPECT_EQ(Do("expect wide:0x1000 == 0x12345678\nexpect i2c:0x6c:0x300a == 0x56\n"
               "expect i2c:32:0xa:16/16 == 0x1234\n"),
            ExitCode::kDone);
  EXPECT_EQ(desk_.output.out,
            "> expect wide:0x1000 == 0x12345678\nregister 0x1000 holds 0x12345678\n"
            "> expect i2c:0x6c:0x300a == 0x56\nslave 0x6c, register 0x300a holds 0x56\n"
            "> expect i2c:32:0xa:16/16 == 0x1234\nslave 0x20, register 0x000a holds 0x1234\n");
}

TEST_F(ScriptCommandsTest, WaitEndsWhenTheConditionIsMet) {
  int sleeps = 0;
  desk_.host.on_sleep = [&] {
    if (++sleeps == 3) {
      desk_.Chip().registers[0x200] = 1;
    }
  };
  EXPECT_EQ(Do("wait 0x200 == 1 --timeout 2s\n"), ExitCode::kDone);
  EXPECT_EQ(sleeps, 3);
  EXPECT_EQ(desk_.output.out, "> wait 0x200 == 1 --timeout 2s\nregister 0x0200 holds 0x01\n");
}

TEST_F(ScriptCommandsTest, WaitHasALimit) {
  const auto begin = desk_.host.Clock();
  EXPECT_EQ(Do("wait 0x200 == 1 --timeout 2s\n"), ExitCode::kTimeout);
  EXPECT_EQ(desk_.host.Clock() - begin, std::chrono::seconds(2));
  EXPECT_EQ(Line(0)["error"]["message"], "register 0x0200 holds 0x00; waited 2 s for == 0x01");
}

TEST_F(ScriptCommandsTest, WaitAllowsForADeviceThatDoesNotAnswerYet) {
  int sleeps = 0;
  desk_.host.on_sleep = [&] {
    if (++sleeps == 2) {
      desk_.Chip().sensors[0x6C][0x300A] = 0x56;
    }
  };
  EXPECT_EQ(Do("wait i2c:0x6c:0x300a == 0x56\n"), ExitCode::kDone);
  desk_.Chip().sensors.clear();
  desk_.host.on_sleep = {};
  EXPECT_EQ(Do("wait i2c:0x6c:0x300a == 0x56 --timeout 500ms\n"), ExitCode::kDevice);
  EXPECT_EQ(Line(0)["error"]["message"].get<std::string>().substr(0, 16), "nothing answers;");
}

TEST_F(ScriptCommandsTest, StopEndsAWaitAtOnce) {
  int sleeps = 0;
  desk_.host.on_sleep = [&] {
    ++sleeps;
    desk_.host.stop_requested = true;
  };
  EXPECT_EQ(Do("wait 0x200 == 1 --timeout 2s\n"), ExitCode::kStopped);
  EXPECT_EQ(sleeps, 1);
}

TEST_F(ScriptCommandsTest, AnswerOtherThanYesStopsTheScript) {
  EXPECT_EQ(Do("ask \"Is the lens covered?\"\nreg read 1\n", {"", true}), ExitCode::kStopped);
  EXPECT_EQ(desk_.host.questions, std::vector<std::string>{"Is the lens covered?"});
  EXPECT_EQ(desk_.Chip().transfers, 0U);
  desk_.host.answer = true;
  EXPECT_EQ(Do("ask \"Is the lens covered?\"\nreg read 1\n"), ExitCode::kDone);
}

TEST_F(ScriptCommandsTest, VariablesAreReplacedInWords) {
  EXPECT_EQ(Do("reg write 0x${PAGE}00 ${VALUE} # not ${THIS}\nask \"$${A} is ${TEXT}?\" # x\n",
               {"", false, {{"PAGE", "2"}, {"VALUE", "0x5a"}, {"TEXT", "a \"b"}}}),
            ExitCode::kStopped);
  EXPECT_EQ(desk_.Chip().registers[0x200], 0x5AU);
  EXPECT_EQ(desk_.host.questions, std::vector<std::string>{"${A} is a \"b?"});
  EXPECT_TRUE(desk_.output.out.starts_with("> reg write 0x200 0x5a\n")) << desk_.output.out;
  EXPECT_EQ(Line(0)["expanded"], "reg write 0x200 0x5a");
  EXPECT_EQ(Line(0)["text"], "reg write 0x${PAGE}00 ${VALUE} # not ${THIS}");
}

TEST_F(ScriptCommandsTest, UnknownVariableIsRefusedBeforeAnythingRuns) {
  const Failure failure = FailureOf("reg write 0x200 1\nreg write 0x201 ${SERIAL}\n");
  EXPECT_EQ(failure.Code(), ExitCode::kUsage);
  EXPECT_EQ(failure.Message(),
            folder_.Name("work.txt") + ":2: the variable \"SERIAL\" is not set; nothing was run");
  EXPECT_EQ(desk_.Chip().transfers, 0U);
  EXPECT_EQ(FailureOf("reg write 0x201 ${SERIAL\n").Message(),
            folder_.Name("work.txt") + ":1: \"${SERIAL\": ${ is not closed; nothing was run");
}

TEST_F(ScriptCommandsTest, VariableThatNoLineUsesIsNoted) {
  Do("reg read 1\n", {"", false, {{"SERIAL", "17"}}});
  EXPECT_EQ(desk_.output.notes,
            "note: " + folder_.Name("work.txt") + " does not use the variable SERIAL\n");
}

TEST_F(ScriptCommandsTest, ScriptComesFromStandardInput) {
  desk_.host.input = "reg write 0x200 0x5a\nreg raed 1\n";
  EXPECT_EQ(
      desk_.FailureOf(RunCommand{"-", false}).Message(),
      "standard input:2: unknown command \"reg raed\"; did you mean reg read?; nothing was run");
  desk_.host.input = "reg write 0x200 0x5a\n";
  EXPECT_EQ(desk_.Do(RunCommand{"-", false}, "run"), ExitCode::kDone);
  EXPECT_EQ(desk_.Chip().registers[0x200], 0x5AU);
}

TEST_F(ScriptCommandsTest, WrongLinesNameWhatIsAllowed) {
  const auto message = [this](const std::string& line) {
    const std::string whole = FailureOf(line + "\n").Message();
    const std::string place = folder_.Name("work.txt") + ":1: ";
    EXPECT_TRUE(whole.starts_with(place)) << whole;
    return whole.substr(place.size(), whole.rfind("; nothing was run") - place.size());
  };
  EXPECT_EQ(message("sleep 100"),
            "TIME: \"100\" is not a valid time: a number with ms or s, such as 100ms or 1.5s, up "
            "to 86400s");
  EXPECT_EQ(message("sleep s"),
            "TIME: \"s\" is not a valid time: a number with ms or s, such as 100ms or 1.5s, up to "
            "86400s");
  EXPECT_EQ(message("expect 0x1a3 = 1"),
            "COMPARISON: \"=\" is not a valid comparison: ==, !=, <, <=, > or >=");
  EXPECT_EQ(message("expect 0x1a3 == 0x100"),
            "VALUE: 0x100 is too big for the values of 0x1a3: 0 to 0xff");
  EXPECT_EQ(message("expect 0x1a3&0x100 == 0"),
            "WHAT: the mask: 0x100 is too big for the values of 0x1a3: 0 to 0xff");
  EXPECT_EQ(message("expect i2c:0x100:1 == 0"),
            "WHAT: \"i2c:0x100:1\" is not a valid register on the I2C bus: i2c:SLAVE:ADDR or "
            "i2c:SLAVE:ADDR:MODE, with SLAVE from 0 to 255, such as i2c:0x6c:0x300a:16/8");
  EXPECT_EQ(message("expect i2c:1:0x100:8/8 == 0"),
            "WHAT: \"i2c:1:0x100:8/8\" is not allowed: addresses of width mode 8/8 go up to 0xff");
  EXPECT_EQ(message("ask"), "ask: QUESTION is missing: the question, in quotes");
  EXPECT_EQ(message("ask x --camera 1"), "--camera: does not apply to ask, which uses no camera");
  EXPECT_EQ(message("wait 1 == 1 --verbose"), "--verbose applies to a whole script, not to a line");
  EXPECT_EQ(FailureOf("expect 1\n").Hint(), "borvanusb run --help shows these lines.");
}

TEST(ScriptVariablesTest, ValueNeedsANameAndASign) {
  EXPECT_EQ(VariableValue("SERIAL=17=18"),
            (std::pair<std::string, std::string>("SERIAL", "17=18")));
  EXPECT_EQ(VariableValue("_a1="), (std::pair<std::string, std::string>("_a1", "")));
  for (const char* text : {"SERIAL", "=1", "1A=1", "a b=1", "a-b=1", ""}) {
    EXPECT_THROW(VariableValue(text), WrongValue) << text;
  }
}

TEST(OperandTest, BitsAreThoseOfTheValue) {
  EXPECT_EQ(CheckOperand("419"), 8);
  EXPECT_EQ(CheckOperand("wide:0x1a3"), 32);
  EXPECT_EQ(CheckOperand("i2c:0x6c:0x300a"), 8);
  EXPECT_EQ(CheckOperand("i2c:0x6c:0x300a:2"), 16);
  for (const char* text : {"", "0x", "wide:", "i2c:", "i2c:1", "i2c:1:", "i2c:1:2:9/9",
                           "i2c:1:2:1:1", "0x100000000", "i2c:1:0x10000"}) {
    EXPECT_THROW(CheckOperand(text), WrongValue) << text;
  }
}

}  // namespace
}  // namespace borvanusb::tool_test
