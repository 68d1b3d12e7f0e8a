// The completion script for zsh, run by zsh: the words that it passes to compadd.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "command/completion.h"
#include "command/completion_scripts.h"
#include "support/shell_script.h"

namespace borvanusb::tool_test {
namespace {

using testing::Contains;
using testing::ElementsAre;
using testing::IsEmpty;

class ZshCompletionTest : public testing::Test {
 protected:
  void SetUp() override {
    if (!shell_.IsThere()) {
      GTEST_SKIP() << "zsh is not installed";
    }
    shell_.Write("script", ZshCompletion(DescribeTool()));
    shell_.WriteProgram("echo \"$*\"");
  }

  // The words that zsh offers for the last word. compadd filters them, unless it is called with -U.
  std::vector<std::string> Offered(const std::vector<std::string>& words) {
    std::string program =
        "compadd() { local all=; while [[ \"$1\" == -* ]]; do [[ \"$1\" == -U ]] && all=1;"
        " [[ \"$1\" == -S ]] && shift; local last=\"$1\"; shift; [[ \"$last\" == -- ]] && break;"
        " done; local one; for one in \"$@\"; do"
        " [[ -n \"$all\" || \"$one\" == \"$PREFIX\"* ]] && print -r -- \"$one\"; done; }\n"
        "compset() { PREFIX=\"${PREFIX#*=}\"; }\n"
        "_files() { print FILES; }\n"
        "compdef() { print -r -- \"$@\" > defined; }\n"
        "PATH=$PWD:$PATH; . ./script; words=(";
    for (const std::string& word : words) {
      program += "'" + word + "' ";
    }
    program += "); CURRENT=" + std::to_string(words.size()) + "; PREFIX='" + words.back() +
               "'; _borvanusb; true";
    return shell_.Run(program);
  }

  ShellScript shell_{"zsh", "-f"};
};

TEST_F(ZshCompletionTest, CommandsAndTheirSecondWords) {
  EXPECT_THAT(Offered({"borvanusb", "f"}), ElementsAre("flash"));
  EXPECT_THAT(Offered({"borvanusb", ""}), Contains("doctor"));
  EXPECT_THAT(Offered({"borvanusb", "flash", "ver"}), ElementsAre("verify"));
}

TEST_F(ZshCompletionTest, OptionsAndTheirValues) {
  EXPECT_THAT(Offered({"borvanusb", "flash", "program", "x", "--no-v"}),
              ElementsAre("--no-verify"));
  EXPECT_THAT(Offered({"borvanusb", "--camera", "1234:0001", "reg", "lo"}), ElementsAre("load"));
  EXPECT_THAT(Offered({"borvanusb", "bench", "--progress", "l"}), ElementsAre("lines"));
  EXPECT_THAT(Offered({"borvanusb", "bench", "--progress=l"}), ElementsAre("lines"));
  EXPECT_THAT(Offered({"borvanusb", "i2c", "read", "--mode", "16"}), ElementsAre("16/8", "16/16"));
  EXPECT_THAT(Offered({"borvanusb", "reg", "load", ""}), ElementsAre("FILES"));
  EXPECT_THAT(Offered({"borvanusb", "info", "--camera", ""}), IsEmpty());
}

TEST_F(ZshCompletionTest, NamesOfTheProfile) {
  EXPECT_THAT(Offered({"borvanusb", "--camera", "1", "reg", "read", "SENSOR.G"}),
              ElementsAre("profile names registers --camera 1 -- SENSOR.G"));
  EXPECT_THAT(Offered({"borvanusb", "reg", "read", "--profile=a b", "X", "Y"}),
              ElementsAre("profile names registers --profile=a b -- Y"));
  EXPECT_THAT(Offered({"borvanusb", "reg", "write", "A=1", "SENSOR.G"}),
              ElementsAre("profile names settings -- SENSOR.G"));
}

TEST_F(ZshCompletionTest, IsMadeKnown) {
  Offered({"borvanusb", ""});
  EXPECT_EQ(shell_.Read("defined"), "_borvanusb borvanusb borvanusb.exe\n");
}

}  // namespace
}  // namespace borvanusb::tool_test
