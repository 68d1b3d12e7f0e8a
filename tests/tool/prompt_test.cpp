// The prompt of run without a file.
#include <deque>

#include "station/run.h"
#include "support/command_desk.h"

namespace borvanusb::tool_test {
namespace {

using Kind = Key::Kind;

// Types the given keys, then the input ends.
class FakeTerminal : public Terminal {
 public:
  void BeginEditing() override { ++editing; }
  void EndEditing() override { --editing; }
  Key ReadKey() override {
    EXPECT_EQ(editing, 1);
    if (keys.empty()) {
      return {Kind::kEndOfInput};
    }
    Key key = keys.front();
    keys.pop_front();
    return key;
  }
  void ShowLine(std::string_view line, std::string_view /*before*/) override { shown = line; }
  void EndLine(std::string_view text) override { listed += text; }
  int Columns() const override { return 80; }

  void Type(const std::string& line) {
    keys.push_back({Kind::kText, line});
    keys.push_back({Kind::kEnter});
  }

  std::deque<Key> keys;
  int editing = 0;
  std::string shown;
  std::string listed;
};

class PromptTest : public testing::Test {
 protected:
  PromptTest() {
    desk_.host.terminal = &terminal_;
    desk_.output.output_is_terminal = true;
  }
  ExitCode Do(const RunCommand& command = {}) { return RunValues(command, desk_.context); }

  CommandDesk desk_;
  FakeTerminal terminal_;
};

TEST_F(PromptTest, LinesRunUntilExit) {
  for (const char* line : {"reg write 0x200 0x5a", "", "# remark", "borvanusb reg read 0x200",
                           "expect 0x200 == 0x5a", "exit", "reg read 0x201"}) {
    terminal_.Type(line);
  }
  EXPECT_EQ(Do(), ExitCode::kDone);
  EXPECT_EQ(desk_.output.out, "0x0200  0x5a\n0x0200  0x5a\nregister 0x0200 holds 0x5a\n");
  EXPECT_EQ(desk_.output.errors, "");
  EXPECT_EQ(terminal_.editing, 0);
}

TEST_F(PromptTest, FailureIsToldAndTheNextLineFollows) {
  terminal_.Type("reg raed 1");
  terminal_.Type("reg read 1 --json");
  terminal_.Type("run");
  terminal_.Type("i2c read 0 --slave 0x10");
  terminal_.Type("reg read 0x200");
  EXPECT_EQ(Do(), ExitCode::kDone);
  EXPECT_TRUE(desk_.output.errors.starts_with(
      "borvanusb: unknown command \"reg raed\"; did you mean reg read?\n"
      "  borvanusb reg --help shows more.\n"
      "borvanusb: --json applies to a whole session, not to a line\n"))
      << desk_.output.errors;
  EXPECT_NE(desk_.output.errors.find("\nborvanusb: this is a prompt already\n"), std::string::npos);
  EXPECT_NE(desk_.output.errors.find("\nborvanusb: i2c read: nothing answers; "), std::string::npos)
      << desk_.output.errors;
  EXPECT_EQ(desk_.output.out, "0x0200  0x00\n");
}

TEST_F(PromptTest, StopEndsTheLineAndNotThePrompt) {
  desk_.host.on_sleep = [this] { desk_.host.stop_requested = true; };
  terminal_.Type("sleep 10s");
  terminal_.Type("reg read 0x200");
  EXPECT_EQ(Do(), ExitCode::kDone);
  EXPECT_EQ(desk_.output.errors, "borvanusb: sleep: stopped by the user\n");
  EXPECT_EQ(desk_.output.out, "0x0200  0x00\n");
}

TEST_F(PromptTest, CancelledLineIsNotRun) {
  terminal_.keys = {{Kind::kText, "reg write 0x200 1"}, {Kind::kCancel}};
  terminal_.Type("reg read 0x200");
  Do();
  EXPECT_EQ(desk_.output.out, "0x0200  0x00\n");
}

TEST_F(PromptTest, TabCompletesOrLists) {
  terminal_.keys = {{Kind::kText, "reg rea"},        {Kind::kTab},
                    {Kind::kText, "0x200"},          {Kind::kEnter},
                    {Kind::kText, "i2c read --ver"}, {Kind::kTab}};
  Do();
  EXPECT_EQ(desk_.output.out, "0x0200  0x00\n");
  EXPECT_EQ(terminal_.listed, "--verbose  --version\n");
  terminal_.listed.clear();
  terminal_.keys = {{Kind::kText, "flash program --no-"}, {Kind::kTab}};
  Do();
  EXPECT_EQ(terminal_.listed, "--no-backup  --no-verify\n");
  EXPECT_EQ(terminal_.shown, "borvanusb> flash program --no-");
}

TEST_F(PromptTest, TabCompletesNamesOfTheProfile) {
  const auto shown = [this](const std::string& line) {
    terminal_.listed.clear();
    terminal_.keys = {{Kind::kText, line}, {Kind::kTab}};
    Do();
    return terminal_.shown.substr(std::string("borvanusb> ").size());
  };
  EXPECT_EQ(shown("reg read chip.fea"), "reg read chip.fea");
  desk_.host.environment["BORVANUSB_PROFILES"] = BORVAN_SAMPLES;
  EXPECT_EQ(shown("reg read chip.fea"), "reg read CHIP.FEATURES ");
  EXPECT_EQ(shown("reg read CHIP.FEATURES chip.le"), "reg read CHIP.FEATURES CHIP.LED ");
  // The value follows directly.
  EXPECT_EQ(shown("reg write chip.led.m"), "reg write CHIP.LED.MODE=");
  EXPECT_EQ(shown("reg write CHIP.LED.MODE=o"), "reg write CHIP.LED.MODE=o");
  EXPECT_EQ(terminal_.listed, "CHIP.LED.MODE=off  CHIP.LED.MODE=on\n");
  EXPECT_EQ(shown("flash read --region con"), "flash read --region config ");
  EXPECT_EQ(shown("preset apply ni"), "preset apply night ");
  EXPECT_EQ(desk_.Chip().transfers, 0U);
}

TEST_F(PromptTest, HelpAndVariablesAndScriptsWorkInLines) {
  const TestFolder folder;
  terminal_.Type("reg write --help");
  terminal_.Type("reg write 0x200 ${VALUE}");
  terminal_.Type("run " + folder.Write("a.txt", "reg read 0x200\n"));
  RunCommand command;
  command.variables = {{"VALUE", "7"}};
  Do(command);
  EXPECT_TRUE(desk_.output.out.starts_with("Usage: borvanusb reg write "));
  EXPECT_TRUE(desk_.output.out.ends_with("> reg read 0x200\n0x0200  0x07\n")) << desk_.output.out;
}

TEST_F(PromptTest, WithoutATerminalAFileIsNeeded) {
  desk_.host.terminal = nullptr;
  const Failure failure = desk_.FailureOf(RunCommand{});
  EXPECT_EQ(failure.Code(), ExitCode::kUsage);
  EXPECT_EQ(failure.Message(), "FILE is missing, and there is no terminal to type lines at");
  EXPECT_EQ(failure.Hint(), "Give a script, or borvanusb run - to read it from standard input.");
  desk_.host.terminal = &terminal_;
  desk_.output.output_is_terminal = false;
  EXPECT_EQ(desk_.FailureOf(RunCommand{}).Code(), ExitCode::kUsage);
}

}  // namespace
}  // namespace borvanusb::tool_test
