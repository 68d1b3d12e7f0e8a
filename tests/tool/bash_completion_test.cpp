// The completion script for bash, run by bash.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "command/completion.h"
#include "command/completion_scripts.h"
#include "support/command_desk.h"
#include "support/shell_script.h"

namespace borvanusb::tool_test {
namespace {

using testing::Contains;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::Not;

class BashCompletionTest : public testing::Test {
 protected:
  void SetUp() override {
    shell_.Write("script", BashCompletion(DescribeTool()));
    shell_.Write("image one.bin", "image");
    shell_.Write("list.txt", "list");
  }

  // The words that bash offers for the last word. `words` are split as bash splits a line.
  std::vector<std::string> Offered(const std::vector<std::string>& words) {
    std::string program = ". ./script; COMP_WORDS=(";
    for (const std::string& word : words) {
      program += "'" + word + "' ";
    }
    program += "); COMP_CWORD=" + std::to_string(words.size() - 1) +
               "; $(complete -p borvanusb | sed 's/.*-F \\([^ ]*\\) .*/\\1/'); "
               "[ ${#COMPREPLY[@]} = 0 ] || printf '%s\\n' \"${COMPREPLY[@]}\"";
    return shell_.Run(program);
  }

  ShellScript shell_{"bash", "--norc"};
};

TEST_F(BashCompletionTest, CommandsAndTheirSecondWords) {
  EXPECT_THAT(Offered({"borvanusb", "f"}), ElementsAre("flash"));
  EXPECT_THAT(Offered({"borvanusb", ""}), Contains("doctor"));
  EXPECT_THAT(Offered({"borvanusb", "flash", "ver"}), ElementsAre("verify"));
  EXPECT_THAT(Offered({"borvanusb", "reg", ""}),
              ElementsAre("read", "write", "show", "find", "dump", "load", "diff"));
}

TEST_F(BashCompletionTest, OptionsOfTheCommandAndOfAll) {
  EXPECT_THAT(Offered({"borvanusb", "flash", "program", "x", "--no"}),
              ElementsAre("--no-verify", "--no-backup"));
  EXPECT_THAT(Offered({"borvanusb", "--js"}), ElementsAre("--json"));
  EXPECT_THAT(Offered({"borvanusb", "list", "--"}), Contains("--watch"));
  EXPECT_THAT(Offered({"borvanusb", "list", "--"}), Not(Contains("--wide")));
  EXPECT_THAT(Offered({"borvanusb", "list", "--"}), Contains("--json"));
  EXPECT_THAT(Offered({"borvanusb", "list", "--"}), Not(Contains("--camera")));
  EXPECT_THAT(Offered({"borvanusb", "manual", "--"}),
              ElementsAre("--log", "--json", "--quiet", "--help", "--version"));
}

TEST_F(BashCompletionTest, ValuesThatAreFew) {
  EXPECT_THAT(Offered({"borvanusb", "--progress", ""}),
              ElementsAre("auto", "bar", "lines", "json", "none"));
  EXPECT_THAT(Offered({"borvanusb", "bench", "--progress", "=", "l"}), ElementsAre("lines"));
  EXPECT_THAT(Offered({"borvanusb", "bench", "--progress", "="}),
              ElementsAre("auto", "bar", "lines", "json", "none"));
  EXPECT_THAT(Offered({"borvanusb", "i2c", "read", "--mode", "16"}), ElementsAre("16/8", "16/16"));
  EXPECT_THAT(Offered({"borvanusb", "completion", "p"}), ElementsAre("powershell"));
}

TEST_F(BashCompletionTest, FilesWhereFilesAreMeant) {
  EXPECT_THAT(Offered({"borvanusb", "flash", "program", "im"}), ElementsAre("image one.bin"));
  EXPECT_THAT(Offered({"borvanusb", "reg", "dump", "0x10", "li"}), ElementsAre("list.txt"));
  EXPECT_THAT(Offered({"borvanusb", "info", "--trace", "li"}), ElementsAre("list.txt"));
  EXPECT_THAT(Offered({"borvanusb", "info", "--camera", ""}), IsEmpty());
}

// The fake program prints its arguments.
TEST_F(BashCompletionTest, NamesOfTheProfile) {
  shell_.WriteProgram("echo \"$*\"");
  EXPECT_THAT(Offered({"./borvanusb", "reg", "read", "SENSOR.G"}),
              ElementsAre("profile names registers -- SENSOR.G"));
  EXPECT_THAT(Offered({"./borvanusb", "--camera", "1234", ":", "0001", "reg", "read", "X", "S"}),
              ElementsAre("profile names registers --camera 1234:0001 -- S"));
  EXPECT_THAT(Offered({"./borvanusb", "--profile", "=", "\"a b\"", "reg", "show", "S"}),
              ElementsAre("profile names registers --profile a b -- S"));
  EXPECT_THAT(Offered({"./borvanusb", "reg", "write", "A.B=1", "C"}),
              ElementsAre("profile names settings -- C"));
}

TEST_F(BashCompletionTest, ValuesOfASetting) {
  shell_.WriteProgram("[ \"$5\" = CTRL.MODE=h ] && echo CTRL.MODE=hdr");
  EXPECT_THAT(Offered({"./borvanusb", "reg", "write", "CTRL.MODE", "=", "h"}), ElementsAre("hdr"));
  shell_.WriteProgram("echo EXPOSURE=");
  EXPECT_THAT(Offered({"./borvanusb", "reg", "write", "EXP"}), ElementsAre("EXPOSURE="));
}

TEST_F(BashCompletionTest, ACameraWithoutProfileHasNoNames) {
  shell_.WriteProgram("echo no profile >&2; exit 1");
  EXPECT_THAT(Offered({"./borvanusb", "reg", "read", ""}), IsEmpty());
}

TEST_F(BashCompletionTest, OptionsBeforeTheCommandDoNotHideIt) {
  EXPECT_THAT(Offered({"borvanusb", "--camera", "1234", ":", "0001", "--json", "reg", "lo"}),
              ElementsAre("load"));
  EXPECT_THAT(Offered({"borvanusb", "--timeout", "=", "5", "reg", "load", "li"}),
              ElementsAre("list.txt"));
  EXPECT_THAT(Offered({"borvanusb", "reg", "load", "--check-only", "li"}), ElementsAre("list.txt"));
}

TEST_F(BashCompletionTest, CommandPrintsTheScript) {
  CommandDesk desk;
  EXPECT_EQ(borvanusb::Run(CompletionCommand{Shell::kBash}, desk.context), ExitCode::kDone);
  EXPECT_EQ(desk.output.out, BashCompletion(DescribeTool()));
  EXPECT_EQ(desk.result["shell"], "bash");
  EXPECT_EQ(desk.result["script"], desk.output.out);
}

}  // namespace
}  // namespace borvanusb::tool_test
