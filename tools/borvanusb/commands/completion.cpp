#include <nlohmann/json.hpp>

#include "commands/commands.h"
#include "commands/completion_scripts.h"
#include "output/output.h"

ExitCode Run(const CompletionCommand& command, Context& context) {
  const bool bash = command.shell == Shell::kBash;
  std::string script = bash ? BashCompletion(DescribeTool()) : PowerShellCompletion(DescribeTool());
  // The line that is printed has an end of its own.
  script.pop_back();
  context.output.Line(script);
  context.result = {{"shell", bash ? "bash" : "powershell"}, {"script", script + "\n"}};
  return ExitCode::kDone;
}
