#include <nlohmann/json.hpp>

#include "command/camera_work.h"
#include "command/command_rules.h"
#include "command/completion.h"
#include "command/completion_scripts.h"
#include "command/context.h"
#include "command/text_command.h"
#include "command/values.h"
#include "output/output.h"

namespace borvanusb {

ExitCode Run(const CompletionCommand& command, Context& context) {
  const bool bash = command.shell == Shell::kBash;
  const std::string script =
      bash ? BashCompletion(DescribeTool()) : PowerShellCompletion(DescribeTool());
  PrintLines(script, context.output);
  context.result = {{"shell", bash ? "bash" : "powershell"}, {"script", script}};
  return ExitCode::kDone;
}

CommandRule CompletionRule() {
  RuleOf<CompletionCommand> rule({"completion"}, "Prints a script that completes command lines.");
  rule.Add(Choices(Argument("SHELL", "bash or powershell"), {"bash", "powershell"}),
           [](CompletionCommand& command, const std::string& text) {
             command.shell = static_cast<Shell>(ChoiceValue(text, {"bash", "powershell"}));
           });
  rule.Details(
      "For bash: eval \"$(borvanusb completion bash)\" in ~/.bashrc. For PowerShell: borvanusb "
      "completion powershell | Out-String | Invoke-Expression in $PROFILE.");
  RefuseAllOfCameras(rule);
  rule.Example("borvanusb completion bash > ~/.borvanusb-completion");
  return rule.Take();
}

}  // namespace borvanusb
