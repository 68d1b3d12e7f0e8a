#include <variant>

#include "base/failure.h"
#include "base/files.h"
#include "command/command_line.h"
#include "command/commands.h"
#include "command/dispatch.h"
#include "station/script.h"

namespace borvanusb {

namespace {

std::vector<Arguments> ReadLine(const std::string& line) {
  const std::vector<std::string> words = SplitLine(line);
  if (words.empty()) {
    return {};
  }
  auto parsed = ParseCommandLine(words);
  if (std::holds_alternative<TextAnswer>(parsed)) {
    throw Failure(ExitCode::kUsage, "--help and --version are no commands of a script",
                  "Take the line out.");
  }
  return {std::get<Arguments>(std::move(parsed))};
}

}  // namespace

ExitCode Run(const RunCommand& command, Context& context) {
  const std::vector<ScriptLine> lines =
      ReadScript(command.file, ReadWholeText(command.file), ReadLine, context);
  return RunScript(command.file, lines, command.keep_going, Dispatch, context);
}

}  // namespace borvanusb
