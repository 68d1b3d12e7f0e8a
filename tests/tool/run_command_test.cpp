// run with a script file, using the real command line parser and commands.
#include "station/run.h"
#include "support/command_desk.h"

namespace borvanusb::tool_test {
namespace {

class RunCommandTest : public testing::Test {
 protected:
  CommandDesk desk_;
  TestFolder folder_;
};

TEST_F(RunCommandTest, LinesAreCommandsOfTheTool) {
  const std::string list = folder_.Write("two words.txt", "0xfffd,0\n0x8000,1\n");
  const std::string script =
      folder_.Write("script.txt",
                    "# settings\n\nreg write 0x200 0x5a --verify\nreg read 0x200\n"
                    "reg load --check-only \"" +
                        list + "\"\n");
  EXPECT_EQ(desk_.Do(RunCommand{script, false}, "run"), ExitCode::kDone);
  EXPECT_EQ(desk_.output.out,
            "> reg write 0x200 0x5a --verify\n0x0200  0x5a  verified\n"
            "> reg read 0x200\n0x0200  0x5a\n"
            "> reg load --check-only \"" +
                list + "\"\n" + list + ": good, 1 register\n");
  EXPECT_EQ(desk_.result["commands"][1]["result"]["registers"][0]["value"], 0x5A);
}

TEST_F(RunCommandTest, WrongLineKeepsTheOthersFromRunning) {
  const std::string script = folder_.Write("script.txt", "reg write 0x200 1\nreg raed 0x200\n");
  const Failure failure = desk_.FailureOf(RunCommand{script, false});
  EXPECT_EQ(failure.Code(), ExitCode::kUsage);
  EXPECT_TRUE(failure.Message().starts_with(script + ":2: ")) << failure.Message();
  EXPECT_EQ(desk_.Chip().transfers, 0U);
}

TEST_F(RunCommandTest, HelpAndScriptsWithinAreRefused) {
  for (const char* line : {"reg read --help\n", "run other.txt\n", "reg read 1 --json\n"}) {
    const std::string script = folder_.Write("script.txt", line);
    EXPECT_EQ(desk_.FailureOf(RunCommand{script, false}).Code(), ExitCode::kUsage) << line;
  }
}

TEST_F(RunCommandTest, FileThatIsNotThereIsAFailureOfTheFile) {
  EXPECT_EQ(desk_.FailureOf(RunCommand{folder_.Name("none.txt"), false}).Code(), ExitCode::kFile);
}

}  // namespace
}  // namespace borvanusb::tool_test
