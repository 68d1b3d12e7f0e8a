#include <nlohmann/json.hpp>

#include "command/camera_work.h"
#include "command/commands.h"
#include "command/completion_scripts.h"
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

}  // namespace borvanusb
