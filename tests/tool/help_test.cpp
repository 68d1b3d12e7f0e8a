// The text of --help.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <sstream>

#include "command/command_line.h"

namespace borvanusb::tool_test {
namespace {

using testing::HasSubstr;
using testing::StartsWith;

std::string Help(const std::vector<std::string>& words) {
  return std::get<TextAnswer>(ParseCommandLine(words)).text;
}

std::vector<std::string> LinesOf(const std::string& text) {
  std::vector<std::string> lines;
  std::istringstream stream(text);
  for (std::string line; std::getline(stream, line);) {
    lines.push_back(line);
  }
  return lines;
}

void ExpectNarrow(const std::string& text) {
  for (const std::string& line : LinesOf(text)) {
    EXPECT_LE(line.size(), 80U) << line;
    EXPECT_FALSE(line.ends_with(' ')) << line;
  }
}

TEST(HelpTest, CommandHelpFitsATerminal) {
  for (const CommandDescription& command : DescribeTool().commands) {
    std::vector<std::string> words = command.words;
    words.emplace_back("--help");
    const std::string help = Help(words);
    ExpectNarrow(help);
    EXPECT_LE(LinesOf(help).size(), 30U) << help;
  }
}

TEST(HelpTest, CommandHelpSaysUsageOptionsAndAnExample) {
  EXPECT_EQ(Help({"reg", "write", "--help"}),
            "Usage: borvanusb reg write WHAT... [OPTIONS]\n"
            "\n"
            "Writes registers of the camera's chip or by name. Of a register's fields only\n"
            "those that are named change; it is read first and written once. Values are\n"
            "numbers or the names that the profile gives to a field's values.\n"
            "\n"
            "  WHAT                  a register and what to write: 0x1a3 0x20, or settings:\n"
            "                        0x1a3=0x20 SENSOR.GAIN=3 SENSOR.CTRL.MODE=hdr\n"
            "  --wide                numbers mean registers of 32 bits instead of 8\n"
            "  --mask M              change only the bits that are 1 in M; reads first\n"
            "  --verify              read back and compare\n"
            "\n"
            "Common: --camera WHICH, --profile FILE, --force-profile, --timeout SECONDS,\n"
            "  --wait SECONDS, --trace FILE, --log FILE, --json, --quiet, --verbose, --help\n"
            "Exit codes: 0 done, others say which failure; borvanusb --help lists them.\n"
            "\n"
            "Example: borvanusb reg write 0x1a3 0x20 --mask 0x20 --verify\n"
            "Example: borvanusb reg write SENSOR.CTRL.GAIN=0x10 SENSOR.CTRL.MODE=hdr --verify\n");
}

TEST(HelpTest, CommandHelpNamesNoCommonOptionThatIsRefused) {
  const std::string list = Help({"list", "--help"});
  for (const char* const refused : {"--camera", "--wait", "--trace", "--progress"}) {
    EXPECT_EQ(list.find(refused), std::string::npos) << list;
  }
  EXPECT_THAT(list, HasSubstr("--timeout SECONDS"));
  EXPECT_EQ(Help({"manual", "--help"}).find("--timeout"), std::string::npos);
}

TEST(HelpTest, HelpNeedsNothingElseToBeRight) {
  const std::string help = Help({"reg", "write", "--help"});
  EXPECT_EQ(Help({"--help", "reg", "write"}), help);
  EXPECT_EQ(Help({"reg", "-h", "write", "x", "y", "z", "--frob"}), help);
}

TEST(HelpTest, OverviewNamesEveryCommandAndCommonOption) {
  const std::string help = Help({"--help"});
  EXPECT_THAT(help, StartsWith("borvanusb " BORVAN_VERSION ": "));
  ExpectNarrow(help);
  const ToolDescription tool = DescribeTool();
  EXPECT_EQ(tool.commands.size(), 38U);
  for (const CommandDescription& command : tool.commands) {
    std::string words = "\n ";
    for (const std::string& word : command.words) {
      words += " " + word;
    }
    EXPECT_THAT(help, HasSubstr(words + " "));
    EXPECT_THAT(help, HasSubstr("\n" + command.group + "\n"));
  }
  for (const OptionDescription& option : tool.common) {
    EXPECT_THAT(help, HasSubstr(option.names.back()));
  }
}

TEST(HelpTest, GroupHelpNamesItsCommands) {
  const std::string help = Help({"reg", "--help"});
  EXPECT_THAT(help, StartsWith("Usage: borvanusb reg COMMAND\n"));
  EXPECT_THAT(help, HasSubstr("  reg diff A B "));
  EXPECT_EQ(help.find("i2c"), std::string::npos);
}

// Examples in the help must be valid command lines.
TEST(HelpTest, ExamplesAreCommandLinesThatWork) {
  for (const CommandDescription& command : DescribeTool().commands) {
    ASSERT_FALSE(command.examples.empty());
    for (const std::string& example : command.examples) {
      std::vector<std::string> words = SplitLine(example);
      ASSERT_EQ(words.front(), "borvanusb");
      words.erase(words.begin());
      // Removes the part for the shell.
      words.erase(std::find(words.begin(), words.end(), ">"), words.end());
      const auto parsed = ParseCommandLine(words);
      std::string named;
      for (const std::string& word : command.words) {
        named += (named.empty() ? "" : " ") + word;
      }
      EXPECT_EQ(std::get<Arguments>(parsed).words, named);
    }
  }
}

}  // namespace
}  // namespace borvanusb::tool_test
