// The form of the completion script for PowerShell, which is not available to run it.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <nlohmann/json.hpp>

#include "command/completion.h"
#include "command/completion_scripts.h"
#include "support/command_desk.h"

namespace borvanusb::tool_test {
namespace {

using testing::HasSubstr;
using testing::StartsWith;

// The script without the quoted texts, in which '' stands for a quote.
std::string WithoutTexts(const std::string& script) {
  std::string bare;
  char quote = 0;
  for (const char character : script) {
    if (quote == 0 && (character == '\'' || character == '"')) {
      quote = character;
    } else if (character == quote) {
      quote = 0;
    } else if (quote == 0) {
      bare += character;
    }
  }
  EXPECT_EQ(quote, 0);
  return bare;
}

TEST(PowerShellCompletionTest, CompletesTheProgramUnderBothNames) {
  EXPECT_THAT(PowerShellCompletion(DescribeTool()),
              StartsWith("# PowerShell completion of borvanusb.\n"
                         "Register-ArgumentCompleter -Native -CommandName borvanusb, borvanusb.exe "
                         "-ScriptBlock {\n"
                         "  param($wordToComplete, $commandAst, $cursorPosition)\n"));
}

TEST(PowerShellCompletionTest, HoldsCommandsOptionsAndValues) {
  const std::string script = PowerShellCompletion(DescribeTool());
  EXPECT_THAT(script, HasSubstr("@{ Words = 'reg load'; Text = 'Writes the registers of a list.'; "
                                "Values = @(); Names = @(''); Without = @() }\n"));
  EXPECT_THAT(
      script,
      HasSubstr("Values = @('bash', 'fish', 'powershell', 'zsh'); Names = @(''); Without = @("));
  EXPECT_THAT(script,
              HasSubstr("; Without = @('--camera', '--wait', '--profile', '--force-profile', "
                        "'--progress', '--trace') }\n"));
  EXPECT_THAT(script,
              HasSubstr("@{ Name = '--no-verify'; Text = 'don''t read back'; TakesValue = $false; "
                        "Values = @(); Names = '' }\n"));
  EXPECT_THAT(script, HasSubstr("Names = @('settings'); "));
  EXPECT_THAT(script, HasSubstr("TakesValue = $true; Values = @('8/8', '16/8', "));
}

TEST(PowerShellCompletionTest, BracketsAndQuotesAreClosed) {
  const std::string bare = WithoutTexts(PowerShellCompletion(DescribeTool()));
  for (const std::string pair : {"()", "{}", "[]"}) {
    EXPECT_EQ(std::count(bare.begin(), bare.end(), pair[0]),
              std::count(bare.begin(), bare.end(), pair[1]))
        << pair;
  }
}

TEST(PowerShellCompletionTest, CommandPrintsTheScript) {
  CommandDesk desk;
  EXPECT_EQ(borvanusb::Run(CompletionCommand{Shell::kPowerShell}, desk.context), ExitCode::kDone);
  EXPECT_EQ(desk.output.out, PowerShellCompletion(DescribeTool()));
  EXPECT_EQ(desk.result["shell"], "powershell");
  EXPECT_EQ(desk.result["script"], desk.output.out);
}

}  // namespace
}  // namespace borvanusb::tool_test
