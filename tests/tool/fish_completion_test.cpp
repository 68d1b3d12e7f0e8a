// The completion script for fish, run by fish.
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
using testing::UnorderedElementsAre;

class FishCompletionTest : public testing::Test {
 protected:
  void SetUp() override {
    if (!shell_.IsThere()) {
      GTEST_SKIP() << "fish is not installed";
    }
    shell_.Write("script", FishCompletion(DescribeTool()));
    shell_.Write("list.txt", "list");
    shell_.WriteProgram("echo \"$*\"");
  }

  // The words that fish offers at the end of a line.
  std::vector<std::string> Offered(const std::string& line) {
    return shell_.Run("set -x HOME $PWD; set -x PATH $PWD $PATH; source script; complete -C '" +
                      line + "'");
  }

  ShellScript shell_{"fish", "--no-config"};
};

TEST_F(FishCompletionTest, CommandsAndTheirSecondWords) {
  EXPECT_THAT(Offered("borvanusb fl"), ElementsAre("flash"));
  EXPECT_THAT(Offered("borvanusb "), Contains("doctor"));
  EXPECT_THAT(Offered("borvanusb flash ver"), ElementsAre("verify"));
}

TEST_F(FishCompletionTest, OptionsAndTheirValues) {
  EXPECT_THAT(Offered("borvanusb flash program x --no-v"), ElementsAre("--no-verify"));
  EXPECT_THAT(Offered("borvanusb --camera 1234:0001 reg lo"), ElementsAre("load"));
  EXPECT_THAT(Offered("borvanusb bench --progress lin"), ElementsAre("lines"));
  EXPECT_THAT(Offered("borvanusb bench --progress=lin"), ElementsAre("--progress=lines"));
  EXPECT_THAT(Offered("borvanusb i2c read --mode 16"), UnorderedElementsAre("16/8", "16/16"));
  EXPECT_THAT(Offered("borvanusb reg load li"), ElementsAre("list.txt"));
  EXPECT_THAT(Offered("borvanusb info --camera "), IsEmpty());
}

TEST_F(FishCompletionTest, NamesOfTheProfile) {
  shell_.WriteProgram("echo \"$*\" > asked; printf 'SENSOR.GAIN\\nSENSOR.GATE\\n'");
  EXPECT_THAT(Offered("borvanusb --camera 1 reg read SENSOR.GA"),
              ElementsAre("SENSOR.GAIN", "SENSOR.GATE"));
  EXPECT_EQ(shell_.Read("asked"), "profile names registers --camera 1 -- SENSOR.GA\n");
}

}  // namespace
}  // namespace borvanusb::tool_test
