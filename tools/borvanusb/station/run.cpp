#include "station/run.h"

#include <algorithm>
#include <utility>
#include "base/format.h"
#include "base/joined.h"
#include "command/command_line.h"
#include "command/command_rules.h"
#include "command/context.h"
#include "command/standard_streams.h"
#include "command/values.h"
#include "output/output.h"
#include "station/prompt.h"
#include "station/script.h"
#include "station/script_commands.h"
#include "station/script_variables.h"

namespace borvanusb {

namespace {

std::optional<LineCommand> ReadLine(const std::string& line, ScriptVariables& variables,
                                    const DefaultsSource& defaults) {
  const std::vector<std::string> words = SplitLine(line);
  if (words.empty()) {
    return std::nullopt;
  }
  const std::vector<std::string> expanded = variables.Expand(words);
  LineCommand command{ParseScriptLine(expanded, defaults), {}};
  if (expanded != words) {
    command.expanded = LineText(expanded);
  }
  return command;
}

ExitCode RunTyped(ScriptVariables variables, Context& context) {
  Terminal* const terminal = context.host.Prompt();
  if (terminal == nullptr || !context.output.OutputIsTerminal()) {
    throw Failure(ExitCode::kUsage, "FILE is missing, and there is no terminal to type lines at",
                  "Give a script, or borvanusb run - to read it from standard input.");
  }
  if (context.common.json) {
    throw Failure(ExitCode::kUsage, "--json: lines that are typed print no object",
                  "Give a script to get its results as one object.");
  }
  return RunPrompt(*terminal, std::move(variables), context);
}

}  // namespace

ExitCode Run(const RunCommand& command, Context& context) {
  const DefaultsSource defaults = LineDefaults(context);
  ScriptVariables variables(command.variables);
  if (command.file.empty()) {
    return RunTyped(std::move(variables), context);
  }
  const std::string name = ShownName(command.file, kStandardInput);
  const std::vector<ScriptLine> lines = ReadScript(
      name, ReadTextOrInput(command.file, context.host),
      [&](const std::string& line) { return ReadLine(line, variables, defaults); }, context);
  if (const std::vector<std::string> unused = variables.Unused(); !unused.empty()) {
    context.output.Note(
        Format("note: {} does not use the variable {}", name, Joined(unused, ", ")));
  }
  return RunScript(
      name, lines, command.keep_going,
      [](const Command& line, Context& of_line) { return line.Run(of_line); }, context);
}

CommandRule RunRule() {
  RuleOf<RunCommand> rule({"run"}, "Runs a script: commands as written here, one per line.");
  rule.Add(
      File(Optional(Argument(
          "FILE", "the script, - for standard input; without it a terminal shows a prompt"))),
      [](RunCommand& command, const std::string& text) { command.file = FileOrStreamValue(text); });
  rule.Add(Repeated(Option("--set", "NAME=VALUE", "the value of ${NAME} in the script")),
           [](RunCommand& command, const std::string& text) {
             const auto variable = VariableValue(text);
             const auto same = [&](const auto& other) { return other.first == variable.first; };
             if (std::ranges::any_of(command.variables, same)) {
               throw WrongValue("is the second value of this variable");
             }
             command.variables.push_back(variable);
           });
  rule.AddFlag("--keep-going", "run the other lines too if one fails", &RunCommand::keep_going);
  rule.Check([](const RunCommand& command, const GivenOptions&) {
    if (command.file.empty() && command.keep_going) {
      throw WrongUse("--keep-going: is for a script; the prompt continues in any case");
    }
  });
  rule.Details(
      "Lines do not start with borvanusb and are not run by a shell; use \"quotes\" for blanks. "
      "All lines are checked before the first one runs. Only in scripts: sleep 100ms, ask "
      "\"QUESTION\", expect 0x1a3 == 0x20, wait i2c:0x6c:0x300a == 0x56 --timeout 2s, with &MASK "
      "after the address if only some bits count.");
  rule.Example("borvanusb run settings.txt --set SERIAL=17");
  return rule.Take();
}

}  // namespace borvanusb
