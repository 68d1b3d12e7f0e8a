// docs/tool.md and the README are correct about command lines, exit codes and schemas.
#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <regex>

#include "base/exit_code.h"
#include "base/failure.h"
#include "command/command_line.h"
#include "station/script_commands.h"

namespace borvanusb::tool_test {
namespace {

const std::string kSource = BORVAN_SOURCE_FOLDER;

std::string TextOf(const std::string& file) {
  std::ifstream stream(kSource + "/" + file, std::ios::binary);
  return {std::istreambuf_iterator<char>(stream), {}};
}

std::vector<std::string> LinesOf(const std::string& text) {
  std::vector<std::string> lines;
  std::istringstream stream(text);
  for (std::string line; std::getline(stream, line);) {
    lines.push_back(line);
  }
  return lines;
}

// The part of a line that a shell passes to the tool: up to a pipe or a redirection.
std::string ForTheTool(const std::string& line) {
  return line.substr(0, std::min(line.find(" | "), line.find(" > ")));
}

// All command lines of a document without the tool's name: after a prompt, between backticks, and
// in scripts.
std::vector<std::string> CommandLinesOf(const std::string& text) {
  const std::regex prompted(R"(^\$ borvanusb (.*)$)");
  const std::regex quoted("`borvanusb ([^`]*)`");
  std::vector<std::string> lines;
  bool in_block = false;
  bool in_script = false;
  for (const std::string& line : LinesOf(text)) {
    std::smatch match;
    if (line.starts_with("```")) {
      in_block = !in_block;
      in_script = line == "```script";
    } else if (in_script) {
      lines.push_back(line);
    } else if (in_block && std::regex_match(line, match, prompted)) {
      lines.push_back(ForTheTool(match[1]));
    } else if (!in_block) {
      for (std::sregex_iterator found(line.begin(), line.end(), quoted), end; found != end;
           ++found) {
        lines.push_back(ForTheTool((*found)[1]));
      }
    }
  }
  return lines;
}

void ExpectGoodCommandLines(const std::string& file, std::size_t at_least) {
  const std::vector<std::string> lines = CommandLinesOf(TextOf(file));
  EXPECT_GE(lines.size(), at_least) << file;
  for (const std::string& line : lines) {
    try {
      if (const auto words = SplitLine(line); !words.empty()) {
        const bool only_in_scripts =
            std::ranges::any_of(ScriptOnlyRules(), [&](const CommandRule& rule) {
              return rule.description.words.front() == words.front();
            });
        if (only_in_scripts) {
          ParseScriptLine(words, {});
        } else {
          ParseCommandLine(words);
        }
      }
    } catch (const Failure& failure) {
      ADD_FAILURE() << file << ": " << line << "\n" << failure.Message();
    }
  }
}

TEST(ToolDocumentTest, CommandLinesAreFoundBehindPromptsBetweenBackticksAndInScripts) {
  EXPECT_EQ(CommandLinesOf("Try `borvanusb list` or `borvanusb manual | man -l -`, not `list`.\n"
                           "```console\n$ borvanusb info > a.txt\nborvanusb: info: failed\n```\n"
                           "```script\nreg read 1\n```\n"),
            (std::vector<std::string>{"list", "manual", "info", "reg read 1"}));
}

TEST(ToolDocumentTest, EveryCommandLineOfTheGuideIsOne) {
  ExpectGoodCommandLines("docs/tool.md", 40);
}

TEST(ToolDocumentTest, EveryCommandLineOfTheReadmeIsOne) {
  ExpectGoodCommandLines("README.md", 3);
}

TEST(ToolDocumentTest, EveryCommandLineOfTheListGuideIsOne) {
  ExpectGoodCommandLines("docs/list-files.md", 2);
}

TEST(ToolDocumentTest, EveryCommandLineOfTheProfileGuideIsOne) {
  ExpectGoodCommandLines("docs/profiles.md", 8);
}

TEST(ToolDocumentTest, GuideNamesEveryCommand) {
  const std::string guide = TextOf("docs/tool.md");
  for (const CommandDescription& command : DescribeTool().commands) {
    std::string line = "borvanusb";
    for (const std::string& word : command.words) {
      line += " " + word;
    }
    EXPECT_NE(guide.find(line), std::string::npos) << line;
  }
}

TEST(ToolDocumentTest, GuideNamesNoOptionThatThereIsNot) {
  std::vector<std::string> names;
  const auto add = [&](const std::vector<OptionDescription>& options) {
    for (const OptionDescription& option : options) {
      names.insert(names.end(), option.names.begin(), option.names.end());
    }
  };
  const ToolDescription tool = DescribeTool();
  add(tool.common);
  for (const CommandDescription& command : tool.commands) {
    add(command.options);
  }
  // Shell blocks call scripts of the source tree.
  const std::string guide =
      std::regex_replace(TextOf("docs/tool.md"), std::regex("```sh\n[^`]*```"), "");
  const std::regex option("--[a-z][a-z0-9-]*");
  for (std::sregex_iterator found(guide.begin(), guide.end(), option), end; found != end; ++found) {
    EXPECT_TRUE(std::find(names.begin(), names.end(), found->str()) != names.end()) << found->str();
  }
}

TEST(ToolDocumentTest, GuideTellsEveryExitCodeWithItsKind) {
  const std::string guide = TextOf("docs/tool.md");
  for (int code = 0; code <= static_cast<int>(ExitCode::kInternal); ++code) {
    const std::string row = "\n| " + std::to_string(code) + " | `" +
                            std::string(KindOf(static_cast<ExitCode>(code))) + "` | ";
    EXPECT_NE(guide.find(row), std::string::npos) << row;
  }
}

TEST(ToolDocumentTest, GuideNamesEverySchemaAndNoOther) {
  const std::string guide = TextOf("docs/tool.md");
  std::size_t files = 0;
  for (const auto& entry : std::filesystem::directory_iterator(kSource + "/docs/json")) {
    const std::string name = entry.path().filename().string();
    EXPECT_NE(guide.find("\n| `" + name + "` | "), std::string::npos) << name;
    ++files;
  }
  const std::regex row("\n\\| `[a-z0-9-]+\\.schema\\.json` \\| ");
  EXPECT_EQ(std::distance(std::sregex_iterator(guide.begin(), guide.end(), row), {}),
            static_cast<std::ptrdiff_t>(files));
}

}  // namespace
}  // namespace borvanusb::tool_test
