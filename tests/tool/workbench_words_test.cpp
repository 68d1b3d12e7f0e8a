// The command lines that the workbench runs.
#include <gtest/gtest.h>

#include <algorithm>
#include <set>

#include "base/failure.h"
#include "base/joined.h"
#include "command/command_line.h"
#include "workbench/word_rules.h"

namespace borvanusb::tool_test {
namespace {

using Words = std::vector<std::string>;

std::string RefusalOf(const Words& words, const WordLimits& limits = {}) {
  static const ToolDescription tool = DescribeTool();
  try {
    AcceptWords(tool, words, limits);
  } catch (const Failure& failure) {
    EXPECT_EQ(failure.Code(), ExitCode::kUsage);
    return failure.Message();
  }
  return "";
}

void ExpectTaken(const std::string& line, const WordLimits& limits = {}) {
  EXPECT_EQ(RefusalOf(SplitLine(line), limits), "") << line;
}

void ExpectRefused(const std::string& line, const WordLimits& limits = {}) {
  EXPECT_NE(RefusalOf(SplitLine(line), limits), "") << line;
}

TEST(WorkbenchWordsTest, CommandsOfThePageAreTaken) {
  for (const char* const line :
       {"list", "doctor", "reg read 0x100-0x10f", "reg write 0x100 5 --verify", "reg read SENSOR.*",
        "preset save night SENSOR.*", "i2c diff camera preset:night",
        "flash program a.hex b.bin@0x4000", "reg read 1 --wait 5", "reg dump 0-0xff a.txt",
        "reg diff camera list.txt", "i2c read 0x300a --slave 0x6c --mode 16/8",
        "flash program fw.hex --address 0x1000", "flash program fw.bin@0x40000",
        "flash read all backup.bin", "flash verify fw.bin --timeout 20",
        "watch --reg 0x100 --rate 10",
        "flash program fw.bin --report r.json --backup b.bin --journal none"}) {
    ExpectTaken(line);
  }
}

TEST(WorkbenchWordsTest, CommandsThatStartOthersAreRefused) {
  for (const char* const line :
       {"run script.txt", "shell", "workbench", "workbench --port 1", "completion bash", "manual",
        "profile new x", "batch a", "", "--help", "--version", "reg read --help", "flash", "reg",
        "nonsense", "-- run a.txt", "--timeout 5 run a.txt", "flash program a.bin --all",
        "list --watch"}) {
    ExpectRefused(line);
  }
}

TEST(WorkbenchWordsTest, OptionsThatTheServerSetsAreRefused) {
  for (const char* const line :
       {"list --json", "reg read 1 --camera 0", "reg read 1 --camera=0", "--camera 0 reg read 1",
        "reg read 1 --progress bar", "reg read 1 --trace t.txt", "reg read 1 --trace=C:\\t.txt",
        "reg read 1 --quiet", "reg read 1 --log a.txt", "reg read 1 --profile p.json"}) {
    ExpectRefused(line);
  }
}

TEST(WorkbenchWordsTest, FilesOutsideOfTheFolderAreRefusedInEveryPlace) {
  const std::vector<std::string> commands = {"flash program %",
                                             "flash program fw.bin --report %",
                                             "flash program fw.bin --report=%",
                                             "flash program fw.bin --backup %",
                                             "flash program -- %",
                                             "flash verify %",
                                             "flash verify a --diff %",
                                             "flash read all %",
                                             "flash word 0 1 --backup %",
                                             "flash erase 0+4K --backup %",
                                             "reg load %",
                                             "reg dump 0 %",
                                             "reg diff % camera",
                                             "reg diff camera %",
                                             "i2c load % --slave 1",
                                             "i2c dump 0 % --slave 1",
                                             "watch --reg 1 --csv %",
                                             "map check %",
                                             "preset save %",
                                             "preset apply %",
                                             "reg diff preset:% camera",
                                             "flash program a.bin %@0x10",
                                             "flash program fw.bin --journal %"};
  for (const std::string& command : commands) {
    for (const char* const name : {"../a", "/etc/passwd", R"(C:\a)", "C:a", R"(\\host\a)", "CON",
                                   "a:b", "nul.txt", "a.", "sub/a"}) {
      Words words = SplitLine(command);
      for (std::string& word : words) {
        if (const auto place = word.find('%'); place != std::string::npos) {
          word.replace(place, 1, name);
        }
      }
      EXPECT_NE(RefusalOf(words), "") << Joined(words);
    }
  }
}

TEST(WorkbenchWordsTest, JournalMayBeOneOfTheFolderOfJournals) {
  const WordLimits limits{false, R"(C:\Users\a\journals)"};
  EXPECT_EQ(
      RefusalOf({"flash", "program", "a", "--journal", R"(C:\Users\a\journals\1234-0001.json)"},
                limits),
      "");
  for (const char* const name :
       {R"(C:\Users\a\journals\..\x)", R"(C:\Users\a\journalsx)", R"(C:\Users\a\journals\)",
        R"(C:\Users\a\journals\a\b)", R"(D:\x)"}) {
    EXPECT_NE(RefusalOf({"flash", "program", "a", "--journal", name}, limits), "") << name;
  }
}

TEST(WorkbenchWordsTest, PartsOfAnImageKeepToTheFolder) {
  ExpectTaken("flash program boot.bin@region:boot");
  for (const char* const line :
       {"flash program ../boot.bin@0", "flash program boot.bin@../x", "flash program boot.bin@a/b",
        R"(flash program a@b\c)", "flash program @0x0", "flash program C:a@0"}) {
    ExpectRefused(line);
  }
}

TEST(WorkbenchWordsTest, OversizedAndUnprintableLinesAreRefused) {
  EXPECT_NE(RefusalOf(Words(3000, "a")), "");
  EXPECT_NE(RefusalOf({"reg", "read", std::string(40000, '1')}), "");
  EXPECT_NE(RefusalOf({"reg", "read", "1\n2"}), "");
  EXPECT_NE(RefusalOf({"reg", "read", std::string("1\0", 2)}), "");
}

TEST(WorkbenchWordsTest, ReadOnlyTakesNothingThatWrites) {
  const WordLimits limits{true, ""};
  for (const char* const line :
       {"reg write 1 2", "reg load a.txt", "i2c write 1 2 --slave 1", "i2c load a --slave 1",
        "flash erase 0+4K --yes", "flash program a.bin", "flash word 0 1", "flash word 0 --yes 1",
        "preset apply night", "preset save x", "flash program a --no-verify",
        "--timeout 3 reg write 1 2", "flash program a -- --dry-run",
        "flash program --report --dry-run a"}) {
    ExpectRefused(line, limits);
  }
  for (const char* const line :
       {"reg read 1", "flash word 0", "flash read all a.bin", "flash program a.bin --dry-run",
        "flash verify a.bin", "reg diff camera a.txt", "i2c scan --yes", "flash map", "list"}) {
    ExpectTaken(line, limits);
  }
}

TEST(WorkbenchWordsTest, ServerAddsWhatTheCommandTakes) {
  const ToolDescription tool = DescribeTool();
  const AcceptedWords program = AcceptWords(tool, {"flash", "program", "a"}, {});
  EXPECT_EQ(program.added, (Words{"--json", "--progress", "json"}));
  EXPECT_TRUE(program.takes_camera);
  const AcceptedWords list = AcceptWords(tool, {"list"}, {});
  EXPECT_EQ(list.added, Words{"--json"});
  EXPECT_FALSE(list.takes_camera);
  EXPECT_TRUE(AcceptWords(tool, {"watch", "--reg", "1"}, {}).streams);
}

// A new command must be added to PageCommands or to this list.
TEST(WorkbenchWordsTest, EveryCommandIsJudged) {
  const std::set<std::string> refused = {"run",       "completion",  "manual",
                                         "workbench", "profile new", "profile names"};
  std::set<std::string> judged = refused;
  for (const PageCommand& command : PageCommands()) {
    judged.insert(std::string(command.words));
  }
  for (const CommandDescription& command : DescribeTool().commands) {
    EXPECT_TRUE(judged.contains(Joined(command.words))) << Joined(command.words);
  }
}

// An option whose value is a file must be marked so, otherwise its value would not be checked.
TEST(WorkbenchWordsTest, OptionsThatLookLikeFilesAreMarkedAsFiles) {
  const std::set<std::string> file_like = {"FILE", "FOLDER", "IMAGE", "LIST", "A", "B", "PATH"};
  for (const CommandDescription& command : DescribeTool().commands) {
    const std::string words = Joined(command.words);
    const auto listed = std::ranges::find(PageCommands(), words, &PageCommand::words);
    for (const OptionDescription& option : command.options) {
      const std::string value = option.positional ? option.names.back() : option.value;
      if (listed != PageCommands().end() && file_like.contains(value) && words != "i2c scan") {
        EXPECT_TRUE(option.takes_file) << words << " " << option.names.back();
      }
    }
  }
}

}  // namespace
}  // namespace borvanusb::tool_test
