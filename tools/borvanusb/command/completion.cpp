#include <initializer_list>
#include <nlohmann/json.hpp>
#include <string_view>

#include "command/camera_work.h"
#include "command/command_rules.h"
#include "command/completion.h"
#include "command/completion_scripts.h"
#include "command/context.h"
#include "command/text_command.h"
#include "command/values.h"
#include "output/output.h"

namespace borvanusb {

namespace {

// In the order of the enumeration Shell.
const std::initializer_list<std::string_view> kShells = {"bash", "fish", "powershell", "zsh"};

std::string ScriptFor(Shell shell) {
  const ToolDescription tool = DescribeTool();
  switch (shell) {
    case Shell::kBash:
      return BashCompletion(tool);
    case Shell::kFish:
      return FishCompletion(tool);
    case Shell::kPowerShell:
      return PowerShellCompletion(tool);
    default:
      return ZshCompletion(tool);
  }
}

}  // namespace

ExitCode Run(const CompletionCommand& command, Context& context) {
  const std::string script = ScriptFor(command.shell);
  PrintLines(script, context.output);
  context.result = {{"shell", *(kShells.begin() + static_cast<int>(command.shell))},
                    {"script", script}};
  return ExitCode::kDone;
}

CommandRule CompletionRule() {
  RuleOf<CompletionCommand> rule({"completion"}, "Prints a script that completes command lines.");
  rule.Add(
      Choices(Argument("SHELL", "bash, fish, powershell or zsh"), {kShells.begin(), kShells.end()}),
      [](CompletionCommand& command, const std::string& text) {
        command.shell = static_cast<Shell>(ChoiceValue(text, kShells));
      });
  rule.Details(
      "For bash: eval \"$(borvanusb completion bash)\" in ~/.bashrc. For zsh: the same with zsh, "
      "in "
      "~/.zshrc after compinit. For fish: borvanusb completion fish | source in config.fish. For "
      "PowerShell: borvanusb completion powershell | Out-String | Invoke-Expression in $PROFILE.");
  RefuseAllOfCameras(rule);
  rule.Example("borvanusb completion bash > ~/.borvanusb-completion");
  return rule.Take();
}

}  // namespace borvanusb
