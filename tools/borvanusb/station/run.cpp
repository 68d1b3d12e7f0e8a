#include <variant>

#include "base/failure.h"
#include "base/files.h"
#include "command/command_line.h"
#include "command/command_rules.h"
#include "command/context.h"
#include "command/values.h"
#include "station/run.h"
#include "station/script.h"

namespace borvanusb {

namespace {

std::vector<Arguments> ReadLine(const std::string& line, const DefaultsSource& defaults) {
  const std::vector<std::string> words = SplitLine(line);
  if (words.empty()) {
    return {};
  }
  auto parsed = ParseCommandLine(words, defaults);
  if (std::holds_alternative<TextAnswer>(parsed)) {
    throw Failure(ExitCode::kUsage, "--help and --version are no commands of a script",
                  "Remove the line.");
  }
  return {std::get<Arguments>(std::move(parsed))};
}

}  // namespace

ExitCode Run(const RunCommand& command, Context& context) {
  const DefaultsSource defaults = LineDefaults(context);
  const std::vector<ScriptLine> lines = ReadScript(
      command.file, ReadWholeText(command.file),
      [&](const std::string& line) { return ReadLine(line, defaults); }, context);
  return RunScript(
      command.file, lines, command.keep_going,
      [](const Command& line, Context& of_line) { return line.Run(of_line); }, context);
}

CommandRule RunRule() {
  RuleOf<RunCommand> rule({"run"}, "Runs a script: commands as written here, one per line.");
  rule.Add(File(Argument("FILE", "the script; # begins a comment, \"quotes\" hold blanks")),
           [](RunCommand& command, const std::string& text) { command.file = FileValue(text); });
  rule.AddFlag("--keep-going", "run the other lines too if one fails", &RunCommand::keep_going);
  rule.Details(
      "Words are separated by blanks; a line has neither the word borvanusb nor a shell. All lines "
      "are checked before the first one runs.");
  rule.Example("borvanusb run settings.txt");
  return rule.Take();
}

}  // namespace borvanusb
